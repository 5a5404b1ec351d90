// Operators that a class defines: methods called Operator_Add and the like.
#include <algorithm>

#include "host/script/Checker.h"

namespace script {

namespace {

struct OperatorName {
    Operator op;
    std::string_view name;  // behind "Operator_"; with "Right" behind it of the operand on the right
};

constexpr OperatorName kOperatorNames[] = {
    {Operator::Add, "Add"},
    {Operator::Subtract, "Subtract"},
    {Operator::Multiply, "Multiply"},
    {Operator::Divide, "Divide"},
    {Operator::IntegerDivide, "IntegerDivide"},
    {Operator::Modulo, "Modulo"},
    {Operator::Power, "Power"},
    {Operator::And, "And"},
    {Operator::Or, "Or"},
    {Operator::Xor, "Xor"},
    {Operator::Not, "Not"},
    {Operator::Negate, "Negate"},
};

std::string NameOfOperator(Operator op) {
    for (const OperatorName& row : kOperatorNames)
        if (row.op == op) return "Operator_" + std::string(row.name);
    return {};
}

bool IsComparison(Operator op) { return op >= Operator::Equal && op <= Operator::GreaterOrEqual; }

bool Converts(Type from, Type to) {
    return from == to || (IsNumeric(from) && IsNumeric(to)) ||
           (IsObject(from) && IsObject(to) && Inherits(from.of, to.of));
}

}  // namespace

// Calls a method of one operand with the others; false, with nothing changed, when its class has none that
// takes them.
bool Checker::CallOperator(ExpressionPtr& call, const std::string& name, std::size_t receiver, ExpressionPtr* operands,
                           std::size_t count) {
    if (!IsObject(operands[receiver]->type)) return false;
    const ClassSymbol& type = *operands[receiver]->type.of;
    const std::vector<Candidate> candidates = MethodCandidates(type, name, false);
    std::vector<ExpressionPtr> arguments;
    for (std::size_t i = 0; i < count; ++i)
        if (i != receiver) arguments.push_back(std::move(operands[i]));
    const bool fits = std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& candidate) {
        return candidate.signature->result != kNoType && FitOfCall(*candidate.signature, arguments);
    });
    if (!fits) {
        for (std::size_t i = 0, next = 0; i < count; ++i)
            if (i != receiver) operands[i] = std::move(arguments[next++]);
        return false;
    }
    ResolveCall(call, candidates, std::move(operands[receiver]), arguments, true);
    return true;
}

bool Checker::ResolveOperator(ExpressionPtr& expression) {
    if (IsComparison(expression->op)) return ResolveCompare(expression);
    const std::string name = NameOfOperator(expression->op);
    if (name.empty()) return false;
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, expression->at);
    call->depth = expression->depth;
    ExpressionPtr* const operands = expression->operands.data();
    if (!CallOperator(call, name, 0, operands, 2) && !CallOperator(call, name + "Right", 1, operands, 2)) return false;
    expression = std::move(call);
    return true;
}

bool Checker::ResolveUnaryOperator(ExpressionPtr& expression) {
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, expression->at);
    call->depth = expression->depth;
    if (!CallOperator(call, NameOfOperator(expression->op), 0, expression->operands.data(), 1)) return false;
    expression = std::move(call);
    return true;
}

// Operator_Compare gives a number that is below, equal to or above 0, as its object is to the other
// operand. Nil is compared as a reference.
bool Checker::ResolveCompare(ExpressionPtr& expression) {
    for (const ExpressionPtr& operand : expression->operands)
        if (operand->type == kNilType) return false;
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, expression->at);
    call->depth = expression->depth;
    ExpressionPtr* const operands = expression->operands.data();
    const bool left = CallOperator(call, "Operator_Compare", 0, operands, 2);
    if (!left && !CallOperator(call, "Operator_Compare", 1, operands, 2)) return false;
    if (IsWrong(call->type)) return Wrong(*expression, {}), true;
    Convert(call, kIntegerType, "what Operator_Compare gives");
    operands[left ? 0 : 1] = std::move(call);
    operands[left ? 1 : 0] = MakeIntegerLiteral(0, expression->at);
    expression->node = Node::Comparison;
    expression->type = kBooleanType;
    return true;
}

// The method that makes one type of another: "Function Operator_Convert() As T" of the class that is
// converted, or "Sub Operator_Convert(value As T)" of the one that is wanted.
RoutineSymbol* Checker::FindOperatorConvert(Type from, Type to) const {
    if (from.array || to.array || (!IsObject(from) && !IsObject(to))) return nullptr;
    if (IsObject(from) && IsObject(to) && Inherits(from.of, to.of)) return nullptr;
    const auto find = [this](Type holder, const auto& serves) -> RoutineSymbol* {
        if (!IsObject(holder)) return nullptr;
        RoutineSymbol* found = nullptr;
        for (RoutineSymbol* routine : symbols_.FindRoutines(*holder.of, "Operator_Convert")) {
            const int fit = routine->shared ? 0 : serves(routine->signature);
            if (fit == 2) return routine;
            if (fit == 1 && !found) found = routine;
        }
        return found;
    };
    const auto gives = [&](const Signature& signature) {
        if (!signature.parameters.empty() || signature.result == kNoType) return 0;
        return signature.result == to ? 2 : int{Converts(signature.result, to)};
    };
    const auto takes = [&](const Signature& signature) {
        if (signature.parameters.size() != 1 || signature.result != kNoType) return 0;
        return signature.parameters[0].type == from ? 2 : int{Converts(from, signature.parameters[0].type)};
    };
    if (RoutineSymbol* routine = find(from, gives)) return routine;
    return find(to, takes);
}

void Checker::CallOperatorConvert(ExpressionPtr& expression, RoutineSymbol& convert, Type to) {
    const bool makes = convert.signature.result == kNoType;
    ExpressionPtr call = MakeExpression(makes ? Node::NewObject : Node::CallRoutine,
                                        makes ? to : convert.signature.result, expression->at);
    call->routine = &convert;
    call->depth = expression->depth + 1;
    if (makes) ForceConvert(expression, convert.signature.parameters[0].type);
    call->operands.push_back(std::move(expression));
    expression = std::move(call);
    if (expression->type != to) ForceConvert(expression, to);
}

// "object(index)"
bool Checker::ResolveSubscript(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments) {
    if (!IsObject(expression->type)) return false;
    const std::vector<Candidate> candidates = MethodCandidates(*expression->type.of, "Operator_Subscript", false);
    if (candidates.empty()) return false;
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, expression->at);
    call->depth = expression->depth;
    ResolveCall(call, candidates, std::move(expression), arguments, true);
    expression = std::move(call);
    return true;
}

// A member that a class does not have, asked of its Operator_Lookup by name.
bool Checker::ResolveLookup(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                            std::vector<ExpressionPtr>& arguments, bool wantsValue) {
    const std::vector<Candidate> candidates = MethodCandidates(type, "Operator_Lookup", false);
    if (candidates.empty() || !receiver) return false;
    ExpressionPtr name = MakeExpression(Node::StringLiteral, kStringType, expression->at);
    name->text = expression->text;
    arguments.insert(arguments.begin(), std::move(name));
    ResolveCall(expression, candidates, std::move(receiver), arguments, wantsValue);
    return true;
}

}  // namespace script
