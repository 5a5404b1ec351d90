// Which overload a call from Python means, with its arguments as the host's values.
//
// The rule is the language's (host/calls/Overload.h): the least total cost of the conversions, then the
// fewest defaults. Keywords are the names of parameters, in any case.
#pragma once

#include <pybind11/pybind11.h>

#include <span>
#include <string>
#include <vector>

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace pytqx {

// The arguments of a call as Python's vectorcall hands them over: `count` positional ones, then those that
// `keywords` (a tuple of names, or null) names.
struct PythonArguments {
    PyObject* const* values;
    Py_ssize_t count;
    PyObject* keywords;
};

struct Chosen {
    const host::Method* method;
    std::vector<host::Value> arguments;  // of the declared types, one for each parameter
    host::Value assigned;                // likewise, of an assignment
};

// Throws a TypeError that names the candidates when none fits, or several fit equally well. With `assigned`
// only assignable methods count. Inside the gate.
Chosen Choose(const std::string& what, std::span<const host::Method* const> candidates,
              const PythonArguments& arguments, PyObject* assigned = nullptr);

}  // namespace pytqx
