#include "host/objects/Object.h"

#include <new>

#include "host/objects/Class.h"
#include "host/objects/GuardedMemory.h"
#include "host/objects/Value.h"

namespace host {

namespace {

std::int64_t liveObjects = 0;
std::int64_t overReleases = 0;
Object* firstLive = nullptr;

// What an object's count stands at while its destructors run, so that they may take and give up
// references as they like.
constexpr std::int32_t kDestroying = 1 << 30;

void Link(Object* object) {
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

void RunDestructors(Object* object) {
    object->references = kDestroying;
    for (const Class* type = object->type; type; type = type->superclass()) {
        if (type->destructor()) type->destructor()(object);
        if (type->definition() && type->definition()->destructor) type->definition()->destructor(object);
    }
    for (const Class* type = object->type; type; type = type->superclass()) {
        Value* slots = type->SlotsOf(object);
        for (std::size_t i = 0; i < type->slotDefaults().size(); ++i) slots[i] = Value();
    }
    object->destroyed = true;
    object->references -= kDestroying;
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

namespace {

// An object whose last reference goes may take others with it, and these more. Beyond this depth
// they wait for their turn, so that a long chain does not exhaust the stack.
constexpr int kDeepestRelease = 64;
int releaseDepth = 0;
std::vector<Object*> waiting;  // without references

void Destroy(Object* object) {
    if (!object->destroyed) RunDestructors(object);
    if (object->references > 0) return;
    Unlink(object);
    FreeGuarded(object);
}

}  // namespace

void Retain(Object* object) {
    if (object) ++object->references;
}

void Release(Object* object) {
    if (!object) return;
    if (object->references <= 0 || object->references == kDestroying) {
        ++overReleases;
        return;
    }
    if (--object->references > 0) return;
    if (releaseDepth == kDeepestRelease) return waiting.push_back(object);
    ++releaseDepth;
    Destroy(object);
    while (releaseDepth == kDeepestRelease && !waiting.empty()) {
        Object* next = waiting.back();
        waiting.pop_back();
        Destroy(next);
    }
    --releaseDepth;
}

bool IsA(const Object* object, const Class& type) { return object && object->type->InheritsFrom(type); }

std::int64_t LiveObjectCount() { return liveObjects; }

std::vector<Object*> LiveObjects() {
    std::vector<Object*> objects;
    for (Object* object = firstLive; object; object = object->next) objects.push_back(object);
    return objects;
}

std::int64_t OverReleaseCount() { return overReleases; }

bool IsLiveObject(const void* address) {
    for (const Object* object = firstLive; object; object = object->next)
        if (object == address) return true;
    return false;
}

}  // namespace host
