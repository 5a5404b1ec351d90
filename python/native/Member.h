// Members of the records as descriptors of Python classes.
//
//   Method     all overloads of a name; called on an instance, or through the class the shared ones.
//              An assignable one can be indexed: picture.Row[3] = block
//   Property   a getter and, where there is one, a setter
#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "host/objects/Class.h"

namespace pytqx {

namespace py = pybind11;

// A new descriptor for all methods of this name that the class itself declares or inherits.
py::object MakeMethod(const host::Class& owner, const std::string& name, const std::string& documentation);
py::object MakeProperty(const host::Property& property, const std::string& documentation);

// Runs the Constructor that the arguments choose on a new object. False with Python's error set.
bool Construct(PyObject* self, PyObject* arguments, PyObject* keywords);

void AddMemberTypes(py::module_& module);

}  // namespace pytqx
