// Watches each use of a member and tells of those that refused.
#include "host/script/Explain.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/calls/Call.h"
#include "host/calls/PluginLoader.h"

namespace script {

namespace {

using host::Kind;
using host::SameName;
using host::Value;

constexpr const char* kSkipped = "skipped pixels";

bool IsConstructor(const MemberUse& use) { return use.method && SameName(use.method->declaration.name, "Constructor"); }

bool GivesNothing(const MemberUse& use) {
    return use.method && (use.assigned || use.method->declaration.result.kind == Kind::None) && !IsConstructor(use);
}

// A result that says no; empty for any other.
std::string RefusalText(const Value& result) {
    switch (result.kind()) {
        case Kind::Object:
            return result.IsNil() ? "gave Nil" : "";
        case Kind::Boolean:
            return result.ToBoolean() ? "" : "gave False";
        case Kind::String:
            return result.text().empty() ? "gave no bytes" : "";
        default:
            return "";
    }
}

// A Boolean property is an answer.
std::string EmptinessText(const Value& result) {
    if (result.IsNumber() && result.ToDouble() == 0) return "is 0";
    if (result.kind() == Kind::String && result.text().empty()) return "is empty";
    return result.IsNil() ? "is Nil" : "";
}

// A number that was set and reads otherwise. Only fields are read: that has no effects.
std::string WrittenText(const MemberUse& use) {
    if (!use.assigned->IsNumber() || use.property->getter.fieldOffset < 0) return {};
    const Value kept = host::GetProperty(*use.property, use.self);
    if (kept.ToInt64() == use.assigned->ToInt64()) return {};
    return "is " + std::to_string(kept.ToInt64()) + " after it was set to " + std::to_string(use.assigned->ToInt64());
}

}  // namespace

std::unique_ptr<explain::Table> ReadTable(const std::string& pluginPath,
                                          const std::function<void(std::string_view)>& complain) {
    const std::string path = std::filesystem::path(pluginPath).replace_extension(".explain").string();
    std::ifstream file(path, std::ios::binary);
    if (!file) return nullptr;
    std::ostringstream text;
    text << file.rdbuf();
    try {
        return std::make_unique<explain::Table>(std::move(text).str());
    } catch (const explain::ExpressionError& error) {
        complain(path + ':' + error.what() + '\n');
        return nullptr;
    }
}

explain::Scope ScopeOf(const MemberUse& use, const Value& result) {
    explain::Scope scope;
    if (use.self) scope.names["self"] = {Value(host::Ref<host::Object>::Share(use.self)), "the " + use.Owner()->name()};
    for (std::size_t i = 0; i < use.arguments.size(); ++i) {
        const std::string& name = use.method->declaration.parameters[i].name;
        scope.names[name] = {use.arguments[i], name};
    }
    if (use.assigned) scope.names["value"] = {*use.assigned, "the value"};
    if (!result.IsNothing()) scope.names["result"] = {result, "the result"};
    return scope;
}

Explainer::Explainer(std::string path, std::set<const host::Class*> classes, std::function<void(std::string_view)> tell)
    : path_(std::move(path)), classes_(std::move(classes)), tell_(std::move(tell)) {
    const auto closedAt = [this](std::span<const explain::Subject> arguments) -> std::optional<Value> {
        const auto found = arguments.size() == 1 ? closed_.find(arguments[0].value.object()) : closed_.end();
        if (found == closed_.end()) return Value("");
        return Value(" in line " + std::to_string(found->second.line));
    };
    for (const host::Plugin* plugin : host::LoadedPlugins()) {
        const std::shared_ptr<explain::Table> table = ReadTable(plugin->path, tell_);
        if (!table) continue;
        table->Define("ClosedAt", closedAt);
        for (const host::Class* type : plugin->classes) tables_[type] = table;
    }
}

const explain::Section* Explainer::SectionOf(const MemberUse& use) const {
    const auto table = tables_.find(use.Owner());
    if (table == tables_.end()) return nullptr;
    const bool assigned = use.assigned != nullptr;
    const std::string& name = use.Owner()->name();
    return use.method ? table->second->Find(name, use.method->declaration, assigned)
                      : table->second->Find(name, use.property->name, assigned);
}

// The first precondition of a use that is broken; empty for none.
std::string Explainer::ReasonOf(const MemberUse& use, const Value& result, bool refused) const {
    const explain::Section* const section = SectionOf(use);
    if (!section) return {};
    const auto broken = tables_.at(use.Owner())->Broken(*section, ScopeOf(use, result), refused);
    return broken.empty() ? std::string() : broken.front().sentence;
}

Explainer::Finding Explainer::FindWithoutResult(const MemberUse& use) const {
    if (std::string reason = ReasonOf(use, {}, true); !reason.empty()) return {"did nothing", std::move(reason)};
    if (std::string reason = ReasonOf(use, {}, false); !reason.empty()) return {kSkipped, std::move(reason)};
    return {};
}

Explainer::Finding Explainer::FindWithResult(const MemberUse& use, const Value& result) const {
    const explain::Section* const section = SectionOf(use);
    std::string outcome = use.method ? RefusalText(result) : use.assigned ? WrittenText(use) : EmptinessText(result);
    if (section && !section->refusalText.empty())
        outcome = section->refusal.Holds(ScopeOf(use, result)) ? section->refusalText : "";
    if (!outcome.empty()) {
        std::string reason = ReasonOf(use, result, true);
        // A property may well be Nil or 0.
        if (reason.empty() && use.method) reason = "no reason for it is known";
        return reason.empty() ? Finding{} : Finding{std::move(outcome), std::move(reason)};
    }
    std::string reason = ReasonOf(use, result, false);
    return reason.empty() ? Finding{} : Finding{kSkipped, std::move(reason)};
}

void Explainer::Tell(const MemberUse& use, const Finding& finding) const {
    tell_(path_ + ':' + std::to_string(use.at.line) + ':' + std::to_string(use.at.column) + ": " + use.Name() + ' ' +
          finding.outcome + ": " + finding.reason + '\n');
}

void Explainer::OnNil(const MemberUse& use) {
    if (!IsOurs(use)) return;
    const char* deed = use.method ? "was called" : use.assigned ? "was set" : "was read";
    Tell(use, {deed, "there is Nil instead of a " + use.Owner()->name()});
}

void Explainer::Before(const MemberUse& use) {
    found_.push_back(IsOurs(use) && GivesNothing(use) ? FindWithoutResult(use) : Finding{});
}

// Which objects are closed, and which are new.
void Explainer::NoteLives(const MemberUse& use, const Value& result) {
    const explain::Section* const section = SectionOf(use);
    if (section && section->closes) closed_[use.self] = use.at;
    if (IsConstructor(use)) closed_.erase(use.self);
    if (result.object() != use.self) closed_.erase(result.object());
}

void Explainer::After(const MemberUse& use, const Value& result) {
    Finding finding = std::move(found_.back());
    found_.pop_back();
    if (!IsOurs(use)) return;
    NoteLives(use, result);
    if (host::Runtime::Get().HasRaised()) return;  // the exception says why
    if (!GivesNothing(use)) finding = FindWithResult(use, result);
    if (!finding.outcome.empty()) Tell(use, finding);
}

}  // namespace script
