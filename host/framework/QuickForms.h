// Forms of members that scripts call a million times: straight on values, without the way through the plug-in
// interface. A form does what its member does, and runs no code of a script but for destructors at its end.
#pragma once

#include <type_traits>
#include <utility>

#include "host/framework/Support.h"
#include "host/objects/Array.h"
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

// How a quick form reads an argument, and what becomes of a result.
template <class T>
T QuickArgument(const Value& value) {
    if constexpr (std::is_same_v<T, sdk::String*>)
        return value.string();
    else if constexpr (std::is_same_v<T, sdk::Array*>)
        return value.array();
    else
        return static_cast<T>(value.bits());
}

inline void PutResult(Value& result, sdk::String* text) { result = Value(Ref<String>::Adopt(FromPlugin(text))); }
inline void PutResult(Value& result, sdk::Array* array) { result = Value(Ref<Array>::Adopt(FromPlugin(array))); }
inline void PutResult(Value& result, std::int32_t number) { result.bits() = number; }

template <auto Function>
struct QuickFormBy;

template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct QuickFormBy<Function> {
    static void Call(Object*, const Value* const* arguments, Value& result) {
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            PutResult(result, Function(QuickArgument<Arguments>(*arguments[I])...));
        }
        (std::index_sequence_for<Arguments...>());
    }
};

// For a function of texts, arrays and whole numbers that is registered as Guarded<Function>: it is called itself.
template <auto Function>
void AddQuickFormBy() {
    AddQuickForm(Guarded<Function>, &QuickFormBy<Function>::Call);
}

// Of a call, or of an assignment, whose value comes last. Null where there is none.
QuickForm QuickFormOf(const Method& method);
QuickForm QuickSetterOf(const Method& method);

// A text for a script. A single ASCII character is the one that all share.
Ref<String> TextOfBytes(std::string_view bytes, sdk::Encoding encoding);

// The same written into a value: into its own memory where nobody else holds it.
void PutText(Value& value, std::string_view text, sdk::Encoding encoding);

}  // namespace host
