// Flags, names and types of the records.
#include <set>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"

namespace host::check {

namespace {

// Findings about the members of one class.
struct ClassFindings {
    Findings& all;
    const Class& type;

    void Expect(bool holds, const std::string& member, const std::string& fault) {
        all.Expect(holds, type.name() + "." + member, fault);
    }
};

bool IsKnown(const Type& type) { return type.className.empty() || Runtime::Get().FindClass(type.className); }

bool IsPicture(const Type& type) { return SameName(type.className, "Picture"); }

void ExpectKnownTypes(ClassFindings& findings, const Declaration& declaration) {
    findings.Expect(IsKnown(declaration.result), declaration.name,
                    "gives a " + declaration.result.className + ", a class nobody knows");
    for (const Parameter& parameter : declaration.parameters)
        findings.Expect(IsKnown(parameter.type), declaration.name,
                        "takes a " + parameter.type.className + ", a class nobody knows");
}

bool UsesPictures(const Declaration& declaration) {
    for (const Parameter& parameter : declaration.parameters)
        if (IsPicture(parameter.type)) return true;
    return IsPicture(declaration.result);
}

void ExpectMethodFlags(ClassFindings& findings, const Method& method) {
    const bool portable = method.flags & sdk::kMemberPortable;
    findings.Expect(!(method.flags & sdk::kMemberProperty), method.declaration.name, "has the flag of properties");
    findings.Expect(!portable || !UsesPictures(method.declaration), method.declaration.name,
                    "takes or gives a picture of the host but has the flag of those that don't");
}

void ExpectPropertyFlags(ClassFindings& findings, const Property& property) {
    const bool portable = property.flags & sdk::kMemberPortable;
    findings.Expect(property.flags & sdk::kMemberProperty, property.name, "lacks the flag of properties");
    findings.Expect(!portable || !IsPicture(property.type), property.name,
                    "is a picture of the host but has the flag of those that aren't");
    findings.Expect(IsKnown(property.type), property.name,
                    "is a " + property.type.className + ", a class nobody knows");
    findings.Expect(property.readable(), property.name, "can't be read");
}

void LookAtClass(const Class& type, ClassFindings findings) {
    for (const auto* methods : {&type.methods(), &type.sharedMethods()})
        for (const Method& method : *methods) {
            ExpectMethodFlags(findings, method);
            ExpectKnownTypes(findings, method.declaration);
            findings.Expect(!type.FindProperty(method.declaration.name), method.declaration.name,
                            "is a method and a property");
        }
    for (const Property& property : type.properties()) {
        ExpectPropertyFlags(findings, property);
        findings.Expect(!type.FindConstant(property.name), property.name, "is a property and a constant");
    }
    for (const Event& event : type.events()) ExpectKnownTypes(findings, event.declaration);
}

}  // namespace

Outcomes CheckRecords(Context& context) {
    Findings findings;
    std::set<std::intptr_t> numbers;
    for (const Class* type : context.Classes()) {
        LookAtClass(*type, {findings, *type});
        for (std::int32_t i = 0; i < type->definition()->eventCount; ++i)
            findings.Expect(numbers.insert(type->definition()->events[i].hostNumber).second, type->name(),
                            "has an event whose number was changed");
    }
    return Only("records", findings.Judged(std::to_string(findings.looked()) + " looked at"));
}

}  // namespace host::check
