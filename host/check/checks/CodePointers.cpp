// Functions of the records.
#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/LoadedLibrary.h"
#include "host/check/Passes.h"

namespace host::check {

Outcomes CheckCodePointers(Context& context) {
    Findings findings;
    const std::vector<const Class*>& classes = context.Classes();
    const LoadedLibrary library(context.path());
    const auto expect = [&](const Class* type, const std::string& member, auto* function) {
        if (function)
            findings.Expect(library.HasCodeAt(reinterpret_cast<const void*>(function)), type->name() + "." + member,
                            "has a function that lies outside the plug-in");
    };
    for (const Class* type : classes) {
        expect(type, "Constructor", type->definition()->constructor);
        expect(type, "Destructor", type->definition()->destructor);
        for (const auto* methods : {&type->methods(), &type->sharedMethods()})
            for (const Method& method : *methods) {
                expect(type, method.declaration.name, method.function);
                expect(type, method.declaration.name, method.setter);
            }
        for (const Property& property : type->properties()) {
            expect(type, property.name, property.getter.function);
            expect(type, property.name, property.setter.function);
        }
    }
    return Only("code-pointers", findings.Judged(Counted(findings.looked(), "function")));
}

}  // namespace host::check
