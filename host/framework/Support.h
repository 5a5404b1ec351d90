// What the framework's classes have in common: instance data as records, errors as exceptions.
//
// The functions behind the framework's members are called through the plug-in interface, which
// no C++ exception may cross. They may throw all the same: Guarded<&Function> stands in the
// records in their place and stops at the border (calls/Border.h) what is thrown.
#pragma once

#include <new>
#include <string>
#include <type_traits>

#include "host/calls/Border.h"
#include "host/calls/Runtime.h"
#include "host/messages/RunningMessages.h"
#include "sdk/Declare.h"

namespace host {

// Raises an exception of the framework from within a guarded function.
[[noreturn]] void Fail(const Raising& what, std::int32_t errorNumber = 0);

// The exception class for an error of the framework's own kinds (ImageError); null for others.
const char* ExceptionClassOf(const std::exception& error);

template <auto Function>
struct GuardedFunction;

template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct GuardedFunction<Function> {
    static Result Call(Arguments... arguments) noexcept {
        return AtBorder([&] { return Function(arguments...); });
    }
};

template <auto Function>
inline constexpr auto Guarded = &GuardedFunction<Function>::Call;

// An instance's data by the definition that declares it.
template <class Record>
Record& DataOf(sdk::Object* object, const sdk::ClassDefinition& definition) {
    return *DataAt<Record>(object, definition.instanceDataOffset);
}

// Whether the object is an instance of the class behind a definition. False for nil.
bool IsInstance(const sdk::Object* object, const sdk::ClassDefinition& definition);

// A new instance. Throws std::bad_alloc when memory is short.
Ref<Object> NewInstanceOf(const sdk::ClassDefinition& definition);

// Fills a definition's lists; the arrays must live as long as the process.
template <std::size_t Count>
void SetMethods(sdk::ClassDefinition& definition, const sdk::MethodRecord (&methods)[Count]) {
    definition.methods = methods;
    definition.methodCount = Count;
}

template <std::size_t Count>
void SetSharedMethods(sdk::ClassDefinition& definition, const sdk::MethodRecord (&methods)[Count]) {
    definition.sharedMethods = methods;
    definition.sharedMethodCount = Count;
}

template <std::size_t Count>
void SetProperties(sdk::ClassDefinition& definition, const sdk::PropertyRecord (&properties)[Count]) {
    definition.properties = properties;
    definition.propertyCount = Count;
}

template <std::size_t Count>
void SetConstants(sdk::ClassDefinition& definition, const sdk::ConstantRecord (&constants)[Count]) {
    definition.constants = constants;
    definition.constantCount = Count;
}

// Registers a class of the framework; one that is refused ends the process with the reason.
void RegisterOrAbort(Runtime& runtime, sdk::ClassDefinition& definition);

// The same for a class without events whose instances have so many slots for values, empty at first.
// Objects that hold each other through slots are found at a program's end.
const Class& RegisterHolderOrAbort(Runtime& runtime, sdk::ClassDefinition& definition, int slots);

// A result that carries one reference for the caller.
inline sdk::String* GiveString(std::string_view bytes, sdk::Encoding encoding = sdk::Encoding::Utf8) {
    return MakeString(bytes, encoding).Detach();
}

// The type's name as text that lives as long as the process.
template <sdk::Text Type>
inline constexpr sdk::Text kTypeName = Type;

// Property records of the usual kinds.
template <sdk::Text Type, auto Getter>
sdk::PropertyRecord ReadOnly(const char* name) {
    return {name, kTypeName<Type>.characters, sdk::kMemberProperty, sdk::ComputedAs<Type, Guarded<Getter>>(),
            sdk::kNoAccess};
}

template <sdk::Text Type, auto Getter, auto Setter>
sdk::PropertyRecord ReadWrite(const char* name) {
    return {name, kTypeName<Type>.characters, sdk::kMemberProperty, sdk::ComputedAs<Type, Guarded<Getter>>(),
            sdk::AssignedAs<Type, Guarded<Setter>>()};
}

}  // namespace host
