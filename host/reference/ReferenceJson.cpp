// Classes and members written out as JSON.
#include "host/reference/ReferenceJson.h"

#include <functional>
#include <nlohmann/json.hpp>

#include "host/calls/Declaration.h"
#include "host/reference/Descriptions.h"
#include "host/reference/Spelling.h"

namespace host {

namespace {

using Json = nlohmann::ordered_json;
using Wanted = std::function<bool(std::string_view name)>;

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json JsonOf(const Value& value) {
    if (value.kind() == Kind::Boolean) return value.ToBoolean();
    if (value.kind() == Kind::String) return std::string(value.text());
    if (IsRealKind(value.kind())) return value.ToDouble();
    if (value.IsWhole() || value.kind() == Kind::Color) return value.ToInt64();
    return {};
}

Json JsonOf(const Parameter& parameter) {
    Json json = {
        {"name", parameter.name}, {"type", TypeText(SpelledType(parameter.type))}, {"optional", parameter.optional}};
    if (parameter.optional) json["default"] = JsonOf(parameter.defaultValue);
    return json;
}

Json JsonOf(const Declaration& declaration) {
    Json parameters = Json::array();
    for (const Parameter& parameter : declaration.parameters) parameters.push_back(JsonOf(parameter));
    return {{"name", declaration.name},
            {"declaration", DeclarationText(SpelledTypes(declaration))},
            {"parameters", std::move(parameters)},
            {"result", TextOrNull(TypeText(SpelledType(declaration.result)))}};
}

Json JsonOf(const Method& method) {
    Json json = JsonOf(method.declaration);
    json["assignable"] = method.assignable();
    json["flags"] = method.flags;
    return json;
}

// "function", "field" or null.
Json JsonOf(const sdk::Accessor& accessor) {
    if (accessor.function) return "function";
    return accessor.fieldOffset >= 0 ? Json("field") : Json();
}

Json JsonOf(const Property& property) {
    return {{"name", property.name},
            {"type", TypeText(SpelledType(property.type))},
            {"read", JsonOf(property.getter)},
            {"write", JsonOf(property.setter)},
            {"flags", property.flags}};
}

Json JsonOf(const Event& event) { return JsonOf(event.declaration); }

Json JsonOf(const Constant& constant) {
    return {{"name", constant.name}, {"value", JsonOf(constant.value)}, {"declaration", constant.declaration}};
}

const std::string& NameOf(const Method& method) { return method.declaration.name; }
const std::string& NameOf(const Property& property) { return property.name; }
const std::string& NameOf(const Event& event) { return event.declaration.name; }
const std::string& NameOf(const Constant& constant) { return constant.name; }

// The sentence and the example of what is described.
void AddDescription(Json& json, const std::string& name) {
    const Description* const description = FindDescription(name);
    if (!description) return;
    json["description"] = std::string(description->sentence);
    json["example"] = description->example;
}

template <class Member>
Json JsonOf(const std::deque<Member>& members, const Class& type, const Wanted& wanted) {
    Json json = Json::array();
    for (const Member& member : members) {
        if (!wanted(NameOf(member))) continue;
        json.push_back(JsonOf(member));
        AddDescription(json.back(), type.name() + '.' + NameOf(member));
    }
    return json;
}

Json JsonOf(const Class& type, const Wanted& wanted) {
    Json json = {{"name", type.name()}, {"superclass", TextOrNull(type.superclass() ? type.superclass()->name() : "")}};
    if (const sdk::ClassDefinition* definition = type.definition()) {
        json["version"] = definition->version;
        json["flags"] = definition->flags;
        json["instanceDataSize"] = definition->instanceDataSize;
    }
    AddDescription(json, type.name());
    json["methods"] = JsonOf(type.methods(), type, wanted);
    json["sharedMethods"] = JsonOf(type.sharedMethods(), type, wanted);
    json["properties"] = JsonOf(type.properties(), type, wanted);
    json["events"] = JsonOf(type.events(), type, wanted);
    json["constants"] = JsonOf(type.constants(), type, wanted);
    return json;
}

// Bytes of a plug-in that are no UTF-8 become U+FFFD.
std::string TextOf(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

std::string Write(std::span<const Class* const> classes, const Wanted& wanted) {
    Json json = {{"classes", Json::array()}};
    for (const Class* type : classes) json["classes"].push_back(JsonOf(*type, wanted));
    return TextOf(json);
}

}  // namespace

std::string ClassesAsJson(std::span<const Class* const> classes) {
    return Write(classes, [](std::string_view) { return true; });
}

std::string MemberAsJson(std::span<const Class* const> classes, std::string_view name) {
    return Write(classes, [name](std::string_view candidate) { return SameName(candidate, name); });
}

std::string FunctionsAsJson(std::span<const Method* const> functions) {
    Json json = {{"functions", Json::array()}};
    for (const Method* function : functions) {
        json["functions"].push_back(JsonOf(function->declaration));
        AddDescription(json["functions"].back(), function->declaration.name);
    }
    return TextOf(json);
}

}  // namespace host
