// The reference of a plug-in, from nothing but the records that it registered.
#include "host/calls/PluginLoader.h"
#include "host/calls/Runtime.h"
#include "host/reference/Reference.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"

namespace tqx {

namespace {

// Without a name the classes of plug-ins; any class, also of the framework, may be named.
std::vector<const host::Class*> ClassesFor(const std::string& wanted) {
    if (!wanted.empty()) {
        const host::Class* named = host::Runtime::Get().FindClass(wanted.substr(0, wanted.find('.')));
        if (named) return {named};
    }
    std::vector<const host::Class*> classes;
    for (const host::Plugin* plugin : host::LoadedPlugins())
        classes.insert(classes.end(), plugin->classes.begin(), plugin->classes.end());
    return classes;
}

}  // namespace

int Members(const Settings& settings, const MembersSettings& members) {
    if (!LoadPlugin(settings)) return 1;
    std::string text;
    const std::vector<const host::Class*> classes = ClassesFor(members.wanted);
    const bool found = host::DescribeClasses(classes, {members.wanted, members.json}, text);
    if (found)
        WriteOutput(text);
    else
        Complain(text);
    return found ? 0 : 1;
}

}  // namespace tqx
