// Values of Python and of the host.
//
//   Integer, Int64, UInt32, UInt8    int, or anything with __index__; out of range is an OverflowError
//   Double, Single                   float, int, or anything with __float__
//   Boolean                          bool
//   Color                            tqx.Color, or an int 0x00RRGGBB
//   String                           str (UTF-8), bytes (no encoding); "" and b"" are the host's nil
//   arrays                           any sequence of the element's values; None
//   objects                          their wrappers; None; for a FolderItem also a path
//   Variant                          any of these by what it is
//
// The other way a String is bytes when it has no encoding, else str; a nil one is None.
#pragma once

#include <pybind11/pybind11.h>

#include <optional>

#include "host/objects/Type.h"
#include "host/objects/Value.h"

namespace pytqx {

namespace py = pybind11;

// The value for a place of this type, not yet converted to the very type: None where Python's value can't
// stand there. Throws an OverflowError for a number that the type can't hold. Inside the gate.
std::optional<host::Value> FromPython(PyObject* value, const host::Type& place);

// Inside the gate.
py::object ToPython(const host::Value& value);

// tqx.Color, once the package has made it.
void SetColorType(py::object type);

}  // namespace pytqx
