// Counts before and after, compared.
#include "host/check/Watch.h"

#include "host/calls/Runtime.h"
#include "host/objects/GuardedMemory.h"

namespace host::check {

namespace {

std::int64_t YieldCalls() { return Runtime::Get().FindHostFunction(sdk::kREALYieldToRB.name)->calls; }

std::string Counted(std::int64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

Watch::Watch()
    : objects_(LiveObjectCount()),
      strings_(LiveStringCount()),
      arrays_(LiveArrayCount()),
      yields_(YieldCalls()),
      guards_(BrokenGuardCount()),
      overReleases_(OverReleaseCount()) {}

std::int64_t Watch::Objects() const { return LiveObjectCount() - objects_; }
std::int64_t Watch::Strings() const { return LiveStringCount() - strings_; }
std::int64_t Watch::Arrays() const { return LiveArrayCount() - arrays_; }
std::int64_t Watch::Yields() const { return YieldCalls() - yields_; }

bool Watch::LeavesNothing() const { return Objects() == 0 && Strings() == 0 && Arrays() == 0; }

Complaint Watch::Damage() const {
    if (BrokenGuardCount() != guards_) return {kGuards, "bytes beside memory of the host were overwritten"};
    if (OverReleaseCount() != overReleases_) return {kReferences, "a reference was given up that nobody had"};
    return {};
}

Complaint Watch::LeftAlive() const {
    if (LeavesNothing()) return {};
    if (Objects() < 0 || Strings() < 0 || Arrays() < 0)
        return {kReferences, "something was destroyed that somebody still held"};
    std::string text;
    if (Objects() > 0)
        text = Counted(Objects(), "object") + " (the newest a " + LiveObjects().front()->type->name() + ")";
    if (Strings() > 0) text += (text.empty() ? "" : ", ") + Counted(Strings(), "string");
    if (Arrays() > 0) text += (text.empty() ? "" : ", ") + Counted(Arrays(), "array");
    return {kReferences, text + " left alive"};
}

}  // namespace host::check
