// The module tqx._native: the desk host for the Python package, which makes classes of its records.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "host/calls/PluginLoader.h"
#include "host/framework/Framework.h"
#include "host/objects/Array.h"
#include "host/reference/ReferenceJson.h"
#include "python/native/Buffers.h"
#include "python/native/Convert.h"
#include "python/native/Errors.h"
#include "python/native/Explanation.h"
#include "python/native/Gate.h"
#include "python/native/Handlers.h"
#include "python/native/Images.h"
#include "python/native/Member.h"
#include "python/native/Pieces.h"
#include "python/native/Scripts.h"
#include "python/native/Wrapper.h"

namespace pytqx {

namespace {

const host::Class& Named(const std::string& name) {
    const host::Class* const type = host::Runtime::Get().FindClass(name);
    if (!type) throw py::key_error("there is no class " + name);
    return *type;
}

// The names of the classes that a plug-in registers.
std::vector<std::string> LoadPlugin(const std::string& path) {
    const Inside inside;
    std::vector<std::string> names;
    try {
        for (const host::Class* type : host::LoadPlugin(path).classes) names.push_back(type->name());
    } catch (const host::LoadError& error) {
        throw py::import_error(error.what());
    }
    ForgetExplainer();
    return names;
}

std::vector<std::string> ClassNames() {
    std::vector<std::string> names;
    for (const host::Class* type : host::Runtime::Get().Classes()) names.push_back(type->name());
    return names;
}

std::string Records() {
    const auto classes = host::Runtime::Get().Classes();
    return host::ClassesAsJson(classes);
}

py::object Method(const std::string& owner, const std::string& name, const std::string& documentation) {
    return MakeMethod(Named(owner), name, documentation);
}

py::object Property(const std::string& owner, const std::string& name, const std::string& documentation) {
    const host::Property* const property = Named(owner).FindProperty(name);
    if (!property) throw py::key_error(owner + " has no property " + name);
    return MakeProperty(*property, documentation);
}

void RegisterType(const std::string& name, const py::type& type) {
    Register(reinterpret_cast<PyTypeObject*>(type.ptr()), Named(name), false);
}

py::dict LiveCounts() {
    const Inside inside;
    py::dict counts;
    counts["objects"] = host::LiveObjectCount();
    counts["strings"] = host::LiveStringCount();
    counts["arrays"] = host::LiveArrayCount();
    return counts;
}

// While the host waits in a long call it lets Ctrl-C through.
void CheckSignals() {
    const WithInterpreter interpreter;
    if (PyErr_CheckSignals() == 0) return;
    py::error_already_set error;
    throw CarriedThroughHost(error);
}

}  // namespace

PYBIND11_MODULE(_native, module) {
    host::RegisterFramework(host::Runtime::Get());
    host::Runtime::Get().OnYield(&CheckSignals);
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const host::ImageError&) {
            SetPythonError();
        }
    });
    AddMemberTypes(module);
    AddImages(module);
    AddPieces(module);
    module.attr("Object") = py::handle(reinterpret_cast<PyObject*>(WrapperType()));
    module.def("load_plugin", &LoadPlugin);
    module.def("class_names", &ClassNames);
    module.def("records", &Records);
    module.def("method", &Method);
    module.def("property", &Property);
    module.def("register_type", &RegisterType);
    module.def("derive", &Derive);
    module.def("register_exception", &RegisterException);
    module.def("set_color_type", &SetColorType);
    module.def("last_explanation", &LastExplanation);
    module.def("listen", &Listen);
    module.def("shape_of", &ShapeOf);
    module.def("read_rows", &ReadRows);
    module.def("write_rows", &WriteRows);
    module.def("lend", &Lend);
    module.def("run_script", &RunScript);
    module.def("live_counts", &LiveCounts);
}

}  // namespace pytqx
