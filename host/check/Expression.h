// Arguments for the calls of a check: each as a text of the script language and as the value
// that the text stands for.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host::check {

struct Expression {
    std::string text;
    std::string before;  // lines that come before the statement; each with its end
    std::function<Value()> make;
};

// A way to come by an object.
struct Instance {
    std::string label;  // "constructed", "after Close", …
    const Class* type = nullptr;
    std::function<std::string(const std::string&)> script;  // lines that make it as a variable of a name
    std::function<Ref<Object>()> make;                      // nil when it can't be had
    const Method* constructor = nullptr;                    // that made it; or null
    std::vector<Expression> arguments;                      // of the constructor
    bool constructed = false;                               // and nothing done to it since
    bool first = false;                                     // the first of its constructor
    bool broad = false;                                     // tried with every argument, not only the usual ones
};

using InstancePtr = std::shared_ptr<const Instance>;

// What arguments are made from.
struct Supply {
    std::vector<const Class*> classes;  // of the plug-in
    std::vector<InstancePtr> instances;
    std::string scratchFolder;
    std::uint64_t seed = 1;         // of what is drawn at random
    std::set<std::string> leftOut;  // names of members that AllCases has no cases of

    std::vector<InstancePtr> InstancesOf(const Class& type) const;
};

Expression Literal(const Value& value);

// Values for a parameter: the usual ones first, of which the very first is the one that promises
// most; all others are extremes. Empty when the host has nothing of the type.
struct Choices {
    std::vector<Expression> usual;
    std::vector<Expression> extreme;
};

// `owner` is the class whose constants may belong to the parameter; `position` its place among
// the parameters, from 0.
Choices ChoicesFor(const Parameter& parameter, std::size_t position, const Class& owner, const Supply& supply);

// Any of the choices; of a number now and then any that there is.
using Random = std::mt19937_64;
Expression Drawn(const Parameter& parameter, const Choices& choices, Random& random);

// Lists of arguments for a method: the usual ones with each parameter in turn varied over its
// usual values, then (when `extremes`) over its extremes, then all integers alike, then a few drawn
// at random.
std::vector<std::vector<Expression>> ArgumentLists(const Declaration& declaration, const Class& owner,
                                                   const Supply& supply, bool extremes);

// "New Picture(5, 3, 32)": a new object by a constructor of a class known to the host.
Expression NewExpression(std::string_view className, const std::vector<Expression>& arguments);

std::string ListText(const std::vector<Expression>& arguments);    // "(1, nil)", "" for none
std::string BeforeText(const std::vector<Expression>& arguments);  // the lines before

}  // namespace host::check
