// The desk host itself: the classes and functions it knows, the host functions it offers to
// plug-ins, raised exceptions, and the yield. There is one in the process and one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/calls/HostFunctionSlot.h"
#include "host/messages/RaisedMessage.h"
#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host {

// An exception object on its way through C++ code of the host (scripts, callables). It never
// passes through a plug-in: Runtime::RunGuarded stops it.
struct Raised {
    Ref<Object> exception;
};

// An implicit conversion that a framework class brings along, such as MemoryBlock to String.
struct Conversion {
    Type from;
    Type to;
    std::function<Value(const Value&)> convert;
};

class Runtime {
  public:
    // The one runtime, made with its built-in classes on first use. Whoever assembles a program adds the
    // framework to it (RegisterFramework) before scripts or plug-ins come.
    static Runtime& Get() { return only_ ? *only_ : Make(); }

    // --- Classes ------------------------------------------------------------------------------

    // Registers the class behind a definition, which must live as long as the process. Null when
    // it is refused; LastRefusal says why.
    const Class* RegisterClass(sdk::ClassDefinition& definition);

    // Adds a class that a script defines; null when the name is taken. A script's class can be
    // taken away again when no instance is left.
    Class* AddClass(std::unique_ptr<Class> type);
    void RemoveClass(const Class& type);

    const Class* FindClass(std::string_view name) const;   // null if unknown
    const Class& ClassNamed(std::string_view name) const;  // must exist
    std::vector<const Class*> Classes() const;             // in order of registration
    const std::string& LastRefusal() const { return refusal_; }
    void ClearRefusal() { refusal_.clear(); }

    // --- Global functions ---------------------------------------------------------------------

    // Registers functions that scripts call without an object. The records' text must outlive
    // the process; a declaration that can't be read ends it with a message.
    void RegisterFunctions(std::span<const sdk::MethodRecord> records);
    std::vector<const Method*> FindFunctions(std::string_view name) const;  // all overloads
    std::vector<std::string> FunctionNames() const;                         // in alphabetical order

    // --- Host functions -------------------------------------------------------------------------

    // Binds a host function: Bind<sdk::kREALLockObject>(&LockObject). The function's type is
    // checked against the name's.
    template <const auto& Name, class Function>
    void Bind(Function function) {
        HostFunctionSlot<Name>::Bind(std::move(function));
    }

    // The record of a bound host function by its name, to count its calls or make it fail; null
    // if there is none of that name.
    HostFunctionRecord* FindHostFunction(std::string_view name) const;
    std::span<HostFunctionRecord* const> HostFunctions() const;

    // What a plug-in's entry point is called with.
    static sdk::AnyFunction Entry(const char* service);

    // --- Exceptions -----------------------------------------------------------------------------

    // Marks an exception as raised; it takes effect when the function that raised it has
    // returned. One already marked stays. Nil makes a RuntimeException. Where memory is too short
    // for the exception, it is an OutOfMemoryException instead.
    void Raise(Ref<Object> exception);
    void Raise(const Raising& what);

    bool HasRaised() const { return static_cast<bool>(raised_); }
    Ref<Object> TakeRaised();  // nil when there is none
    void ThrowIfRaised() {     // throws Raised
        if (raised_) throw Raised{TakeRaised()};
    }

    // An exception object with its message; of RuntimeException when the class is unknown. Throws
    // std::bad_alloc when memory is short.
    Ref<Object> MakeException(std::string_view className, std::string_view message, std::int32_t errorNumber = 0);
    Ref<Object> MakeException(const Raising& what, std::int32_t errorNumber = 0) {
        return MakeException(what.exception, what.message.text(), errorNumber);
    }

    // An OutOfMemoryException, which can always be had: when memory is too short even for that, it
    // is one made at the start.
    Ref<Object> OutOfMemory() noexcept;

    // Runs code that a plug-in called in the middle of one of its methods. An exception that was
    // raised before is put aside meanwhile. What the code throws or leaves raised is marked as
    // raised; the result is then a value of nothing.
    Value RunGuarded(const std::function<Value()>& code);

    // --- Yield ----------------------------------------------------------------------------------

    // Adds a callback for REALYieldToRB (and for the script's own waiting); gives its number.
    int OnYield(std::function<void()> callback);
    void RemoveYield(int number);

    // Runs the callbacks, each under RunGuarded.
    void Yield();

    // --- Conversions ------------------------------------------------------------------------------

    void AddConversion(Conversion conversion);
    const Conversion* FindConversion(const Value& value, const Type& type) const;
    std::span<const Conversion> Conversions() const { return conversions_; }

  private:
    Runtime() = default;
    static Runtime& Make();
    void Start();

    static inline Runtime* only_ = nullptr;

    std::vector<std::unique_ptr<Class>> classes_;
    std::unordered_map<std::string, Class*, NameHash, NameEqual> classIndex_;
    Class functions_{"", nullptr};
    std::intptr_t eventCount_ = 0;
    std::string refusal_;
    Ref<Object> raised_;
    Ref<Object> spareOutOfMemory_;
    std::vector<std::pair<int, std::function<void()>>> yields_;
    int yieldNumber_ = 0;
    std::vector<Conversion> conversions_;
};

// An exception's text and number.
std::string MessageOf(const Object* exception);
std::int32_t ErrorNumberOf(const Object* exception);

}  // namespace host
