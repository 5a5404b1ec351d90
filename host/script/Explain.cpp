#include "host/script/Explain.h"

#include <algorithm>
#include <optional>

#include "host/calls/Call.h"

namespace script {

namespace {

using host::Kind;
using host::SameName;
using host::Value;

bool IsConstructor(const host::Method& method) { return SameName(method.declaration.name, "Constructor"); }

std::optional<std::int64_t> NumberProperty(host::Object* object, std::string_view name) {
    const host::Property* property = object ? object->type->FindProperty(name) : nullptr;
    const bool field = property && property->getter.fieldOffset >= 0;  // reading one has no effects
    if (!field) return {};
    return host::GetProperty(*property, object).ToInt64();
}

// Why an object has nothing to give.
std::string ReasonAgainstState(host::Object* object, const std::string& what, const ClosedObjects& closed) {
    if (const auto found = closed.find(object); found != closed.end())
        return what + " was closed in line " + std::to_string(found->second.line);
    if (NumberProperty(object, "Valid") == 0) return what + " is not valid: its constructor failed";
    return {};
}

// Why an object can't be worked on.
std::string ReasonAgainstObject(host::Object* object, const std::string& what, const ClosedObjects& closed) {
    std::string reason = ReasonAgainstState(object, what, closed);
    if (!reason.empty()) return reason;
    for (const char* side : {"Width", "Height"})
        if (const auto size = NumberProperty(object, side); size && *size <= 0)
            return what + " has a " + side + " of " + std::to_string(*size);
    return {};
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && SameName(text.substr(text.size() - end.size()), end);
}

// A parameter called like a family of constants ("ImageFormat" of ImageFormatRGB, "matrix" of
// DitherLines4x4Matrix) takes one of them.
std::string ReasonAgainstConstant(const host::Class& type, const host::Parameter& parameter, std::int64_t value) {
    std::string_view name = parameter.name;
    if (name.size() > 3 && SameName(name.substr(0, 3), "the")) name.remove_prefix(3);
    if (name.size() < 4) return {};
    std::size_t family = 0;
    for (const host::Constant& constant : type.constants()) {
        const bool begins = constant.name.size() > name.size() && SameName(constant.name.substr(0, name.size()), name);
        if (!begins && !EndsWith(constant.name, name)) continue;
        ++family;
        if (constant.value.ToInt64() != value) continue;
        return EndsWith(constant.name, "Unknown") ? parameter.name + " is " + constant.name : std::string();
    }
    if (family < 2) return {};
    return parameter.name + " is " + std::to_string(value) + ", which is none of the constants of that name";
}

bool IsSize(std::string_view name) {
    return EndsWith(name, "width") || EndsWith(name, "height") || SameName(name, "w") || SameName(name, "h");
}

std::string ReasonAgainstNumber(const host::Method& method, host::Object* self, const host::Parameter& parameter,
                                std::int64_t value) {
    if (IsSize(parameter.name) && value <= 0) return parameter.name + " is " + std::to_string(value);
    if (SameName(parameter.name, "index")) {
        const auto height = NumberProperty(self, "Height");
        if (height && (value < 0 || value >= *height))
            return "index " + std::to_string(value) + " is not in 0 to " + std::to_string(*height - 1);
    }
    return ReasonAgainstConstant(*method.owner, parameter, value);
}

// A method that gives an object and takes one of that class first makes it when it gets nil.
bool MayBeNil(const host::Method& method, std::size_t index) {
    const host::Parameter& parameter = method.declaration.parameters[index];
    return parameter.optional || (index == 0 && parameter.type == method.declaration.result);
}

std::string ResultText(const MemberUse& use, const Value& result) {
    if (IsConstructor(*use.method))
        return NumberProperty(use.self, "Valid") == 0 ? "made a picture that is not valid" : "";
    if (use.assigned) return "did nothing";
    switch (use.method->declaration.result.kind) {
        case Kind::None:
            return "did nothing";
        case Kind::Object:
            return result.object() ? "" : "gave Nil";
        case Kind::Boolean:
            return result.ToBoolean() ? "" : "gave False";
        case Kind::String:
            return result.text().empty() ? "gave no bytes" : "";
        default:
            return "";
    }
}

// A number that only the plug-in sets is 0 while there is nothing to count. A Boolean is an
// answer.
std::string ReadText(const host::Property& property, const Value& result) {
    if (result.IsWhole() && !property.writable() && result.ToInt64() == 0) return "is 0";
    const bool reference = property.type.kind == Kind::Object || property.type.kind == Kind::Array;
    return reference && result.IsNil() ? "is Nil" : "";
}

// A property that can be read back without effects tells whether it took the value.
std::string WrittenText(const MemberUse& use) {
    if (!use.assigned->IsNumber()) return {};
    const auto kept = NumberProperty(use.self, use.Name());
    if (!kept || *kept == use.assigned->ToInt64()) return {};
    return "is " + std::to_string(*kept) + " after it was set to " + std::to_string(use.assigned->ToInt64());
}

// The state alone counts for properties: a picture without pixels has them all.
std::string ReasonAgainstProperty(const MemberUse& use, const ClosedObjects& closed) {
    std::string reason = ReasonAgainstState(use.self, "the " + use.self->type->name(), closed);
    if (reason.empty() && use.assigned && use.assigned->IsNumber() && use.assigned->ToDouble() < 0)
        reason = "the value is negative";
    return reason;
}

}  // namespace

std::string ReasonAgainst(const MemberUse& use, const ClosedObjects& closed) {
    std::string reason;
    if (use.property) return use.self ? ReasonAgainstProperty(use, closed) : reason;
    const host::Method& method = *use.method;
    if (use.self && !IsConstructor(method))
        reason = ReasonAgainstObject(use.self, "the " + use.self->type->name(), closed);
    const std::size_t count = std::min(use.arguments.size(), method.declaration.parameters.size());
    std::string nil;  // the weakest reason: some methods take it for an argument left out
    for (std::size_t i = 0; i < count && reason.empty(); ++i) {
        const host::Parameter& parameter = method.declaration.parameters[i];
        const Value& value = use.arguments[i];
        if (value.object()) reason = ReasonAgainstObject(value.object(), "the argument " + parameter.name, closed);
        if (value.kind() == Kind::Integer) reason = ReasonAgainstNumber(method, use.self, parameter, value.ToInt64());
        if (value.kind() == Kind::Array && host::UpperBound(value.array()) < 0)
            reason = "the array " + parameter.name + " is empty";
        if (value.IsNil() && !MayBeNil(method, i) && nil.empty()) nil = "the argument " + parameter.name + " is Nil";
    }
    if (use.assigned && use.assigned->IsNil()) nil = "the value is Nil";
    return reason.empty() ? nil : reason;
}

void Explainer::Tell(const MemberUse& use, const std::string& outcome, const std::string& reason) const {
    tell_(path_ + ':' + std::to_string(use.at.line) + ':' + std::to_string(use.at.column) + ": " + use.Name() + ' ' +
          outcome + ": " + reason + '\n');
}

void Explainer::OnNil(const MemberUse& use) {
    if (!IsOurs(use)) return;
    const char* deed = use.method ? "was called" : use.assigned ? "was set" : "was read";
    Tell(use, deed, "there is Nil instead of a " + use.Owner()->name());
}

void Explainer::Before(const MemberUse& use) {
    reasons_.push_back(IsOurs(use) ? ReasonAgainst(use, closed_) : std::string());
}

void Explainer::After(const MemberUse& use, const Value& result) {
    std::string reason = std::move(reasons_.back());
    reasons_.pop_back();
    if (!IsOurs(use)) return;
    if (use.property) {
        const std::string outcome = use.assigned ? WrittenText(use) : ReadText(*use.property, result);
        // A Nil or 0 without a reason is as good a value as any.
        const bool untold = outcome.empty() || (!use.assigned && reason.empty());
        if (!untold) Tell(use, outcome, reason.empty() ? "the reason can't be seen from outside" : reason);
        return;
    }
    const host::Method& method = *use.method;
    if (SameName(method.declaration.name, "Close")) {
        closed_[use.self] = use.at;
        return;
    }
    if (IsConstructor(method)) closed_.erase(use.self);
    closed_.erase(result.object());
    const std::string outcome = ResultText(use, result);
    const bool gives = (method.declaration.result.kind != Kind::None && !use.assigned) || IsConstructor(method);
    if (outcome.empty() || (!gives && reason.empty())) return;
    Tell(use, outcome, reason.empty() ? "the reason can't be seen from outside" : reason);
}

}  // namespace script
