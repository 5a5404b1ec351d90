// The resolver, and the services made of the host's functions.
#include "plugin/services/HostServices.h"

#include <cstring>

#include "platform/TickCount.h"

namespace tqx {

HostServices host;

namespace {

sdk::Resolver resolver = nullptr;

void RaiseWithMessage(const char* className, const char* message) {
    const OwnedObject exception(host.PluginNewInstance(className));
    sdk::String* const text =
        message ? BuildHostString(message, static_cast<std::int64_t>(std::strlen(message)), sdk::Encoding::Ascii)
                : nullptr;
    // Raised first, given its message after: the host only notes the exception here and lets it
    // take effect when the method returns. The order is intended.
    host.RuntimeRaiseException(exception.Get());
    host.REALSetPropValueString(exception.Get(), "Message", text);
    if (text) host.REALUnlockString(text);
}

}  // namespace

void KeepResolver(sdk::Resolver hostResolver) { resolver = hostResolver; }

sdk::AnyFunction ResolveHostFunction(const char* name) { return resolver ? resolver(name) : nullptr; }

void KeepObject(sdk::Object*& field, sdk::Object* object) {
    if (object) host.REALLockObject(object);
    field = object;
}

void DropObject(sdk::Object*& field) {
    sdk::Object* const dropped = field;
    field = nullptr;
    if (dropped) host.REALUnlockObject(dropped);
}

sdk::String* BuildHostString(const void* text, std::int64_t length, sdk::Encoding encoding) {
    if (!text || length == 0) return nullptr;
    sdk::String* const built = host.REALBuildString(static_cast<const char*>(text), length);
    if (!built) return nullptr;
    host.REALSetStringEncoding(built, encoding);
    if (encoding != sdk::Encoding::Utf16 && encoding != sdk::Encoding::Utf32) return built;
    sdk::String* const converted = host.REALConvertString(built, sdk::Encoding::Utf8);
    host.REALUnlockString(built);
    return converted;
}

void RaiseOutOfBounds(const char* message) { RaiseWithMessage("OutOfBoundsException", message); }

void RaiseNilObject(const char* message) { RaiseWithMessage("NilObjectException", message); }

sdk::Object* MemoryBlockFromBytes(const std::uint8_t* bytes, std::int64_t length) {
    if (!bytes || length < 1) return nullptr;
    OwnedObject block(host.newMemoryBlock(length));
    if (!block) return nullptr;
    std::uint8_t* const copy = host.memoryBlockGetPtr(block.Get());
    if (!copy) return nullptr;
    std::memmove(copy, bytes, static_cast<std::size_t>(length));
    return block.Give();
}

void PeriodicYield(std::int32_t yieldTicks, std::uint32_t* lastYieldTick) {
    const std::uint32_t elapsed = platform::TickCount() - *lastYieldTick;
    if (elapsed < static_cast<std::uint32_t>(yieldTicks)) return;
    host.REALYieldToRB();
    *lastYieldTick = platform::TickCount();
}

}  // namespace tqx
