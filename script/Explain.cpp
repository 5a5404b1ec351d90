#include "script/Explain.h"

#include <algorithm>
#include <optional>

#include "host/Call.h"

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

// Why an object can't be worked on.
std::string ReasonAgainstObject(host::Object* object, const std::string& what, const ClosedObjects& closed) {
    if (const auto found = closed.find(object); found != closed.end())
        return what + " was closed in line " + std::to_string(found->second.line);
    if (NumberProperty(object, "Valid") == 0) return what + " is not valid: its constructor failed";
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

std::string ResultText(const host::Method& method, host::Object* self, const Value& result) {
    if (IsConstructor(method)) return NumberProperty(self, "Valid") == 0 ? "made a picture that is not valid" : "";
    switch (method.declaration.result.kind) {
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

}  // namespace

std::string ReasonAgainst(const host::Method& method, host::Object* self, std::span<const Value> arguments,
                          const ClosedObjects& closed) {
    std::string reason;
    if (self && !IsConstructor(method)) reason = ReasonAgainstObject(self, "the " + self->type->name(), closed);
    const std::size_t count = std::min(arguments.size(), method.declaration.parameters.size());
    std::string nil;  // the weakest reason: some methods take it for an argument left out
    for (std::size_t i = 0; i < count && reason.empty(); ++i) {
        const host::Parameter& parameter = method.declaration.parameters[i];
        const Value& value = arguments[i];
        if (value.object()) reason = ReasonAgainstObject(value.object(), "the argument " + parameter.name, closed);
        if (value.kind() == Kind::Integer) reason = ReasonAgainstNumber(method, self, parameter, value.ToInt64());
        if (value.kind() == Kind::Array && host::UpperBound(value.array()) < 0)
            reason = "the array " + parameter.name + " is empty";
        if (value.IsNil() && !MayBeNil(method, i) && nil.empty()) nil = "the argument " + parameter.name + " is Nil";
    }
    return reason.empty() ? nil : reason;
}

void Explainer::BeforeCall(const host::Method& method, host::Object* self, std::span<const Value> arguments, Position) {
    const bool ours = method.owner && classes_.contains(method.owner);
    reasons_.push_back(ours ? ReasonAgainst(method, self, arguments, closed_) : std::string());
}

void Explainer::AfterCall(const host::Method& method, host::Object* self, std::span<const Value>, const Value& result,
                          Position at) {
    std::string reason = std::move(reasons_.back());
    reasons_.pop_back();
    if (!method.owner || !classes_.contains(method.owner)) return;
    if (SameName(method.declaration.name, "Close")) {
        closed_[self] = at;
        return;
    }
    if (IsConstructor(method)) closed_.erase(self);
    closed_.erase(result.object());
    const std::string outcome = ResultText(method, self, result);
    const bool gives = method.declaration.result.kind != Kind::None || IsConstructor(method);
    if (outcome.empty() || (!gives && reason.empty())) return;
    if (reason.empty()) reason = "the reason can't be seen from outside";
    tell_(path_ + ':' + std::to_string(at.line) + ':' + std::to_string(at.column) + ": " + method.declaration.name +
          ' ' + outcome + ": " + reason + '\n');
}

}  // namespace script
