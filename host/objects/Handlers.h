// Handlers of events that belong to one object, whatever its class does: they come before the class's.
#pragma once

#include <cstdint>

#include "host/objects/Class.h"

namespace host {

// From now on the body is what an object does on an event, or again what its class does. A handler under
// way runs to its end. Its owner is whoever may remove it with all its others.
void SetHandler(Object& object, const Event& event, Callable body, const void* owner = nullptr);
void RemoveHandler(Object& object, const Event& event);

// What an object does on an event; null if nothing. Good while the object lives.
const EventHandler* HandlerOf(const Object& object, std::intptr_t eventNumber);

// Removes an owner's handlers from every object.
void RemoveHandlersOf(const void* owner) noexcept;

// For an object's end.
void ForgetHandlers(Object& object) noexcept;

}  // namespace host
