// What a variant holds, as a number.
#include <charconv>
#include <cmath>
#include <string_view>

#include "host/calls/Call.h"
#include "host/calls/Variant.h"
#include "host/framework/NumberFunctions.h"
#include "host/framework/Support.h"

namespace host {

namespace {

std::int32_t TypeOfKind(Kind kind) {
    switch (kind) {
        case Kind::None:
            return kTypeNil;
        case Kind::Int64:
        case Kind::UInt64:
        case Kind::UInt32:
            return kTypeLong;
        case Kind::Single:
            return kTypeSingle;
        case Kind::Double:
            return kTypeDouble;
        case Kind::String:
            return kTypeString;
        case Kind::Boolean:
            return kTypeBoolean;
        case Kind::Color:
            return kTypeColor;
        case Kind::Object:
            return kTypeObject;
        default:
            return kTypeInteger;
    }
}

bool IsDate(const Object* object) {
    const Class* const date = Runtime::Get().FindClass("Date");
    return date && object->type->InheritsFrom(*date);
}

Value Held(sdk::Object* variant) { return Unbox(Ref<Object>::Share(FromPlugin(variant))); }

std::int32_t VarType(sdk::Object* variant) {
    const Value value = Held(variant);
    if (value.IsNil()) return kTypeNil;
    if (value.array()) return kTypeArray + TypeOfKind(value.array()->element.kind);
    return value.object() && IsDate(value.object()) ? std::int32_t{kTypeDate} : TypeOfKind(value.kind());
}

bool IsNull(sdk::Object* variant) { return VarType(variant) == kTypeNil; }
bool IsArray(sdk::Object* variant) { return Held(variant).array() != nullptr; }

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    text = text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

// A number, or a text that is one from its first sign to its last.
bool IsNumeric(sdk::Object* variant) {
    const Value value = Held(variant);
    if (value.kind() != Kind::String) return value.IsNumber();
    const std::string_view text = Trimmed(value.text());
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return !text.empty() && error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

}  // namespace

void RegisterVariantFunctions(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"VarType(value as variant) as integer", Guarded<&VarType>>(kFlags),
        sdk::SharedMethod<"IsNumeric(value as variant) as boolean", Guarded<&IsNumeric>>(kFlags),
        sdk::SharedMethod<"Type(extends value as variant) as integer", Guarded<&VarType>>(kFlags),
        sdk::SharedMethod<"IsNull(extends value as variant) as boolean", Guarded<&IsNull>>(kFlags),
        sdk::SharedMethod<"IsArray(extends value as variant) as boolean", Guarded<&IsArray>>(kFlags),
        sdk::SharedMethod<"IsNumeric(extends value as variant) as boolean", Guarded<&IsNumeric>>(kFlags),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
