#include "host/script/Script.h"

#include <memory>

#include "host/script/Checker.h"
#include "host/script/Compiler.h"
#include "host/script/Machine.h"
#include "host/script/Parser.h"
#include "host/script/ScriptClasses.h"

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
};

std::string PlaceOf(const Source& source, Position at) {
    return source.path + ':' + std::to_string(at.line) + ':' + std::to_string(at.column);
}

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

int RunLoaded(LoadedScript& script, const RunOptions& options) {
    int exitCode = 0;
    try {
        script.machine.Run();
    } catch (const Terminated& end) {
        exitCode = end.exitCode;
    } catch (const host::Raised&) {
        options.complain(FailureText(script.source, script.machine.LastFailure()));
        exitCode = 1;
    }
    script.machine.ForgetFailure();
    return exitCode;
}

// Tells what the script left alive; true when that is a fault.
bool ReportLeftovers(const LoadedScript& script, const Alive& before, const RunOptions& options) {
    const Leftovers left = ReleaseLeftovers(script.symbols, before);
    const std::string name = script.source.path + ": ";
    if (!left.cycles.empty())
        options.complain(name + "objects that held each other were released at the end: " + ListOf(left.cycles) + '\n');
    if (!left.leaks.empty())
        options.complain(name + "objects are still alive at the end: " + ListOf(left.leaks) + '\n');
    return !left.leaks.empty();
}

}  // namespace

std::string CheckScript(const Source& source) {
    LoadedScript script(source);
    Load(script);
    return script.diagnostics.Text();
}

int RunScript(const Source& source, const RunOptions& options) {
    auto script = std::make_unique<LoadedScript>(source);
    script->machine.print = options.print;
    script->machine.observers = options.observers;
    if (Load(*script)) {
        RegisterClasses(script->symbols, script->machine);
        Compile(*script->program, script->symbols, script->code, script->diagnostics);
    }
    if (!script->diagnostics.List().empty()) options.complain(script->diagnostics.Text());
    if (script->diagnostics.HasErrors()) {
        UnregisterClasses(script->symbols);
        return 1;
    }
    const Alive before;
    int exitCode = RunLoaded(*script, options);
    const bool leaks = ReportLeftovers(*script, before, options);
    if (leaks && exitCode == 0) exitCode = 1;
    // What still may be called from outside must outlive this call.
    if (!UnregisterClasses(script->symbols)) {
        static std::vector<std::unique_ptr<LoadedScript>> kept;
        kept.push_back(std::move(script));
    }
    return exitCode;
}

}  // namespace script
