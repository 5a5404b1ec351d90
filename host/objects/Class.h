// A registered class: its place in the inheritance chain, the layout of its instances and its
// members, whoever declared them: a plug-in or the host by a record, a script by callables.
//
// Members are found by name without regard to case, the class's own before its superclass's.
// Addresses of members are good for the class's life; classes live as long as the Runtime.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/objects/Array.h"
#include "host/objects/Object.h"
#include "host/objects/Signature.h"
#include "host/objects/Type.h"
#include "host/objects/Value.h"
#include "sdk/PluginInterface.h"

namespace host {

// A body that a script or a test supplies. `self` is borrowed and nil for shared members; the
// arguments are of the declared types, one for each parameter; a ByRef parameter is written back
// into its place. The result is of the declared type.
using Callable = std::function<Value(Object* self, std::span<Value> arguments)>;

class Closure;    // Call.h: a Callable as a function of the plug-in interface
struct CallPlan;  // Call.h: how a function of this signature is called

struct Method {
    Declaration declaration;
    std::int32_t flags = 0;
    bool shared = false;
    const Class* owner = nullptr;  // null: a global function

    // By a record:
    sdk::AnyFunction function = nullptr;
    sdk::AnyFunction setter = nullptr;  // of an assignable method

    // By a script; used when `function` is null:
    Callable body;
    Callable assign;  // takes the arguments and then the assigned value

    bool assignable() const { return setter || assign; }

    mutable std::shared_ptr<CallPlan> plan, setterPlan;  // made on first call
    mutable std::shared_ptr<Closure> closure;            // made when a plug-in asks for the function
};

struct Property {
    std::string name;
    Type type;
    std::int32_t flags = 0;
    bool shared = false;
    const Class* owner = nullptr;

    // By a record:
    sdk::Accessor getter = sdk::kNoAccess;
    sdk::Accessor setter = sdk::kNoAccess;

    // Of a whole number in a field that no function reads: bytes from the object's address; else 0.
    std::int32_t wholeAt = 0;

    // By a script: a slot of the instance, or callables.
    std::int32_t slot = -1;
    Callable read;   // no arguments
    Callable write;  // the value

    bool readable() const { return getter.function || getter.fieldOffset >= 0 || slot >= 0 || read; }
    bool writable() const { return setter.function || setter.fieldOffset >= 0 || slot >= 0 || write; }

    mutable std::shared_ptr<CallPlan> plan, setterPlan;
};

struct Constant {
    std::string name;
    Value value;
    std::string declaration;  // as written
    const Class* owner = nullptr;
};

struct Event {
    Declaration declaration;
    std::intptr_t number = 0;  // unique among all events of the process, from 1
    const Class* owner = nullptr;
};

// What a class does on an event that one of its superclasses declares.
struct EventHandler {
    const Event* event = nullptr;
    Callable body;
    mutable std::shared_ptr<Closure> closure;
};

class Class {
  public:
    // A class without members. `definition` may be null; `superclass` too.
    Class(std::string name, const Class* superclass, sdk::ClassDefinition* definition = nullptr);
    Class(const Class&) = delete;
    Class& operator=(const Class&) = delete;

    const std::string& name() const { return name_; }
    const Class* superclass() const { return superclass_; }
    sdk::ClassDefinition* definition() const { return definition_; }
    bool InheritsFrom(const Class& other) const;  // true for itself too

    // Bytes from an instance's address to this class's own data, and to its data's end.
    std::int32_t dataOffset() const { return dataOffset_; }
    std::int32_t instanceSize() const { return instanceSize_; }

    // --- Building; before the first instance is made ---------------------------------------

    Method& AddMethod(Method method);  // a shared one when method.shared is set
    Property& AddProperty(Property property);
    Constant& AddConstant(Constant constant);
    Event& AddEvent(Event event);
    EventHandler& AddEventHandler(EventHandler handler);

    // One more value in each instance, starting as a copy of `initial`. Gives its number for
    // Property::slot.
    std::int32_t AddSlot(Value initial);

    // Run when an instance's last reference goes, before the superclasses'.
    void SetDestructor(std::function<void(Object*)> destructor) { destructor_ = std::move(destructor); }

    // --- Members: own ones, in the order declared --------------------------------------------

    const std::deque<Method>& methods() const { return methods_; }
    const std::deque<Method>& sharedMethods() const { return sharedMethods_; }
    const std::deque<Property>& properties() const { return properties_; }
    const std::deque<Constant>& constants() const { return constants_; }
    const std::deque<Event>& events() const { return events_; }
    const std::deque<EventHandler>& eventHandlers() const { return eventHandlers_; }
    const std::function<void(Object*)>& destructor() const { return destructor_; }

    // --- Members by name, inherited ones included -------------------------------------------

    // All overloads; an inherited one is left out where the subclass has one with the same
    // parameters. Constructors are not inherited by a class that has one of its own.
    std::vector<const Method*> FindMethods(std::string_view name) const;
    std::vector<const Method*> FindSharedMethods(std::string_view name) const;
    const Property* FindProperty(std::string_view name) const;
    const Constant* FindConstant(std::string_view name) const;
    const Event* FindEvent(std::string_view name) const;

    // The nearest handler of an event, from this class upwards.
    const EventHandler* FindEventHandler(std::intptr_t eventNumber) const;

    // The method with exactly this declaration, shared ones left out; null if there is none.
    const Method* FindExactMethod(const Declaration& declaration) const;

    // --- Slots ------------------------------------------------------------------------------

    const std::vector<Value>& slotDefaults() const { return slotDefaults_; }
    Value* SlotsOf(Object* object) const { return DataAt<Value>(object, dataOffset_ + recordSize_); }
    const Value* SlotsOf(const Object* object) const { return SlotsOf(const_cast<Object*>(object)); }

  private:
    using Index = std::unordered_map<std::string, std::vector<const void*>, NameHash, NameEqual>;

    std::vector<const Method*> Overloads(std::string_view name, Index Class::*index) const;
    const void* FindOne(std::string_view name, Index Class::*index) const;

    std::string name_;
    const Class* superclass_;
    sdk::ClassDefinition* definition_;
    std::int32_t dataOffset_;
    std::int32_t recordSize_;  // of the record's data, aligned
    std::int32_t instanceSize_;
    std::vector<Value> slotDefaults_;
    std::function<void(Object*)> destructor_;
    std::deque<Method> methods_, sharedMethods_;
    std::deque<Property> properties_;
    std::deque<Constant> constants_;
    std::deque<Event> events_;
    std::deque<EventHandler> eventHandlers_;
    Index methodIndex_, sharedIndex_, propertyIndex_, constantIndex_, eventIndex_;
};

}  // namespace host
