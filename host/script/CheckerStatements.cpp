// Statements: their variables, conditions and jumps.
#include <algorithm>
#include <set>

#include "host/calls/Runtime.h"
#include "host/script/Checker.h"

namespace script {

Variable* Checker::Declare(std::string_view name, Type type, Storage storage, Position at) {
    auto& scope = context_.scopes.back();
    const std::string lower = host::LowerName(name);
    const auto found = scope.find(lower);
    if (found != scope.end()) {
        diagnostics_.Add(at, kDeclarationSays.twice(name, found->second->at.line));
        return found->second;
    }
    return scope[lower] = symbols_.AddVariable(std::string(name), type, storage, at);
}

void Checker::CheckBlock(Block& block) {
    context_.scopes.emplace_back();
    CheckStatements(block);
    context_.scopes.pop_back();
}

// In the scope that is open.
void Checker::CheckStatements(Block& block) {
    context_.blocks.push_back(&block);
    std::set<std::string> labels;
    for (StatementPtr& statement : block) {
        if (statement->action == Action::Label && !labels.insert(host::LowerName(statement->name)).second)
            diagnostics_.Add(statement->at, kDeclarationSays.labelTwice(statement->name));
        CheckStatement(*statement);
    }
    context_.blocks.pop_back();
}

// A jump goes to a label of a block that is open, so never into one.
void Checker::CheckGoTo(const Statement& statement) const {
    for (const Block* block : context_.blocks)
        for (const StatementPtr& other : *block)
            if (other->action == Action::Label && host::SameName(other->name, statement.name)) return;
    diagnostics_.Add(statement.at, kDeclarationSays.noLabel(statement.name));
}

void Checker::CheckStatement(Statement& statement) {
    switch (statement.action) {
        case Action::Dim:
            return CheckDim(statement);
        case Action::Const:
            for (Declarator& declarator : statement.declarators) CheckConst(declarator);
            return;
        case Action::Assign:
            return CheckAssign(statement);
        case Action::Call:
            return CheckCallStatement(statement);
        case Action::If:
            return CheckIf(statement);
        case Action::Select:
            return CheckSelect(statement);
        case Action::For:
            return CheckFor(statement);
        case Action::ForEach:
            return CheckForEach(statement);
        case Action::While:
            return CheckWhile(statement);
        case Action::Do:
            return CheckDo(statement);
        case Action::Exit:
        case Action::Continue:
            return CheckJump(statement);
        case Action::Return:
            return CheckReturn(statement);
        case Action::Try:
            return CheckTry(statement);
        case Action::Raise:
            CheckValue(statement.expressions[0]);
            return Convert(statement.expressions[0], {Base::Object, false, symbols_.FindClass("RuntimeException")},
                           "what is raised");
        case Action::ReDim:
            return CheckReDim(statement);
        case Action::Label:
            return;
        case Action::GoTo:
            return CheckGoTo(statement);
    }
}

void Checker::CheckDim(Statement& statement) {
    for (Declarator& declarator : statement.declarators) CheckDeclarator(declarator);
}

// The value is checked before the name exists, so that "Dim x As Integer = x" means an outer x.
void Checker::CheckDeclarator(Declarator& declarator) {
    const Type type = ResolveType(declarator.type);
    CheckSizes(declarator.sizes);
    if (declarator.isNew) {
        declarator.value = MakeExpression(Node::New, kNoType, declarator.at);
        declarator.value->typeName = declarator.type;
        declarator.value->operands = std::move(declarator.arguments);
        declarator.value->at = declarator.type.at;
    }
    if (declarator.value) {
        CheckValue(declarator.value);
        Convert(declarator.value, type, "the value of " + declarator.name);
    }
    const bool outlives = declarator.isStatic;
    Variable* global = AtProgramLevel() ? FindGlobal(declarator.name) : nullptr;
    if (global && global->at == declarator.at) {
        global->type = type;
        declarator.variable = global;
        context_.scopes.back()[host::LowerName(declarator.name)] = global;
    } else {
        declarator.variable =
            Declare(declarator.name, type, outlives ? Storage::Global : Storage::Local, declarator.at);
    }
    declarator.variable->type = type;
    if (outlives) declarator.variable->flag = symbols_.AddVariable("", kBooleanType, Storage::Global, declarator.at);
}

void Checker::CheckSizes(std::vector<ExpressionPtr>& sizes) {
    for (ExpressionPtr& size : sizes) {
        CheckValue(size);
        Convert(size, kIntegerType, "the highest index");
    }
}

void Checker::CheckConst(Declarator& declarator) {
    CheckValue(declarator.value);
    if (!declarator.type.name.empty()) Convert(declarator.value, ResolveType(declarator.type), "the constant");
    Variable* variable = AtProgramLevel() ? FindGlobal(declarator.name) : nullptr;
    if (!variable || !(variable->at == declarator.at))
        variable = Declare(declarator.name, declarator.value->type, Storage::Constant, declarator.at);
    variable->type = declarator.value->type;
    if (IsLiteral(*declarator.value)) {
        variable->value = CloneLiteral(*declarator.value, declarator.at);
    } else if (!IsWrong(declarator.value->type)) {
        diagnostics_.Add(declarator.value->at, kDeclarationSays.constantNotConstant());
    }
    declarator.variable = variable;
}

void Checker::CheckCallStatement(Statement& statement) {
    ExpressionPtr& expression = statement.expressions[0];
    const bool literal = IsLiteral(*expression);
    const Node before = expression->node;
    // "x + 1" reads like a call of x with "+1".
    const bool bare = before == Node::Apply && !expression->bracketed && expression->operands[0]->node == Node::Name;
    if (bare && (FindLocal(expression->operands[0]->text) || FindGlobal(expression->operands[0]->text)))
        return Wrong(*expression, kStatementSays.callOfVariable(expression->operands[0]->text));
    CheckExpression(expression, false);
    if (IsWrong(expression->type)) return;
    if (expression->node == Node::Field && before == Node::Handle) {
        // The property that holds an object's handler.
        ExpressionPtr handler = std::move(expression->operands.back());
        expression->operands.pop_back();
        statement.action = Action::Assign;
        statement.expressions.push_back(std::move(handler));
        return;
    }
    if (expression->node == Node::CallRoutine && expression->routine->signature.name.starts_with(kSetterMark))
        return Wrong(*expression, kStatementSays.propertyWriteOnly());
    switch (expression->node) {
        case Node::CallRoutine:
        case Node::CallNative:
        case Node::CallSetter:
        case Node::CallDelegate:
        case Node::Handle:
        case Node::ArrayMethod:
        case Node::NewObject:
            return;
        case Node::Intrinsic:
            if (expression->type == kNoType) return;
            break;
        default:
            break;
    }
    const bool comparison = before == Node::Binary;
    Wrong(*expression, literal || comparison ? kStatementSays.valueAlone() : kStatementSays.doesNothing());
}

void Checker::CheckCondition(ExpressionPtr& condition) {
    CheckValue(condition);
    Convert(condition, kBooleanType, "the condition");
}

void Checker::CheckIf(Statement& statement) {
    for (std::size_t i = 0; i < statement.blocks.size(); ++i) {
        if (i < statement.expressions.size()) CheckCondition(statement.expressions[i]);
        CheckBlock(statement.blocks[i]);
    }
}

// A test as a condition on the variable that holds the subject.
ExpressionPtr Checker::CaseCondition(CaseTest& test, Variable* subject) {
    const auto compare = [&](Operator op, ExpressionPtr with) {
        const Position at = with->at;
        ExpressionPtr comparison = MakeExpression(Node::Binary, kNoType, at);
        comparison->op = op;
        comparison->operands.push_back(UseOf(*subject, at));
        comparison->operands.push_back(std::move(with));
        return comparison;
    };
    if (!test.high) return compare(test.op, std::move(test.low));
    const Position at = test.low->at;
    ExpressionPtr both = MakeExpression(Node::Binary, kNoType, at);
    both->op = Operator::And;
    both->operands.push_back(compare(Operator::GreaterOrEqual, std::move(test.low)));
    both->operands.push_back(compare(Operator::LessOrEqual, std::move(test.high)));
    return both;
}

void Checker::CheckSelect(Statement& statement) {
    CheckValue(statement.expressions[0]);
    if (statement.expressions[0]->type.base == Base::Address)
        Wrong(*statement.expressions[0], kStatementSays.caseOfAddress());
    const Type type = statement.expressions[0]->type == kNilType ? kVariantType : statement.expressions[0]->type;
    statement.scratch = symbols_.AddVariable("", type, Storage::Local, statement.at);
    context_.loops.push_back(LoopKind::Select);
    for (std::size_t i = 0; i < statement.blocks.size(); ++i) {
        if (i < statement.cases.size()) {
            for (CaseTest& test : statement.cases[i]) {
                test.low = CaseCondition(test, statement.scratch);
                if (!IsWrong(type)) CheckCondition(test.low);
            }
        }
        CheckBlock(statement.blocks[i]);
    }
    context_.loops.pop_back();
}

void Checker::CheckLoopBody(Statement& statement, LoopKind kind) {
    context_.loops.push_back(kind);
    CheckBlock(statement.blocks[0]);
    context_.loops.pop_back();
}

// The loop's variable, in a scope of its own around the body.
void Checker::CheckLoopVariable(Statement& statement, Type deduced) {
    if (!statement.declarators.empty()) {
        Declarator& declarator = statement.declarators[0];
        const Type type = declarator.type.name.empty() ? deduced : ResolveType(declarator.type);
        declarator.variable = Declare(declarator.name, type, Storage::Local, declarator.at);
        statement.expressions[0] = UseOf(*declarator.variable, declarator.at);
        return;
    }
    CheckExpression(statement.expressions[0]);
    Expression& target = *statement.expressions[0];
    if (target.node != Node::Local && target.node != Node::Global && target.node != Node::Field &&
        target.node != Node::Element && !IsWrong(target.type))
        Wrong(target, kStatementSays.noLoopVariable());
}

void Checker::CheckFor(Statement& statement) {
    for (std::size_t i = 1; i < statement.expressions.size(); ++i)
        if (statement.expressions[i]) CheckValue(statement.expressions[i]);
    context_.scopes.emplace_back();
    CheckLoopVariable(statement, kIntegerType);
    const Type type = statement.expressions[0]->type;
    if (!IsNumeric(type) && !IsWrong(type)) {
        Wrong(*statement.expressions[0], kStatementSays.loopOfOther(NameOf(type)));
    } else {
        constexpr std::string_view uses[] = {"", "the first value", "the last value", "the step"};
        for (std::size_t i = 1; i < statement.expressions.size(); ++i) {
            // Any step must do, a negative one for unsigned variables too.
            const Type wide = i < 3 ? type : (IsReal(type) ? kDoubleType : kInt64Type);
            if (statement.expressions[i]) Convert(statement.expressions[i], wide, uses[i]);
        }
    }
    CheckLoopBody(statement, LoopKind::For);
    context_.scopes.pop_back();
}

void Checker::CheckForEach(Statement& statement) {
    CheckValue(statement.expressions[1]);
    const Type type = statement.expressions[1]->type;
    if (IsGrid(type)) return Wrong(*statement.expressions[1], kStatementSays.eachOfGrid());
    if (!type.array && !IsWrong(type)) Wrong(*statement.expressions[1], kStatementSays.eachOfOther(NameOf(type)));
    context_.scopes.emplace_back();
    CheckLoopVariable(statement, ElementOf(type));
    statement.scratch = symbols_.AddVariable("", type, Storage::Local, statement.at);
    if (!IsWrong(statement.expressions[1]->type)) {
        ExpressionPtr element = MakeExpression(Node::Element, ElementOf(type), statement.expressions[0]->at);
        element->operands.push_back(UseOf(*statement.scratch, element->at));
        statement.counter = symbols_.AddVariable("", kIntegerType, Storage::Local, statement.at);
        element->operands.push_back(UseOf(*statement.counter, element->at));
        Convert(element, statement.expressions[0]->type, "the element");
        statement.expressions.push_back(std::move(element));
    }
    CheckLoopBody(statement, LoopKind::For);
    context_.scopes.pop_back();
}

void Checker::CheckWhile(Statement& statement) {
    CheckCondition(statement.expressions[0]);
    CheckLoopBody(statement, LoopKind::While);
}

void Checker::CheckDo(Statement& statement) {
    if (statement.expressions[0]) CheckCondition(statement.expressions[0]);
    CheckLoopBody(statement, LoopKind::Do);
    if (statement.expressions[1]) CheckCondition(statement.expressions[1]);
}

void Checker::CheckJump(const Statement& statement) {
    const bool leaves = statement.action == Action::Exit;
    const std::string word = leaves ? "Exit" : "Continue";
    if (statement.loopKind == LoopKind::Routine) {
        if (!context_.routine) diagnostics_.Add(statement.at, kStatementSays.nothingToLeave());
        return;
    }
    const bool found = std::any_of(context_.loops.begin(), context_.loops.end(), [&](LoopKind kind) {
        if (statement.loopKind != LoopKind::Innermost) return kind == statement.loopKind;
        return kind != LoopKind::Select;
    });
    if (!found) diagnostics_.Add(statement.at, kStatementSays.noSuchLoop(word));
}

void Checker::CheckReturn(Statement& statement) {
    const Type result = context_.routine ? context_.routine->signature.result : kNoType;
    if (statement.expressions.empty()) {
        if (result != kNoType)
            diagnostics_.Add(statement.at,
                             kStatementSays.returnNeedsValue(context_.routine->signature.name, NameOf(result)));
        return;
    }
    CheckValue(statement.expressions[0]);
    if (result == kNoType) return Wrong(*statement.expressions[0], kStatementSays.returnInSub());
    Convert(statement.expressions[0], result, "the value returned");
}

void Checker::CheckCatch(Catch& handler) {
    const Type root = {Base::Object, false, symbols_.FindClass("RuntimeException")};
    Declarator& exception = handler.exception;
    Type type = exception.type.name.empty() ? root : ResolveType(exception.type);
    if (!IsWrong(type) && (!IsObject(type) || !Inherits(type.of, root.of))) {
        diagnostics_.Add(exception.type.at, kTypeSays.onlyExceptions(NameOf(type)));
        type = kWrongType;
    }
    exception.type.resolved = type;
    context_.scopes.emplace_back();
    exception.variable = exception.name.empty() ? symbols_.AddVariable("", type, Storage::Local, handler.at)
                                                : Declare(exception.name, type, Storage::Local, exception.at);
    CheckBlock(handler.body);
    context_.scopes.pop_back();
}

void Checker::CheckTry(Statement& statement) {
    statement.wholeRoutine ? CheckStatements(statement.blocks[0]) : CheckBlock(statement.blocks[0]);
    for (Catch& handler : statement.catches) CheckCatch(handler);
    CheckBlock(statement.finallyBlock);
}

void Checker::CheckReDim(Statement& statement) {
    for (ExpressionPtr& expression : statement.expressions) CheckValue(expression);
    const Type type = statement.expressions[0]->type;
    if (IsWrong(type)) return;
    if (!type.array) return Wrong(*statement.expressions[0], kStatementSays.reDimOfOther(NameOf(type)));
    if (statement.expressions.size() != type.furtherDimensions + 2u)
        return Wrong(*statement.expressions[0], kStatementSays.reDimCount(NameOf(type), type.furtherDimensions + 1));
    for (std::size_t i = 1; i < statement.expressions.size(); ++i)
        Convert(statement.expressions[i], kIntegerType, "the highest index");
}

}  // namespace script
