// Values as literal nodes, and back.
#include "host/script/Literal.h"

namespace script {

host::Value LiteralValue(const Expression& literal) {
    switch (literal.node) {
        case Node::IntegerLiteral:
            return host::NumberAs(host::Value(LiteralInteger(literal)), KindOf(literal.type.base));
        case Node::RealLiteral:
            return host::NumberAs(host::Value(literal.real), KindOf(literal.type.base));
        case Node::BooleanLiteral:
            return host::Value(literal.integer != 0);
        case Node::ColorLiteral:
            return host::Value(static_cast<sdk::Color>(literal.integer));
        case Node::StringLiteral:
            return host::Value(literal.text);
        default:
            if (literal.type == kStringType) return host::Value(host::Ref<host::String>());
            return literal.type.array ? host::Value(host::Ref<host::Array>()) : host::Value(nullptr);
    }
}

namespace {

Node LiteralNodeOf(const host::Value& value) {
    if (value.IsWhole()) return Node::IntegerLiteral;
    if (value.IsNumber()) return Node::RealLiteral;
    if (value.kind() == host::Kind::Boolean) return Node::BooleanLiteral;
    if (value.kind() == host::Kind::Color) return Node::ColorLiteral;
    return value.kind() == host::Kind::String ? Node::StringLiteral : Node::NilLiteral;
}

}  // namespace

ExpressionPtr LiteralOf(const host::Value& value, Position at) {
    auto literal = std::make_unique<Expression>();
    literal->node = LiteralNodeOf(value);
    literal->at = at;
    literal->type = literal->node == Node::NilLiteral ? kNilType : Type{static_cast<Base>(value.kind())};
    literal->text = value.text();
    if (literal->node != Node::RealLiteral) literal->integer = value.ToInt64();
    literal->real = value.ToDouble();
    return literal;
}

}  // namespace script
