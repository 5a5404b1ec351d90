// A script found, checked and run, from its words to its exit code.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <optional>

#include "host/calls/PluginLoader.h"
#include "host/framework/Application.h"
#include "host/framework/Output.h"
#include "host/script/Explain.h"
#include "host/script/Machine.h"
#include "host/script/ReadSource.h"
#include "host/script/Script.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"
#include "tqx/PluginFiles.h"
#include "tqx/Signals.h"
#include "tqx/StatusLine.h"

namespace tqx {

namespace {

// The place of the plug-in in the build tree and in an installation, from the command's own.
std::string OwnPlugin() {
    std::error_code error;
    const std::filesystem::path command = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return "lib/tqx/PictureTQX.so";
    return (command.parent_path().parent_path() / "lib" / "tqx" / "PictureTQX.so").string();
}

// A script whose output is lost has nothing more to do.
void Print(std::string_view line) {
    if (!WriteLine(line)) throw script::Terminated{1};
}

}  // namespace

std::string PluginPath(const Settings& settings) { return settings.plugin.empty() ? OwnPlugin() : settings.plugin; }

bool LoadPlugin(const Settings& settings) {
    try {
        host::LoadPlugin(PluginPath(settings));
        return true;
    } catch (const host::LoadError& error) {
        Complain(std::string("tqx: ") + error.what() + '\n');
        return false;
    }
}

namespace {

std::set<const host::Class*> ClassesOfPlugins() {
    std::set<const host::Class*> classes;
    for (const host::Plugin* plugin : host::LoadedPlugins())
        classes.insert(plugin->classes.begin(), plugin->classes.end());
    return classes;
}

std::optional<script::Source> SourceOf(const RunSettings& run) {
    if (run.code) return script::Source{"<code>", *run.code};
    return script::ReadSource(run.script, Complain);
}

}  // namespace

int CheckSyntax(const Settings& settings, const std::vector<std::string>& scripts) {
    if (!LoadPlugin(settings)) return 1;
    bool sound = true;
    for (const std::string& script : scripts) {
        const auto source = script::ReadSource(script, Complain);
        sound &= source && script::CheckScript(*source, Complain);
    }
    return sound ? 0 : 1;
}

int Run(const Settings& settings, const RunSettings& run) {
    const auto source = SourceOf(run);
    if (!source || !LoadPlugin(settings)) return 1;
    if (run.onlyCheck) return script::CheckScript(*source, Complain) ? 0 : 1;
    host::SetApplicationArguments(run.arguments);
    host::DefaultImageReadSettings() = {run.maxPixels, !run.noOrientation};
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each line is seen when it is printed, in a pipe too
    NotePluginFiles();
    HandleSignals();
    const bool onTerminal = isatty(STDERR_FILENO) != 0;
    StatusLine status(onTerminal);
    const auto complain = [&status](std::string_view text) { status.Around([text] { Complain(text); }); };
    std::optional<script::Explainer> explainer;  // its tables take longer to read than a short script to run
    script::RunOptions options;
    options.print = [&status](std::string_view line) { status.Around([line] { Print(line); }); };
    options.write = [&status](std::string_view text) { status.Around([text] { host::WriteStandardOutput(text); }); };
    options.complain = complain;
    if (onTerminal) options.observers.push_back(&status);
    options.leaks = run.leaks;
    if (run.explain) options.observers.push_back(&explainer.emplace(source->path, ClassesOfPlugins(), complain));
    return EndAfterSignals(script::RunScript(*source, options));
}

}  // namespace tqx
