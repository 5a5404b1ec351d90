// The host as the plug-in sees it: its functions, found by name when first called, and the small
// services made of them. Nothing here knows of pictures.
#pragma once

#include <cstdint>

#include "sdk/HostFunctions.h"
#include "sdk/PluginInterface.h"

namespace tqx {

// Keeps the host's resolver; the host functions below find themselves through it.
void KeepResolver(sdk::Resolver resolver);

// The host function of a name, or null: asks the resolver.
sdk::AnyFunction ResolveHostFunction(const char* name);

// A host function that is resolved at its first call and then cached. While the host lacks it a
// call does nothing and gives 0, and the next call asks again. No lock: there is one thread.
template <class Signature>
class HostFunction;

template <class Result, class... Arguments>
class HostFunction<Result(Arguments...)> {
  public:
    constexpr explicit HostFunction(sdk::HostFunctionName<Result(Arguments...)> name) : name_(name.name) {}

    Result operator()(Arguments... arguments) {
        if (!function_) function_ = reinterpret_cast<Result (*)(Arguments...)>(ResolveHostFunction(name_));
        if (!function_) return Result();
        return function_(arguments...);
    }

  private:
    const char* name_;
    Result (*function_)(Arguments...) = nullptr;
};

// One entry a host function, by the host's name.
struct HostServices {
    HostFunction<std::int32_t(sdk::ClassDefinition*)> PluginRegisterClass{sdk::kPluginRegisterClass};
    HostFunction<void(std::int32_t)> RegisterPluginVersion{sdk::kRegisterPluginVersion};
    HostFunction<double()> REALGetRBVersion{sdk::kREALGetRBVersion};
    HostFunction<void()> REALenterMovies{sdk::kREALenterMovies};
    HostFunction<sdk::Object*(const char*)> PluginNewInstance{sdk::kPluginNewInstance};
    HostFunction<void(sdk::Object*)> REALLockObject{sdk::kREALLockObject};
    HostFunction<void(sdk::Object*)> REALUnlockObject{sdk::kREALUnlockObject};
    HostFunction<bool(sdk::Object*, const char*, std::int32_t*)> REALGetPropValueInt{sdk::kREALGetPropValueInt};
    HostFunction<bool(sdk::Object*, const char*, sdk::String*)> REALSetPropValueString{sdk::kREALSetPropValueString};
    HostFunction<sdk::AnyFunction(sdk::Object*, const char*)> REALLoadObjectMethod{sdk::kREALLoadObjectMethod};
    HostFunction<sdk::AnyFunction(sdk::Object*, std::intptr_t)> GetEventInstancePPC{sdk::kGetEventInstancePPC};
    HostFunction<void(sdk::Object*)> RuntimeRaiseException{sdk::kRuntimeRaiseException};
    HostFunction<void()> REALYieldToRB{sdk::kREALYieldToRB};
    HostFunction<sdk::String*(const char*, std::int64_t)> REALBuildString{sdk::kREALBuildString};
    HostFunction<void(sdk::String*)> REALUnlockString{sdk::kREALUnlockString};
    HostFunction<void(sdk::String*, sdk::Encoding)> REALSetStringEncoding{sdk::kREALSetStringEncoding};
    HostFunction<sdk::String*(sdk::String*, sdk::Encoding)> REALConvertString{sdk::kREALConvertString};
    HostFunction<sdk::Object*(std::int64_t)> newMemoryBlock{sdk::knewMemoryBlock};
    HostFunction<std::uint8_t*(sdk::Object*)> memoryBlockGetPtr{sdk::kmemoryBlockGetPtr};
    HostFunction<sdk::Object*(std::uint8_t*)> PtrToMemoryBlock{sdk::kPtrToMemoryBlock};
    HostFunction<std::int32_t(sdk::Array*)> RuntimeUBound{sdk::kRuntimeUBound};
    HostFunction<std::int32_t(sdk::Array*, std::int32_t)> RuntimeDirectReadIntArray{sdk::kRuntimeDirectReadIntArray};
    HostFunction<void(sdk::Object*, sdk::PictureDescription*)> lockPictureDescription{sdk::klockPictureDescription};
    HostFunction<void(sdk::Object*)> unlockPictureDescription{sdk::kunlockPictureDescription};
    HostFunction<sdk::Object*(sdk::GWorld*, bool)> REALBuildPictureFromGWorld{sdk::kREALBuildPictureFromGWorld};
    HostFunction<sdk::Object*(sdk::Object*, bool, std::int32_t, std::int32_t)> REALGetPictureMask{
        sdk::kREALGetPictureMask};
    HostFunction<sdk::Object*(std::int32_t, std::int32_t, std::int32_t)> newPicture{sdk::knewPicture};
    HostFunction<sdk::Object*(sdk::Object*)> pluginPictureGraphicsGetter{sdk::kpluginPictureGraphicsGetter};
    HostFunction<bool(sdk::Object*, sdk::FileReference*)> REALFSRefFromFolderItem{sdk::kREALFSRefFromFolderItem};
    HostFunction<bool(sdk::Object*, sdk::FileReference*)> REALFSSpecFromFolderItem{sdk::kREALFSSpecFromFolderItem};
};

extern HostServices host;

// Owns one reference to a host object and gives it up at the end of its life.
class OwnedObject {
  public:
    OwnedObject() = default;
    explicit OwnedObject(sdk::Object* reference) : object_(reference) {}
    OwnedObject(OwnedObject&& other) noexcept : object_(other.Give()) {}
    OwnedObject& operator=(OwnedObject&& other) noexcept {
        sdk::Object* const taken = other.Give();
        Release();
        object_ = taken;
        return *this;
    }
    ~OwnedObject() { Release(); }

    // Takes a reference of its own to an object (nil allowed).
    static OwnedObject Retain(sdk::Object* object) {
        if (object) host.REALLockObject(object);
        return OwnedObject(object);
    }

    sdk::Object* Get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    // Hands the reference to the caller.
    sdk::Object* Give() {
        sdk::Object* const given = object_;
        object_ = nullptr;
        return given;
    }

  private:
    void Release() {
        if (object_) host.REALUnlockObject(object_);
    }

    sdk::Object* object_ = nullptr;
};

// Retains an object into a record's field. The field must not hold a reference yet.
void KeepObject(sdk::Object*& field, sdk::Object* object);

// Releases the object of a record's field, if any, and sets the field to nil first, so that code
// run by the release never sees it.
void DropObject(sdk::Object*& field);

// A host string of `length` bytes. 16-bit and 32-bit Unicode is converted to UTF-8; any other
// encoding is only marked. Nil for a null text, a length of 0, or when the host can't. The caller
// owns the result.
sdk::String* BuildHostString(const void* text, std::int64_t length, sdk::Encoding encoding);

// Raise a host exception; it takes effect when the current method returns, so every caller
// returns at once. `message` (ASCII, may be null) ends at its zero byte.
void RaiseOutOfBounds(const char* message);
void RaiseNilObject(const char* message);

// A new memory block with a copy of the bytes, owned by the caller. Nil for a null pointer, a
// length below 1, or when the host can't.
sdk::Object* MemoryBlockFromBytes(const std::uint8_t* bytes, std::int64_t length);

// Lets the host run if at least `yieldTicks` (1/60 s, taken as unsigned) have passed since
// *lastYieldTick, and then notes the time. Callers test yieldTicks > 0 first.
void PeriodicYield(std::int32_t yieldTicks, std::uint32_t* lastYieldTick);

}  // namespace tqx
