// Forms of members that scripts call a million times: straight on values, without the way through the plug-in
// interface. A form does what its member does, and runs no code of a script but for destructors at its end.
#pragma once

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host {

inline constexpr std::size_t kMostQuickArguments = 4;

// `self` is null for a function, the arguments are of the declared types. The result may be written over the
// value of an argument. What it throws is an exception of the script.
using QuickForm = void (*)(Object* self, const Value* const* arguments, Value& result);

// For whoever registers the function behind a member.
void AddQuickForm(sdk::AnyFunction function, QuickForm form);

template <class Function>
void AddQuickForm(Function* function, QuickForm form) {
    AddQuickForm(reinterpret_cast<sdk::AnyFunction>(function), form);
}

// Of a call, or of an assignment, whose value comes last. Null where there is none.
QuickForm QuickFormOf(const Method& method);
QuickForm QuickSetterOf(const Method& method);

// Writes a text into a value: into its own memory where nobody else holds it.
void PutText(Value& value, std::string_view text, sdk::Encoding encoding);

}  // namespace host
