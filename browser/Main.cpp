// The desk host for a web page: one run of a script, with the page's files as its own.
//
//   main run SCRIPT [ARG...]       runs it; 0, what it handed to Quit, or 1
//   main explain SCRIPT [ARG...]   the same, and says why members refuse; a script takes longer then
//   main check SCRIPT              only checks it
//   main members                   what the plug-in and the framework offer, as JSON
#include <emscripten.h>
#include <sys/stat.h>

#include <cstdio>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/calls/PluginLoader.h"
#include "host/framework/Application.h"
#include "host/framework/Framework.h"
#include "host/reference/ReferenceJson.h"
#include "host/script/Explain.h"
#include "host/script/Machine.h"
#include "host/script/ReadSource.h"
#include "host/script/Script.h"

namespace {

constexpr const char* kPlugin = "/lib/tqx/PictureTQX.so";

// Hands a line to the page, with the script's line that printed it; 0 where no script did.
EM_JS(void, TellLine, (int at, const char* text, std::size_t size),
      { Module['printed'](at, UTF8ArrayToString(HEAPU8, text, size)); });

struct Printer : script::MemberObserver {
    void Printed(std::string_view line, script::Position at) override { TellLine(at.line, line.data(), line.size()); }
};

void Complain(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

int Run(const script::Source& source, script::MemberObserver* explainer, std::vector<std::string> arguments) {
    host::SetApplicationArguments(std::move(arguments));
    Printer printer;
    script::RunOptions options;
    options.complain = Complain;
    options.observers.push_back(&printer);
    if (explainer) options.observers.push_back(explainer);
    return script::RunScript(source, options);
}

int Members() {
    const host::Runtime& runtime = host::Runtime::Get();
    std::vector<const host::Method*> functions;
    for (const std::string& name : runtime.FunctionNames())
        for (const host::Method* function : runtime.FindFunctions(name)) functions.push_back(function);
    const std::string text =
        "[" + host::ClassesAsJson(runtime.Classes()) + "," + host::FunctionsAsJson(functions) + "]";
    TellLine(0, text.data(), text.size());
    return 0;
}

// For the first work of several.
const host::Plugin& Prepare() {
    umask(S_IWGRP | S_IWOTH);  // files begin with a mask that forbids all
    host::RegisterFramework(host::Runtime::Get());
    return host::LoadPlugin(kPlugin);
}

int Work(std::span<char*> words) {
    static const host::Plugin& plugin = Prepare();
    const std::string_view work = words.size() > 1 ? words[1] : "";
    if (work == "members") return Members();
    if (words.size() < 3) return 2;
    const auto source = script::ReadSource(words[2], Complain);
    if (!source) return 1;
    if (work == "check") return script::CheckScript(*source, Complain) ? 0 : 1;
    script::Explainer explainer(source->path, {plugin.classes.begin(), plugin.classes.end()}, Complain);
    return Run(*source, work == "explain" ? &explainer : nullptr, {words.begin() + 3, words.end()});
}

}  // namespace

int main(int count, char** words) {
    int code = 1;
    try {
        code = Work({words, static_cast<std::size_t>(count)});
    } catch (const std::exception& error) {
        Complain(std::string(error.what()) + '\n');
    }
    std::fflush(nullptr);
    return code;
}
