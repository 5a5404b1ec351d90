// Steps of a program that grows, and the names that may complete a line.
#include "host/script/Session.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "host/script/Check.h"
#include "host/script/Compiler.h"
#include "host/script/Machine.h"
#include "host/script/Parse.h"
#include "host/script/ProgramEnd.h"
#include "host/script/Script.h"
#include "host/script/ScriptClasses.h"
#include "host/script/SpokenLines.h"

namespace script {

namespace {

// Where the value of an expression goes. No name that a script can spell.
constexpr const char* kValueName = "value'";

constexpr int kInterruptedExitCode = 130;

}  // namespace

struct Session::State {
    State(SpokenLines::Take print, SpokenLines::Take write) : spoken(std::move(print), std::move(write)) {
        machine.print = [this](std::string_view line) { spoken.Print(line); };
    }

    host::TextSink Sink() {
        return [this](std::string_view text) { spoken.Write(text); };
    }

    const Alive before{};
    SpokenLines spoken;
    std::function<void(std::string_view)> complain;
    Source source{"<input>", "\n"};  // all lines so far, behind an empty one
    std::int32_t lines = 1;          // their count
    Symbols symbols;
    Code code;
    Machine machine{code, symbols};
    std::vector<std::unique_ptr<Program>> programs;  // of the steps; symbols point into them
    Variable* value = nullptr;
};

Session::Session(std::function<void(std::string_view)> print, std::function<void(std::string_view)> complain,
                 std::function<void(std::string_view)> write)
    : state_(std::make_unique<State>(std::move(print), std::move(write))) {
    state_->complain = std::move(complain);
    state_->value = state_->symbols.AddVariable(kValueName, kVariantType, Storage::Global, {});
    state_->symbols.globalNames[kValueName] = state_->value;
    PrepareSteps(state_->code);
    state_->machine.BeginSteps();
}

Session::~Session() {
    const host::OutputTo output(state_->Sink());
    try {
        EndProgram(state_->machine, state_->symbols, state_->before);
        state_->machine.CheckEnd();
    } catch (const Terminated&) {
    } catch (const host::Raised&) {
        state_->complain(FailureText(state_->source, state_->machine.LastFailure()));
    }
    state_->machine.ForgetFailure();
    state_->spoken.End();
    // What still may be called from outside must outlive the session.
    if (!UnregisterClasses(state_->symbols)) static_cast<void>(state_.release());
}

namespace {

ExpressionPtr ValueNode() {
    auto name = std::make_unique<Expression>();
    name->node = Node::Name;
    name->text = kValueName;
    return name;
}

bool IsOneStatement(const Program& program, Action action) {
    return program.body.size() == 1 && program.routines.empty() && program.classes.empty() &&
           program.body[0]->action == action;
}

// Makes the one Return of a program an assignment; false for any other program.
bool KeepValue(Program& program) {
    if (!IsOneStatement(program, Action::Return) || program.body[0]->expressions.size() != 1) return false;
    Statement& statement = *program.body[0];
    if (!statement.expressions[0]) return false;
    statement.action = Action::Assign;
    statement.expressions.insert(statement.expressions.begin(), ValueNode());
    return true;
}

}  // namespace

// The lines as a program, their places counted on from those before.
std::unique_ptr<Program> Session::ParseStep(const std::string& lines, const char* lineBefore,
                                            Diagnostics& diagnostics) const {
    const std::string before(static_cast<std::size_t>(state_->lines - 1), '\n');
    return Parse({state_->source.path, before + lineBefore + '\n' + lines}, diagnostics);
}

// Checks and compiles; with mistakes everything is as it was before.
bool Session::Accept(std::unique_ptr<Program> program, Diagnostics& diagnostics) {
    State& state = *state_;
    const Symbols::Declared before = state.symbols.Save();
    if (!diagnostics.HasErrors()) Check(*program, state.symbols, diagnostics);
    if (!diagnostics.HasErrors()) {
        RegisterClasses(state.symbols, state.machine);
        CompileStep(*program, state.symbols, before.scriptClasses, state.code, diagnostics);
    }
    if (diagnostics.HasErrors()) {
        ForgetStep(state.code, before.globals);
        UnregisterClasses(state.symbols, before.scriptClasses);
        state.symbols.Restore(before);
        return false;
    }
    state.programs.push_back(std::move(program));
    return true;
}

bool Session::AcceptExpression(const std::string& lines) {
    Diagnostics diagnostics(state_->source);
    auto program = ParseStep(lines, "Return _", diagnostics);
    return !diagnostics.HasErrors() && KeepValue(*program) && Accept(std::move(program), diagnostics);
}

StepResult Session::Run(std::string lines) {
    State& state = *state_;
    if (lines.ends_with('\n')) lines.pop_back();
    state.source.text += lines + '\n';
    Diagnostics diagnostics(state.source);
    auto program = ParseStep(lines, "", diagnostics);
    const bool mayBeValue = diagnostics.HasErrors() || IsOneStatement(*program, Action::Call);
    const bool isValue = mayBeValue && AcceptExpression(lines);
    const bool accepted = isValue || Accept(std::move(program), diagnostics);
    state.lines += static_cast<std::int32_t>(std::count(lines.begin(), lines.end(), '\n')) + 1;
    if (!isValue && !diagnostics.List().empty()) state.complain(diagnostics.Text());
    if (!accepted) return {};
    StepResult result = RunAccepted();
    result.hasValue = isValue && result.finished;
    if (result.hasValue)
        result.value = std::exchange(state.machine.Globals()[state.value->index], host::Value(nullptr));
    return result;
}

StepResult Session::RunAccepted() {
    State& state = *state_;
    StepResult result;
    const host::OutputTo output(state.Sink());
    try {
        state.machine.RunStep();
        result.finished = true;
    } catch (const Terminated& end) {
        result.ended = end.exitCode != kInterruptedExitCode;
        result.exitCode = end.exitCode;
        if (!result.ended) state.complain("interrupted\n");
    } catch (const host::Raised&) {
        state.complain(FailureText(state.source, state.machine.LastFailure()));
    }
    state.machine.ForgetFailure();
    state.spoken.End();
    return result;
}

// --- Completion -----------------------------------------------------------------------------

namespace {

bool IsWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// The word that a text ends with, perhaps an empty one.
std::string_view LastWord(std::string_view text) {
    std::size_t begin = text.size();
    while (begin > 0 && IsWordCharacter(text[begin - 1])) --begin;
    return text.substr(begin);
}

void AddMembers(const host::Class& type, bool shared, std::vector<std::string>& names) {
    for (const host::Method& method : shared ? type.sharedMethods() : type.methods())
        names.push_back(method.declaration.name);
    for (const host::Constant& constant : type.constants()) names.push_back(constant.name);
    if (shared) return;
    for (const host::Property& property : type.properties()) names.push_back(property.name);
}

// What may stand behind an object of a class, or behind the class's own name.
std::vector<std::string> MembersOf(const ClassSymbol* type, bool shared) {
    std::vector<std::string> names;
    const host::Class* known = type ? (type->made ? type->made : type->native) : nullptr;
    for (; known; known = known->superclass()) AddMembers(*known, shared, names);
    return names;
}

std::vector<std::string> Matching(std::vector<std::string> names, std::string_view prefix) {
    std::erase_if(names, [&](const std::string& name) {
        return name.size() < prefix.size() || !host::SameName(std::string_view(name).substr(0, prefix.size()), prefix);
    });
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

}  // namespace

std::vector<std::string> Session::NamesAtStart() const {
    const Symbols& symbols = state_->symbols;
    std::vector<std::string> names = host::Runtime::Get().FunctionNames();
    for (const host::Class* type : host::Runtime::Get().Classes()) names.push_back(type->name());
    for (const auto& [lower, variable] : symbols.globalNames)
        if (variable != state_->value) names.push_back(variable->name);
    for (const auto& [lower, routines] : symbols.routines) names.push_back(routines[0]->signature.name);
    for (const char* intrinsic : {"Print", "Array", "Ubound", "Quit"}) names.emplace_back(intrinsic);
    return names;
}

std::vector<std::string> Session::Completions(std::string_view line) {
    const std::string_view prefix = LastWord(line);
    line.remove_suffix(prefix.size());
    if (line.empty() || line.back() != '.') return Matching(NamesAtStart(), prefix);
    line.remove_suffix(1);
    const std::string_view holder = LastWord(line);
    const auto variable = state_->symbols.globalNames.find(host::LowerName(holder));
    if (variable == state_->symbols.globalNames.end())
        return Matching(MembersOf(state_->symbols.FindClass(holder), true), prefix);
    return Matching(MembersOf(variable->second->type.of, false), prefix);
}

}  // namespace script
