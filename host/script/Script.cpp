// A script from its text through check, compilation and run to what is told of its end.
#include "host/script/Script.h"

#include <memory>
#include <new>
#include <utility>

#include "host/messages/ParserMessages.h"
#include "host/script/Check.h"
#include "host/script/Compiler.h"
#include "host/script/Machine.h"
#include "host/script/Parse.h"
#include "host/script/ProgramEnd.h"
#include "host/script/ScriptClasses.h"
#include "host/script/SpokenLines.h"

namespace script {

namespace {

// Everything that belongs to one script. It stays while an instance of a class of the script is
// alive, since that instance may call back.
struct LoadedScript {
    explicit LoadedScript(const Source& text) : source(text), diagnostics(source), machine(code, symbols) {}

    Source source;
    Diagnostics diagnostics;
    std::unique_ptr<Program> program;
    Symbols symbols;
    Code code;
    Machine machine;
    LoadedScript* keptBefore = nullptr;
};

// Takes a script's classes away and the script with them; one that may still be called from
// outside stays for ever.
struct Retire {
    void operator()(LoadedScript* script) const noexcept {
        static LoadedScript* kept = nullptr;
        if (UnregisterClasses(script->symbols))
            delete script;
        else
            script->keptBefore = std::exchange(kept, script);
    }
};

std::string PlaceOf(const Source& source, Position at) {
    return source.path + ':' + std::to_string(at.line) + ':' + std::to_string(at.column);
}

}  // namespace

std::string FailureText(const Source& source, const Failure& failure) {
    const host::Object* exception = failure.exception.get();
    const Position at = failure.trace.empty() ? Position{1, 1} : failure.trace.front().at;
    const std::string message = host::MessageOf(exception);
    std::string text = exception->type->name();
    if (!message.empty()) text += ": " + message;
    if (const std::int32_t number = host::ErrorNumberOf(exception))
        text += " (ErrorNumber " + std::to_string(number) + ")";
    text = Describe(source, {at, std::move(text)});
    for (std::size_t i = 0; i < failure.trace.size(); ++i) {
        const TraceLine& line = failure.trace[i];
        if (failure.omitted && i + 1 == failure.trace.size())
            text += "  … " + std::to_string(failure.omitted) + " calls …\n";
        text += "  in " + line.function->name + ", " + PlaceOf(source, line.at) + '\n';
    }
    return text;
}

namespace {

std::string ListOf(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
    return text;
}

bool Load(LoadedScript& script) {
    script.program = Parse(script.source, script.diagnostics);
    if (script.diagnostics.HasErrors()) return false;
    Check(*script.program, script.symbols, script.diagnostics);
    return !script.diagnostics.HasErrors();
}

// Runs a part of the script. Gives its exit code, and the text for an exception that nobody took.
template <class Work>
int Outcome(LoadedScript& script, const Work& work, std::string& complaint) {
    int exitCode = 0;
    try {
        work();
    } catch (const Terminated& end) {
        exitCode = end.exitCode;
    } catch (const host::Raised&) {
        complaint += FailureText(script.source, script.machine.LastFailure());
        exitCode = 1;
    }
    script.machine.ForgetFailure();
    return exitCode;
}

std::string TextOf(const Leftovers& left, const std::string& path) {
    std::string text;
    if (!left.cycles.empty()) text += path + ": " + kSourceSays.cycles.Text(ListOf(left.cycles)) + '\n';
    if (!left.leaks.empty()) text += path + ": " + kSourceSays.leaks.Text(ListOf(left.leaks)) + '\n';
    return text;
}

int RunLoaded(LoadedScript& script, const RunOptions& options) {
    const Alive before;
    std::string complaint;
    Leftovers left;
    int exitCode = Outcome(
        script, [&] { script.machine.Run(); }, complaint);
    const auto end = [&] {
        left = EndProgram(script.machine, script.symbols, before);
        script.machine.CheckEnd();
    };
    const int atEnd = Outcome(script, end, complaint);
    if (exitCode == 0) exitCode = atEnd;
    if (options.leaks) complaint += TextOf(left, script.source.path);
    const bool leaks = options.leaks && !(left.cycles.empty() && left.leaks.empty());
    if (leaks && exitCode == 0) exitCode = 1;
    if (!complaint.empty()) options.complain(complaint);
    return exitCode;
}

}  // namespace

bool CheckScript(const Source& source, const std::function<void(std::string_view)>& complain) {
    LoadedScript script(source);
    const bool sound = Load(script);
    if (!script.diagnostics.List().empty()) complain(script.diagnostics.Text());
    return sound;
}

namespace {

int Run(const Source& source, const RunOptions& options) {
    const std::unique_ptr<LoadedScript, Retire> script(new LoadedScript(source));
    // Objects that outlive the run may print too.
    const auto spoken = std::make_shared<SpokenLines>(options.print, options.write);
    script->machine.print = [spoken](std::string_view line) { spoken->Print(line); };
    const host::OutputTo output([spoken](std::string_view text) { spoken->Write(text); });
    script->machine.observers = options.observers;
    if (Load(*script)) {
        RegisterClasses(script->symbols, script->machine);
        Compile(*script->program, script->symbols, script->code, script->diagnostics);
    }
    if (!script->diagnostics.List().empty()) options.complain(script->diagnostics.Text());
    if (script->diagnostics.HasErrors()) return 1;
    const int exitCode = RunLoaded(*script, options);
    spoken->End();
    return exitCode;
}

}  // namespace

// Inside the script short memory is an exception of the script; here it is before or after it.
int RunScript(const Source& source, const RunOptions& options) {
    try {
        return Run(source, options);
    } catch (const std::bad_alloc&) {
        options.complain(source.path + ": " + kSourceSays.noMemory.Text() + '\n');
        return 1;
    }
}

}  // namespace script
