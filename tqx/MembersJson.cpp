#include "tqx/MembersJson.h"

#include <cstdio>

namespace tqx {

namespace {

using Lines = std::vector<std::string>;

std::string List(const Lines& items, const std::string& indent) {
    if (items.empty()) return "[]";
    std::string text = "[";
    for (std::size_t i = 0; i < items.size(); ++i) text += (i ? ",\n" : "\n") + indent + "  " + items[i];
    return text + '\n' + indent + ']';
}

std::string Flag(bool value) { return value ? "true" : "false"; }

std::string ValueAsJson(const host::Value& value) {
    if (value.kind() == host::Kind::Boolean) return Flag(value.ToBoolean());
    if (value.IsNil() || value.IsNothing()) return "null";
    if (value.IsNumber()) return host::Describe(value);
    return JsonText(value.kind() == host::Kind::String ? std::string(value.text()) : host::Describe(value));
}

std::string ParameterAsJson(const host::Parameter& parameter) {
    std::string text = "{\"name\": " + JsonText(parameter.name) + ", \"type\": " + JsonText(TypeName(parameter.type));
    if (parameter.optional) text += ", \"default\": " + ValueAsJson(parameter.defaultValue);
    return text + '}';
}

std::string DeclarationAsJson(const host::Declaration& declaration) {
    std::string text = "\"declaration\": " + JsonText(SpelledDeclaration(declaration)) +
                       ", \"name\": " + JsonText(declaration.name) + ", \"parameters\": [";
    for (std::size_t i = 0; i < declaration.parameters.size(); ++i)
        text += (i ? ", " : "") + ParameterAsJson(declaration.parameters[i]);
    const std::string result = TypeName(declaration.result);
    return text + "], \"result\": " + (result.empty() ? "null" : JsonText(result));
}

std::string MethodAsJson(const host::Method& method) {
    return '{' + DeclarationAsJson(method.declaration) + ", \"flags\": " + std::to_string(method.flags) +
           ", \"assignable\": " + Flag(method.assignable()) + '}';
}

std::string PropertyAsJson(const host::Property& property) {
    return "{\"name\": " + JsonText(property.name) + ", \"type\": " + JsonText(TypeName(property.type)) +
           ", \"flags\": " + std::to_string(property.flags) + ", \"readable\": " + Flag(property.readable()) +
           ", \"writable\": " + Flag(property.writable()) + '}';
}

std::string ConstantAsJson(const host::Constant& constant) {
    return "{\"name\": " + JsonText(constant.name) + ", \"value\": " + ValueAsJson(constant.value) +
           ", \"declaration\": " + JsonText(constant.declaration) + '}';
}

std::string ClassAsJson(const host::Class& type, std::string_view only) {
    const auto wanted = [&](std::string_view name) { return only.empty() || host::SameName(name, only); };
    Lines constructors, methods, shared, properties, constants, events;
    for (const host::Method& method : type.methods()) {
        if (!wanted(method.declaration.name)) continue;
        const bool constructor = host::SameName(method.declaration.name, "Constructor");
        (constructor ? constructors : methods).push_back(MethodAsJson(method));
    }
    for (const host::Method& method : type.sharedMethods())
        if (wanted(method.declaration.name)) shared.push_back(MethodAsJson(method));
    for (const host::Property& property : type.properties())
        if (wanted(property.name)) properties.push_back(PropertyAsJson(property));
    for (const host::Constant& constant : type.constants())
        if (wanted(constant.name)) constants.push_back(ConstantAsJson(constant));
    for (const host::Event& event : type.events())
        if (wanted(event.declaration.name)) events.push_back('{' + DeclarationAsJson(event.declaration) + '}');
    const std::string indent = "      ";
    return "{\n" + indent + "\"name\": " + JsonText(type.name()) + ",\n" + indent +
           "\"superclass\": " + (type.superclass() ? JsonText(type.superclass()->name()) : "null") + ",\n" + indent +
           "\"constructors\": " + List(constructors, indent) + ",\n" + indent +
           "\"methods\": " + List(methods, indent) + ",\n" + indent + "\"sharedMethods\": " + List(shared, indent) +
           ",\n" + indent + "\"properties\": " + List(properties, indent) + ",\n" + indent +
           "\"constants\": " + List(constants, indent) + ",\n" + indent + "\"events\": " + List(events, indent) +
           "\n    }";
}

host::Type Spelled(host::Type type) {
    if (const host::Class* known = host::Runtime::Get().FindClass(type.className)) type.className = known->name();
    return type;
}

}  // namespace

std::string TypeName(const host::Type& type) { return host::TypeText(Spelled(type)); }

std::string SpelledDeclaration(host::Declaration declaration) {
    for (host::Parameter& parameter : declaration.parameters) parameter.type = Spelled(parameter.type);
    declaration.result = Spelled(declaration.result);
    return host::DeclarationText(declaration);
}

std::string JsonText(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char code[8];
            std::snprintf(code, sizeof(code), "\\u%04x", static_cast<unsigned>(c));
            result += code;
        } else {
            result += c;
        }
    }
    return result + '"';
}

std::string ClassesAsJson(const std::vector<const host::Class*>& classes, std::string_view member) {
    Lines items;
    for (const host::Class* type : classes) items.push_back(ClassAsJson(*type, member));
    return "{\n  \"classes\": " + List(items, "  ") + "\n}\n";
}

}  // namespace tqx
