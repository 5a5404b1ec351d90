// Environment, log and standard streams as members.
#include "host/framework/System.h"

#include <cstdio>
#include <cstdlib>

#include "host/framework/Output.h"
#include "host/framework/Support.h"

namespace host {

namespace {

sdk::ClassDefinition definition{.name = "System"};

// A line on standard error.
void DebugLog(sdk::String* message) {
    const std::string line = std::string(Bytes(message)) + '\n';
    std::fflush(stdout);  // in the order in which the lines were written
    std::fwrite(line.data(), 1, line.size(), stderr);
}

// Empty for a variable that isn't there, and for a name that can't be one.
sdk::String* EnvironmentVariable(sdk::String* name) {
    const std::string text(Bytes(name));
    const char* const value = text.find('\0') == std::string::npos ? std::getenv(text.c_str()) : nullptr;
    return GiveString(value ? value : "");
}

// As a program sees it that this one starts. A name that can't be one is refused.
void SetEnvironmentVariable(sdk::String* name, sdk::String* value) {
    const std::string key(Bytes(name)), text(Bytes(value));
    const bool unfit = key.find('\0') != std::string::npos || text.find('\0') != std::string::npos;
    if (!unfit && setenv(key.c_str(), text.c_str(), 1) == 0) return;
    const auto shown = [](sdk::String* part) { return Describe(Value(Ref<String>::Share(FromPlugin(part)))); };
    Fail(kContainersRaise.variable(shown(name), shown(value)));
}

// Prints; there is nobody to press a button but the first.
std::int32_t MsgBox(sdk::String* message) {
    constexpr std::int32_t kOk = 1;
    WriteOutput(std::string(Bytes(message)) + '\n');
    return kOk;
}

}  // namespace

void RegisterSystem(Runtime& runtime) {
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"DebugLog(message as string)", Guarded<&DebugLog>>(sdk::kMemberPortable),
        sdk::AssignableSharedMethod<"EnvironmentVariable(name as string) as string", Guarded<&EnvironmentVariable>,
                                    Guarded<&SetEnvironmentVariable>>(sdk::kMemberPortable),
    };
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"MsgBox(message as string) as integer", Guarded<&MsgBox>>(sdk::kMemberPortable),
    };
    SetSharedMethods(definition, sharedMethods);
    RegisterOrAbort(runtime, definition);
    runtime.RegisterFunctions(functions);
}

}  // namespace host
