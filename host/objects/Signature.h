// What a method or event is called, what it takes and what it gives.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/objects/Type.h"
#include "host/objects/Value.h"

namespace host {

// As many as a function of the plug-in interface may take.
inline constexpr std::size_t kMostParameters = 32;

// What words before a parameter's name say of it.
struct ParameterFlags {
    bool byRef = false;
    bool optional = false;    // may be left out; then it is the default value
    bool paramArray = false;  // takes all further arguments as one array
    bool assigns = false;     // takes the value of an assignment to a call
    bool extends = false;     // takes what stands before the dot
};

// The records of the object model name types by host::Type, those of a script that is being checked
// by its own.
template <class OfType>
struct ParameterOf : ParameterFlags {
    std::string name;
    OfType type;
    Value defaultValue;  // already of the parameter's type; nothing: the type's own default
};

template <class OfType>
struct DeclarationOf {
    std::string name;
    std::vector<ParameterOf<OfType>> parameters;
    OfType result;  // kind None for a method that gives nothing

    // Arguments that can't be left out.
    std::size_t RequiredCount() const {
        std::size_t count = 0;
        for (const ParameterOf<OfType>& parameter : parameters) count += !parameter.optional && !parameter.paramArray;
        return count;
    }
};

using Parameter = ParameterOf<Type>;
using Declaration = DeclarationOf<Type>;

// The same signature with types of another model: typeOf(type) gives each.
template <class To, class From, class TypeOf>
DeclarationOf<To> WithTypes(const DeclarationOf<From>& signature, const TypeOf& typeOf) {
    DeclarationOf<To> copy{signature.name, {}, typeOf(signature.result)};
    for (const ParameterOf<From>& parameter : signature.parameters)
        copy.parameters.push_back({parameter, parameter.name, typeOf(parameter.type), parameter.defaultValue});
    return copy;
}

// Whether the two have the same name, parameter types and result; names of parameters, defaults,
// letter case and blanks do not count.
bool SameSignature(const Declaration& a, const Declaration& b);
bool SameParameters(const Declaration& a, const Declaration& b);

}  // namespace host
