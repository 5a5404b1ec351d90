// The same call with the same input.
#include <malloc.h>

#include <cstdlib>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Digest.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

// The bytes that fresh memory is filled with, so that what is read before it is written is something else
// each time.
constexpr int kGarbage = 0x55, kOtherGarbage = 0xAA;

std::uint64_t DigestAfter(const Case& one, int garbage) {
    Runtime& runtime = Runtime::Get();
    std::srand(1);
    srand48(1);
    mallopt(M_PERTURB, garbage);
    Prepared prepared(one);
    runtime.TakeRaised();
    if (!prepared.IsReady()) return 0;
    if (prepared.self()) FillWithBytes(prepared.self());
    const Value result = prepared.Perform();
    const Ref<Object> raised = runtime.TakeRaised();
    std::uint64_t digest = DigestOf(result) + 3 * DigestOf(Value(MessageOf(raised.get())));
    if (prepared.self()) digest += 5 * DigestOf(Value(prepared.self()));
    for (const Value& argument : prepared.arguments()) digest = 7 * digest + DigestOf(argument);
    runtime.TakeRaised();
    return digest;
}

// Cases that leave something else when they are done again in the same process.
ChildrenReport FindVarying(const std::vector<Case>& cases, ChildrenJob job) {
    job.secondsPerCase *= 2;
    job.mostFailures = cases.size();
    job.run = [&](std::size_t i) -> Complaint {
        if (DigestAfter(cases[i], kGarbage) == DigestAfter(cases[i], kOtherGarbage)) return {};
        return {kWrongResult, "two calls with the same input leave different bytes"};
    };
    job.endsChild = [&](std::size_t i) { return cases[i].action == Action::CallShared; };
    return RunCases(cases, job);
}

// The digest of each case by itself in a process where nothing was called before.
std::map<std::size_t, std::uint64_t> DigestsAlone(const std::vector<const Case*>& cases, int garbage, ChildrenJob job) {
    job.count = cases.size();
    job.run = [&](std::size_t i) { return Complaint{0, "", false, DigestAfter(*cases[i], garbage)}; };
    job.endsChild = [](std::size_t) { return true; };
    return RunInChildren(job).values;
}

std::string RepetitionScript(const Case& one) {
    std::string script = one.Script();
    if (!one.instance) return script;
    return script.insert(one.instance->script("p").size(), FillScript(*one.type, "p"));
}

}  // namespace

Outcomes CheckRepetition(Context& context) {
    const std::vector<Case> cases = AllCases(Narrowed(context.TheSupply(), false));
    ChildrenReport report = FindVarying(cases, context.Job());
    const auto script = [&](std::size_t i) { return RepetitionScript(cases[i]); };
    Outcome outcome{CheckStatus::Pass, report.run, Counted(report.run, "call"), "", {}};
    // What varies may do so because of the calls before it. That is told, but is no failure: alone
    // in a fresh process it has to be the same.
    std::vector<const Case*> varying;
    for (const Failure& failure : report.failures) varying.push_back(&cases[failure.index]);
    const auto first = DigestsAlone(varying, kGarbage, context.Job());
    const auto second = DigestsAlone(varying, kOtherGarbage, context.Job());
    std::set<std::string> dependent;
    ChildrenReport different;
    for (std::size_t i = 0; i < varying.size(); ++i) {
        if (first.count(i) && second.count(i) && first.at(i) == second.at(i))
            dependent.insert(varying[i]->Name());
        else
            different.failures.push_back(report.failures[i]);
    }
    for (const std::string& name : dependent) outcome.detail += ", " + name + " after the same calls only";
    Judge(outcome, different, script);
    return Only("repetition", outcome);
}

}  // namespace host::check
