// Any bytes as a script: checked, compiled and run, for a tenth of a second at most. Whatever it does,
// it ends in an exit code, and the host is as sound as before.
//
// Programs that could reach files, or wait for input, are not run.
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"
#include "host/objects/GuardedMemory.h"
#include "host/script/Machine.h"
#include "host/script/Script.h"

namespace {

// Of processor time. Then again after a fifth of it: a destructor on the way out may be endless as well.
constexpr suseconds_t kMicroseconds = 100'000;

constexpr std::size_t kMostBytes = 200'000;

void OnTimer(int) { script::Machine::Interrupt(); }

void SetTimer(suseconds_t first) {
    const itimerval timer{{0, first / 5}, {0, first}};
    setitimer(ITIMER_VIRTUAL, &timer, nullptr);
}

bool MayReachOutside(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    });
    constexpr std::string_view kWords[] = {"folder", "stream", "volume", "stdin", "input", "shell", "gworld"};
    return std::any_of(std::begin(kWords), std::end(kWords),
                       [&](std::string_view word) { return text.find(word) != std::string::npos; });
}

void Assemble() {
    host::RegisterFramework(host::Runtime::Get());
    std::signal(SIGVTALRM, &OnTimer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool assembled = (Assemble(), true);
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (size > kMostBytes || MayReachOutside(text)) return 0;
    const std::int64_t overReleases = host::OverReleaseCount(), guards = host::BrokenGuardCount();
    script::RunOptions options;
    options.print = [](std::string_view) {};
    options.complain = [](std::string_view) {};
    SetTimer(kMicroseconds);
    script::RunScript({"fuzz.rbs", text}, options);
    SetTimer(0);
    if (host::OverReleaseCount() != overReleases || host::BrokenGuardCount() != guards) __builtin_trap();
    return 0;
}
