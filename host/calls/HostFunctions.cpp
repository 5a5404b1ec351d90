// The functions of the core as a table of names and code, for the resolver.
#include "host/calls/HostFunctions.h"

#include "host/calls/Call.h"
#include "host/calls/Declaration.h"
#include "host/calls/Runtime.h"
#include "host/objects/Handlers.h"

namespace host {

namespace {

// The language version that this host states to plug-ins.
constexpr double kLanguageVersion = 2009.05;

std::int32_t RegisterClass(sdk::ClassDefinition* definition) {
    return definition && Runtime::Get().RegisterClass(*definition) ? 1 : 0;
}

sdk::Object* NewInstance(const char* className) {
    const Class* type = className ? Runtime::Get().FindClass(className) : nullptr;
    return type ? NewObject(*type).Detach() : nullptr;
}

bool GetPropValueInt(sdk::Object* object, const char* name, std::int32_t* value) {
    Object* self = FromPlugin(object);
    const Property* property = self && name ? self->type->FindProperty(name) : nullptr;
    if (!property || property->shared || !property->readable()) return false;
    const Value read = GetProperty(*property, self);
    if (!read.IsWhole()) return false;
    *value = read.ToInt32();
    return true;
}

bool SetPropValueString(sdk::Object* object, const char* name, sdk::String* value) {
    Object* self = FromPlugin(object);
    const Property* property = self && name ? self->type->FindProperty(name) : nullptr;
    if (!property || property->shared || !property->writable() || property->type.kind != Kind::String) return false;
    if (self->destroyed) return false;
    SetProperty(*property, self, Value(Ref<String>::Share(FromPlugin(value))));
    return true;
}

sdk::AnyFunction LoadObjectMethod(sdk::Object* object, const char* text) {
    Declaration declaration;
    std::string problem;
    if (!object || !text || !ReadDeclaration(text, declaration, problem)) return nullptr;
    const Method* method = FromPlugin(object)->type->FindExactMethod(declaration);
    return method ? FunctionOf(*method) : nullptr;
}

sdk::AnyFunction GetEventInstance(sdk::Object* object, std::intptr_t number) {
    const EventHandler* handler = object ? HandlerOf(*FromPlugin(object), number) : nullptr;
    return handler ? FunctionOf(*handler) : nullptr;
}

sdk::String* BuildString(const char* bytes, std::int64_t length) {
    if (!bytes || length <= 0) return nullptr;
    return MakeString({bytes, static_cast<std::size_t>(length)}, sdk::Encoding::None).Detach();
}

void SetStringEncoding(sdk::String* string, sdk::Encoding encoding) {
    if (string) SetEncoding(*FromPlugin(string), encoding);
}

sdk::String* ConvertString(sdk::String* string, sdk::Encoding encoding) {
    return ConvertEncoding(Ref<String>::Share(FromPlugin(string)), encoding).Detach();
}

std::int32_t ReadInteger(sdk::Array* array, std::int32_t index) {
    const Array* integers = FromPlugin(array);
    if (index < 0 || index > UpperBound(integers)) return 0;
    return integers->values[static_cast<std::size_t>(index)].ToInt32();
}

}  // namespace

void BindCoreFunctions(Runtime& runtime) {
    runtime.Bind<sdk::kPluginRegisterClass>(&RegisterClass);
    runtime.Bind<sdk::kRegisterPluginVersion>([](std::int32_t) {});
    runtime.Bind<sdk::kREALGetRBVersion>([] { return kLanguageVersion; });
    runtime.Bind<sdk::kREALenterMovies>([] {});
    runtime.Bind<sdk::kPluginNewInstance>(&NewInstance);
    runtime.Bind<sdk::kREALLockObject>([](sdk::Object* object) { Retain(FromPlugin(object)); });
    runtime.Bind<sdk::kREALUnlockObject>([](sdk::Object* object) { Release(FromPlugin(object)); });
    runtime.Bind<sdk::kREALGetPropValueInt>(&GetPropValueInt);
    runtime.Bind<sdk::kREALSetPropValueString>(&SetPropValueString);
    runtime.Bind<sdk::kREALLoadObjectMethod>(&LoadObjectMethod);
    runtime.Bind<sdk::kGetEventInstancePPC>(&GetEventInstance);
    runtime.Bind<sdk::kRuntimeRaiseException>(
        [](sdk::Object* exception) { Runtime::Get().Raise(Ref<Object>::Share(FromPlugin(exception))); });
    runtime.Bind<sdk::kREALYieldToRB>([] { Runtime::Get().Yield(); });
    runtime.Bind<sdk::kREALBuildString>(&BuildString);
    runtime.Bind<sdk::kREALUnlockString>([](sdk::String* string) { Release(FromPlugin(string)); });
    runtime.Bind<sdk::kREALSetStringEncoding>(&SetStringEncoding);
    runtime.Bind<sdk::kREALConvertString>(&ConvertString);
    runtime.Bind<sdk::kRuntimeUBound>([](sdk::Array* array) { return UpperBound(FromPlugin(array)); });
    runtime.Bind<sdk::kRuntimeDirectReadIntArray>(&ReadInteger);
}

}  // namespace host
