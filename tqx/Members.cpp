// The reference of a plug-in, from nothing but the records that it registered, and of the framework.
#include <algorithm>

#include "host/calls/PluginLoader.h"
#include "host/calls/Runtime.h"
#include "host/reference/Reference.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"

namespace tqx {

namespace {

std::vector<const host::Class*> ClassesOfPlugins() {
    std::vector<const host::Class*> classes;
    for (const host::Plugin* plugin : host::LoadedPlugins())
        classes.insert(classes.end(), plugin->classes.begin(), plugin->classes.end());
    return classes;
}

std::vector<const host::Class*> ClassesOfFramework() {
    const std::vector<const host::Class*> others = ClassesOfPlugins();
    std::vector<const host::Class*> classes = host::Runtime::Get().Classes();
    std::erase_if(classes,
                  [&](const auto* type) { return std::find(others.begin(), others.end(), type) != others.end(); });
    return classes;
}

// The plug-in's classes in full, and the names of all else.
bool DescribeAll(const MembersSettings& members, std::string& text) {
    const bool found = host::DescribeClasses(ClassesOfPlugins(), {"", members.json}, text);
    if (members.json) return found;
    text += '\n' + host::ListNames(ClassesOfFramework()) + "\nOne of them: tqx members NAME\n";
    return found;
}

// A class, a function or a member of that name. A class may be of the framework, a member alone is
// looked for in the plug-in.
bool DescribeOne(const MembersSettings& members, std::string& text) {
    const host::ReferenceRequest request{members.wanted, members.json};
    if (const host::Class* named = host::Runtime::Get().FindClass(members.wanted.substr(0, members.wanted.find('.'))))
        return host::DescribeClasses({&named, 1}, request, text);
    return host::DescribeFunction(members.wanted, request, text) ||
           host::DescribeClasses(ClassesOfPlugins(), request, text) ||
           host::DescribeClasses(ClassesOfFramework(), request, text);
}

}  // namespace

int Members(const Settings& settings, const MembersSettings& members) {
    if (!LoadPlugin(settings)) return 1;
    std::string text;
    const bool found = members.wanted.empty() ? DescribeAll(members, text) : DescribeOne(members, text);
    if (found)
        WriteOutput(text);
    else
        Complain(text);
    return found ? 0 : 1;
}

}  // namespace tqx
