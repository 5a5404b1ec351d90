// Ways to raise what a member of the framework raises.
#include "host/framework/Support.h"

#include <cstdio>
#include <cstdlib>

#include "host/calls/ClassDefinition.h"
#include "host/images/Image.h"

namespace host {

void Fail(const Raising& what, std::int32_t errorNumber) {
    throw Raised{Runtime::Get().MakeException(what, errorNumber)};
}

const char* ExceptionClassOf(const std::exception& error) {
    const auto* image = dynamic_cast<const ImageError*>(&error);
    if (!image) return nullptr;
    return image->kind == ImageError::Kind::File ? "IOException" : "UnsupportedFormatException";
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

const Class& RegisterHolderOrAbort(Runtime& runtime, sdk::ClassDefinition& definition, int slots) {
    definition.version = sdk::kInterfaceVersion;
    std::vector<std::string> problems;
    std::unique_ptr<Class> type = ClassFromDefinition(definition, nullptr, 0, problems);
    for (int slot = 0; type && slot < slots; ++slot) type->AddSlot(Value());
    const Class* const registered = type ? runtime.AddClass(std::move(type)) : nullptr;
    if (registered) return *registered;
    std::fprintf(stderr, "class %s is refused: %s\n", definition.name,
                 problems.empty() ? "there is one already" : problems[0].c_str());
    std::abort();
}

}  // namespace host
