// The conditions of the explain table: read, and worked out for one use of a member.
#include "host/script/ExplainExpression.h"

#include <algorithm>
#include <cmath>

#include "host/calls/Call.h"
#include "host/calls/Lexer.h"
#include "host/calls/Runtime.h"
#include "host/framework/NumberText.h"

namespace script::explain {

using host::Kind;
using host::Value;

namespace {

constexpr int kDeepest = 100;  // brackets and operators within one another

bool IsNil(const Value& value) {
    return value.IsNil() || (value.kind() == host::Kind::Array && !value.array()) ||
           (value.kind() == host::Kind::String && !value.string());
}

std::optional<double> NumberOf(const std::optional<Subject>& subject) {
    if (!subject) return {};
    const Value& value = subject->value;
    if (!value.IsNumber() && value.kind() != host::Kind::Boolean) return {};
    return value.ToDouble();
}

std::optional<Value> Calculate(const std::string& sign, double a, double b) {
    if (sign == "+") return Value(a + b);
    if (sign == "-") return Value(a - b);
    if (sign == "*") return Value(a * b);
    if (sign == "\\") return b == 0 ? std::optional<Value>() : Value(std::trunc(a / b));
    if (sign == "=") return Value(a == b);
    if (sign == "<>") return Value(a != b);
    if (sign == "<") return Value(a < b);
    if (sign == "<=") return Value(a <= b);
    if (sign == ">") return Value(a > b);
    return Value(a >= b);
}

std::string TextOf(const Subject& subject) {
    if (subject.value.kind() == host::Kind::String) return std::string(subject.value.text());
    if (const auto number = NumberOf(subject)) return host::NumberText(*number);
    return subject.name;
}

}  // namespace

// --- Text to tree -------------------------------------------------------------------------------

class ExpressionParser {
  public:
    explicit ExpressionParser(std::string_view text) : tokens_(host::Tokens(text)) {}

    Expression Whole() {
        Expression whole = Binary(0);
        if (Here().kind != host::TokenKind::End) Fail();
        return whole;
    }

  private:
    // The operators, those that bind least first.
    static constexpr std::string_view kLevels[][6] = {
        {"Or"}, {"And"}, {"=", "<>", "<", "<=", ">", ">="}, {"+", "-"}, {"*", "\\"}};

    const host::Token& Here() const { return tokens_[at_]; }
    bool Take(std::string_view word) {
        const bool there = Here().Is(word);
        at_ += there;
        return there;
    }
    [[noreturn]] void Fail() const { throw ExpressionError("can't read \"" + Here().text + "\" here"); }
    void Expect(std::string_view word) {
        if (!Take(word)) throw ExpressionError("needs a " + std::string(word) + " before \"" + Here().text + '"');
    }

    static Expression Make(Expression::Kind kind, std::string word, std::vector<Expression> parts) {
        Expression expression;
        expression.kind_ = kind;
        expression.word_ = std::move(word);
        expression.parts_ = std::move(parts);
        return expression;
    }

    const std::string_view* OperatorHere(std::size_t level) const {
        for (const std::string_view& sign : kLevels[level])
            if (!sign.empty() && Here().Is(sign)) return &sign;
        return nullptr;
    }

    Expression Binary(std::size_t level) {
        if (level == std::size(kLevels)) return Unary();
        Expression left = Binary(level + 1);
        while (const std::string_view* const sign = OperatorHere(level)) {
            ++at_;
            left = Make(Expression::Kind::Operation, std::string(*sign), {std::move(left), Binary(level + 1)});
        }
        if (level != 2 || !Take("Is")) return left;
        Expect("Nil");
        return Make(Expression::Kind::IsNil, {}, {std::move(left)});
    }

    Expression Unary() {
        if (++depth_ > kDeepest) throw ExpressionError("is nested too deeply");
        Expression result = Take("-")     ? Make(Expression::Kind::Negation, {}, {Unary()})
                            : Take("Not") ? Make(Expression::Kind::Not, {}, {Unary()})
                                          : Postfix();
        --depth_;
        return result;
    }

    Expression Postfix() {
        Expression subject = Primary();
        while (Take(".")) {
            if (Here().kind != host::TokenKind::Identifier) Fail();
            subject = Make(Expression::Kind::Member, tokens_[at_++].text, {std::move(subject)});
        }
        return subject;
    }

    Expression Primary() {
        if (Take("(")) {
            Expression inner = Binary(0);
            Expect(")");
            return inner;
        }
        const host::Token token = tokens_[at_];
        if (Take("True")) return Literal(Value(true));
        if (Take("False")) return Literal(Value(false));
        if (token.kind == host::TokenKind::Identifier) return NameOrCall();
        const auto value = LiteralValue(token);
        if (!value) Fail();
        ++at_;
        return Literal(*value);
    }

    static std::optional<Value> LiteralValue(const host::Token& token) {
        if (token.kind == host::TokenKind::Integer) return Value(static_cast<double>(token.number));
        if (token.kind == host::TokenKind::Double) return Value(token.real);
        if (token.kind == host::TokenKind::String) return Value(token.text);
        return {};
    }

    static Expression Literal(Value value) {
        Expression literal;
        literal.value_ = std::move(value);
        return literal;
    }

    Expression NameOrCall() {
        std::string name = tokens_[at_++].text;
        if (!Take("(")) return Make(Expression::Kind::Name, std::move(name), {});
        std::vector<Expression> arguments;
        while (!Take(")")) {
            if (!arguments.empty()) Expect(",");
            arguments.push_back(Binary(0));
        }
        return Make(Expression::Kind::Call, std::move(name), std::move(arguments));
    }

    std::vector<host::Token> tokens_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

Expression Expression::Parse(std::string_view text) { return ExpressionParser(text).Whole(); }

// --- Values ---------------------------------------------------------------------------------------

std::optional<double> Expression::Number(const Scope& scope) const { return NumberOf(Evaluate(scope)); }

bool Expression::Holds(const Scope& scope) const { return Number(scope).value_or(0) != 0; }

std::optional<Subject> Expression::Evaluate(const Scope& scope) const {
    switch (kind_) {
        case Kind::Literal:
            return Subject{value_, {}};
        case Kind::Name:
            if (const auto found = scope.names.find(word_); found != scope.names.end()) return found->second;
            return {};
        case Kind::Member:
            return Member(scope);
        case Kind::Operation:
            return Operate(scope);
        case Kind::Call:
            return CallFunction(scope);
        case Kind::IsNil:
            if (const auto subject = parts_[0].Evaluate(scope))
                return Subject{Value(explain::IsNil(subject->value)), {}};
            return {};
        default:
            break;
    }
    const auto number = parts_[0].Number(scope);
    if (!number) return {};
    return Subject{kind_ == Kind::Not ? Value(*number == 0) : Value(-*number), {}};
}

std::optional<Subject> Expression::Member(const Scope& scope) const {
    const auto subject = parts_[0].Evaluate(scope);
    host::Object* const object = subject ? subject->value.object() : nullptr;
    const host::Property* const property = object ? object->type->FindProperty(word_) : nullptr;
    if (!property || !property->readable()) return {};
    Value value = host::GetProperty(*property, object);
    if (host::Runtime::Get().TakeRaised()) return {};
    return Subject{std::move(value), subject->name + "'s " + property->name};
}

// And and Or, of which one side may be enough.
std::optional<Subject> Expression::Decide(const Scope& scope) const {
    const bool enough = host::SameName(word_, "Or");
    bool known = true;
    for (const Expression& side : parts_) {
        const auto value = side.Number(scope);
        if (value && (*value != 0) == enough) return Subject{Value(enough), {}};
        known = known && value;
    }
    if (!known) return {};
    return Subject{Value(!enough), {}};
}

std::optional<Subject> Expression::Operate(const Scope& scope) const {
    if (host::SameName(word_, "And") || host::SameName(word_, "Or")) return Decide(scope);
    const auto a = parts_[0].Number(scope), b = parts_[1].Number(scope);
    if (!a || !b) return {};
    auto result = Calculate(word_, *a, *b);
    if (!result) return {};
    return Subject{std::move(*result), {}};
}

// If and Default, of whose arguments not all need a value.
std::optional<Subject> Expression::Choose(const Scope& scope) const {
    if (host::SameName(word_, "Default") && parts_.size() == 2) {
        auto first = parts_[0].Evaluate(scope);
        return first ? std::move(first) : parts_[1].Evaluate(scope);
    }
    const auto condition = parts_.size() == 3 ? parts_[0].Number(scope) : std::nullopt;
    if (!condition) return {};
    return parts_[*condition != 0 ? 1 : 2].Evaluate(scope);
}

std::optional<Subject> Expression::CallFunction(const Scope& scope) const {
    if (host::SameName(word_, "If") || host::SameName(word_, "Default")) return Choose(scope);
    const auto function = scope.functions->find(word_);
    if (function == scope.functions->end()) return {};
    std::vector<Subject> arguments;
    for (const Expression& part : parts_) {
        auto argument = part.Evaluate(scope);
        if (!argument) return {};
        arguments.push_back(std::move(*argument));
    }
    auto result = function->second(arguments);
    if (!result) return {};
    return Subject{std::move(*result), {}};
}

// --- Sentences --------------------------------------------------------------------------------------

Sentence Sentence::Parse(std::string_view text) {
    Sentence sentence;
    while (!text.empty()) {
        const std::size_t open = text.find('{'), close = text.find('}', open);
        Piece& piece = sentence.pieces_.emplace_back(Piece{std::string(text.substr(0, open)), {}});
        if (open == std::string_view::npos) break;
        if (close == std::string_view::npos) throw ExpressionError("needs a } after the {");
        piece.expression = Expression::Parse(text.substr(open + 1, close - open - 1));
        text.remove_prefix(close + 1);
    }
    return sentence;
}

std::string Sentence::Fill(const Scope& scope) const {
    std::string text;
    for (const Piece& piece : pieces_) {
        text += piece.text;
        if (!piece.expression) continue;
        const auto subject = piece.expression->Evaluate(scope);
        text += subject ? TextOf(*subject) : "?";
    }
    return text;
}

// --- Functions --------------------------------------------------------------------------------------

namespace {

template <class Work>
Function OfNumbers(std::size_t count, Work work) {
    return [=](std::span<const Subject> arguments) -> std::optional<Value> {
        std::vector<double> numbers;
        for (const Subject& argument : arguments)
            if (const auto number = NumberOf(argument)) numbers.push_back(*number);
        if (arguments.size() != count || numbers.size() != count) return {};
        return Value(work(numbers));
    };
}

std::optional<Value> UpperBoundOf(std::span<const Subject> arguments) {
    if (arguments.size() != 1 || !arguments[0].value.array()) return {};
    return Value(static_cast<double>(host::UpperBound(arguments[0].value.array())));
}

std::optional<Value> LengthOf(std::span<const Subject> arguments) {
    if (arguments.size() != 1 || arguments[0].value.kind() != Kind::String) return {};
    return Value(static_cast<double>(arguments[0].value.text().size()));
}

std::optional<Value> NameOf(std::span<const Subject> arguments) {
    if (arguments.size() != 1) return {};
    return Value(arguments[0].name);
}

}  // namespace

const ByName<Function>& CommonFunctions() {
    using Numbers = std::vector<double>;
    static const ByName<Function> functions = {
        {"Min", OfNumbers(2, [](const Numbers& n) { return std::min(n[0], n[1]); })},
        {"Max", OfNumbers(2, [](const Numbers& n) { return std::max(n[0], n[1]); })},
        {"Abs", OfNumbers(1, [](const Numbers& n) { return std::abs(n[0]); })},
        {"IsFinite", OfNumbers(1, [](const Numbers& n) { return static_cast<bool>(std::isfinite(n[0])); })},
        {"Ubound", UpperBoundOf},
        {"LenB", LengthOf},
        {"Name", NameOf},
    };
    return functions;
}

}  // namespace script::explain
