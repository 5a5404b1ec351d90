// The expressions in a table of preconditions: what may stand left and right of the operators of the
// script language, with the objects of one call as its names.
//
//   source.Width < 1 And Not IsFinite(angle)      self.Memory Is Nil      Min(x, x + w) >= self.Width
//
// Numbers are doubles throughout, so that sums of 32-bit sizes neither wrap nor stop. An expression
// that asks a member of Nil, or a name that this call does not have, has no value; what is built on it
// has none either, but for And and Or where the other side decides.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/objects/Type.h"
#include "host/objects/Value.h"

namespace script::explain {

// What a name stands for. Sentences call an object by its name: "source", "the picture".
struct Subject {
    host::Value value;
    std::string name;
};

// Gives nothing for arguments that it has no answer to.
using Function = std::function<std::optional<host::Value>(std::span<const Subject> arguments)>;
template <class T>
using ByName = std::unordered_map<std::string, T, host::NameHash, host::NameEqual>;

// The functions that every table has: Min, Max, Abs, IsFinite, Ubound of an array, LenB of a string,
// Name of an object or number as the call has it. If(condition, a, b), and Default(a, b) for an `a` that may
// have no value, are part of the language.
const ByName<Function>& CommonFunctions();

// The names of one call, and the functions of its table.
struct Scope {
    ByName<Subject> names;
    const ByName<Function>* functions = &CommonFunctions();
};

// What is wrong with a text, in one sentence.
struct ExpressionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Expression {
  public:
    // Throws ExpressionError for a text that isn't one expression.
    static Expression Parse(std::string_view text);

    // Of "Name(a, b)" the name and the arguments; an Expression that is no call has no arguments.
    const std::string& Word() const { return word_; }
    const std::vector<Expression>& Arguments() const { return parts_; }

    std::optional<Subject> Evaluate(const Scope& scope) const;

    // Whether it has a value, and that is true.
    bool Holds(const Scope& scope) const;

  private:
    enum class Kind { Literal, Name, Member, Negation, Not, Operation, IsNil, Call };
    friend class ExpressionParser;

    std::optional<Subject> Member(const Scope& scope) const;
    std::optional<Subject> Operate(const Scope& scope) const;
    std::optional<Subject> Decide(const Scope& scope) const;
    std::optional<Subject> Choose(const Scope& scope) const;
    std::optional<Subject> CallFunction(const Scope& scope) const;
    std::optional<double> Number(const Scope& scope) const;

    Kind kind_ = Kind::Literal;
    std::string word_;  // the name, member, operator or function
    host::Value value_;
    std::vector<Expression> parts_;
};

// A text with expressions in braces: "width {width} is below 1".
class Sentence {
  public:
    static Sentence Parse(std::string_view text);  // throws ExpressionError
    std::string Fill(const Scope& scope) const;
    bool Empty() const { return pieces_.empty(); }

  private:
    struct Piece {
        std::string text;                      // that stands before
        std::optional<Expression> expression;  // the value, if there is one
    };
    std::vector<Piece> pieces_;
};

}  // namespace script::explain
