// What programs of the shell print.
#pragma once

#include <cstdio>
#include <set>
#include <string>

using Words = std::set<std::string>;

inline std::string Quoted(const std::string& word) { return "'" + word + "'"; }

// The lines that a shell's command prints.
inline Words LinesPrintedBy(const std::string& command) {
    Words lines;
    FILE* const pipe = popen(command.c_str(), "r");
    char buffer[1024];
    while (pipe && std::fgets(buffer, sizeof(buffer), pipe)) {
        const std::string line = buffer;
        lines.insert(line.substr(0, line.find('\n')));
    }
    if (pipe) pclose(pipe);
    return lines;
}
