// Listens to calls and keeps the sentence for the last refusal.
#include "python/native/Explanation.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "host/calls/PluginLoader.h"
#include "host/script/Explain.h"
#include "python/native/Gate.h"

namespace pytqx {

namespace {

using host::Value;
using script::MemberUse;

thread_local std::string lastExplanation;

py::object& Listener() {
    static auto* const listener = new py::object(py::none());
    return *listener;
}

// Sentences begin with the place in a script, which there is none of here.
std::string WithoutPlace(std::string_view sentence) {
    constexpr std::string_view place = ":0:0: ";
    if (sentence.starts_with(place)) sentence.remove_prefix(place.size());
    if (sentence.ends_with('\n')) sentence.remove_suffix(1);
    return std::string(sentence);
}

void Tell(std::string_view sentence) {
    lastExplanation = WithoutPlace(sentence);
    if (Listener().is_none()) return;
    const WithInterpreter interpreter;
    Listener()(lastExplanation);
}

// What the plug-ins loaded so far offer to explain their members with.
struct Explanations {
    std::set<const host::Class*> classes;
    std::map<const host::Class*, std::shared_ptr<script::explain::Table>> tables;
    std::unique_ptr<script::Explainer> explainer;

    Explanations() {
        for (const host::Plugin* plugin : host::LoadedPlugins()) {
            classes.insert(plugin->classes.begin(), plugin->classes.end());
            const std::shared_ptr<script::explain::Table> table = script::ReadTable(plugin->path, [](auto) {});
            if (!table) continue;
            table->Define("ClosedAt", [](auto) { return std::optional(Value("")); });
            for (const host::Class* type : plugin->classes) tables[type] = table;
        }
        explainer = std::make_unique<script::Explainer>("", classes, &Tell);
    }
};

std::unique_ptr<Explanations>& Current() {
    static auto* const current = new std::unique_ptr<Explanations>;
    return *current;
}

Explanations& All() {
    if (!Current()) Current() = std::make_unique<Explanations>();
    return *Current();
}

bool IsConstructor(const MemberUse& use) { return host::SameName(use.method->declaration.name, "Constructor"); }

// Whether the table knows that this constructor failed.
bool ConstructorRefused(const MemberUse& use) {
    const auto table = All().tables.find(use.Owner());
    if (table == All().tables.end()) return false;
    const script::explain::Section* const section =
        table->second->Find(use.Owner()->name(), use.method->declaration, false);
    return section && !section->refusalText.empty() && section->refusal.Holds(script::ScopeOf(use, Value()));
}

bool Refused(const MemberUse& use, const Value& result) {
    if (use.assigned || !use.Owner()) return false;
    switch (use.method->declaration.result.kind) {
        case host::Kind::None:
            return IsConstructor(use) && ConstructorRefused(use);
        case host::Kind::Object:
            return result.IsNil();
        case host::Kind::Boolean:
            return !result.ToBoolean();
        case host::Kind::String:
            return !result.string();
        default:
            return false;
    }
}

}  // namespace

Explaining::Explaining(const MemberUse& use) : use_(use), listening_(!Listener().is_none()) {
    if (listening_) All().explainer->Before(use_);
}

// A call that ended in an exception is told of by it.
Explaining::~Explaining() {
    if (!listening_ || returned_) return;
    MemberUse nothing = use_;
    static const host::Class nobody("", nullptr);
    static host::Method method;
    method.owner = &nobody;
    nothing.method = &method;
    nothing.arguments = {};
    All().explainer->After(nothing, Value());
}

void Explaining::Returned(const Value& result) const {
    returned_ = true;
    if (!listening_ && !Refused(use_, result)) return;
    if (!listening_) All().explainer->Before(use_);
    All().explainer->After(use_, result);
}

std::string LastExplanation() { return lastExplanation; }

py::object Listen(py::object listener) { return std::exchange(Listener(), std::move(listener)); }

void ForgetExplainer() { Current().reset(); }

}  // namespace pytqx
