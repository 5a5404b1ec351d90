// Runs the table of checks, each in a child of its own, and gathers what they found.
#include "host/check/Check.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <nlohmann/json.hpp>

#include "host/calls/PluginLoader.h"
#include "host/check/Table.h"

namespace host {

namespace {

using namespace check;
using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr int kPollMilliseconds = 50;  // how soon a wish to stop is noticed

struct StatusRow {
    CheckStatus status;
    std::string_view name;
    bool finding;
};

constexpr StatusRow kStatuses[kCheckStatusCount] = {
    {CheckStatus::Pass, "pass", false},      {CheckStatus::Skip, "skip", false}, {CheckStatus::Warn, "warn", false},
    {CheckStatus::Timeout, "timeout", true}, {CheckStatus::Fail, "fail", true},  {CheckStatus::Crash, "crash", true}};

const StatusRow& RowOf(CheckStatus status) { return kStatuses[static_cast<std::size_t>(status)]; }

// --- One run of the table --------------------------------------------------------------------

// The outcome of whatever goes wrong in all entries of a run alike.
Outcomes ForAll(std::span<const Check> entries, const Outcome& outcome) {
    Outcomes outcomes;
    for (const Check& entry : entries) outcomes[entry.id] = outcome;
    return outcomes;
}

Outcomes RunHere(std::span<const Check> entries, const std::string& path, const CheckOptions& options,
                 const std::string& scratch, const std::set<std::string>& leftOut) {
    try {
        Context context(path, options, scratch, leftOut);
        return entries.front().run(context);
    } catch (const LoadError& error) {
        return ForAll(entries, {CheckStatus::Skip, 0, error.what(), "", {}});
    }
}

// --- In a child ----------------------------------------------------------------------------------

std::string Written(const Outcomes& outcomes) {
    Json json;
    for (const auto& [id, outcome] : outcomes)
        json[id] = {static_cast<int>(outcome.status), outcome.cases, outcome.detail, outcome.script, outcome.members};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Outcomes ReadBack(const std::string& text) {
    const Json json = Json::parse(text);
    Outcomes outcomes;
    for (const auto& [id, fields] : json.items())
        outcomes[id] = {static_cast<CheckStatus>(fields[0].get<int>()), fields[1].get<std::int64_t>(),
                        fields[2].get<std::string>(), fields[3].get<std::string>(),
                        fields[4].get<std::set<std::string>>()};
    return outcomes;
}

void WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

// What the parent knows of the child that runs a check.
class Child {
  public:
    Child(std::span<const Check> entries, const std::string& path, const CheckOptions& options,
          const std::string& scratch, const std::set<std::string>& leftOut)
        : entries_(entries), options_(options) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::bad_alloc();
        process_ = ForkChild();
        if (process_ < 0) throw std::bad_alloc();
        if (process_ == 0) {
            setpgid(0, 0);
            close(ends[0]);
            WriteAll(ends[1], Written(RunHere(entries, path, options, scratch, leftOut)));
            _exit(0);
        }
        setpgid(process_, process_);
        close(ends[1]);
        reading_ = ends[0];
    }
    ~Child() { close(reading_); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    Outcomes Wait() {
        const int status = Listen();
        if (overdue_) return ForAll(entries_, {CheckStatus::Timeout, 0, "not done after " + Seconds() + " s", "", {}});
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && !text_.empty()) return ReadBack(text_);
        return ForAll(entries_, {CheckStatus::Crash, 0, EndText(status), "", {}});
    }

  private:
    // Until the child has closed its end and is gone; ends it when it takes too long.
    int Listen() {
        const auto deadline = Clock::now() + std::chrono::duration<double>(options_.secondsPerCheck);
        int status = 0;
        for (bool open = true; open || waitpid(process_, &status, WNOHANG) == 0;) {
            pollfd end{open ? reading_ : -1, POLLIN, 0};
            if (poll(&end, 1, open ? kPollMilliseconds : 1) > 0) open = Read();
            const bool stopped = options_.stop && options_.stop();
            if (!stopped && Clock::now() < deadline) continue;
            overdue_ = true;
            kill(-process_, SIGKILL);  // those that it forked as well
            waitpid(process_, &status, 0);
            break;
        }
        return status;
    }

    bool Read() {
        char part[4096];
        const ssize_t got = read(reading_, part, sizeof(part));
        if (got > 0) text_.append(part, static_cast<std::size_t>(got));
        return got > 0;
    }

    std::string Seconds() const { return std::to_string(static_cast<int>(options_.secondsPerCheck)); }

    std::span<const Check> entries_;
    const CheckOptions& options_;
    pid_t process_ = -1;
    int reading_ = -1;
    bool overdue_ = false;
    std::string text_;
};

// --- All of them -----------------------------------------------------------------------------------

// The entries that share the run of the first.
std::span<const Check> SharedRun(std::span<const Check> entries) {
    const auto other =
        std::find_if(entries.begin(), entries.end(), [&](const Check& one) { return one.run != entries.front().run; });
    return {entries.begin(), other};
}

bool IsWanted(const Check& entry, const CheckOptions& options) {
    return (options.only.empty() || options.only.count(entry.id)) && !options.except.count(entry.id);
}

class Session {
  public:
    Session(const std::string& path, const CheckOptions& options) : path_(path), options_(options) {}

    std::vector<CheckResult> Run() {
        TryLoading();
        for (auto rest = AllChecks(); !rest.empty() && !(options_.stop && options_.stop());) {
            const auto shared = SharedRun(rest);
            rest = rest.subspan(shared.size());
            RunShared(shared);
        }
        return std::move(results_);
    }

  private:
    Outcomes Do(std::span<const Check> entries) const {
        if (options_.inProcess) return RunHere(entries, path_, options_, scratch_.path(), leftOut_);
        return Child(entries, path_, options_, scratch_.path(), leftOut_).Wait();
    }

    // The first check of the table: without it the others can't be had.
    void TryLoading() {
        const std::span<const Check> first = AllChecks().first(1);
        if (IsFinding(Do(first)[first.front().id].status)) unloadable_ = true;
    }

    Outcomes DoWanted(std::span<const Check> entries) const {
        if (std::none_of(entries.begin(), entries.end(), [&](const Check& one) { return IsWanted(one, options_); }))
            return {};
        if (unloadable_ && entries.data() != AllChecks().data())
            return ForAll(entries, {CheckStatus::Skip, 0, "it can't be loaded", "", {}});
        return Do(entries);
    }

    void RunShared(std::span<const Check> entries) {
        const auto start = Clock::now();
        Outcomes outcomes = DoWanted(entries);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        if (options_.stop && options_.stop()) return;
        for (const Check& entry : entries)
            Add(entry, outcomes[entry.id], seconds / static_cast<double>(entries.size()));
        for (const auto& [id, outcome] : outcomes) leftOut_.insert(outcome.members.begin(), outcome.members.end());
    }

    std::string WithoutText() const {
        std::string text;
        for (const std::string& member : leftOut_) text += (text.empty() ? ", without " : ", ") + member;
        return text;
    }

    void Add(const Check& entry, Outcome outcome, double seconds) {
        if (!options_.only.empty() && !options_.only.count(entry.id)) return;
        const auto exception = options_.except.find(entry.id);
        if (exception != options_.except.end()) outcome = {CheckStatus::Skip, 0, exception->second, "", {}};
        if (outcome.status != CheckStatus::Skip) outcome.detail += WithoutText();
        results_.push_back({entry.id, entry.sentence, outcome.status, outcome.cases, seconds, std::move(outcome.detail),
                            std::move(outcome.script)});
        if (options_.report) options_.report(results_.back());
    }

    std::string path_;
    const CheckOptions& options_;
    ScratchFolder scratch_;
    bool unloadable_ = false;
    std::set<std::string> leftOut_;
    std::vector<CheckResult> results_;
};

}  // namespace

std::string_view StatusName(CheckStatus status) { return RowOf(status).name; }

bool IsFinding(CheckStatus status) { return RowOf(status).finding; }

std::vector<CheckEntry> ListChecks() {
    std::vector<CheckEntry> entries;
    for (const Check& entry : AllChecks()) entries.push_back({entry.id, entry.sentence});
    return entries;
}

std::vector<CheckResult> CheckPlugin(const std::string& path, const CheckOptions& options) {
    return Session(path, options).Run();
}

}  // namespace host
