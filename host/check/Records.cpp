#include "host/check/Records.h"

#include <set>

#include "host/calls/Declaration.h"
#include "host/calls/Runtime.h"

namespace host::check {

namespace {

class Findings {
  public:
    explicit Findings(const Class& type) : type_(type) {}

    // Counts one thing looked at; it is a fault unless it holds.
    void Expect(bool holds, const std::string& member, const std::string& fault) {
        ++findings.looked;
        if (!holds) findings.faults.push_back(type_.name() + "." + member + " " + fault);
    }

    RecordFindings findings;

  private:
    const Class& type_;
};

void Append(RecordFindings& all, const RecordFindings& part) {
    all.looked += part.looked;
    all.faults.insert(all.faults.end(), part.faults.begin(), part.faults.end());
}

// Runs one look at each class.
template <class Look>
RecordFindings OverClasses(const std::vector<const Class*>& classes, Look look) {
    RecordFindings all;
    for (const Class* type : classes) {
        Findings findings(*type);
        look(*type, findings);
        Append(all, findings.findings);
    }
    return all;
}

void ExpectReadable(Findings& findings, const char* text) {
    Declaration first;
    Declaration second;
    std::string problem;
    const bool read = ReadDeclaration(text, first, problem);
    findings.Expect(read, text, "can't be read: " + problem);
    if (!read) return;
    const bool again = ReadDeclaration(DeclarationText(first), second, problem);
    findings.Expect(again && SameSignature(first, second), text, "does not read the same when written out");
}

bool IsKnown(const Type& type) { return type.className.empty() || Runtime::Get().FindClass(type.className); }

bool IsPicture(const Type& type) { return SameName(type.className, "Picture"); }

void ExpectKnownTypes(Findings& findings, const Declaration& declaration) {
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

void ExpectMethodFlags(Findings& findings, const Method& method) {
    const bool portable = method.flags & sdk::kMemberPortable;
    findings.Expect(!(method.flags & sdk::kMemberProperty), method.declaration.name, "has the flag of properties");
    findings.Expect(!portable || !UsesPictures(method.declaration), method.declaration.name,
                    "takes or gives a picture of the host but has the flag of those that don't");
}

void ExpectPropertyFlags(Findings& findings, const Property& property) {
    const bool portable = property.flags & sdk::kMemberPortable;
    findings.Expect(property.flags & sdk::kMemberProperty, property.name, "lacks the flag of properties");
    findings.Expect(!portable || !IsPicture(property.type), property.name,
                    "is a picture of the host but has the flag of those that aren't");
    findings.Expect(IsKnown(property.type), property.name,
                    "is a " + property.type.className + ", a class nobody knows");
    findings.Expect(property.readable(), property.name, "can't be read");
}

void LookAtConsistency(const Class& type, Findings& findings) {
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

RecordFindings CheckDeclarations(const std::vector<const Class*>& classes) {
    return OverClasses(classes, [](const Class& type, Findings& findings) {
        const sdk::ClassDefinition& definition = *type.definition();
        for (std::int32_t i = 0; i < definition.methodCount; ++i)
            ExpectReadable(findings, definition.methods[i].declaration);
        for (std::int32_t i = 0; i < definition.sharedMethodCount; ++i)
            ExpectReadable(findings, definition.sharedMethods[i].declaration);
        for (std::int32_t i = 0; i < definition.eventCount; ++i)
            ExpectReadable(findings, definition.events[i].declaration);
    });
}

RecordFindings CheckConsistency(const std::vector<const Class*>& classes) {
    RecordFindings all = OverClasses(classes, LookAtConsistency);
    std::set<std::intptr_t> numbers;
    for (const Class* type : classes)
        for (std::int32_t i = 0; i < type->definition()->eventCount; ++i)
            if (!numbers.insert(type->definition()->events[i].hostNumber).second)
                all.faults.push_back(type->name() + " has an event whose number was changed");
    return all;
}

RecordFindings CheckConstants(const std::vector<const Class*>& classes) {
    return OverClasses(classes, [](const Class& type, Findings& findings) {
        for (std::int32_t i = 0; i < type.definition()->constantCount; ++i) {
            const sdk::ConstantRecord& record = type.definition()->constants[i];
            ConstantDeclaration constant;
            std::string problem;
            const bool read = ReadConstant(record.declaration, constant, problem);
            findings.Expect(read, record.declaration, "can't be read: " + problem);
            findings.Expect(!read || record.value == 0 || record.value == constant.value.ToInt32(), record.declaration,
                            "has another value in its record: " + std::to_string(record.value));
        }
    });
}

}  // namespace host::check
