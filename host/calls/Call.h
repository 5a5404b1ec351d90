// Calls of members with values: functions of the plug-in interface by their shape (ForeignCall.h),
// callables of scripts directly.
//
// Every call here takes arguments that already have the declared types, one for each parameter
// (Overload.h chooses and converts). Nothing here throws for a record's function; a callable's
// exceptions pass through. Whether the called function raised an exception is asked afterwards:
// Runtime::TakeRaised.
#pragma once

#include <memory>
#include <span>

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host {

// Calls a method on an instance (nil for shared and global ones). Arguments are borrowed for the
// call; the result is owned by the value returned.
Value Invoke(const Method& method, Object* self, std::span<Value> arguments);

// Assigns to an assignable method: Method(arguments) = assigned.
void InvokeSetter(const Method& method, Object* self, std::span<Value> arguments, const Value& assigned);
void InvokeSetter(const Method& method, Object* self, std::span<Value> argumentsAndAssigned);

// Reads and writes a property; self is nil for shared ones. Writing an object or string field
// retains the new one and releases the old. The value has the property's type.
Value GetProperty(const Property& property, Object* self);
void SetProperty(const Property& property, Object* self, const Value& value);

// Reads a property that is a whole number in a field, which runs no code. False, and nothing is read, for any other.
bool ReadWholeField(const Property& property, const Object& self, Value& target);

// Calls an object's handler of an event. False when its class has none.
bool RaiseEvent(const Event& event, Object* self, std::span<Value> arguments, Value& result);

// Calls any function of the plug-in interface. `self` is passed first unless the signature is that
// of a shared method.
Value CallFunction(sdk::AnyFunction function, const Declaration& declaration, bool passSelf, Object* self,
                   std::span<const Value> arguments, std::shared_ptr<CallPlan>& plan);

// The function that a plug-in calls for a method: the record's own, or a closure around the body
// of a script's method, which lives as long as its class.
sdk::AnyFunction FunctionOf(const Method& method);
sdk::AnyFunction FunctionOf(const EventHandler& handler);

// A callable as a function of the plug-in interface: (object, arguments…) with the declared
// types. A C++ exception that leaves the callable does not leave the function: it becomes the
// raised exception (Runtime.h) and the function gives zero.
class Closure {
  public:
    Closure(const Declaration& declaration, Callable body);
    ~Closure();
    Closure(const Closure&) = delete;
    Closure& operator=(const Closure&) = delete;

    sdk::AnyFunction function() const { return function_; }

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
    sdk::AnyFunction function_;
};

// Numbers, strings and arrays as objects, for parameters and results of type Variant: a value
// that is an object is passed as it is, any other in a box (an instance of the class Variant).
// Throws std::bad_alloc when memory is short.
Ref<Object> Box(const Value& value);
Value Unbox(const Ref<Object>& object);

}  // namespace host
