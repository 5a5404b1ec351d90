// The reference of a plug-in, from nothing but the records that it registered.
#include <cstdio>
#include <string_view>

#include "host/PluginLoader.h"
#include "host/Runtime.h"
#include "tqx/Commands.h"
#include "tqx/MembersJson.h"

namespace tqx {

namespace {

constexpr std::size_t kLineWidth = 79;

void PrintText(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// Breaks a line after a comma or a bracket; what follows is set in by four more.
std::string Wrapped(const std::string& text) {
    std::string result, line = "  ";
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = at;
        do end = text.find(' ', end + 1);
        while (end != std::string::npos && text[end - 1] != ',' && text[end - 1] != ')');
        const std::string piece = text.substr(at, end - at);
        if (at > 0 && line.size() + 1 + piece.size() > kLineWidth) {
            result += line + '\n';
            line = "      " + piece;
        } else {
            line += (at > 0 ? " " : "") + piece;
        }
        at = end == std::string::npos ? text.size() : end + 1;
    }
    return result + line + '\n';
}

// Members that take or give pictures of the host are not portable to every one.
std::string_view MarkOf(std::int32_t flags) { return flags & sdk::kMemberPortable ? "" : " *"; }

std::string LineOf(const host::Method& method) {
    std::string line = SpelledDeclaration(method.declaration);
    if (method.assignable()) line += " (assignable)";
    return Wrapped(line.append(MarkOf(method.flags)));
}

std::string LineOf(const host::Property& property) {
    std::string line = property.name + " As " + TypeName(property.type);
    if (!property.writable()) line += " (read-only)";
    return Wrapped(line.append(MarkOf(property.flags)));
}

bool IsConstructor(const host::Method& method) { return host::SameName(method.declaration.name, "Constructor"); }

struct Group {
    std::string title;
    std::string lines;
};

// Everything of a class, or only what has a name.
std::vector<Group> GroupsOf(const host::Class& type, std::string_view only) {
    const auto wanted = [&](std::string_view name) { return only.empty() || host::SameName(name, only); };
    std::vector<Group> groups = {{"Constructors", ""}, {"Methods", ""},   {"Shared methods", ""},
                                 {"Properties", ""},   {"Constants", ""}, {"Events", ""}};
    for (const host::Method& method : type.methods())
        if (wanted(method.declaration.name)) groups[IsConstructor(method) ? 0 : 1].lines += LineOf(method);
    for (const host::Method& method : type.sharedMethods())
        if (wanted(method.declaration.name)) groups[2].lines += LineOf(method);
    for (const host::Property& property : type.properties())
        if (wanted(property.name)) groups[3].lines += LineOf(property);
    for (const host::Constant& constant : type.constants())
        if (wanted(constant.name)) groups[4].lines += Wrapped(constant.name + " = " + host::Describe(constant.value));
    for (const host::Event& event : type.events())
        if (wanted(event.declaration.name)) groups[5].lines += Wrapped(SpelledDeclaration(event.declaration));
    std::erase_if(groups, [](const Group& group) { return group.lines.empty(); });
    return groups;
}

// False when the class has no member of the name.
bool PrintClass(const host::Class& type, const std::string& member) {
    const std::vector<Group> groups = GroupsOf(type, member);
    if (groups.empty() && !member.empty()) return false;
    std::string text = type.name();
    if (type.superclass()) text += " inherits " + type.superclass()->name();
    text += '\n';
    for (const Group& group : groups) text += '\n' + group.title + '\n' + group.lines;
    PrintText(text + '\n');
    return true;
}

// Classes of plug-ins, or any class that is named.
std::vector<const host::Class*> ClassesFor(const std::string& name) {
    if (!name.empty()) {
        const host::Class* type = host::Runtime::Get().FindClass(name);
        return type ? std::vector<const host::Class*>{type} : std::vector<const host::Class*>{};
    }
    std::vector<const host::Class*> classes;
    for (const host::Plugin* plugin : host::LoadedPlugins())
        classes.insert(classes.end(), plugin->classes.begin(), plugin->classes.end());
    return classes;
}

}  // namespace

int Members(const Settings& settings, const MembersSettings& members) {
    if (!LoadPlugin(settings)) return 1;
    const std::size_t dot = members.wanted.find('.');
    const std::string name = members.wanted.substr(0, dot);
    const std::string member = dot == std::string::npos ? "" : members.wanted.substr(dot + 1);
    const std::vector<const host::Class*> classes = ClassesFor(name);
    bool found = !classes.empty();
    if (members.json) {
        PrintText(ClassesAsJson(classes, member));
    } else {
        for (const host::Class* type : classes) found &= PrintClass(*type, member);
        if (found) PrintText("* takes or gives a picture of the host\n");
    }
    if (!found) std::fprintf(stderr, "tqx: there is no %s\n", members.wanted.c_str());
    return found ? 0 : 1;
}

}  // namespace tqx
