// Raised exceptions of the host as Python's, and those of Python on their way through the host.
#include "python/native/Errors.h"

#include <memory>
#include <unordered_map>

#include "host/calls/Call.h"
#include "host/objects/Class.h"

namespace pytqx {

namespace {

struct Tables {
    std::unordered_map<std::string, py::object> types;
    std::unordered_map<host::Object*, py::object> carried;  // by the host's exception
};

Tables& All() {
    static auto* const tables = new Tables;
    return *tables;
}

// The class of exceptions that Python raised in the middle of the host's code.
const host::Class& CarrierClass() {
    static const host::Class* const carrier = [] {
        host::Runtime& runtime = host::Runtime::Get();
        auto type = std::make_unique<host::Class>("PythonException", &runtime.ClassNamed("RuntimeException"));
        type->SetDestructor([](host::Object* exception) {
            const WithInterpreter interpreter;
            const auto forgotten = All().carried.extract(exception);
        });
        return runtime.AddClass(std::move(type));
    }();
    return *carrier;
}

py::handle TypeOfException(const host::Object& exception) {
    for (const host::Class* type = exception.type; type; type = type->superclass())
        if (const auto found = All().types.find(type->name()); found != All().types.end()) return found->second;
    return PyExc_RuntimeError;
}

py::handle TypeNamed(const std::string& hostClass) {
    const auto found = All().types.find(hostClass);
    return found == All().types.end() ? py::handle(PyExc_RuntimeError) : py::handle(found->second);
}

py::handle TypeOfImageError(const host::ImageError& error) {
    return TypeNamed(error.kind == host::ImageError::Kind::File ? "IOException" : "UnsupportedFormatException");
}

}  // namespace

void RegisterException(const std::string& hostClass, py::object type) { All().types[hostClass] = std::move(type); }

void ThrowAs(const std::string& hostClass, const std::string& text) {
    PyErr_SetString(TypeNamed(hostClass).ptr(), text.c_str());
    throw py::error_already_set();
}

void ThrowInPython(const host::Ref<host::Object>& exception) {
    if (const auto carried = All().carried.find(exception.get()); carried != All().carried.end()) {
        const py::object original = carried->second;
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(original.ptr())), original.ptr());
        throw py::error_already_set();
    }
    const py::handle type = TypeOfException(*exception);
    const py::object error = type(host::MessageOf(exception.get()));
    if (py::hasattr(type, "ErrorNumber")) error.attr("ErrorNumber") = host::ErrorNumberOf(exception.get());
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

host::Raised CarriedThroughHost(py::error_already_set& error) {
    const std::string text = error.what();
    py::object value = error.value();
    if (error.trace()) PyException_SetTraceback(value.ptr(), error.trace().ptr());
    host::Ref<host::Object> exception = host::NewObject(CarrierClass());
    if (!exception) throw std::bad_alloc();
    host::SetProperty(*CarrierClass().FindProperty("Message"), exception.get(), host::Value(text));
    All().carried[exception.get()] = std::move(value);
    return {std::move(exception)};
}

void SetPythonError() {
    try {
        throw;
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const py::builtin_exception& error) {
        error.set_error();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const host::ImageError& error) {
        PyErr_SetString(TypeOfImageError(error).ptr(), error.what());
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    }
}

}  // namespace pytqx
