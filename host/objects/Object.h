// Host objects: counted records whose instance data lies behind a common head.
//
//   address:  [ head ][ data of the topmost superclass ][ ... ][ data of the object's class ]
//
// Each class's data starts at a multiple of 16 bytes; its offset from the object's address is
// fixed when the class is registered and stated to plug-ins as instanceDataOffset. An instance
// of a subclass therefore has its superclass's data where the superclass's functions look.
//
// An object's destructors run once, when its last reference goes: those that scripts wrote, then
// those of the definition records, each from the object's class upwards. With a record's
// destructor its data is cleared to zeros. Weak spots, by nature of counting: two objects that
// hold each other live until somebody looks for them; an object whose destructor gave a reference
// of it to somebody outlives its destructors as an empty husk (`destroyed`) and is freed when that
// reference goes.
#pragma once

#include <cstdint>
#include <vector>

#include "host/objects/Ref.h"
#include "sdk/PluginInterface.h"

namespace host {

class Class;

struct Object : sdk::Object {
    std::int32_t references;
    bool ended;      // the destructors that scripts wrote have run
    bool destroyed;  // all of them have; its data is cleared
    bool handled;    // it has handlers of its own (Handlers.h)
    const Class* type;
    Object* previous;  // in the list of live objects
    Object* next;
};

// Bytes of the head; the first instance data follows it.
inline constexpr std::int32_t kObjectHeadSize = static_cast<std::int32_t>((sizeof(Object) + 15) / 16 * 16);

inline Object* FromPlugin(sdk::Object* object) { return static_cast<Object*>(object); }

// What an object's count stands at while its destructors run, so that they may take and give up
// references as they like.
inline constexpr std::int32_t kDestroying = 1 << 30;

// A new instance with zeroed data and one reference, after the class's constructor functions but
// before any Constructor method; nil when memory is short.
Ref<Object> NewObject(const Class& type);

// Nil is allowed and ignored.
inline void Retain(Object* object) {
    if (object) ++object->references;
}
void ReleaseLast(Object* object) noexcept;  // where it may be the last reference, or none is left
inline void Release(Object* object) noexcept {
    if (!object) return;
    if (object->references > 1 && object->references != kDestroying)
        --object->references;
    else
        ReleaseLast(object);
}

// Runs the destructors that scripts wrote for the object's classes, unless they have run. For the
// end of a program, when objects go whose references are still there.
void RunScriptDestructors(Object* object) noexcept;

// Gives the slots of all its classes their first values again.
void ClearSlots(Object* object) noexcept;

// The object's data of one of its classes, as a record.
template <class Record>
Record* DataAt(sdk::Object* object, std::int32_t offset) {
    return reinterpret_cast<Record*>(reinterpret_cast<std::uint8_t*>(object) + offset);
}

// Whether the object's class is `type` or inherits from it. False for nil.
bool IsA(const Object* object, const Class& type);

// Counts for tests and checks.
std::int64_t LiveObjectCount();
std::vector<Object*> LiveObjects();  // borrowed, the newest first
Object* NewestLiveObject();          // and from it by `next`; null for none

// How often a reference was given up that nobody had, as far as it can be seen.
std::int64_t OverReleaseCount();

// Whether this is the address of a live object. Slow; for checks.
bool IsLiveObject(const void* address);

}  // namespace host
