// Pixels and memory blocks as buffers of Python, without a copy.
//
// A picture in memory shows as rows of pixels of the channels that its format has, from the format's first
// byte on: (height, width) for one byte a pixel, else (height, width, bytes), (height, width, 4) floats for
// the intermediate of scaling. Clips, channel views and mirrored views have the strides that they need. A
// picture whose rows are in a file can't be shown: its rows are copied (CopyRows).
#pragma once

#include <pybind11/pybind11.h>

namespace pytqx {

namespace py = pybind11;

// For the base type's buffer slots.
int GetBuffer(PyObject* wrapper, Py_buffer* view, int flags);
void ReleaseBuffer(PyObject* wrapper, Py_buffer* view);

// The shape and the type of the items ("B" or "f") of any picture, mapped or not.
py::tuple ShapeOf(py::handle picture);

// Copies rows of any picture from row `first` on to a packed array of rows of its shape, or from it.
void ReadRows(py::handle picture, std::int64_t first, const py::buffer& rows);
void WriteRows(py::handle picture, std::int64_t first, const py::buffer& rows);

// A memory block around the bytes of a writable buffer, which it keeps alive. The buffer may have strides; the
// block begins at its first item.
py::object Lend(const py::buffer& buffer);

}  // namespace pytqx
