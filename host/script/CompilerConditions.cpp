// Comparisons and what is made of them: Booleans in registers, and jumps for the conditions of
// statements, which need no Boolean at all.
#include "host/script/FunctionCompiler.h"

namespace script {

namespace {

struct ComparisonCode {
    Op op;
    bool swapped;
};

enum class CompareAs { Whole, Real, Text, Reference, Wide };

CompareAs HowToCompare(Type type) {
    if (IsString(type)) return CompareAs::Text;
    if (TakesNil(type)) return CompareAs::Reference;
    if (type.base == Base::UInt64) return CompareAs::Wide;
    return IsReal(type) ? CompareAs::Real : CompareAs::Whole;
}

ComparisonCode CodeOf(Operator op, CompareAs as) {
    constexpr Op table[5][4] = {{Op::EqualI, Op::NotEqualI, Op::LessI, Op::LessOrEqualI},
                                {Op::EqualD, Op::NotEqualD, Op::LessD, Op::LessOrEqualD},
                                {Op::EqualText, Op::NotEqualText, Op::LessText, Op::LessOrEqualText},
                                {Op::Same, Op::NotSame, Op::Same, Op::Same},
                                {Op::EqualI, Op::NotEqualI, Op::LessW, Op::LessOrEqualW}};
    const Op* row = table[static_cast<int>(as)];
    switch (op) {
        case Operator::Equal:
            return {row[0], false};
        case Operator::NotEqual:
            return {row[1], false};
        case Operator::Less:
            return {row[2], false};
        case Operator::LessOrEqual:
            return {row[3], false};
        case Operator::Greater:
            return {row[2], true};
        default:
            return {row[3], true};
    }
}

}  // namespace

void FunctionCompiler::CompileComparison(Expression& expression, std::uint16_t target) {
    const ComparisonCode code = CodeOf(expression.op, HowToCompare(expression.operands[0]->type));
    CompileBinaryInto(code.op, expression, target, code.swapped);
}

// Both operands only as far as needed. The target may be a variable that the second reads, so it
// is written last.
void FunctionCompiler::CompileLogic(Expression& expression, std::uint16_t target) {
    JumpList isFalse, done;
    JumpUnless(expression, isFalse);
    Emit(Op::MoveBits, target, Constant(kBooleanType, host::Value(true)).index);
    Jump(done);
    Land(isFalse);
    Emit(Op::MoveBits, target, Constant(kBooleanType, host::Value(false)).index);
    Land(done);
}

namespace {

// The form of a comparison that skips the next instruction when it holds.
bool TestOf(Op op, Op& test) {
    switch (op) {
        case Op::EqualI:
            test = Op::TestEqualI;
            return true;
        case Op::NotEqualI:
            test = Op::TestNotEqualI;
            return true;
        case Op::LessI:
            test = Op::TestLessI;
            return true;
        case Op::LessOrEqualI:
            test = Op::TestLessOrEqualI;
            return true;
        case Op::EqualD:
            test = Op::TestEqualD;
            return true;
        case Op::NotEqualD:
            test = Op::TestNotEqualD;
            return true;
        case Op::LessD:
            test = Op::TestLessD;
            return true;
        case Op::LessOrEqualD:
            test = Op::TestLessOrEqualD;
            return true;
        default:
            return false;
    }
}

}  // namespace

// A comparison of numbers as a test: the instruction after it is skipped when it holds.
bool FunctionCompiler::EmitTest(Expression& condition) {
    if (condition.node != Node::Comparison) return false;
    const ComparisonCode code = CodeOf(condition.op, HowToCompare(condition.operands[0]->type));
    Op test = Op::TestEqualI;
    if (!TestOf(code.op, test)) return false;
    const Operand left = CompileBefore(*condition.operands[0], *condition.operands[1]);
    const Operand right = Compile(*condition.operands[1]);
    // Freed before the test: numbers need no clearing, so no instruction comes between.
    Free(right);
    Free(left);
    Emit(test, code.swapped ? right.index : left.index, code.swapped ? left.index : right.index);
    return true;
}

void FunctionCompiler::JumpUnless(Expression& condition, JumpList& list) {
    if (condition.node == Node::BooleanLiteral && condition.integer) return;
    if (condition.node == Node::Complement) return JumpWhen(*condition.operands[0], list);
    if (condition.node == Node::Logic && condition.op == Operator::And) {
        JumpUnless(*condition.operands[0], list);
        return JumpUnless(*condition.operands[1], list);
    }
    if (condition.node == Node::Logic) {
        JumpList holds;
        JumpWhen(*condition.operands[0], holds);
        JumpUnless(*condition.operands[1], list);
        return Land(holds);
    }
    if (EmitTest(condition)) return Jump(list);
    const Operand value = Compile(condition);
    list.push_back(EmitNumber(Op::JumpUnless, value.index, 0));
    Free(value);
}

void FunctionCompiler::JumpWhen(Expression& condition, JumpList& list) {
    if (condition.node == Node::Complement) return JumpUnless(*condition.operands[0], list);
    if (condition.node == Node::Logic && condition.op == Operator::Or) {
        JumpWhen(*condition.operands[0], list);
        return JumpWhen(*condition.operands[1], list);
    }
    if (condition.node == Node::Logic) {
        JumpList fails;
        JumpUnless(*condition.operands[0], fails);
        JumpWhen(*condition.operands[1], list);
        return Land(fails);
    }
    const Operand value = Compile(condition);
    list.push_back(EmitNumber(Op::JumpIf, value.index, 0));
    Free(value);
}

}  // namespace script
