// Subcommands and options, read with CLI11.
#include "tqx/CommandLine.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "host/messages/CommandMessages.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"
#include "tqx/ScriptWords.h"

#ifndef TQX_VERSION
#error "the build sets TQX_VERSION"
#endif

namespace tqx {

namespace {

constexpr const char* kExitCodes =
    "Exit code: 0; what the script hands to Quit; 1 after an error, which standard error\n"
    "tells; 2 for words that are not understood; 128 + n where signal n ended the script.";

// What the words can mean. The options write into the settings.
class CommandLine {
  public:
    CommandLine();
    int Execute(std::vector<std::string> words);

  private:
    void AddRun();
    void AddMembers();
    void AddCheck();
    void AddFuzz();
    void AddCheckSyntax();
    void AddShow();
    void Choose(std::vector<std::string>& words);
    int Obey();
    int ObeyRun();
    int Refuse(const std::string& problem) const;
    CLI::App* Find(const std::string& command);

    CLI::App app_{"Runs scripts that work on pictures through a plug-in."};
    Settings settings_;
    RunSettings run_;
    MembersSettings members_;
    CheckSettings check_;
    FuzzSettings fuzz_;
    std::vector<std::string> files_;        // of check-syntax and show
    std::vector<std::string> scriptWords_;  // the script's name, unless its text is given, and its arguments
    CLI::App* chosen_ = nullptr;
};

std::string NotACount(const std::string& text) {
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return digits ? "" : kCommandSays.noPixelCount.Text(text);
}

bool OnTerminal() { return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO); }

CommandLine::CommandLine() {
    app_.name("tqx");
    app_.set_version_flag("--version", "tqx " TQX_VERSION);
    app_.get_option("--version")->description("Print the version");
    app_.set_help_flag("-h,--help", "Print this help, or a command's: tqx COMMAND --help");
    app_.require_subcommand(1);
    app_.add_option("--plugin", settings_.plugin, "Use this plug-in instead of the one beside the command")
        ->envname("TQX_PLUGIN")
        ->take_last()
        ->type_name("PATH");
    AddRun();
    AddMembers();
    AddCheck();
    AddFuzz();
    AddCheckSyntax();
    AddShow();
    app_.add_subcommand("repl", "A prompt; also without a command, on a terminal");
}

void CommandLine::AddRun() {
    CLI::App* const run = app_.add_subcommand("run", "Run a script");
    // For the help only: these words never reach the parser.
    run->add_option("SCRIPT", "The script's file; - is standard input")->type_name("");
    run->add_option("ARG", "Arguments that the script reads with App.Arguments: whatever follows its name")
        ->type_name("")
        ->expected(0, -1);
    run->add_option("-e", run_.code, "The script's text itself, in place of SCRIPT")->type_name("CODE");
    run->add_flag("--check", run_.onlyCheck, "Only check the script, as check-syntax does");
    run->add_flag("--explain", run_.explain, "Tell why calls of the plug-in gave nothing");
    run->add_flag("--leaks", run_.leaks, "Make objects that are left at the script's end an error");
    run->add_option("--max-pixels", run_.maxPixels,
                    "Refuse picture files of more pixels; 0 reads any. Without it a file may have 16777216 and 1024 "
                    "for each of its bytes, but no more than 268435456")
        ->type_name("COUNT")
        ->check(CLI::Validator([](const std::string& text) { return NotACount(text); }, ""));
    run->add_flag("--no-orientation", run_.noOrientation, "Don't turn pictures upright");
    run->footer(kExitCodes);
}

void CommandLine::AddMembers() {
    CLI::App* const members =
        app_.add_subcommand("members", "What scripts can use: the plug-in's classes, the framework");
    members->add_option("NAME", members_.wanted, "Only this class, function or member: Class.Member for one of a class")
        ->type_name("");
    members->add_flag("--json", members_.json, "For programs: everything, as JSON");
}

void CommandLine::AddCheck() {
    CLI::App* const check = app_.add_subcommand("check", "Test the plug-in: everything that it registers is called");
    check->add_flag("--list", check_.list, "Only list the checks");
    check->add_option("--only", check_.only, "Run only this check; may come several times")
        ->type_name("ID")
        ->expected(1)
        ->take_all();
    check->add_option("--except", check_.except, "Don't run this check; may come several times")
        ->type_name("ID=REASON")
        ->expected(1)
        ->take_all();
    check->add_option("--seed", check_.seed, "Of the arguments that are drawn at random; without it 1")->type_name("N");
    check->add_flag("--in-process", check_.inProcess, "Run everything in this process, for debuggers: no deadlines");
    check->add_flag("--json", check_.json, "For programs: all results, as JSON");
    check->add_option("--junit", check_.junit, "For build servers: write the results into a file as well")
        ->type_name("FILE");
    check->footer(
        "Exit code: 0 when nothing was found; 1 when a check failed, crashed or timed out; 2 when\n"
        "the checks could not be run.");
}

void CommandLine::AddFuzz() {
    CLI::App* const fuzz =
        app_.add_subcommand("fuzz", "Run random programs over everything that the plug-in registers");
    fuzz->add_option("--programs", fuzz_.programs, "How many; without it 1000")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    fuzz->add_option("--seconds", fuzz_.seconds, "Instead: as many as go into this time")
        ->type_name("T")
        ->check(CLI::PositiveNumber);
    fuzz->add_option("--seed", fuzz_.seed, "Of the random numbers; without it 1")->type_name("S");
    fuzz->add_option("--first", fuzz_.first, "The number of the first program; without it 0")
        ->type_name("I")
        ->check(CLI::NonNegativeNumber);
    fuzz->add_option("--statements", fuzz_.statements, "Of each program; without it 40")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    fuzz->add_flag("--whole", fuzz_.whole, "Show a program that fails as it is, not shortened");
    fuzz->add_flag("--print", fuzz_.print, "Only print the first program, without running it");
    fuzz->footer(
        "Exit code: 0 when nothing was found; 1 with the program, shortened, that ended its process,\n"
        "took too long, left something behind or broke memory; 2 when nothing could be run.");
}

// Null for a name that no command has.
CLI::App* CommandLine::Find(const std::string& command) {
    const auto found = app_.get_subcommands([&](const CLI::App* one) { return one->get_name() == command; });
    return found.empty() ? nullptr : found.front();
}

void CommandLine::AddCheckSyntax() {
    CLI::App* const check = app_.add_subcommand("check-syntax", "Check scripts without running them");
    check->add_option("SCRIPT", files_, "The scripts' files; - is standard input")->type_name("")->required();
}

void CommandLine::AddShow() {
    CLI::App* const show = app_.add_subcommand("show", "Show pictures in the terminal");
    show->add_option("FILE", files_, "The pictures' files")->type_name("")->required();
}

int CommandLine::Refuse(const std::string& problem) const {
    const std::string command = chosen_ ? "tqx " + chosen_->get_name() : "tqx";
    Complain(command + ": " + problem + "\nTry " + command + " --help.\n");
    return kWrongUsage;
}

// Leaves the words that are for the parser.
void CommandLine::Choose(std::vector<std::string>& words) {
    const std::size_t command = FirstPlainWord(app_, words, 0);
    if (command == words.size()) return;
    chosen_ = Find(words[command]);
    if (!chosen_) throw WrongWords{kCommandSays.noCommand(words[command])};
    if (chosen_->get_name() == "run") scriptWords_ = TakeFrom(words, FirstPlainWord(*chosen_, words, command + 1));
}

int CommandLine::Execute(std::vector<std::string> words) {
    try {
        Choose(words);
        std::reverse(words.begin(), words.end());  // as the parser wants them
        app_.parse(words);
        return Obey();
    } catch (const CLI::Success& help) {
        std::ostringstream text;
        app_.exit(help, text, text);
        WriteOutput(text.str());
        return 0;
    } catch (const CLI::RequiredError& error) {
        if (!chosen_ && OnTerminal()) return Repl(settings_);
        return Refuse(chosen_ ? error.what() : kCommandSays.commandMissing.Text());
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    } catch (const WrongWords& wrong) {
        return Refuse(wrong.said.text());
    }
}

int CommandLine::Obey() {
    if (Find("check")->parsed()) return Check(settings_, check_);
    if (Find("fuzz")->parsed()) return Fuzz(settings_, fuzz_);
    if (Find("check-syntax")->parsed()) return CheckSyntax(settings_, files_);
    if (Find("members")->parsed()) return Members(settings_, members_);
    if (Find("show")->parsed()) return Show(files_);
    if (Find("repl")->parsed()) return Repl(settings_);
    return ObeyRun();
}

int CommandLine::ObeyRun() {
    if (!run_.code) {
        if (scriptWords_.empty()) throw WrongWords{kCommandSays.scriptMissing()};
        run_.script = scriptWords_.front();
        scriptWords_.erase(scriptWords_.begin());
    }
    run_.arguments = std::move(scriptWords_);
    return Run(settings_, run_);
}

}  // namespace

int Execute(std::vector<std::string> words) { return CommandLine().Execute(std::move(words)); }

}  // namespace tqx
