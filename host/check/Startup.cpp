// A plug-in loaded with a resolver that writes down what passes.
#include "host/check/Startup.h"

#include <algorithm>
#include <cstring>

#include "host/calls/HostFunctionSlot.h"
#include "host/calls/PluginLoader.h"

namespace host::check {

namespace {

Startup& Record() {
    static auto* const record = new Startup;
    return *record;
}

sdk::AnyFunction Resolve(const char* name) {
    auto& names = Record().names;
    if (name && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    return reinterpret_cast<sdk::Resolver>(Runtime::Entry(sdk::kResolverService))(name);
}

sdk::AnyFunction Enter(const char* service) {
    Record().services.push_back(service ? service : "");
    if (!Runtime::Entry(service)) return nullptr;
    return reinterpret_cast<sdk::AnyFunction>(&Resolve);
}

void RecordVersion() {
    using Slot = HostFunctionSlot<sdk::kRegisterPluginVersion>;
    static Slot::Function before;
    before = Slot::Replace([](std::int32_t version) {
        Record().steps.push_back(sdk::kRegisterPluginVersion.name + (" " + std::to_string(version)));
        before(version);
    });
}

void RecordClasses() {
    using Slot = HostFunctionSlot<sdk::kPluginRegisterClass>;
    static Slot::Function before;
    before = Slot::Replace([](sdk::ClassDefinition* definition) {
        const char* const name = definition && definition->name ? definition->name : "";
        Record().steps.push_back(sdk::kPluginRegisterClass.name + (" " + std::string(name)));
        if (definition) Record().definitions.push_back(definition);
        return before(definition);
    });
}

}  // namespace

const Startup& StartRecorded(const std::string& path) {
    static bool started = false;
    if (started) return Record();
    started = true;
    RecordVersion();
    RecordClasses();
    try {
        Record().classes = LoadPlugin(path, &Enter).classes;
    } catch (const LoadError& error) {
        Record().problem = error.what();
    }
    return Record();
}

}  // namespace host::check
