// A table from objects to their handlers, kept beside them since few have any.
#include "host/objects/Handlers.h"

#include <deque>
#include <memory>
#include <unordered_map>

namespace host {

namespace {

// A plug-in may keep the function of a handler: it stays for as long as its object lives and looks each
// time for the body that counts.
struct OwnHandler {
    EventHandler handler;
    std::shared_ptr<const Callable> body;  // null: the class's
    const void* owner = nullptr;
};

using Handlers = std::unordered_map<const Object*, std::deque<OwnHandler>>;

Handlers& AllHandlers() {
    static Handlers handlers;
    return handlers;
}

OwnHandler* Find(const Object& object, std::intptr_t eventNumber) {
    const auto found = object.handled ? AllHandlers().find(&object) : AllHandlers().end();
    if (found == AllHandlers().end()) return nullptr;
    for (OwnHandler& own : found->second)
        if (own.handler.event->number == eventNumber) return &own;
    return nullptr;
}

Value Run(const OwnHandler& own, Object* self, std::span<Value> arguments) {
    if (const std::shared_ptr<const Callable> body = own.body) return (*body)(self, arguments);
    const EventHandler* ofClass = self->type->FindEventHandler(own.handler.event->number);
    return ofClass ? ofClass->body(self, arguments) : Value();
}

}  // namespace

void SetHandler(Object& object, const Event& event, Callable body, const void* owner) {
    OwnHandler* own = Find(object, event.number);
    if (!own) {
        own = &AllHandlers()[&object].emplace_back();
        object.handled = true;
        own->handler.event = &event;
        own->handler.body = [own](Object* self, std::span<Value> arguments) { return Run(*own, self, arguments); };
    }
    own->owner = owner;
    // The one before goes last: its end may run code of a script.
    const auto before = std::exchange(own->body, std::make_shared<const Callable>(std::move(body)));
}

void RemoveHandler(Object& object, const Event& event) {
    if (OwnHandler* own = Find(object, event.number)) const auto before = std::exchange(own->body, nullptr);
}

const EventHandler* HandlerOf(const Object& object, std::intptr_t eventNumber) {
    const OwnHandler* own = Find(object, eventNumber);
    return own && own->body ? &own->handler : object.type->FindEventHandler(eventNumber);
}

void RemoveHandlersOf(const void* owner) noexcept {
    std::deque<std::shared_ptr<const Callable>> removed;
    for (auto& [object, handlers] : AllHandlers())
        for (OwnHandler& own : handlers)
            if (own.owner == owner) removed.push_back(std::exchange(own.body, nullptr));
}

void ForgetHandlers(Object& object) noexcept {
    if (!std::exchange(object.handled, false)) return;
    const auto gone = AllHandlers().extract(&object);
}

}  // namespace host
