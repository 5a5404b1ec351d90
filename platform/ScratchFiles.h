// Files that must not outlive the process, however it ends.
//
// Who makes a scratch file keeps its name here for as long as the file bears it. A handler of the
// signals that end a process calls RemoveScratchFiles before it lets the process end:
//
//     extern "C" void OnTermination(int signal) {
//         platform::RemoveScratchFiles();
//         std::signal(signal, SIG_DFL);
//         std::raise(signal);
//     }
//
// Names belong to the process that kept them: one that was forked removes none of its parent's.
// Each module (the host, a plug-in) has names of its own, and removes only those.
#pragma once

#include <signal.h>

#include <atomic>
#include <string>

namespace platform {

// The name of a scratch file, from Keep to Forget or the end of this object.
class ScratchName {
  public:
    ScratchName() = default;
    ~ScratchName() { Forget(); }
    ScratchName(const ScratchName&) = delete;
    ScratchName& operator=(const ScratchName&) = delete;

    // Keeps a name, in place of the one before. The text is copied; a relative path counts from
    // the folder that is current when the file is removed. False when memory is short.
    bool Keep(const char* path) noexcept;

    // The file has gone, or has become one that is to stay.
    void Forget() noexcept;

  private:
    std::atomic<void*>* place_ = nullptr;  // holds the record of the name; null: none kept
    void* record_ = nullptr;
};

// While it lives, no signal is handled in this thread: for the moment between making a file and
// keeping its name. Signals to the process may still be handled by other threads that allow them.
class HeldSignals {
  public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

  private:
    sigset_t before_;
};

// Makes a file, open for reading and writing and closed on exec, of a fresh name: the six X at the
// end of `pattern` are replaced. The name is kept from the first moment. -1 with errno set where
// it can't be made; `pattern` is then of no use.
int MakeScratchFile(std::string& pattern, ScratchName& name);

// Removes all files whose names this process keeps. Safe in a signal handler, in any thread; to be
// called when the process is about to end.
void RemoveScratchFiles() noexcept;

}  // namespace platform
