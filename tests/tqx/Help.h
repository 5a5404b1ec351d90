// What the command says of itself, taken apart.
#pragma once

#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/Command.h"

// Every match of a pattern's first group.
inline std::vector<std::string> AllMatches(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    return {std::sregex_token_iterator(text.begin(), text.end(), regex, 1), {}};
}

inline std::string HelpOf(const std::string& command) {
    return RunCommand(command.empty() ? std::vector<std::string>{"--help"}
                                      : std::vector{command, std::string("--help")})
        .out;
}

// The names of the subcommands.
inline std::set<std::string> CommandsInHelp() {
    const std::string help = HelpOf("");
    const auto names = AllMatches(help.substr(help.find("\nSubcommands:\n")), "\n  ([a-z-]+) ");
    return {names.begin(), names.end()};
}

// The options that a command's help lists (of tqx itself for ""): "-e" and "--explain", for "-h,--help" both.
inline std::set<std::string> OptionsInHelp(const std::string& command) {
    std::set<std::string> options;
    for (const std::string& names : AllMatches(HelpOf(command), "\n  (-[a-z,-]+)")) {
        const auto split = AllMatches(names, "(-[a-z-]+)");
        options.insert(split.begin(), split.end());
    }
    return options;
}

inline std::set<std::string> LongOnes(std::set<std::string> options) {
    std::erase_if(options, [](const std::string& option) { return !option.starts_with("--"); });
    return options;
}

inline std::set<std::string> ChecksThatThereAre() {
    const auto ids = AllMatches("\n" + RunCommand({"check", "--list"}).out, "\n([a-z-]+): ");
    return {ids.begin(), ids.end()};
}
