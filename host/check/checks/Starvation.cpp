// A system that gives less than it is asked for.
#include <sys/mman.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Interception.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

// More than any of the small calls here makes; a plug-in that comes so far is left there.
constexpr std::int64_t kMostCalls = 500;

struct Starving {
    std::int64_t nth;
    bool onward;  // all that follow fail as well

    std::string Text(const std::string& what) const {
        return "' " + what + " number " + std::to_string(nth) + (onward ? " and all after it fail" : " fails") +
               " in the last line\n";
    }
};

// What a child was at when it ended, for its parent.
class Progress {
  public:
    Progress() {
        void* memory = mmap(nullptr, sizeof(Starving), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        at_ = static_cast<Starving*>(memory);
    }
    ~Progress() { munmap(at_, sizeof(Starving)); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    Starving& at() const { return *at_; }

  private:
    Starving* at_;
};

// Open descriptors and mapped files of the process.
struct Held {
    std::int64_t descriptors = 0, mappings = 0;

    Held() {
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++descriptors;
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);)
            if (line.find('/') != std::string::npos) ++mappings;
    }
};

class Starver {
  public:
    explicit Starver(Starving& at) : at_(at) {}

    Complaint Starve(const Case& one) {
        PerformStarved(one, kMostCalls);  // what is made once, on first use, is there
        for (const bool onward : {false, true})
            for (std::int64_t nth = 1; nth <= kMostCalls; ++nth) {
                at_ = {nth, onward};
                const Complaint complaint = StarveOnce(one);
                if (!complaint.text.empty()) return complaint;
                if (failed_ == 0) break;
                ++failures_;
            }
        return {0, "", failures_ > 0};
    }

  private:
    Complaint StarveOnce(const Case& one) {
        const Watch watch;
        const Held before;
        Complaint complaint = PerformStarved(one, at_.nth);
        if (complaint.text.empty()) complaint = watch.Damage();
        if (complaint.text.empty()) complaint = watch.LeftAlive();
        if (!complaint.text.empty() || failed_ == 0) return complaint;
        const Held after;
        if (after.descriptors != before.descriptors) return {kReferences, "a file stays open"};
        if (after.mappings != before.mappings) return {kReferences, "a file stays mapped"};
        return {};
    }

    // Then once more with enough of everything: the objects are still fit for use.
    Complaint PerformStarved(const Case& one, std::int64_t nth) {
        Prepared prepared(one);
        Runtime::Get().TakeRaised();
        failed_ = 0;
        if (!prepared.IsReady()) return {};
        const std::int64_t count = at_.onward ? std::numeric_limits<std::int64_t>::max() : 1;
        Value result;
        {
            const FailingCalls failing(nth, count);
            result = prepared.Perform();
            failed_ = failing.failed();
        }
        Runtime::Get().TakeRaised();
        const std::string problem = prepared.ObjectProblem(result);
        if (!problem.empty()) return {kReferences, problem};
        if (failed_ > 0) prepared.Perform();
        Runtime::Get().TakeRaised();
        return {};
    }

    Starving& at_;
    std::int64_t failed_ = 0;    // calls of the last case
    std::int64_t failures_ = 0;  // cases in which one did
};

Outcome CheckStarving(Context& context, SystemService service, const std::string& what) {
    std::vector<Case> cases = FirstLists(Narrowed(context.TheSupply(), true));
    const std::vector<std::string> functions = InterceptCalls(LoadedLibrary(context.path()), service);
    if (functions.empty()) return {CheckStatus::Skip, 0, "the plug-in makes none", "", {}};
    const Progress progress;
    std::map<std::size_t, Starving> ends;
    ChildrenJob job = context.Job();
    job.count = cases.size();
    job.endsChild = [&](std::size_t i) { return cases[i].action == Action::CallShared; };
    job.run = [&](std::size_t i) { return Starver(progress.at()).Starve(cases[i]); };
    job.noteFailure = [&](const Failure& failure) { ends[failure.index] = progress.at(); };
    job.noteSlow = [&](std::size_t i) { ends[i] = progress.at(); };
    const ChildrenReport report = RunInChildren(job);
    std::string list;
    for (const std::string& function : functions) list += (list.empty() ? "" : ", ") + function;
    Outcome outcome{
        CheckStatus::Pass,
        report.run,
        std::to_string(report.counted) + " of " + Counted(report.run, "call") + " met a failure (" + list + ")",
        "",
        {}};
    const auto script = [&](std::size_t i) {
        const auto end = ends.find(i);
        return (end == ends.end() ? "" : end->second.Text(what)) + cases[i].Script();
    };
    JudgeSlow(outcome, report, script);
    Judge(outcome, report, script);
    return outcome;
}

}  // namespace

Outcomes CheckAllocation(Context& context) {
    return Only("allocation", CheckStarving(context, SystemService::Memory, "allocation"));
}

Outcomes CheckSystemCalls(Context& context) {
    return Only("system-calls", CheckStarving(context, SystemService::Files, "system call"));
}

}  // namespace host::check
