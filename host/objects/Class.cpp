// Members by name, own ones before inherited ones.
#include "host/objects/Class.h"

#include <algorithm>

namespace host {

namespace {

std::int32_t AlignUp(std::int32_t size) { return (size + 15) / 16 * 16; }

}  // namespace

Class::Class(std::string name, const Class* superclass, sdk::ClassDefinition* definition)
    : name_(std::move(name)),
      superclass_(superclass),
      definition_(definition),
      dataOffset_(AlignUp(superclass ? superclass->instanceSize_ : kObjectHeadSize)),
      recordSize_(AlignUp(definition ? definition->instanceDataSize : 0)),
      instanceSize_(dataOffset_ + (definition ? definition->instanceDataSize : 0)) {}

bool Class::InheritsFrom(const Class& other) const {
    for (const Class* type = this; type; type = type->superclass_)
        if (type == &other) return true;
    return false;
}

Method& Class::AddMethod(Method method) {
    method.owner = this;
    std::deque<Method>& list = method.shared ? sharedMethods_ : methods_;
    Method& added = list.emplace_back(std::move(method));
    (added.shared ? sharedIndex_ : methodIndex_)[added.declaration.name].push_back(&added);
    return added;
}

Property& Class::AddProperty(Property property) {
    property.owner = this;
    const bool field = property.getter.fieldOffset >= 0 && !property.getter.function && property.slot < 0;
    if (field && !property.read && IsWholeKind(property.type.kind))
        property.wholeAt = dataOffset_ + property.getter.fieldOffset;
    Property& added = properties_.emplace_back(std::move(property));
    propertyIndex_[added.name].push_back(&added);
    return added;
}

Constant& Class::AddConstant(Constant constant) {
    constant.owner = this;
    Constant& added = constants_.emplace_back(std::move(constant));
    constantIndex_[added.name].push_back(&added);
    return added;
}

Event& Class::AddEvent(Event event) {
    event.owner = this;
    Event& added = events_.emplace_back(std::move(event));
    eventIndex_[added.declaration.name].push_back(&added);
    return added;
}

EventHandler& Class::AddEventHandler(EventHandler handler) { return eventHandlers_.emplace_back(std::move(handler)); }

std::int32_t Class::AddSlot(Value initial) {
    slotDefaults_.push_back(std::move(initial));
    instanceSize_ = dataOffset_ + recordSize_ + static_cast<std::int32_t>(slotDefaults_.size() * sizeof(Value));
    return static_cast<std::int32_t>(slotDefaults_.size()) - 1;
}

std::vector<const Method*> Class::Overloads(std::string_view name, Index Class::*index) const {
    std::vector<const Method*> found;
    for (const Class* type = this; type; type = type->superclass_) {
        const auto entry = (type->*index).find(name);
        if (entry == (type->*index).end()) continue;
        for (const void* member : entry->second) {
            const auto* method = static_cast<const Method*>(member);
            const bool hidden = std::any_of(found.begin(), found.end(), [method](const Method* nearer) {
                return SameParameters(nearer->declaration, method->declaration);
            });
            if (!hidden) found.push_back(method);
        }
        if (!found.empty() && SameName(name, "Constructor")) break;
    }
    return found;
}

std::vector<const Method*> Class::FindMethods(std::string_view name) const {
    return Overloads(name, &Class::methodIndex_);
}

std::vector<const Method*> Class::FindSharedMethods(std::string_view name) const {
    return Overloads(name, &Class::sharedIndex_);
}

const void* Class::FindOne(std::string_view name, Index Class::*index) const {
    for (const Class* type = this; type; type = type->superclass_) {
        const auto entry = (type->*index).find(name);
        if (entry != (type->*index).end()) return entry->second.front();
    }
    return nullptr;
}

const Property* Class::FindProperty(std::string_view name) const {
    return static_cast<const Property*>(FindOne(name, &Class::propertyIndex_));
}

const Constant* Class::FindConstant(std::string_view name) const {
    return static_cast<const Constant*>(FindOne(name, &Class::constantIndex_));
}

const Event* Class::FindEvent(std::string_view name) const {
    return static_cast<const Event*>(FindOne(name, &Class::eventIndex_));
}

const EventHandler* Class::FindEventHandler(std::intptr_t eventNumber) const {
    for (const Class* type = this; type; type = type->superclass_)
        for (const EventHandler& handler : type->eventHandlers_)
            if (handler.event->number == eventNumber) return &handler;
    return nullptr;
}

const Method* Class::FindExactMethod(const Declaration& declaration) const {
    for (const Method* method : FindMethods(declaration.name))
        if (SameSignature(method->declaration, declaration)) return method;
    return nullptr;
}

}  // namespace host
