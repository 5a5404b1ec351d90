// The border between C++ exceptions and what scripts and plug-ins see.
//
// Behind a function that C code calls (a plug-in, libffi, a library's callback) no C++ exception
// may travel on. Such a function does its work in AtBorder: what is thrown there becomes the
// runtime's raised exception, and the function gives zero. Which exception object stands for which
// C++ exception is settled in one place, CurrentException.
#pragma once

#include <exception>
#include <type_traits>

#include "host/calls/Runtime.h"

namespace host {

// The C++ exception in flight as an exception object: a Raised is its own, short memory is an
// OutOfMemoryException, what a translator knows has the class it says, the rest are
// RuntimeExceptions. For catch blocks; never nil.
Ref<Object> CurrentException() noexcept;

// Marks it as raised. For catch blocks.
void RaiseCurrent() noexcept;

// Names the exception class for C++ exceptions of a kind it knows; null for any other.
using ExceptionTranslator = const char* (*)(const std::exception&);
void AddExceptionTranslator(ExceptionTranslator translator);

// Runs `work`. What it throws is raised, and the result is then zero.
template <class Work>
auto AtBorder(const Work& work) noexcept -> decltype(work()) {
    using Result = decltype(work());
    try {
        return work();
    } catch (...) {
        RaiseCurrent();
    }
    if constexpr (!std::is_void_v<Result>) return Result{};
}

}  // namespace host
