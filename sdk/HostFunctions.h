// Every host function a plug-in may resolve: its exact name and its signature, stated once for
// both sides. A function that the host lacks is skipped by its callers, who take 0 for its
// result; so records that a host function fills are cleared by the caller first.
#pragma once

#include "sdk/PluginInterface.h"

namespace sdk {

template <class Signature>
struct HostFunctionName {
    const char* name;
};

// --- Start-up -------------------------------------------------------------------------------

// Registers a class for the life of the process; fills instanceDataOffset and the events'
// hostNumber. 0 when the definition is refused.
inline constexpr HostFunctionName<std::int32_t(ClassDefinition*)> kPluginRegisterClass{"PluginRegisterClass"};

// States the interface version that the plug-in was built for. Every host has it.
inline constexpr HostFunctionName<void(std::int32_t version)> kRegisterPluginVersion{"RegisterPluginVersion"};

inline constexpr HostFunctionName<double()> kREALGetRBVersion{"REALGetRBVersion"};
inline constexpr HostFunctionName<void()> kREALenterMovies{"REALenterMovies"};

// --- Objects --------------------------------------------------------------------------------

// A new instance of a registered class, without running any of its Constructor methods; nil if
// the class is unknown or memory is short.
inline constexpr HostFunctionName<Object*(const char* className)> kPluginNewInstance{"PluginNewInstance"};

// Take or give up one reference. Nil is allowed and ignored.
inline constexpr HostFunctionName<void(Object*)> kREALLockObject{"REALLockObject"};
inline constexpr HostFunctionName<void(Object*)> kREALUnlockObject{"REALUnlockObject"};

// Writes an integer property of an object to *value and gives true, or gives false and leaves
// *value alone when there is no such property.
inline constexpr HostFunctionName<bool(Object*, const char* property, std::int32_t* value)> kREALGetPropValueInt{
    "REALGetPropValueInt"};

// Sets a string property; the object keeps its own reference. False when there is none.
inline constexpr HostFunctionName<bool(Object*, const char* property, String*)> kREALSetPropValueString{
    "REALSetPropValueString"};

// The function behind a method of the object's class, found by its full declaration; it takes
// the object and then the declared arguments. Null when the class has none.
inline constexpr HostFunctionName<AnyFunction(Object*, const char* declaration)> kREALLoadObjectMethod{
    "REALLoadObjectMethod"};

// The object's handler of an event, given by the number that the host wrote into the event's
// record; it takes the object and then the declared arguments. Null when the object's class
// does not handle the event.
inline constexpr HostFunctionName<AnyFunction(Object*, std::intptr_t hostNumber)> kGetEventInstancePPC{
    "GetEventInstancePPC"};

// --- Exceptions and time --------------------------------------------------------------------

// Marks an exception as raised. Returns; the exception takes effect when the plug-in's method
// returns to the host, so a property set on it meanwhile is seen. The host keeps a reference.
inline constexpr HostFunctionName<void(Object* exception)> kRuntimeRaiseException{"RuntimeRaiseException"};

// Lets the host handle events and timers; script code may run before it returns.
inline constexpr HostFunctionName<void()> kREALYieldToRB{"REALYieldToRB"};

// --- Strings, memory blocks, arrays ---------------------------------------------------------

// A string of a copy of the bytes, marked as bytes without an encoding; nil for none. When memory
// is short it is nil as well, and the host has raised an exception.
inline constexpr HostFunctionName<String*(const char* bytes, std::int64_t length)> kREALBuildString{"REALBuildString"};
inline constexpr HostFunctionName<void(String*)> kREALUnlockString{"REALUnlockString"};

// Marks the string's bytes as text of an encoding; the bytes stay.
inline constexpr HostFunctionName<void(String*, Encoding)> kREALSetStringEncoding{"REALSetStringEncoding"};

// A new string with the text converted to an encoding; the argument keeps its reference.
inline constexpr HostFunctionName<String*(String*, Encoding)> kREALConvertString{"REALConvertString"};

// A zero-filled memory block of `size` bytes; nil when that can't be had. "Size" is its property.
inline constexpr HostFunctionName<Object*(std::int64_t size)> knewMemoryBlock{"newMemoryBlock"};

// The block's first byte; null for nil or an empty block. Good until the block is resized.
inline constexpr HostFunctionName<std::uint8_t*(Object* block)> kmemoryBlockGetPtr{"memoryBlockGetPtr"};

// A memory block around bytes that it does not own and whose count it does not know.
inline constexpr HostFunctionName<Object*(std::uint8_t* bytes)> kPtrToMemoryBlock{"PtrToMemoryBlock"};

// The highest index of an integer array, -1 when it is empty.
inline constexpr HostFunctionName<std::int32_t(Array*)> kRuntimeUBound{"RuntimeUBound"};

// One element; 0 when the index is out of range.
inline constexpr HostFunctionName<std::int32_t(Array*, std::int32_t index)> kRuntimeDirectReadIntArray{
    "RuntimeDirectReadIntArray"};

// --- Pictures -------------------------------------------------------------------------------

// Describes what lies behind a picture and holds it there until unlockPictureDescription; kind
// is kPictureKindNone when it can't. Each lock wants one unlock.
inline constexpr HostFunctionName<void(Object* picture, PictureDescription*)> klockPictureDescription{
    "lockPictureDescription"};
inline constexpr HostFunctionName<void(Object* picture)> kunlockPictureDescription{"unlockPictureDescription"};

// A picture around a world. With handOver the picture owns the world and disposes of it;
// otherwise the caller keeps it and the picture is a copy. Nil on failure: a world that was to
// be handed over then stays the caller's.
inline constexpr HostFunctionName<Object*(GWorld*, bool handOver)> kREALBuildPictureFromGWorld{
    "REALBuildPictureFromGWorld"};

// The picture's mask, a picture itself, with a reference for the caller; nil when it has none.
// With `create` a missing mask is made, width × height and white (clear); otherwise width and
// height do not count.
inline constexpr HostFunctionName<Object*(Object* picture, bool create, std::int32_t width, std::int32_t height)>
    kREALGetPictureMask{"REALGetPictureMask"};

// A new white picture; nil when the size or the depth is not to be had.
inline constexpr HostFunctionName<Object*(std::int32_t width, std::int32_t height, std::int32_t depth)> knewPicture{
    "newPicture"};

// The graphics object that draws into a picture, with a reference for the caller.
inline constexpr HostFunctionName<Object*(Object* picture)> kpluginPictureGraphicsGetter{"pluginPictureGraphicsGetter"};

// --- Files ----------------------------------------------------------------------------------

// Where a folder item lies; false when the host can't tell. Every host has the first; the
// second is the older form of the same. A plug-in that makes a scratch file there keeps it open for
// reading and writing and locked (flock, exclusive) while it works in it: by that a host that has
// to end at once knows the files to remove.
inline constexpr HostFunctionName<bool(Object* folderItem, FileReference*)> kREALFSRefFromFolderItem{
    "REALFSRefFromFolderItem"};
inline constexpr HostFunctionName<bool(Object* folderItem, FileReference*)> kREALFSSpecFromFolderItem{
    "REALFSSpecFromFolderItem"};

}  // namespace sdk
