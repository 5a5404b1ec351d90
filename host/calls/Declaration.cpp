// Reads declarations with the script language's lexer and parameter grammar.
#include "host/calls/Declaration.h"

#include <algorithm>

#include "host/calls/Lexer.h"
#include "host/calls/ParameterList.h"
#include "host/messages/LoadMessages.h"

namespace host {

namespace {

// Thrown and caught in this file only.
struct Unreadable {
    std::string expected;
    Token found;
};

class Reader {
  public:
    explicit Reader(std::string_view text) : lexer_(text) { Step(); }

    Declaration ReadMethod() {
        Declaration declaration;
        declaration.name = Name("a name");
        if (Skip("(")) ReadParameters(declaration.parameters);
        if (Skip("as")) declaration.result = ReadType();
        End();
        return declaration;
    }

    ConstantDeclaration ReadConstant() {
        ConstantDeclaration constant;
        constant.name = Name("a name");
        if (!Skip("=")) Fail("=");
        constant.value = Literal();
        End();
        return constant;
    }

    // --- The grammar of ParameterList.h

    bool AtParameterWord(std::string_view word) const {
        if (!token_.Is(word)) return false;
        Lexer after = lexer_;
        return after.Next().kind == TokenKind::Identifier && !IsAs(lexer_);
    }
    void ReadName(Parameter& parameter) { parameter.name = Name("a parameter's name"); }
    void ReadClosing() {
        if (!Skip(")")) Fail(")");
    }
    void ReadAs() {
        if (!Skip("as")) Fail("As");
    }
    void ReadParameterType(Parameter& parameter, bool array) {
        const Token type = token_;
        parameter.type = ReadType();
        if (array || parameter.paramArray) {
            if (parameter.type.kind == Kind::Array) throw Unreadable{"the type of an element", type};
            parameter.type = ArrayOf(parameter.type);
        }
        if (parameter.optional) parameter.defaultValue = DefaultOf(parameter.type);
    }
    void Step() { token_ = lexer_.Next(); }

    bool Skip(std::string_view word) {
        if (!token_.Is(word)) return false;
        Step();
        return true;
    }
    void ReadDefault(Parameter& parameter) {
        const Token start = token_;
        const Value value = Literal();
        const Kind kind = parameter.type.kind;
        if (value.IsNumber() && IsNumberKind(kind))
            parameter.defaultValue = NumberAs(value, kind);
        else if (value.kind() == kind || (value.IsNil() && kind == Kind::Array))
            parameter.defaultValue = value;
        else
            throw Unreadable{"a default of type " + TypeText(parameter.type), start};
    }

  private:
    [[noreturn]] void Fail(std::string expected) { throw Unreadable{std::move(expected), token_}; }

    std::string Name(const char* expected) {
        if (token_.kind != TokenKind::Identifier || token_.Is("as")) Fail(expected);
        std::string name = token_.text;
        Step();
        return name;
    }

    void End() {
        while (token_.kind == TokenKind::NewLine) Step();
        if (token_.kind != TokenKind::End) Fail("the end");
    }

    Type ReadType() {
        Type type = TypeNamed(Name("a type"));
        if (!Skip("(")) return type;
        if (!Skip(")")) Fail(")");
        return ArrayOf(type);
    }

    void ReadParameters(std::vector<Parameter>& parameters) {
        if (Skip(")")) return;
        do host::ReadParameter(*this, parameters.emplace_back());
        while (Skip(","));
        if (!Skip(")")) Fail(", or )");
    }

    static bool IsAs(Lexer lexer) { return lexer.Next().Is("as"); }

    Value Literal() {
        const bool negative = Skip("-");
        const Token token = token_;
        Step();
        if (token.kind == TokenKind::Integer) return Whole(token, negative);
        if (token.kind == TokenKind::Double) return Value(negative ? -token.real : token.real);
        if (!negative) {
            if (token.kind == TokenKind::Color) return Value(static_cast<sdk::Color>(token.number));
            if (token.kind == TokenKind::String) return Value(token.text);
            if (token.Is("true")) return Value(true);
            if (token.Is("false")) return Value(false);
            if (token.Is("nil")) return Value(nullptr);
        }
        throw Unreadable{"a literal", token};
    }

    // Hexadecimal and the like name 32 bits; decimal numbers beyond an Integer are Int64.
    static Value Whole(const Token& token, bool negative) {
        const std::int64_t number = negative ? -token.number : token.number;
        if (token.text.front() == '&' && token.number >= 0 && token.number <= UINT32_MAX)
            return Value(static_cast<std::int32_t>(static_cast<std::uint32_t>(number)));
        if (number >= INT32_MIN && number <= INT32_MAX) return Value(static_cast<std::int32_t>(number));
        return Value(number);
    }

    Lexer lexer_;
    Token token_;
};

std::string Complain(std::string_view text, const Unreadable& error) {
    const Token& found = error.found;
    if (found.kind == TokenKind::Error)
        return '"' + std::string(text) + "\", column " + std::to_string(found.column) + ": " + found.text;
    const std::string name = found.kind == TokenKind::End ? "the end" : "\"" + found.text + "\"";
    return kClassSays.unreadable.Text(text, found.column, error.expected, name);
}

template <class Result, class Read>
bool TryRead(std::string_view text, Result& result, std::string& problem, Read read) {
    try {
        Reader reader(text);
        result = read(reader);
        return true;
    } catch (const Unreadable& error) {
        problem = Complain(text, error);
        return false;
    }
}

}  // namespace

bool ReadDeclaration(std::string_view text, Declaration& declaration, std::string& problem) {
    return TryRead(text, declaration, problem, [](Reader& reader) { return reader.ReadMethod(); });
}

bool ReadConstant(std::string_view text, ConstantDeclaration& constant, std::string& problem) {
    return TryRead(text, constant, problem, [](Reader& reader) { return reader.ReadConstant(); });
}

std::string ParameterText(const Parameter& parameter) {
    std::string text = parameter.byRef ? "ByRef " : parameter.paramArray ? "ParamArray " : "";
    text += parameter.name;
    const bool array = parameter.type.kind == Kind::Array;
    if (array && !parameter.paramArray) text += "()";
    text += " As " + TypeText(array ? ElementOf(parameter.type) : parameter.type);
    if (parameter.optional) text += " = " + Describe(parameter.defaultValue);
    return text;
}

std::string DeclarationText(const Declaration& declaration) {
    std::string text = declaration.name;
    if (!declaration.parameters.empty()) {
        text += "(";
        for (const Parameter& parameter : declaration.parameters) {
            if (text.back() != '(') text += ", ";
            text += ParameterText(parameter);
        }
        text += ")";
    }
    if (declaration.result.kind != Kind::None) text += " As " + TypeText(declaration.result);
    return text;
}

}  // namespace host
