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

struct Parameter {
    std::string name;
    Type type;
    bool byRef = false;
    bool optional = false;    // may be left out; then it is defaultValue
    bool paramArray = false;  // takes all further arguments as one array
    Value defaultValue;       // already of the parameter's type
};

struct Declaration {
    std::string name;
    std::vector<Parameter> parameters;
    Type result;  // kind None for a method that gives nothing

    std::size_t RequiredCount() const;  // arguments that can't be left out
};

// Whether the two have the same name, parameter types and result; names of parameters, defaults,
// letter case and blanks do not count.
bool SameSignature(const Declaration& a, const Declaration& b);
bool SameParameters(const Declaration& a, const Declaration& b);

}  // namespace host
