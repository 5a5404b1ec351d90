// Cases done again with an interval of yields set.
#include "host/check/Yields.h"

#include "host/check/Passes.h"

namespace host::check {

const Property* YieldProperty(const Class& type) {
    for (const Property& property : type.properties())
        if (property.type.kind == Kind::Integer && property.writable() &&
            LowerName(property.name).find("yield") != std::string::npos)
            return &property;
    return nullptr;
}

std::vector<Case> YieldCases(const Supply& supply, bool firstOnly) {
    std::vector<Case> cases = FirstLists(Narrowed(supply, firstOnly));
    std::erase_if(cases, [](const Case& one) {
        const bool calls = one.action == Action::Call || one.action == Action::Assign;
        return !calls || !YieldProperty(*one.type);
    });
    return cases;
}

std::string YieldScript(const Case& one, std::int32_t interval) {
    std::string script = one.Script();
    const std::size_t made = one.instance->script("p").size();
    return script.insert(made, "p." + YieldProperty(*one.type)->name + " = " + std::to_string(interval) + "\n");
}

}  // namespace host::check
