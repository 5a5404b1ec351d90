// Expressions by precedence, and types by name.
#include <algorithm>

#include "host/objects/Type.h"
#include "host/script/Parser.h"

namespace script {

namespace {

ExpressionPtr MakeNode(Node node, Position at) {
    auto expression = std::make_unique<Expression>();
    expression->node = node;
    expression->at = at;
    return expression;
}

struct BinaryOperator {
    std::string_view text;
    Operator op;
    int precedence;  // higher binds closer; unary operators and ^ are closer than all of these
    bool word;
};

constexpr BinaryOperator kBinaryOperators[] = {
    {"or", Operator::Or, 1, true},
    {"xor", Operator::Xor, 1, true},
    {"and", Operator::And, 2, true},
    {"=", Operator::Equal, 3, false},
    {"<>", Operator::NotEqual, 3, false},
    {"<", Operator::Less, 3, false},
    {"<=", Operator::LessOrEqual, 3, false},
    {">", Operator::Greater, 3, false},
    {">=", Operator::GreaterOrEqual, 3, false},
    {"is", Operator::Is, 3, true},
    {"+", Operator::Add, 4, false},
    {"-", Operator::Subtract, 4, false},
    {"*", Operator::Multiply, 5, false},
    {"/", Operator::Divide, 5, false},
    {"\\", Operator::IntegerDivide, 5, false},
    {"mod", Operator::Modulo, 5, true},
};
constexpr int kComparisonPrecedence = 3;

// Counts levels of recursion for as long as it lives.
class Level {
  public:
    explicit Level(int& depth) : depth_(depth) { ++depth_; }
    ~Level() { --depth_; }

  private:
    int& depth_;
};

}  // namespace

ExpressionPtr Parser::Finish(ExpressionPtr expression) {
    for (const ExpressionPtr& operand : expression->operands)
        expression->depth = std::max(expression->depth, operand->depth + 1);
    if (expression->depth > kDeepestExpression) FailAt(expression->at, kParserSays.expressionTooDeep());
    return expression;
}

ExpressionPtr Parser::ParseBinary(int lowest) {
    ExpressionPtr left = ParseUnary();
    for (;;) {
        if (AtWord("isa") && kComparisonPrecedence >= lowest) {
            ExpressionPtr test = MakeNode(Node::IsA, Here());
            Advance();
            test->typeName = ParseClassName();
            test->operands.push_back(std::move(left));
            left = Finish(std::move(test));
            continue;
        }
        const auto* found = std::find_if(std::begin(kBinaryOperators), std::end(kBinaryOperators),
                                         [&](const BinaryOperator& candidate) {
                                             return candidate.word ? AtWord(candidate.text) : AtSymbol(candidate.text);
                                         });
        if (found == std::end(kBinaryOperators) || found->precedence < lowest) return left;
        ExpressionPtr node = MakeNode(Node::Binary, Here());
        node->op = found->op;
        Advance();
        node->operands.push_back(std::move(left));
        node->operands.push_back(ParseBinary(found->precedence + 1));
        left = Finish(std::move(node));
    }
}

ExpressionPtr Parser::ParseUnary() {
    const Level level(expressionDepth_);
    if (expressionDepth_ > kDeepestExpression) Fail(kParserSays.expressionTooDeep());
    if (TakeSymbol("+")) return ParseUnary();
    if (!AtSymbol("-") && !AtWord("not")) return ParsePower();
    ExpressionPtr node = MakeNode(Node::Unary, Here());
    node->op = AtSymbol("-") ? Operator::Negate : Operator::Not;
    Advance();
    node->operands.push_back(ParseUnary());
    return Finish(std::move(node));
}

// x ^ y, from left to right; y may have a sign of its own.
ExpressionPtr Parser::ParsePower() {
    ExpressionPtr left = ParsePostfix();
    while (AtSymbol("^")) {
        ExpressionPtr node = MakeNode(Node::Binary, Here());
        node->op = Operator::Power;
        Advance();
        node->operands.push_back(std::move(left));
        node->operands.push_back(AtSymbol("-") || AtSymbol("+") || AtWord("not") ? ParseUnary() : ParsePostfix());
        left = Finish(std::move(node));
    }
    return left;
}

ExpressionPtr Parser::ParsePostfix() {
    ExpressionPtr expression = ParsePrimary();
    for (;;) {
        if (AtSymbol(".")) {
            Advance();
            ExpressionPtr member = MakeNode(Node::Member, Here());
            member->text = ExpectMemberName();
            member->operands.push_back(std::move(expression));
            expression = Finish(std::move(member));
        } else if (AtSymbol("(")) {
            ExpressionPtr apply = MakeNode(Node::Apply, expression->at);
            apply->operands.push_back(std::move(expression));
            for (ExpressionPtr& argument : ParseArguments()) apply->operands.push_back(std::move(argument));
            apply->bracketed = true;
            expression = Finish(std::move(apply));
        } else {
            return expression;
        }
    }
}

std::vector<ExpressionPtr> Parser::ParseArguments() {
    ExpectSymbol("(", "a name");
    std::vector<ExpressionPtr> arguments;
    if (TakeSymbol(")")) return arguments;
    do arguments.push_back(ParseExpression());
    while (TakeSymbol(","));
    ExpectSymbol(")", "the arguments");
    return arguments;
}

std::vector<ExpressionPtr> Parser::ParseBareArguments() {
    std::vector<ExpressionPtr> arguments;
    do arguments.push_back(ParseExpression());
    while (TakeSymbol(","));
    return arguments;
}

ExpressionPtr Parser::ParsePrimary() {
    if (AtSymbol("(")) {
        Advance();
        ExpressionPtr inner = ParseExpression();
        ExpectSymbol(")", "the expression in brackets");
        inner->bracketed = true;
        return inner;
    }
    if (AtWord("new")) return ParseNew();
    if (Peek().kind == TokenKind::Identifier) return ParseNameOrConstant();
    return ParseLiteral();
}

ExpressionPtr Parser::ParseNew() {
    ExpressionPtr node = MakeNode(Node::New, Here());
    Advance();
    node->typeName = ParseClassName();
    if (AtSymbol("(")) node->operands = ParseArguments();
    return Finish(std::move(node));
}

// "CType(value, Type)"
ExpressionPtr Parser::ParseCast() {
    ExpressionPtr node = MakeNode(Node::Cast, Here());
    Advance();
    ExpectSymbol("(", "CType");
    node->operands.push_back(ParseExpression());
    ExpectSymbol(",", "the value; CType takes a type as well: CType(x, Double)");
    node->typeName = ParseTypeName();
    ExpectSymbol(")", "the type");
    return Finish(std::move(node));
}

ExpressionPtr Parser::ParseAddressOf() {
    ExpressionPtr node = MakeNode(Node::AddressOf, Here());
    Advance();
    node->operands.push_back(ParsePostfix());
    return Finish(std::move(node));
}

ExpressionPtr CloneWritten(const Expression& written) {
    ExpressionPtr copy = MakeNode(written.node, written.at);
    copy->op = written.op;
    copy->depth = written.depth;
    copy->text = written.text;
    copy->typeName = written.typeName;
    copy->bracketed = written.bracketed;
    copy->pattern = written.pattern;
    copy->integer = written.integer;
    copy->real = written.real;
    for (const ExpressionPtr& operand : written.operands) copy->operands.push_back(CloneWritten(*operand));
    return copy;
}

ExpressionPtr Parser::ParseNameOrConstant() {
    const Position at = Here();
    if (AtWord("true") || AtWord("false")) {
        ExpressionPtr node = MakeNode(Node::BooleanLiteral, at);
        node->integer = AtWord("true");
        Advance();
        return node;
    }
    if (TakeWord("nil")) return MakeNode(Node::NilLiteral, at);
    if (TakeWord("self") || TakeWord("me")) return MakeNode(Node::Self, at);
    if (TakeWord("super")) return MakeNode(Node::Super, at);
    if (AtWord("addressof") && Peek(1).kind == TokenKind::Identifier) return ParseAddressOf();
    if (AtWord("ctype") && AtSymbol("(", 1)) return ParseCast();
    const bool raises = AtWord("raiseevent") && AtName(1);
    if (raises) Advance();
    ExpressionPtr node = MakeNode(Node::Name, at);
    node->text = raises ? kEventMark : std::string_view();
    node->text += ExpectName("a value");
    return node;
}

ExpressionPtr Parser::ParseLiteral() {
    const Token& token = Peek();
    ExpressionPtr node = MakeNode(Node::Nothing, Here());
    switch (token.kind) {
        case TokenKind::Integer:
            node->node = Node::IntegerLiteral;
            node->integer = token.number;
            node->pattern = token.text.starts_with('&');
            break;
        case TokenKind::Double:
            node->node = Node::RealLiteral;
            node->real = token.real;
            node->integer = token.number;  // a whole one above the highest Int64
            break;
        case TokenKind::Color:
            node->node = Node::ColorLiteral;
            node->integer = token.number;
            break;
        case TokenKind::String:
            node->node = Node::StringLiteral;
            node->text = token.text;
            break;
        default:
            Fail(kParserSays.expectedValue(Found()));
    }
    Advance();
    return node;
}

bool Parser::StartsExpression() const {
    switch (Peek().kind) {
        case TokenKind::Identifier: {
            constexpr std::string_view words[] = {"new", "not", "true", "false", "nil", "self", "me", "super"};
            return AtName() ||
                   std::any_of(std::begin(words), std::end(words), [&](std::string_view word) { return AtWord(word); });
        }
        case TokenKind::Operator:
            return AtSymbol("(") || AtSymbol("-") || AtSymbol("+");
        case TokenKind::NewLine:
        case TokenKind::End:
            return false;
        default:
            return true;
    }
}

// "()", or "(,)" and the like for more dimensions.
bool Parser::TakeArrayBrackets(TypeName& type) {
    std::size_t commas = 0;
    while (AtSymbol(",", commas + 1)) ++commas;
    if (!AtSymbol("(") || !AtSymbol(")", commas + 1)) return false;
    for (std::size_t i = 0; i < commas + 2; ++i) Advance();
    type.array = true;
    type.dimensions = static_cast<int>(commas + 1);
    return true;
}

TypeName Parser::ParseTypeName() {
    TypeName type = ParseClassName(true);
    TakeArrayBrackets(type);
    return type;
}

// A name, or one behind the name of the module it stands in. Where an expression may go on with a
// dot only modules count.
TypeName Parser::ParseClassName(bool qualified) {
    TypeName type;
    type.at = Here();
    type.name = ExpectName("a type");
    while (AtSymbol(".") && (qualified || moduleNames_.contains(host::LowerName(type.name)))) {
        Advance();
        type.name += '.' + ExpectName("a type");
    }
    return type;
}

}  // namespace script
