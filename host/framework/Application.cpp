// The shared methods of App: arguments, and events while a script waits.
#include "host/framework/Application.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "host/framework/Support.h"

namespace host {

namespace {

sdk::ClassDefinition definition{.name = "App"};

std::vector<std::string> applicationArguments;

// --- Arguments ------------------------------------------------------------------------------

sdk::Array* Arguments() {
    Ref<Array> array = MakeArray(TypeNamed("String"));
    for (const std::string& argument : applicationArguments) array->values.push_back(Value(argument));
    return array.Detach();
}

// Counted from 0.
sdk::String* Argument(std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= applicationArguments.size())
        Fail(kDataRaises.argument(index, applicationArguments.size()));
    return GiveString(applicationArguments[static_cast<std::size_t>(index)]);
}

// --- Waiting --------------------------------------------------------------------------------

void DoEvents() { Runtime::Get().Yield(); }

// Lets timers fire for so many milliseconds, at least once; an exception of theirs ends it.
void DoEventsFor(std::int32_t milliseconds) {
    using namespace std::chrono;
    constexpr auto kNap = steady_clock::duration(1ms);
    const auto end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
    Runtime& runtime = Runtime::Get();
    for (;;) {
        runtime.Yield();
        const auto left = end - steady_clock::now();
        if (left <= left.zero() || runtime.HasRaised()) return;
        std::this_thread::sleep_for(std::min(left, kNap));
    }
}

}  // namespace

void SetApplicationArguments(std::vector<std::string> arguments) { applicationArguments = std::move(arguments); }

void RegisterApplication(Runtime& runtime) {
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"Arguments as string()", Guarded<&Arguments>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Arguments(index as integer) as string", Guarded<&Argument>>(sdk::kMemberPortable),
        sdk::SharedMethod<"DoEvents", Guarded<&DoEvents>>(sdk::kMemberPortable),
        sdk::SharedMethod<"DoEvents(milliseconds as integer)", Guarded<&DoEventsFor>>(sdk::kMemberPortable),
    };
    SetSharedMethods(definition, sharedMethods);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
