// The host as these plug-ins see it: each function is looked up by name when it is called.
#pragma once

#include "sdk/HostFunctions.h"

#define TEST_PLUGIN_ENTRY extern "C" __attribute__((visibility("default"))) std::intptr_t REALPluginMain

namespace {

sdk::Resolver resolver = nullptr;

inline void KeepResolver(sdk::EntryFunction entry) {
    resolver = reinterpret_cast<sdk::Resolver>(entry(sdk::kResolverService));
}

template <class Result, class... Declared, class... Arguments>
Result CallHost(const sdk::HostFunctionName<Result(Declared...)>& name, Arguments... arguments) {
    auto* function = reinterpret_cast<Result (*)(Declared...)>(resolver(name.name));
    return function(arguments...);
}

}  // namespace
