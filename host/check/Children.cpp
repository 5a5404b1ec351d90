#include "host/check/Children.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>

namespace host::check {

namespace {

constexpr int kDone = 0;
constexpr int kComplained = 71;
constexpr rlim_t kMostFileBytes = 64 << 20;

// What parent and child share.
struct Shared {
    std::size_t index;  // the case at work
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
        shared_ = static_cast<Shared*>(memory);
    }
    ~SharedMemory() { munmap(shared_, sizeof(Shared)); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    Shared* operator->() const { return shared_; }
    Shared& operator*() const { return *shared_; }

  private:
    Shared* shared_;
};

// A case is ended by the alarm signal, whose default ends the process.
void SetAlarm(double seconds) {
    itimerval timer{};
    timer.it_value.tv_sec = static_cast<time_t>(seconds);
    timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - static_cast<double>(timer.it_value.tv_sec)) * 1e6);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void PrepareChild() {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const rlimit fileSize{kMostFileBytes, kMostFileBytes};
    setrlimit(RLIMIT_FSIZE, &fileSize);
    std::signal(SIGXFSZ, SIG_IGN);  // writing too much is an error, not an end
    std::signal(SIGALRM, SIG_DFL);
}

[[noreturn]] void RunChild(const ChildrenJob& job, std::size_t first, Shared& shared) {
    PrepareChild();
    for (std::size_t i = first; i < job.count; ++i) {
        shared.index = i;
        if (job.skip && job.skip(i)) continue;
        SetAlarm(job.secondsOf ? job.secondsOf(i) : job.secondsPerCase);
        const Complaint complaint = job.run(i);
        SetAlarm(0);
        ++shared.run;
        if (complaint.counts) ++shared.counted;
        shared.last = i;
        shared.value = complaint.value;
        if (!complaint.text.empty()) {
            shared.kind = complaint.kind;
            std::snprintf(shared.text, sizeof(shared.text), "%s", complaint.text.c_str());
            _exit(kComplained);
        }
        if (job.endsChild && job.endsChild(i)) {
            shared.index = i + 1;
            _exit(kDone);
        }
    }
    shared.index = job.count;
    _exit(kDone);
}

Failure FailureOf(int status, const Shared& shared) {
    if (WIFEXITED(status) && WEXITSTATUS(status) == kComplained)
        return {shared.index, false, {shared.kind, shared.text}};
    if (WIFSIGNALED(status)) return {shared.index, true, {0, strsignal(WTERMSIG(status))}};
    return {shared.index, true, {0, "the process ended with status " + std::to_string(WEXITSTATUS(status))}};
}

}  // namespace

ChildrenReport RunInChildren(const ChildrenJob& job) {
    ChildrenReport report;
    SharedMemory shared;
    std::size_t next = 0;
    while (next < job.count && report.failures.size() < job.mostFailures) {
        std::fflush(nullptr);
        shared->run = 0;
        shared->counted = 0;
        const pid_t child = fork();
        if (child < 0) throw std::bad_alloc();
        if (child == 0) RunChild(job, next, *shared);
        int status = 0;
        while (waitpid(child, &status, 0) < 0) {
        }
        report.run += shared->run;
        report.counted += shared->counted;
        if (shared->run > 0) report.values[shared->last] = shared->value;
        next = shared->index;
        if (WIFEXITED(status) && WEXITSTATUS(status) == kDone) continue;
        ++next;
        if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) {
            report.slow.push_back(shared->index);
            if (job.noteSlow) job.noteSlow(shared->index);
        } else {
            report.failures.push_back(FailureOf(status, *shared));
        }
    }
    return report;
}

}  // namespace host::check
