#include "host/reference/ReferenceJson.h"

#include <functional>

#include "host/reference/Json.h"
#include "host/reference/Spelling.h"

namespace host {

namespace {

using Wanted = std::function<bool(std::string_view name)>;

void WriteValue(JsonWriter& json, const Value& value) {
    switch (value.kind()) {
        case Kind::None:
        case Kind::Array:
        case Kind::Object:
            json.Null();
            break;
        case Kind::Boolean:
            json.Boolean(value.ToBoolean());
            break;
        case Kind::String:
            json.Text(value.text());
            break;
        case Kind::Double:
        case Kind::Single:
            json.Number(value.ToDouble());
            break;
        default:
            json.Number(value.ToInt64());
    }
}

void WriteDeclaration(JsonWriter& json, const Declaration& declaration) {
    json.Key("name").Text(declaration.name);
    json.Key("declaration").Text(DeclarationText(SpelledTypes(declaration)));
    json.Key("parameters").BeginArray();
    for (const Parameter& parameter : declaration.parameters) {
        json.BeginObject();
        json.Key("name").Text(parameter.name);
        json.Key("type").Text(TypeText(SpelledType(parameter.type)));
        json.Key("optional").Boolean(parameter.optional);
        if (parameter.optional) WriteValue(json.Key("default"), parameter.defaultValue);
        json.EndObject();
    }
    json.EndArray();
    json.Key("result");
    if (declaration.result.kind == Kind::None)
        json.Null();
    else
        json.Text(TypeText(SpelledType(declaration.result)));
}

void WriteMethods(JsonWriter& json, const char* key, const std::deque<Method>& methods, const Wanted& wanted) {
    json.Key(key).BeginArray();
    for (const Method& method : methods) {
        if (!wanted(method.declaration.name)) continue;
        json.BeginObject();
        WriteDeclaration(json, method.declaration);
        json.Key("assignable").Boolean(method.assignable());
        json.Key("flags").Number(std::int64_t{method.flags});
        json.EndObject();
    }
    json.EndArray();
}

// "function", "field" or null.
void WriteAccess(JsonWriter& json, const sdk::Accessor& accessor) {
    if (accessor.function)
        json.Text("function");
    else if (accessor.fieldOffset >= 0)
        json.Text("field");
    else
        json.Null();
}

void WriteProperties(JsonWriter& json, const Class& type, const Wanted& wanted) {
    json.Key("properties").BeginArray();
    for (const Property& property : type.properties()) {
        if (!wanted(property.name)) continue;
        json.BeginObject();
        json.Key("name").Text(property.name);
        json.Key("type").Text(TypeText(SpelledType(property.type)));
        WriteAccess(json.Key("read"), property.getter);
        WriteAccess(json.Key("write"), property.setter);
        json.Key("flags").Number(std::int64_t{property.flags});
        json.EndObject();
    }
    json.EndArray();
}

void WriteEvents(JsonWriter& json, const Class& type, const Wanted& wanted) {
    json.Key("events").BeginArray();
    for (const Event& event : type.events()) {
        if (!wanted(event.declaration.name)) continue;
        json.BeginObject();
        WriteDeclaration(json, event.declaration);
        json.EndObject();
    }
    json.EndArray();
}

void WriteConstants(JsonWriter& json, const Class& type, const Wanted& wanted) {
    json.Key("constants").BeginArray();
    for (const Constant& constant : type.constants()) {
        if (!wanted(constant.name)) continue;
        json.BeginObject();
        json.Key("name").Text(constant.name);
        WriteValue(json.Key("value"), constant.value);
        json.Key("declaration").Text(constant.declaration);
        json.EndObject();
    }
    json.EndArray();
}

void WriteClass(JsonWriter& json, const Class& type, const Wanted& wanted) {
    json.BeginObject();
    json.Key("name").Text(type.name());
    json.Key("superclass");
    if (type.superclass())
        json.Text(type.superclass()->name());
    else
        json.Null();
    if (const sdk::ClassDefinition* definition = type.definition()) {
        json.Key("version").Number(std::int64_t{definition->version});
        json.Key("flags").Number(std::int64_t{definition->flags});
        json.Key("instanceDataSize").Number(std::int64_t{definition->instanceDataSize});
    }
    WriteMethods(json, "methods", type.methods(), wanted);
    WriteMethods(json, "sharedMethods", type.sharedMethods(), wanted);
    WriteProperties(json, type, wanted);
    WriteEvents(json, type, wanted);
    WriteConstants(json, type, wanted);
    json.EndObject();
}

std::string Write(std::span<const Class* const> classes, const Wanted& wanted) {
    JsonWriter json;
    json.BeginObject().Key("classes").BeginArray();
    for (const Class* type : classes) WriteClass(json, *type, wanted);
    json.EndArray().EndObject();
    return json.text() + "\n";
}

}  // namespace

std::string ClassesAsJson(std::span<const Class* const> classes) {
    return Write(classes, [](std::string_view) { return true; });
}

std::string MemberAsJson(std::span<const Class* const> classes, std::string_view name) {
    return Write(classes, [name](std::string_view candidate) { return SameName(candidate, name); });
}

std::string FunctionsAsJson(std::span<const Method* const> functions) {
    JsonWriter json;
    json.BeginObject().Key("functions").BeginArray();
    for (const Method* function : functions) {
        json.BeginObject();
        WriteDeclaration(json, function->declaration);
        json.EndObject();
    }
    json.EndArray().EndObject();
    return json.text() + "\n";
}

}  // namespace host
