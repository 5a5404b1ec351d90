// Making objects, counting references, and letting go in an order that needs no deep stack.
#include "host/objects/Object.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "host/objects/Class.h"
#include "host/objects/GuardedMemory.h"
#include "host/objects/Handlers.h"
#include "host/objects/Value.h"

namespace host {

namespace {

std::int64_t liveObjects = 0;
std::int64_t overReleases = 0;
Object* firstLive = nullptr;

void Link(Object* object) {
    object->previous = nullptr;
    object->next = firstLive;
    if (firstLive) firstLive->previous = object;
    firstLive = object;
    ++liveObjects;
}

void Unlink(Object* object) {
    (object->previous ? object->previous->next : firstLive) = object->next;
    if (object->next) object->next->previous = object->previous;
    --liveObjects;
}

void Construct(Object* object, const Class& type) {
    if (type.superclass()) Construct(object, *type.superclass());
    if (type.definition() && type.definition()->constructor) type.definition()->constructor(object);
    Value* slots = type.SlotsOf(object);
    for (std::size_t i = 0; i < type.slotDefaults().size(); ++i) new (slots + i) Value(type.slotDefaults()[i]);
}

// Code of plug-ins and the framework ends here: the data is theirs, and with it gone the object
// must not be asked any more.
void RunRecordDestructors(Object* object) {
    object->destroyed = true;
    for (const Class* type = object->type; type; type = type->superclass()) {
        const sdk::ClassDefinition* definition = type->definition();
        if (!definition) continue;
        if (definition->destructor) definition->destructor(object);
        std::memset(DataAt<std::uint8_t>(object, type->dataOffset()), 0,
                    static_cast<std::size_t>(definition->instanceDataSize));
    }
}

void RunDestructors(Object* object) {
    object->references = kDestroying;
    RunScriptDestructors(object);
    RunRecordDestructors(object);
    ClearSlots(object);
    ForgetHandlers(*object);
    object->references -= kDestroying;
}

void Free(Object* object) {
    for (const Class* type = object->type; type; type = type->superclass())
        std::destroy_n(type->SlotsOf(object), type->slotDefaults().size());
    Unlink(object);
    FreeGuarded(object);
}

}  // namespace

Ref<Object> NewObject(const Class& type) {
    auto* memory = AllocateGuarded(static_cast<std::size_t>(type.instanceSize()));
    if (!memory) return nullptr;
    auto* object = new (memory) Object{};
    object->references = 1;
    object->type = &type;
    Link(object);
    Construct(object, type);
    return Ref<Object>::Adopt(object);
}

void RunScriptDestructors(Object* object) noexcept {
    if (std::exchange(object->ended, true)) return;
    for (const Class* type = object->type; type; type = type->superclass())
        if (type->destructor()) type->destructor()(object);
}

void ClearSlots(Object* object) noexcept {
    for (const Class* type = object->type; type; type = type->superclass()) {
        for (std::size_t i = 0; i < type->slotDefaults().size(); ++i) {
            // Whole again before the old value goes, whose destructor may look.
            const Value old = std::exchange(type->SlotsOf(object)[i], type->slotDefaults()[i]);
        }
    }
}

namespace {

// An object whose last reference goes may take others with it, and these more. Beyond this depth
// they wait for their turn, so that a long chain does not exhaust the stack.
constexpr int kDeepestRelease = 64;
int releaseDepth = 0;
Object* waiting = nullptr;  // without references; a list by `next`, apart from that of live objects

void Wait(Object* object) {
    Unlink(object);
    object->next = std::exchange(waiting, object);
}

Object* TakeWaiting() {
    Object* object = std::exchange(waiting, waiting->next);
    Link(object);
    return object;
}

void Destroy(Object* object) {
    if (!object->destroyed) RunDestructors(object);
    if (object->references == 0) Free(object);
}

}  // namespace

void ReleaseLast(Object* object) noexcept {
    if (object->references <= 0 || object->references == kDestroying) {
        ++overReleases;
        return;
    }
    if (--object->references > 0) return;
    if (releaseDepth == kDeepestRelease) return Wait(object);
    ++releaseDepth;
    Destroy(object);
    while (releaseDepth == kDeepestRelease && waiting) Destroy(TakeWaiting());
    --releaseDepth;
}

bool IsA(const Object* object, const Class& type) { return object && object->type->InheritsFrom(type); }

std::int64_t LiveObjectCount() { return liveObjects; }

std::vector<Object*> LiveObjects() {
    std::vector<Object*> objects;
    for (Object* object = firstLive; object; object = object->next) objects.push_back(object);
    return objects;
}

Object* NewestLiveObject() { return firstLive; }

std::int64_t OverReleaseCount() { return overReleases; }

bool IsLiveObject(const void* address) {
    for (const Object* object = firstLive; object; object = object->next)
        if (object == address) return true;
    return false;
}

}  // namespace host
