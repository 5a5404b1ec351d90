// Data and members of RuntimeException, and the list of its subclasses.
#include "host/calls/Exceptions.h"

#include "host/calls/Call.h"
#include "host/calls/Runtime.h"

namespace host {

namespace {

struct ExceptionData {
    String* message;
    std::int32_t errorNumber;
};

sdk::ClassDefinition runtimeException;

ExceptionData* DataOf(sdk::Object* object) {
    return DataAt<ExceptionData>(object, runtimeException.instanceDataOffset);
}

void Destroy(sdk::Object* object) { Release(DataOf(object)->message); }

const sdk::PropertyRecord properties[] = {
    {"Message", "String", 6, sdk::FieldAt(offsetof(ExceptionData, message)),
     sdk::FieldAt(offsetof(ExceptionData, message))},
    {"ErrorNumber", "Integer", 6, sdk::FieldAt(offsetof(ExceptionData, errorNumber)),
     sdk::FieldAt(offsetof(ExceptionData, errorNumber))},
};

void Construct(sdk::Object*) {}

void ConstructWithMessage(sdk::Object* object, sdk::String* message) {
    Retain(FromPlugin(message));
    Release(std::exchange(DataOf(object)->message, FromPlugin(message)));
}

void ConstructWithNumber(sdk::Object* object, sdk::String* message, std::int32_t errorNumber) {
    ConstructWithMessage(object, message);
    DataOf(object)->errorNumber = errorNumber;
}

constexpr const char* kSubclasses[] = {
    "OutOfBoundsException", "NilObjectException",         "TypeMismatchException", "IllegalCastException",
    "IOException",          "UnsupportedFormatException", "KeyNotFoundException",  "StackOverflowException",
    "OutOfMemoryException"};

sdk::ClassDefinition subclasses[std::size(kSubclasses)];

}  // namespace

void RegisterExceptions(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Constructor()", &Construct>(sdk::kMemberPortable),
        sdk::Method<"Constructor(message as string)", &ConstructWithMessage>(sdk::kMemberPortable),
        sdk::Method<"Constructor(message as string, errorNumber as integer)", &ConstructWithNumber>(
            sdk::kMemberPortable),
    };
    runtimeException = {.version = sdk::kInterfaceVersion,
                        .name = "RuntimeException",
                        .instanceDataSize = sizeof(ExceptionData),
                        .destructor = &Destroy,
                        .properties = properties,
                        .propertyCount = std::size(properties),
                        .methods = methods,
                        .methodCount = std::size(methods)};
    runtime.RegisterClass(runtimeException);
    for (std::size_t i = 0; i < std::size(kSubclasses); ++i) {
        subclasses[i] = {
            .version = sdk::kInterfaceVersion, .name = kSubclasses[i], .superclass = runtimeException.name};
        runtime.RegisterClass(subclasses[i]);
    }
}

std::string MessageOf(const Object* exception) {
    if (!exception) return "";
    return std::string(Bytes(DataOf(const_cast<Object*>(exception))->message));
}

std::int32_t ErrorNumberOf(const Object* exception) {
    return exception ? DataOf(const_cast<Object*>(exception))->errorNumber : 0;
}

}  // namespace host
