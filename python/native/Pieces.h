// What members of the plug-in know of a whole picture, for pictures that are worked on in pieces: the plug-in's
// own functions, so that pieces and wholes can't disagree.
#pragma once

#include <pybind11/pybind11.h>

namespace pytqx {

// Adds the functions contributions and count_luminance.
void AddPieces(pybind11::module_& module);

}  // namespace pytqx
