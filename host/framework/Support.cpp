#include "host/framework/Support.h"

#include <cstdio>
#include <cstdlib>

namespace host {

void Fail(std::string_view className, std::string_view message, std::int32_t errorNumber) {
    throw Raised{Runtime::Get().MakeException(className, message, errorNumber)};
}

void RaiseCurrent() noexcept {
    Runtime& runtime = Runtime::Get();
    try {
        throw;
    } catch (const Raised& raised) {
        runtime.Raise(raised.exception);
    } catch (const ImageError& error) {
        runtime.Raise(error.kind == ImageError::Kind::File ? "IOException" : "UnsupportedFormatException",
                      error.what());
    } catch (const std::bad_alloc&) {
        runtime.Raise("OutOfMemoryException", "There is not enough memory.");
    } catch (const std::exception& error) {
        runtime.Raise("RuntimeException", error.what());
    }
}

bool IsInstance(const sdk::Object* object, const sdk::ClassDefinition& definition) {
    if (!object) return false;
    const Class& type = Runtime::Get().ClassNamed(definition.name);
    return IsA(static_cast<const Object*>(object), type);
}

Ref<Object> NewInstanceOf(const sdk::ClassDefinition& definition) {
    Ref<Object> object = NewObject(Runtime::Get().ClassNamed(definition.name));
    if (!object) throw std::bad_alloc();
    return object;
}

void RegisterOrAbort(Runtime& runtime, sdk::ClassDefinition& definition) {
    definition.version = sdk::kInterfaceVersion;
    if (runtime.RegisterClass(definition)) return;
    std::fprintf(stderr, "%s\n", runtime.LastRefusal().c_str());
    std::abort();
}

}  // namespace host
