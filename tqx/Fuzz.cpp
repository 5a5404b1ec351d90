// Runs random programs over everything that a plug-in registers.
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <new>
#include <numeric>

#include "host/calls/PluginLoader.h"
#include "host/check/Children.h"
#include "host/check/Passes.h"
#include "host/check/Program.h"
#include "host/check/Watch.h"
#include "host/script/Machine.h"
#include "host/script/Script.h"
#include "platform/Sanitizer.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"

namespace tqx {

namespace {

using host::check::ChildrenJob;
using host::check::Complaint;
using host::check::RandomProgram;
using Clock = std::chrono::steady_clock;

// Of processor time. What a sanitizer watches takes several times as long.
#if defined(TQX_ADDRESS_SANITIZER)
constexpr double kSecondsPerProgram = 60;
#else
constexpr double kSecondsPerProgram = 10;
#endif
constexpr double kSecondsWhileShrinking = 2;
constexpr rlim_t kMostMemory = rlim_t{1} << 28;
constexpr std::int64_t kBatch = 500;  // programs between two looks at the clock

// Calls of the plug-in's members, counted for the parent. A member that is read and assigned is two.
class CallCounts : public script::MemberObserver {
  public:
    explicit CallCounts(const std::vector<const host::Class*>& classes) {
        for (const host::Class* type : classes) AddMembers(*type);
        void* memory = mmap(nullptr, Bytes(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        counts_ = new (memory) Count[numbers_.size()]();
    }
    ~CallCounts() override { munmap(counts_, Bytes()); }
    CallCounts(const CallCounts&) = delete;
    CallCounts& operator=(const CallCounts&) = delete;

    void Before(const script::MemberUse& use) override {
        const void* const member = use.method ? static_cast<const void*>(use.method) : use.property;
        const auto found = numbers_.find({member, use.assigned != nullptr});
        if (found != numbers_.end()) ++counts_[found->second];
    }

    std::int64_t Calls() const { return std::accumulate(counts_, counts_ + numbers_.size(), std::int64_t{0}); }

    // "30 calls of 7 of 9 members".
    std::string Text() const {
        const auto missed = std::count(counts_, counts_ + numbers_.size(), 0);
        const auto all = static_cast<std::ptrdiff_t>(numbers_.size());
        return host::check::Counted(Calls(), "call") + " of " +
               (missed == 0 ? "all " : std::to_string(all - missed) + " of ") + host::check::Counted(all, "member");
    }

  private:
    using Count = std::atomic<std::int64_t>;
    using Use = std::pair<const void*, bool>;  // of a method or property; whether it is assigned

    void Add(const void* member, bool assigned) { numbers_.try_emplace({member, assigned}, numbers_.size()); }

    void AddMembers(const host::Class& type) {
        for (const auto* methods : {&type.methods(), &type.sharedMethods()})
            for (const host::Method& method : *methods) {
                Add(&method, false);
                if (method.assignable()) Add(&method, true);
            }
        for (const host::Property& property : type.properties()) {
            if (property.readable()) Add(&property, false);
            if (property.writable()) Add(&property, true);
        }
    }

    std::size_t Bytes() const { return std::max<std::size_t>(numbers_.size(), 1) * sizeof(Count); }

    std::map<Use, std::size_t> numbers_;
    Count* counts_;
};

// The sanitizers reserve more addresses than any limit, and have limits of their own.
void LimitMemory() {
#if !defined(TQX_ADDRESS_SANITIZER)
    const rlimit memory{kMostMemory, kMostMemory};
    setrlimit(RLIMIT_AS, &memory);
#endif
}

class Fuzzer {
  public:
    Fuzzer(const FuzzSettings& settings, const host::check::Supply& supply)
        : settings_(settings), supply_(supply), calls_(supply.classes) {}

    // The exit code.
    int Run() {
        const auto start = Clock::now();
        for (std::int64_t first = settings_.first; first < End() && found_ == 0; first += kBatch) {
            RunBatch(first, std::min(kBatch, End() - first));
            if (settings_.seconds > 0 && Seconds(start) >= settings_.seconds) break;
        }
        Conclude(Seconds(start));
        return found_ > 0 ? 1 : 0;
    }

  private:
    static double Seconds(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    std::int64_t End() const { return settings_.seconds > 0 ? INT64_MAX : settings_.first + settings_.programs; }

    RandomProgram ProgramOf(std::int64_t number) const {
        return host::check::MakeProgram(supply_, settings_.seed, static_cast<std::uint64_t>(number),
                                        settings_.statements);
    }

    Complaint RunProgram(const RandomProgram& program) {
        const host::check::Watch watch;
        std::string complaints;
        script::RunOptions options;
        options.print = [](std::string_view) {};
        options.complain = [&](std::string_view text) { complaints += text; };
        options.observers.push_back(&calls_);
        options.leaks = true;
        script::RunScript({"program", program.Text()}, options);
        if (!complaints.empty()) return {host::check::kWrongResult, complaints};
        return watch.Damage();
    }

    ChildrenJob Job(std::int64_t count) const {
        ChildrenJob job;
        job.count = static_cast<std::size_t>(count);
        job.secondsPerCase = kSecondsPerProgram;
        job.mostFailures = 1;
        return job;
    }

    void RunBatch(std::int64_t first, std::int64_t count) {
        ChildrenJob job = Job(count);
        job.run = [&](std::size_t i) {
            LimitMemory();
            return RunProgram(ProgramOf(first + static_cast<std::int64_t>(i)));
        };
        const auto report = host::check::RunInChildren(job);
        run_ += report.run;
        for (const host::check::Failure& failure : report.failures)
            Tell(first + static_cast<std::int64_t>(failure.index), failure.crashed, failure.complaint.text);
        for (const std::size_t index : report.slow)
            Tell(first + static_cast<std::int64_t>(index), true,
                 "ended after " + std::to_string(static_cast<int>(kSecondsPerProgram)) + " s");
    }

    // Whether a program fails in the same manner: it ends its process or takes too long, or it is
    // complained of.
    bool Fails(const RandomProgram& program, bool crashed) {
        ChildrenJob job = Job(1);
        job.secondsPerCase = kSecondsWhileShrinking;
        job.run = [&](std::size_t) {
            LimitMemory();
            return RunProgram(program);
        };
        const auto report = host::check::RunInChildren(job);
        if (!report.slow.empty()) return crashed;
        return !report.failures.empty() && report.failures.front().crashed == crashed;
    }

    void Tell(std::int64_t number, bool crashed, const std::string& what) {
        ++found_;
        RandomProgram program = ProgramOf(number);
        if (!settings_.whole)
            program = host::check::Shrunk(program, [&](const RandomProgram& less) { return Fails(less, crashed); });
        WriteLine("' program " + std::to_string(number) + " of seed " + std::to_string(settings_.seed) + ": " + what);
        WriteOutput(program.Text());
    }

    void Conclude(double seconds) const {
        const auto rate = static_cast<std::int64_t>(static_cast<double>(calls_.Calls()) / std::max(seconds, 1e-3));
        WriteLine(host::check::Counted(run_, "program") + ", " + calls_.Text() + ", " + std::to_string(rate) +
                  " calls/s, " + host::check::Counted(found_, "finding"));
    }

    const FuzzSettings& settings_;
    const host::check::Supply& supply_;
    CallCounts calls_;
    std::int64_t run_ = 0;
    std::int64_t found_ = 0;
};

}  // namespace

int Fuzz(const Settings& settings, const FuzzSettings& fuzz) {
    if (!LoadPlugin(settings)) return kCouldNotRun;
    const host::check::ScratchFolder scratch;
    const host::check::Supply supply =
        host::check::MakeSupply(host::LoadedPlugins().front()->classes, scratch.path(), fuzz.seed);
    if (fuzz.print) {
        WriteOutput(host::check::MakeProgram(supply, fuzz.seed, static_cast<std::uint64_t>(fuzz.first), fuzz.statements)
                        .Text());
        return 0;
    }
    WriteLine("seed " + std::to_string(fuzz.seed));
    return Fuzzer(fuzz, supply).Run();
}

}  // namespace tqx
