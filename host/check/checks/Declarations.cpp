// Declarations as they were registered, of refused classes too.
#include <functional>

#include "host/calls/Declaration.h"
#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"
#include "host/check/Startup.h"

namespace host::check {

namespace {

// Far more than any class has; a count above it is a wrong record, which the host refuses.
constexpr std::int32_t kMostMembers = 10'000;

template <class Record>
std::span<const Record> Records(const Record* records, std::int32_t count) {
    if (!records || count < 0 || count > kMostMembers) return {};
    return {records, static_cast<std::size_t>(count)};
}

void ExpectReadable(Findings& findings, const char* text) {
    if (!text) return findings.Expect(false, "a member", "has no declaration");
    Declaration first;
    Declaration second;
    std::string problem;
    const bool read = ReadDeclaration(text, first, problem);
    findings.Expect(read, std::string("\"") + text + "\"", "can't be read: " + problem);
    if (!read) return;
    const bool again = ReadDeclaration(DeclarationText(first), second, problem);
    findings.Expect(again && SameSignature(first, second), text, "does not read the same when written out");
}

Findings LookAtDeclarations(const Startup& startup) {
    Findings findings;
    for (const sdk::ClassDefinition* definition : startup.definitions) {
        for (const auto& record : Records(definition->methods, definition->methodCount))
            ExpectReadable(findings, record.declaration);
        for (const auto& record : Records(definition->sharedMethods, definition->sharedMethodCount))
            ExpectReadable(findings, record.declaration);
        for (const auto& record : Records<sdk::EventRecord>(definition->events, definition->eventCount))
            ExpectReadable(findings, record.declaration);
    }
    return findings;
}

void LookAtConstant(Findings& findings, const sdk::ConstantRecord& record) {
    ConstantDeclaration constant;
    std::string problem = "it is missing";
    const std::string text = record.declaration ? record.declaration : "a constant";
    const bool read = record.declaration && ReadConstant(text, constant, problem);
    findings.Expect(read, text, "can't be read: " + problem);
    findings.Expect(!read || record.value == 0 || record.value == constant.value.ToInt32(), text,
                    "has another value in its record: " + std::to_string(record.value));
}

Findings LookAtConstants(const Startup& startup) {
    Findings findings;
    for (const sdk::ClassDefinition* definition : startup.definitions)
        for (const auto& record : Records(definition->constants, definition->constantCount))
            LookAtConstant(findings, record);
    return findings;
}

}  // namespace

Outcomes CheckDeclarations(Context& context) {
    const Findings findings = LookAtDeclarations(StartRecorded(context.path()));
    return Only("declarations", findings.Judged(std::to_string(findings.looked() / 2) + " can be read"));
}

Outcomes CheckConstants(Context& context) {
    const Findings findings = LookAtConstants(StartRecorded(context.path()));
    return Only("constants", findings.Judged(std::to_string(findings.looked() / 2) + " have a value"));
}

Outcomes CheckClasses(Context& context) {
    const Startup& startup = StartRecorded(context.path());
    Outcome outcome{CheckStatus::Pass, static_cast<std::int64_t>(startup.definitions.size()), "", "", {}};
    for (const Class* type : startup.classes) outcome.detail += (outcome.detail.empty() ? "" : ", ") + type->name();
    if (startup.problem.empty()) return Only("classes", outcome);
    const bool told = !LookAtDeclarations(startup).AllHold() || !LookAtConstants(startup).AllHold();
    outcome.Convict(told ? CheckStatus::Skip : CheckStatus::Fail,
                    told ? "what can't be read is refused" : startup.problem);
    return Only("classes", outcome);
}

}  // namespace host::check
