// Scripts in the host's language, run in this process.
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace pytqx {

namespace py = pybind11;

// Runs the script in a file: (exit code, the lines it printed, the messages of its failure).
py::tuple RunScript(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace pytqx
