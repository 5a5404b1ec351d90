// Forks, waits and listens: how a case's end becomes a failure.
#include "host/check/Children.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>

namespace host::check {

namespace {

constexpr int kMostMilliseconds = 50;  // between two looks at a child
constexpr rlim_t kMostFileBytes = 64 << 20;

// How much longer than its processor time a case may last.
constexpr double kWallFactor = 20;

using Nanoseconds = std::int64_t;
constexpr double kNanosecondsPerSecond = 1e9;

// How a child came to its end; its exit code says nothing, since what it runs may exit by itself.
enum class ChildEnd { None, Done, Complained };

// What parent and child share.
struct Shared {
    ChildEnd end;
    std::atomic<std::size_t> index;      // the case at work
    std::atomic<Nanoseconds> cpuStart;   // of the child, when the case began
    std::atomic<Nanoseconds> wallStart;  // 0: between two cases
    std::atomic<double> seconds;         // its limit
    std::int64_t run;
    std::int64_t counted;
    std::size_t last;     // the last case that ended well
    std::uint64_t value;  // and what it gave
    std::int32_t kind;
    char text[2000];
};

class SharedMemory {
  public:
    SharedMemory() {
        void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        shared_ = new (memory) Shared{};
    }
    ~SharedMemory() { munmap(shared_, sizeof(Shared)); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    Shared* operator->() const { return shared_; }
    Shared& operator*() const { return *shared_; }

  private:
    Shared* shared_;
};

Nanoseconds Now(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * Nanoseconds{1'000'000'000} + now.tv_nsec;
}

// --- In the child ----------------------------------------------------------------------------------

[[noreturn]] void End(Shared& shared, ChildEnd end) {
    shared.end = end;
    _exit(0);
}

void PrepareChild() {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const rlimit fileSize{kMostFileBytes, kMostFileBytes};
    setrlimit(RLIMIT_FSIZE, &fileSize);
    std::signal(SIGXFSZ, SIG_IGN);  // writing too much is an error, not an end
}

void StartClock(const ChildrenJob& job, std::size_t i, Shared& shared) {
    shared.seconds = job.secondsOf ? job.secondsOf(i) : job.secondsPerCase;
    shared.cpuStart = Now(CLOCK_PROCESS_CPUTIME_ID);
    shared.wallStart = Now(CLOCK_MONOTONIC);
}

Complaint RunOne(const ChildrenJob& job, std::size_t i, Shared& shared) {
    StartClock(job, i, shared);
    Complaint complaint = job.run(i);
    shared.wallStart = 0;
    ++shared.run;
    if (complaint.counts) ++shared.counted;
    shared.last = i;
    shared.value = complaint.value;
    return complaint;
}

[[noreturn]] void RunChild(const ChildrenJob& job, std::size_t first, Shared& shared) {
    PrepareChild();
    for (std::size_t i = first; i < job.count; ++i) {
        shared.index = i;
        if (job.skip && job.skip(i)) continue;
        const Complaint complaint = RunOne(job, i, shared);
        if (!complaint.text.empty()) {
            shared.kind = complaint.kind;
            std::snprintf(shared.text, sizeof(shared.text), "%s", complaint.text.c_str());
            End(shared, ChildEnd::Complained);
        }
        if (job.endsChild && job.endsChild(i)) {
            shared.index = i + 1;
            End(shared, ChildEnd::Done);
        }
    }
    shared.index = job.count;
    End(shared, ChildEnd::Done);
}

// --- In the parent ---------------------------------------------------------------------------------

// Seconds that the case at work has left; a whole limit between two cases.
double SecondsLeft(pid_t child, const Shared& shared) {
    const std::size_t index = shared.index;
    const double limit = shared.seconds;
    const Nanoseconds cpuStart = shared.cpuStart, wallStart = shared.wallStart;
    clockid_t clock;
    if (wallStart == 0 || clock_getcpuclockid(child, &clock) != 0) return limit;
    const double cpu = static_cast<double>(Now(clock) - cpuStart) / kNanosecondsPerSecond;
    const double wall = static_cast<double>(Now(CLOCK_MONOTONIC) - wallStart) / kNanosecondsPerSecond;
    if (shared.index != index || shared.wallStart != wallStart) return limit;
    return std::min(limit - cpu, kWallFactor * limit - wall);
}

// Waits for the child's end and gives true; or until a case has used up its time: then the child is
// ended and the result is false. The pipe only wakes it up early: what the child runs may close the
// other end, or leave it to a process of its own.
bool WaitForEnd(int reading, pid_t child, const Shared& shared, int& status) {
    int milliseconds = kMostMilliseconds;
    while (waitpid(child, &status, WNOHANG) == 0) {
        const double left = SecondsLeft(child, shared);
        if (left <= 0) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return false;
        }
        pollfd end{reading, POLLIN, 0};
        if (poll(&end, 1, std::min(static_cast<int>(left * 1000) + 1, milliseconds)) <= 0) continue;
        reading = -1;  // is ignored from now on
        milliseconds = 1;
    }
    return true;
}

// Gives the child's status, or nothing when it was ended for being slow.
bool RunOneChild(const ChildrenJob& job, std::size_t first, Shared& shared, int& status) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::bad_alloc();
    const pid_t child = ForkChild();
    if (child < 0) throw std::bad_alloc();
    if (child == 0) RunChild(job, first, shared);
    close(ends[1]);
    const bool inTime = WaitForEnd(ends[0], child, shared, status);
    close(ends[0]);
    return inTime;
}

Failure FailureOf(int status, const Shared& shared) {
    if (shared.end == ChildEnd::Complained) return {shared.index, false, {shared.kind, shared.text}};
    return {shared.index, true, {0, EndText(status)}};
}

ChildrenReport RunHere(const ChildrenJob& job) {
    ChildrenReport report;
    for (std::size_t i = 0; i < job.count && report.failures.size() < job.mostFailures; ++i) {
        if (job.skip && job.skip(i)) continue;
        const Complaint complaint = job.run(i);
        ++report.run;
        if (complaint.counts) ++report.counted;
        report.values[i] = complaint.value;
        if (complaint.text.empty()) continue;
        report.failures.push_back({i, false, complaint});
        if (job.noteFailure) job.noteFailure(report.failures.back());
    }
    return report;
}

}  // namespace

ChildrenReport RunInChildren(const ChildrenJob& job) {
    if (job.inProcess) return RunHere(job);
    ChildrenReport report;
    SharedMemory shared;
    std::size_t next = 0;
    while (next < job.count && report.failures.size() < job.mostFailures) {
        shared->end = ChildEnd::None;
        shared->run = 0;
        shared->counted = 0;
        shared->wallStart = 0;
        shared->seconds = job.secondsPerCase;
        int status = 0;
        const bool inTime = RunOneChild(job, next, *shared, status);
        report.run += shared->run;
        report.counted += shared->counted;
        if (shared->run > 0) report.values[shared->last] = shared->value;
        next = shared->index;
        if (inTime && shared->end == ChildEnd::Done) continue;
        ++next;
        if (inTime) {
            report.failures.push_back(FailureOf(status, *shared));
            if (job.noteFailure) job.noteFailure(report.failures.back());
        } else {
            report.slow.push_back(shared->index);
            if (job.noteSlow) job.noteSlow(shared->index);
        }
    }
    return report;
}

pid_t ForkChild() {
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) return child;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGALRM}) std::signal(signal, SIG_DFL);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(0);  // it ended in between
    return 0;
}

std::string EndText(int status) {
    if (WIFSIGNALED(status)) return strsignal(WTERMSIG(status));
    return "the process ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace host::check
