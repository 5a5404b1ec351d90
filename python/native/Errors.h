// Exceptions on their way between Python, C++ and the host.
#pragma once

#include <pybind11/pybind11.h>

#include <new>
#include <string>
#include <utility>

#include "host/calls/Border.h"
#include "host/calls/Runtime.h"
#include "host/images/Image.h"
#include "python/native/Gate.h"

namespace pytqx {

namespace py = pybind11;

// Says which Python exception stands for an exception class of the host, and for those that inherit from it.
void RegisterException(const std::string& hostClass, py::object type);

// Throws the Python exception that stands for a class of the host.
[[noreturn]] void ThrowAs(const std::string& hostClass, const std::string& text);

// Throws what a host exception is in Python: the original one where Python raised it.
[[noreturn]] void ThrowInPython(const host::Ref<host::Object>& exception);

// The Python exception in flight as an exception for the host's code to throw.
host::Raised CarriedThroughHost(py::error_already_set& error);

// Sets Python's error for the C++ exception in flight. For catch blocks.
void SetPythonError();

// Runs work for a function that C code of the interpreter calls: what it throws becomes Python's error.
template <class Work>
PyObject* AtPythonBorder(const Work& work) {
    try {
        return work();
    } catch (...) {
        SetPythonError();
        return nullptr;
    }
}
template <class Work>
int AtPythonBorder(const Work& work, int failed) {
    try {
        return work();
    } catch (...) {
        SetPythonError();
        return failed;
    }
}

// Runs work of the host or a plug-in without the interpreter's lock; what it throws or leaves raised is
// thrown as Python's. Inside the gate.
template <class Work>
auto Guarded(const Work& work) -> decltype(work()) {
    decltype(work()) result{};
    host::Ref<host::Object> thrown;
    {
        const Unlocked unlocked;
        try {
            result = work();
        } catch (const host::ImageError&) {
            throw;
        } catch (...) {
            thrown = host::CurrentException();
        }
        if (!thrown) thrown = host::Runtime::Get().TakeRaised();
    }
    if (thrown) ThrowInPython(thrown);
    return result;
}

}  // namespace pytqx
