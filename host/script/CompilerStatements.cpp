// Statements as instructions: declarations, branches, loops and the jumps out of them.
#include <algorithm>
#include <set>

#include "host/script/FunctionCompiler.h"
#include "host/script/Literal.h"

namespace script {

void FunctionCompiler::CompileBlock(Block& block) {
    OpenScope();
    CompileStatements(block);
    CloseScope();
}

// In the scope that is open. The block's labels are known from its first statement on.
void FunctionCompiler::CompileStatements(Block& block) {
    const std::size_t before = labels_.size();
    for (const StatementPtr& statement : block)
        if (statement->action == Action::Label)
            labels_.push_back({statement->name, tries_.size(), scopes_.size(), {}, kNotMet});
    for (StatementPtr& statement : block) CompileStatement(*statement);
    labels_.resize(before);
}

void FunctionCompiler::LandLabel(const std::string& name) {
    const auto label = std::find_if(labels_.rbegin(), labels_.rend(),
                                    [&](const OpenLabel& open) { return host::SameName(open.name, name); });
    label->target = Here();
    Land(label->jumps);
}

// A jump back is a Loop, where interrupts are noticed; one ahead may be, too.
void FunctionCompiler::CompileGoTo(const Statement& statement) {
    const auto found = std::find_if(labels_.rbegin(), labels_.rend(),
                                    [&](const OpenLabel& open) { return host::SameName(open.name, statement.name); });
    const auto label = static_cast<std::size_t>(labels_.rend() - found) - 1;
    Leave(found->tries, [this, &statement, label] {
        at_ = statement.at;
        OpenLabel& open = labels_[label];
        ClearScopes(open.scopes);
        if (open.target == kNotMet)
            open.jumps.push_back(EmitNumber(Op::Loop, 0, 0));
        else
            JumpTo(open.target);
    });
}

void FunctionCompiler::CompileStatement(Statement& statement) {
    at_ = statement.at;
    switch (statement.action) {
        case Action::Dim:
            for (Declarator& declarator : statement.declarators) CompileDim(declarator);
            return;
        case Action::Const:
            return;
        case Action::Assign:
            return Assign(*statement.expressions[0], *statement.expressions[1]);
        case Action::Call:
            return CompileDiscarded(*statement.expressions[0]);
        case Action::If:
            return CompileIf(statement);
        case Action::Select:
            return CompileSelect(statement);
        case Action::For:
            return CompileFor(statement);
        case Action::ForEach:
            return CompileForEach(statement);
        case Action::While:
            return CompileWhile(statement);
        case Action::Do:
            return CompileDo(statement);
        case Action::Exit:
        case Action::Continue:
            return CompileJump(statement);
        case Action::Return:
            return CompileReturn(statement);
        case Action::Try:
            return CompileTry(statement);
        case Action::Raise: {
            const Operand exception = Compile(*statement.expressions[0]);
            at_ = statement.at;
            Emit(Op::Raise, exception.index);
            return Free(exception);
        }
        case Action::ReDim:
            return CompileReDim(statement);
        case Action::Label:
            return LandLabel(statement.name);
        case Action::GoTo:
            return CompileGoTo(statement);
    }
}

void FunctionCompiler::CompileReDim(Statement& statement) {
    std::vector<ExpressionPtr>& expressions = statement.expressions;
    const Operand array = CompileBefore(*expressions[0], *expressions[1]);
    CallSite site;
    std::vector<Operand> sizes;
    for (std::size_t i = 1; i < expressions.size(); ++i) {
        const bool last = i + 1 == expressions.size();
        sizes.push_back(last ? Compile(*expressions[i]) : CompileBefore(*expressions[i], *expressions.back()));
        site.arguments.push_back(sizes.back().index);
    }
    at_ = statement.at;
    if (sizes.size() == 1)
        Emit(Op::ReDim, array.index, sizes[0].index);
    else
        Emit(Op::ReDimGrid, array.index, SiteOf(std::move(site)));
    for (const Operand& size : sizes) Free(size);
    Free(array);
}

void FunctionCompiler::CompileFirstValue(Declarator& declarator, Type type, std::uint16_t target) {
    if (declarator.value) {
        CompileTo(*declarator.value, target);
    } else if (type.array) {
        CallSite site;
        std::vector<Operand> sizes;
        for (const ExpressionPtr& size : declarator.sizes) {
            sizes.push_back(Temporary(kIntegerType));
            CompileTo(*size, sizes.back().index);
            site.arguments.push_back(sizes.back().index);
        }
        at_ = declarator.at;
        const std::uint16_t element = TypeIndex(ElementOf(type));
        if (IsGrid(type)) {
            site.arguments.resize(type.furtherDimensions + 1u, kNoRegister);
            Emit(Op::NewGrid, target, SiteOf(std::move(site)), element);
        } else {
            Emit(Op::NewArray, target, sizes.empty() ? kNoRegister : sizes[0].index, element);
        }
        for (const Operand& size : sizes) Free(size);
    } else {
        Emit(Op::Clear, target);
    }
}

void FunctionCompiler::CompileDim(Declarator& declarator) {
    Variable& variable = *declarator.variable;
    if (declarator.isStatic) {
        // Given its value the first time only.
        const Variable* done = variable.flag;
        JumpList skip;
        const Operand flag = Temporary(kBooleanType);
        EmitNumber(Op::LoadGlobalBits, flag.index, done->index);
        skip.push_back(EmitNumber(Op::JumpIf, flag.index, 0));
        EmitNumber(Op::StoreGlobalBits, Constant(kBooleanType, host::Value(true)).index, done->index);
        CompileGlobal(declarator, variable);
        Free(flag);
        return Land(skip);
    }
    if (variable.storage == Storage::Global && !isMain_) return CompileGlobal(declarator, variable);
    if (variable.storage == Storage::Global) return CompileFirstValue(declarator, variable.type, variable.index);
    DeclareVariable(variable);
    CompileFirstValue(declarator, variable.type, variable.index);
}

// The first value of a variable that lies in another frame.
void FunctionCompiler::CompileGlobal(Declarator& declarator, Variable& variable) {
    const Operand value = Temporary(variable.type);
    CompileFirstValue(declarator, variable.type, value.index);
    EmitNumber(HoldsReference(variable.type) ? Op::StoreGlobal : Op::StoreGlobalBits, value.index, variable.index);
    Free(value);
}

// A call whose value nobody wants.
void FunctionCompiler::CompileDiscarded(Expression& expression) {
    if (expression.type == kNoType) return CompileTo(expression, kNoRegister);
    const Operand value = Temporary(expression.type);
    CompileTo(expression, value.index);
    Free(value);
}

void FunctionCompiler::CompileIf(Statement& statement) {
    JumpList done;
    for (std::size_t i = 0; i < statement.blocks.size(); ++i) {
        JumpList next;
        if (i < statement.expressions.size()) JumpUnless(*statement.expressions[i], next);
        CompileBlock(statement.blocks[i]);
        if (i + 1 < statement.blocks.size()) Jump(done);
        Land(next);
    }
    Land(done);
}

void FunctionCompiler::CompileSelect(Statement& statement) {
    OpenScope();
    DeclareVariable(*statement.scratch);
    CompileTo(*statement.expressions[0], statement.scratch->index);
    loops_.push_back({LoopKind::Select, {}, {}, tries_.size(), scopes_.size()});
    for (std::size_t i = 0; i < statement.blocks.size(); ++i) {
        JumpList next, body;
        if (i < statement.cases.size()) {
            for (CaseTest& test : statement.cases[i]) JumpWhen(*test.low, body);
            Jump(next);
        }
        Land(body);
        CompileBlock(statement.blocks[i]);
        Jump(loops_.back().exits);
        Land(next);
    }
    Land(loops_.back().exits);
    loops_.pop_back();
    CloseScope();
}

// The test at a loop's head. The last value is worked out anew each time round, as the language
// has it.
void FunctionCompiler::CompileForTest(Statement& statement, Operand variable, Operand step, bool stepKnown, bool down,
                                      JumpList& exits) {
    const Type type = statement.expressions[0]->type;
    const bool real = IsReal(type);
    const bool wide = type.base == Base::UInt64;
    const Operand last = Compile(*statement.expressions[2]);
    at_ = statement.at;
    Free(last);
    if (!stepKnown) {
        Emit(real ? Op::TestForD : (wide ? Op::TestForW : Op::TestForI), variable.index, last.index, step.index);
    } else {
        const Op test = real ? Op::TestLessOrEqualD : (wide ? Op::TestLessOrEqualW : Op::TestLessOrEqualI);
        Emit(test, down ? last.index : variable.index, down ? variable.index : last.index);
    }
    Jump(exits);
}

namespace {

Op StepOf(Base base) {
    switch (base) {
        case Base::Int64:
            return Op::StepL;
        case Base::UInt64:
            return Op::StepW;
        case Base::Single:
            return Op::StepSingle;
        case Base::Double:
            return Op::StepD;
        case Base::Integer:
            return Op::StepI;
        default:
            return Op::StepWhole;
    }
}

// The step of a loop when the text gives it.
bool KnownStep(const Statement& statement, double& step) {
    const Expression* written = statement.expressions[3].get();
    step = 1;
    if (written && written->node == Node::IntegerLiteral)
        step = static_cast<double>(LiteralInteger(*written));
    else if (written && written->node == Node::RealLiteral)
        step = written->real;
    else if (written)
        return false;
    if (statement.down) step = -step;
    return true;
}

}  // namespace

void FunctionCompiler::CompileFor(Statement& statement) {
    OpenScope();
    Expression& target = *statement.expressions[0];
    const Type type = target.type;
    const bool real = IsReal(type);
    const Type stepType = real ? kDoubleType : kInt64Type;
    if (!statement.declarators.empty()) DeclareVariable(*statement.declarators[0].variable);
    // The count is kept in the variable itself where that is a register.
    const bool direct = target.node == Node::Local && target.variable->storage == Storage::Local;
    const bool global = target.node == Node::Global && isMain_;
    Operand variable = direct || global ? Operand{target.variable->index, false} : Temporary(type);
    CompileTo(*statement.expressions[1], variable.index);
    double known = 0;
    const bool stepKnown = KnownStep(statement, known);
    Operand step;
    if (stepKnown) {
        step = Constant(stepType, real ? host::Value(known) : host::Value(static_cast<std::int64_t>(known)));
    } else {
        step = Temporary(stepType);
        CompileTo(*statement.expressions[3], step.index);
        if (statement.down) Emit(real ? Op::NegateD : Op::NegateL, step.index, step.index);
    }
    if (variable.temporary) StoreLoopVariable(target, variable);
    loops_.push_back({LoopKind::For, {}, {}, tries_.size(), scopes_.size()});
    const std::size_t head = Here();
    CompileForTest(statement, variable, step, stepKnown, known < 0, loops_.back().exits);
    CompileBlock(statement.blocks[0]);
    Land(loops_.back().continues);
    at_ = statement.at;
    if (variable.temporary) CompileTo(target, variable.index);
    Emit(StepOf(type.base), variable.index, step.index, static_cast<std::uint16_t>(KindOf(type.base)));
    Jump(loops_.back().exits);
    if (variable.temporary) StoreLoopVariable(target, variable);
    JumpTo(head);
    Land(loops_.back().exits);
    loops_.pop_back();
    Free(variable);
    Free(step);
    CloseScope();
}

// A loop variable that is no register of this frame: a field, an element, a caller's variable.
void FunctionCompiler::StoreLoopVariable(Expression& target, Operand value) {
    if (target.node == Node::Local || target.node == Node::Global) return StoreVariable(target, value);
    const Operand object = Compile(*target.operands[0]);
    Operand index;
    if (target.node == Node::Element) index = CompileIndex(target, object, nullptr);
    StoreElementOrField(target, object, index, value);
    if (target.node == Node::Element) Free(index);
    Free(object);
}

void FunctionCompiler::CompileForEach(Statement& statement) {
    OpenScope();
    Expression& target = *statement.expressions[0];
    if (!statement.declarators.empty()) DeclareVariable(*statement.declarators[0].variable);
    DeclareVariable(*statement.scratch);
    CompileTo(*statement.expressions[1], statement.scratch->index);
    const Operand index{DeclareVariable(*statement.counter), false};
    const Operand last = Temporary(kIntegerType);
    Emit(Op::MoveBits, index.index, Constant(kIntegerType, host::Value(0)).index);
    loops_.push_back({LoopKind::For, {}, {}, tries_.size(), scopes_.size()});
    const std::size_t head = Here();
    Emit(Op::Ubound, last.index, statement.scratch->index);
    Emit(Op::TestLessOrEqualI, index.index, last.index);
    Jump(loops_.back().exits);
    Assign(target, *statement.expressions[2]);
    CompileBlock(statement.blocks[0]);
    Land(loops_.back().continues);
    at_ = statement.at;
    Emit(Op::StepI, index.index, Constant(kInt64Type, host::Value(std::int64_t{1})).index);
    Jump(loops_.back().exits);
    JumpTo(head);
    Land(loops_.back().exits);
    loops_.pop_back();
    Free(last);
    CloseScope();
}

void FunctionCompiler::CompileWhile(Statement& statement) {
    loops_.push_back({LoopKind::While, {}, {}, tries_.size(), scopes_.size()});
    const std::size_t head = Here();
    JumpUnless(*statement.expressions[0], loops_.back().exits);
    CompileBlock(statement.blocks[0]);
    at_ = statement.at;
    LandAt(loops_.back().continues, Here());
    JumpTo(head);
    Land(loops_.back().exits);
    loops_.pop_back();
}

void FunctionCompiler::CompileDo(Statement& statement) {
    loops_.push_back({LoopKind::Do, {}, {}, tries_.size(), scopes_.size()});
    const std::size_t head = Here();
    Expression* before = statement.expressions[0].get();
    Expression* after = statement.expressions[1].get();
    if (before && statement.negated)
        JumpWhen(*before, loops_.back().exits);
    else if (before)
        JumpUnless(*before, loops_.back().exits);
    CompileBlock(statement.blocks[0]);
    at_ = statement.at;
    Land(loops_.back().continues);
    if (after && statement.negatedAfter)
        JumpWhen(*after, loops_.back().exits);
    else if (after)
        JumpUnless(*after, loops_.back().exits);
    at_ = statement.at;
    JumpTo(head);
    Land(loops_.back().exits);
    loops_.pop_back();
}

void FunctionCompiler::CompileJump(const Statement& statement) {
    if (statement.loopKind == LoopKind::Routine) {
        return Leave(0, [this] {
            if (function_.routine && function_.routine->signature.result != kNoType)
                EmitDefaultReturn();
            else
                EmitReturnNothing();
        });
    }
    const auto found = std::find_if(loops_.rbegin(), loops_.rend(), [&](const OpenLoop& open) {
        return statement.loopKind == LoopKind::Innermost ? open.kind != LoopKind::Select
                                                         : open.kind == statement.loopKind;
    });
    const auto loop = static_cast<std::size_t>(loops_.rend() - found) - 1;
    Leave(found->tries, [this, &statement, loop] {
        at_ = statement.at;
        ClearScopes(loops_[loop].scopes);
        Jump(statement.action == Action::Exit ? loops_[loop].exits : loops_[loop].continues);
    });
}

void FunctionCompiler::CompileReturn(Statement& statement) {
    if (statement.expressions.empty()) return Leave(0, [this] { EmitReturnNothing(); });
    Expression& value = *statement.expressions[0];
    if (tries_.empty()) {
        const Operand result = Compile(value);
        at_ = statement.at;
        Emit(Op::Return, result.index);
        if (result.temporary) Release(result.index);  // the frame goes, and the temporary with it
        return;
    }
    // A copy, so that Finally can't change what is returned.
    const Operand result = Temporary(value.type);
    CompileTo(value, result.index);
    Leave(0, [this, &statement, result] {
        at_ = statement.at;
        Emit(Op::Return, result.index);
        Release(result.index);
    });
}

}  // namespace script
