// One case of a check: an instance, and one thing done with it.
#pragma once

#include <string>
#include <vector>

#include "host/check/Expression.h"

namespace host::check {

enum class Action { Call, CallShared, Construct, Assign, Read, Write };

struct Case {
    Action action = Action::Call;
    const Class* type = nullptr;
    const Method* method = nullptr;      // of Call, CallShared, Construct, Assign
    const Property* property = nullptr;  // of Read, Write
    InstancePtr instance;                // null for CallShared
    std::vector<Expression> arguments;   // the assigned value is the last
    std::size_t list = 0;                // which of the member's argument lists

    const std::string& Name() const { return method ? method->declaration.name : property->name; }
    std::string Script() const;

    // The same member with the same arguments, whatever the instance.
    bool SameCall(const Case& other) const;
};

// A case ready to run: its objects are made.
class Prepared {
  public:
    explicit Prepared(const Case& what);

    // False when the instance or an object argument could not be made.
    bool IsReady() const { return ready_; }

    // Does it; may be repeated.
    Value Perform();

    const Ref<Object>& self() const { return self_; }
    const std::vector<Value>& arguments() const { return arguments_; }

    // What is wrong with the objects after it was done: an argument, the instance or the result
    // that is no live object any more, or a result of a class other than declared. Or empty.
    std::string ObjectProblem(const Value& result) const;

  private:
    const Case& case_;
    Ref<Object> self_;
    std::vector<Value> arguments_;
    bool ready_ = true;
};

// The plug-in's classes and ways to come by their instances: not constructed; by each constructor
// with its usual arguments; and after each method without arguments and result.
Supply MakeSupply(const std::vector<const Class*>& classes, const std::string& scratchFolder, std::uint64_t seed = 1);

// Everything that can be done with each instance of the plug-in's classes: the usual arguments on
// every instance, on the broad ones all arguments.
std::vector<Case> AllCases(const Supply& supply);

// A method without arguments and result.
bool IsPlainCommand(const Method& method);

}  // namespace host::check
