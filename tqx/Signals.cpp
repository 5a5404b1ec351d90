// Handlers that ask a script to end, or end the process at once.
#include "tqx/Signals.h"

#include <unistd.h>

#include <csignal>

#include "host/script/Machine.h"
#include "platform/ScratchFiles.h"
#include "tqx/PluginFiles.h"

namespace tqx {

namespace {

constexpr unsigned kSecondsToEnd = 2;

constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kFaults[] = {SIGQUIT, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGXCPU};

volatile std::sig_atomic_t endedBy = 0;  // the first signal that asked for the end

int ExitCodeOf(int signal) { return 128 + signal; }

void RemoveFiles() {
    platform::RemoveScratchFiles();
    RemovePluginFiles();
}

// What the status line may have left behind on a terminal is erased.
void EndAtOnce(int) {
    RemoveFiles();
    if (isatty(STDERR_FILENO)) [[maybe_unused]]
        const ssize_t written = write(STDERR_FILENO, "\r\033[K", 4);
    _exit(ExitCodeOf(endedBy));
}

void EndInOrder(int signal) {
    if (endedBy) EndAtOnce(signal);
    endedBy = signal;
    script::Machine::Interrupt();
    alarm(kSecondsToEnd);
}

void EndStep(int) { script::Machine::Interrupt(); }

// The handler is gone by now: the signal takes its usual effect.
void EndByFault(int signal) {
    RemoveFiles();
    raise(signal);
}

struct sigaction ActionOf(void (*handler)(int), int flags) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    // One handler at a time: together they would remove files that the other one looks at.
    for (const int signal : kEndings) sigaddset(&action.sa_mask, signal);
    sigaddset(&action.sa_mask, SIGALRM);
    return action;
}

// Unless something else, the command's parent or a sanitizer, has settled what the signal does.
void Handle(int signal, const struct sigaction& action) {
    struct sigaction before;
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) sigaction(signal, &action, nullptr);
}

}  // namespace

bool EndIsAsked() { return endedBy != 0; }

void HandleSignals(InterruptEnds interrupt) {
    if (interrupt == InterruptEnds::Step) Handle(SIGINT, ActionOf(&EndStep, SA_RESTART));
    const struct sigaction inOrder = ActionOf(&EndInOrder, SA_RESTART), atOnce = ActionOf(&EndAtOnce, 0);
    const struct sigaction byFault = ActionOf(&EndByFault, static_cast<int>(SA_RESETHAND));
    for (const int signal : kEndings) Handle(signal, inOrder);
    for (const int signal : kFaults) Handle(signal, byFault);
    sigaction(SIGALRM, &atOnce, nullptr);
}

int EndAfterSignals(int exitCode) {
    RemoveFiles();
    return endedBy ? ExitCodeOf(endedBy) : exitCode;
}

}  // namespace tqx
