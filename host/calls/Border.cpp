// Which exception class stands for what C++ code throws, and raising it at the border.
#include "host/calls/Border.h"

#include <new>
#include <stdexcept>

#include "host/messages/RunningMessages.h"

namespace host {

namespace {

std::vector<ExceptionTranslator>& Translators() {
    static std::vector<ExceptionTranslator> translators;
    return translators;
}

const char* ClassOf(const std::exception& error) {
    for (const ExceptionTranslator translator : Translators())
        if (const char* const name = translator(error)) return name;
    return "RuntimeException";
}

// As CurrentException; std::bad_alloc where that takes more memory than there is.
Ref<Object> Translated() {
    Runtime& runtime = Runtime::Get();
    try {
        throw;
    } catch (const Raised& raised) {
        return raised.exception;
    } catch (const std::bad_alloc&) {
        return runtime.OutOfMemory();
    } catch (const std::length_error&) {
        return runtime.OutOfMemory();  // a size that no container can have
    } catch (const std::exception& error) {
        return runtime.MakeException(ClassOf(error), error.what());
    } catch (...) {
        return runtime.MakeException(kScriptRaises.withoutReason());
    }
}

}  // namespace

Ref<Object> CurrentException() noexcept {
    try {
        return Translated();
    } catch (...) {
        return Runtime::Get().OutOfMemory();
    }
}

void RaiseCurrent() noexcept { Runtime::Get().Raise(CurrentException()); }

void AddExceptionTranslator(ExceptionTranslator translator) { Translators().push_back(translator); }

}  // namespace host
