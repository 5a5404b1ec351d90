// Image files of the host's readers and writers, row by row.
#pragma once

#include <pybind11/pybind11.h>

namespace pytqx {

// Adds the classes ImageReader and ImageWriter.
void AddImages(pybind11::module_& module);

}  // namespace pytqx
