// Classes that Python derives from those of the records.
//
//   class Scratch(tqx.PictureFactoryTQX):
//       def NewPictureTQX(self, width, height, image_format): ...
//
// Each becomes a class of the host, which handles every event whose name the Python class has an attribute
// of. What the handler raises passes through the plug-in's call as a host exception and leaves the outer
// call as the same Python exception.
#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace pytqx {

namespace py = pybind11;

// Registers the type as a class of the host that inherits from its base's. Throws a TypeError for a base
// that stands for no class.
void Derive(const py::type& type, const std::string& name);

}  // namespace pytqx
