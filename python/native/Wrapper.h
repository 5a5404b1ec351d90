// Objects of the host as objects of Python.
//
// Each live host object has at most one wrapper, which holds one reference of it. All wrapper types derive
// from one base type, tqx._native.Object; Python makes one for each class of the records, and scripts in
// Python derive more. Objects of those (Handlers.h) may live on in the host after the last reference from
// Python has gone, as the global factory does; then their type and attributes are kept here until they come
// back to Python, or until the host lets go of them.
#pragma once

#include <pybind11/pybind11.h>

#include "host/objects/Class.h"
#include "host/objects/Object.h"

namespace pytqx {

namespace py = pybind11;

// The base type of all wrappers. Borrowed.
PyTypeObject* WrapperType();

// Says of which host class a Python type's objects are; both then live as long as the process. `custom`:
// derived in Python.
void Register(PyTypeObject* type, const host::Class& hostClass, bool custom);

// The host class of a type; null for one that is not registered.
const host::Class* ClassOf(PyTypeObject* type);

// The type of a host class: its own, or that of the nearest superclass that has one. Borrowed.
PyTypeObject* TypeOf(const host::Class& hostClass);

// The wrapper of an object; None for nil. Inside the gate.
py::object Wrap(const host::Ref<host::Object>& object);

// The object behind a wrapper, borrowed; null for anything else.
host::Object* Unwrap(PyObject* wrapper);

// For the destructor of a custom class: forgets what was kept of an object.
void ForgetKept(host::Object* object);

// --- Bytes that others look at -------------------------------------------------------------------

// How many views of an object's bytes there are. While there are any, what would free the bytes is refused.
void AddView(host::Object* object);
void RemoveView(host::Object* object);
bool HasViews(host::Object* object);

}  // namespace pytqx
