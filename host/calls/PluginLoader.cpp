// Opens a library, finds its entry point and keeps it loaded.
#include "host/calls/PluginLoader.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "host/messages/LoadMessages.h"

namespace host {

namespace {

std::vector<std::unique_ptr<Plugin>>& Plugins() {
    static auto* plugins = new std::vector<std::unique_ptr<Plugin>>;
    return *plugins;
}

void* Open(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) throw LoadError(kLoadSays.none(path));
    if (std::filesystem::is_directory(path, ignored)) throw LoadError(kLoadSays.folder(path));
    void* library = dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw LoadError(kLoadSays.cannotLoad(path, dlerror()));
    return library;
}

sdk::PluginMain EntryPoint(void* library, const std::string& path) {
    void* symbol = dlsym(library, sdk::kPluginMainName);
    if (!symbol) throw LoadError(kLoadSays.noEntry(path, sdk::kPluginMainName, dlerror()));
    sdk::PluginMain entry = nullptr;
    std::memcpy(&entry, &symbol, sizeof(symbol));
    return entry;
}

}  // namespace

const Plugin& LoadPlugin(const std::string& path, sdk::EntryFunction entry) {
    std::error_code error;
    const std::string whole = std::filesystem::canonical(path, error).string();
    for (const auto& plugin : Plugins())
        if (!error && plugin->path == whole) return *plugin;
    Runtime& runtime = Runtime::Get();
    void* library = Open(path);
    const sdk::PluginMain main = EntryPoint(library, path);
    const std::size_t before = runtime.Classes().size();
    runtime.ClearRefusal();
    main(entry);
    // The library stays: classes that it registered before a refusal are in use by the runtime.
    if (!runtime.LastRefusal().empty()) throw LoadError(kLoadSays.refused(path, runtime.LastRefusal()));
    const std::vector<const Class*> classes = runtime.Classes();
    if (classes.size() == before) throw LoadError(kLoadSays.noClass(path));
    Plugins().push_back(
        std::make_unique<Plugin>(Plugin{whole, {classes.begin() + static_cast<long>(before), classes.end()}}));
    return *Plugins().back();
}

std::vector<const Plugin*> LoadedPlugins() {
    std::vector<const Plugin*> plugins;
    for (const auto& plugin : Plugins()) plugins.push_back(plugin.get());
    return plugins;
}

}  // namespace host
