// The interface between a host and its plug-ins: the records both sides share.
//
// A plug-in is a shared library with one entry point, REALPluginMain. The host calls it once
// with its entry function; through that the plug-in gets the resolver, looks up host functions
// by name (HostFunctions.h) and registers its classes. From then on the host calls the functions
// in the class records directly.
//
// Calls. A method's function takes the instance, then the declared arguments; a shared method
// takes the arguments alone. A setter of an assignable method takes what its method takes and
// then the assigned value. Declared types and their C++ forms:
//
//   integer  std::int32_t      int64    std::int64_t     uint32  std::uint32_t
//   double   double            single   float            uint8   std::uint8_t
//   boolean  bool (one byte)   color    Color            string  String*
//   variant  Object*           x()      Array*           a class Object*
//
// A boolean or other narrow result counts in its low bytes only.
//
// References. Objects and strings are counted by the host. Arguments are borrowed for the time
// of the call; a result that is an object or a string carries one reference, owned by the
// caller. Nil is a null pointer, for strings too: a nil string equals the empty string.
//
// Threads. There is one: the host's script thread. Every call in either direction is made on it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sdk {

// The interface version stated by a plug-in and carried by every class definition.
inline constexpr std::int32_t kInterfaceVersion = 9;

// A host object. Opaque to plug-ins: the data of an instance of a plug-in's class lies
// ClassDefinition::instanceDataOffset bytes after the object's address.
struct Object {};

// A host array of integers. Opaque: read through RuntimeUBound and RuntimeDirectReadIntArray.
struct Array {};

// The readable head of a host string: `length` bytes at `data`, not terminated. Both are fixed
// for the string's life.
struct String {
    const std::uint8_t* data;
    std::int64_t length;
};

// A colour, 0x00RRGGBB.
enum class Color : std::uint32_t {};

// Text encodings of host strings.
enum class Encoding : std::uint32_t {
    Ascii = 0x0600,
    Utf16 = 0x0100,
    Utf8 = 0x08000100,
    Utf32 = 0x0C000100,
    None = 0xFFFF,  // bytes, not text
};

// Any function; cast to its real type before it is called.
using AnyFunction = void (*)();

// Method and property flags. kMemberPortable marks members that neither take nor give a host
// picture; every property carries kMemberProperty as well.
inline constexpr std::int32_t kMemberProperty = 2;
inline constexpr std::int32_t kMemberPortable = 4;

struct MethodRecord {
    AnyFunction function;
    AnyFunction setter;       // of an assignable method, else null
    const char* declaration;  // "Name(argument as type, …) as type"
    std::int32_t flags;
};

// One direction of a property: a function, or a field of the instance data that the host reads
// or writes by the property's type. Reading an object field gives a new reference; writing one
// retains the new object and releases the old.
struct Accessor {
    AnyFunction function;      // getter: type(Object*); setter: void(Object*, type); or null
    std::int32_t fieldOffset;  // bytes from the instance data's start; below 0: none
};

inline constexpr Accessor kNoAccess{nullptr, -1};

constexpr Accessor FieldAt(std::size_t offset) { return Accessor{nullptr, static_cast<std::int32_t>(offset)}; }

struct PropertyRecord {
    const char* name;
    const char* type;
    std::int32_t flags;
    Accessor getter;
    Accessor setter;  // kNoAccess: read-only
};

struct ConstantRecord {
    const char* declaration;  // "Name = value", decimal or &h hexadecimal
    const void* reserved;     // null
    std::int32_t value;       // 0: the declaration carries the value
};

struct EventRecord {
    const char* declaration;
    std::intptr_t hostNumber;  // written by the host at registration; passed to GetEventInstancePPC
};

// A class as registered with PluginRegisterClass. The host keeps the address: the record and all
// it points to live as long as the process.
struct ClassDefinition {
    std::int32_t version;  // kInterfaceVersion
    const char* name;
    const char* superclass;           // null: none
    std::int32_t instanceDataSize;    // bytes, zeroed by the host in every new instance
    std::int32_t instanceDataOffset;  // written by the host at registration
    void (*constructor)(Object*);     // run on a new instance before any Constructor method; or null
    void (*destructor)(Object*);      // run when the last reference goes; or null
    const PropertyRecord* properties;
    std::int32_t propertyCount;
    const MethodRecord* methods;
    std::int32_t methodCount;
    EventRecord* events;
    std::int32_t eventCount;
    const ConstantRecord* constants;
    std::int32_t constantCount;
    std::int32_t flags;
    const MethodRecord* sharedMethods;
    std::int32_t sharedMethodCount;
};

// An off-screen world, defined in platform/Worlds.h. A world's address means the same to the host
// and to every plug-in.
struct GWorld;

// What lies behind a host picture; filled by lockPictureDescription.
inline constexpr std::int32_t kPictureKindNone = 0;
inline constexpr std::int32_t kPictureKindWorld = 4;  // an off-screen world with a pixel map

struct PictureDescription {
    std::int32_t kind;
    GWorld* world;        // borrowed; null unless kind is kPictureKindWorld
    std::int32_t width;   // pixels
    std::int32_t height;  // pixels
};

// Where a folder item lies. The path is absolute, UTF-8 in canonical decomposition (but for a
// containing folder that exists only under the name as given), terminated by a zero byte.
inline constexpr std::size_t kPathCapacity = 4096;

struct FileReference {
    bool exists;
    char path[kPathCapacity];
};

// The instance data of the host class GWorldTQX, which takes over an off-screen world. It lies
// kGWorldTQXDataOffset bytes after the object's address: plug-ins fill it in.
struct GWorldTQXData {
    GWorld* world;
    bool ownsWorld;  // the instance disposes of the world in its destructor
};
inline constexpr std::int32_t kGWorldTQXDataOffset = 32;

// What the host passes to REALPluginMain, called with kResolverService to get the Resolver.
using EntryFunction = AnyFunction (*)(const char* service);
inline constexpr const char* kResolverService = "ResolverPPC";

// Gives the host function of a name, or null if the host lacks it.
using Resolver = AnyFunction (*)(const char* name);

// The plug-in's one export. The result has no meaning to the host.
using PluginMain = std::intptr_t (*)(EntryFunction);
inline constexpr const char* kPluginMainName = "REALPluginMain";

}  // namespace sdk
