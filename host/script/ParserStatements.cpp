// Statements, one line or one block after the other.
#include "host/script/Parser.h"

namespace script {

namespace {

// Words that end the block they stand in, or go to its next branch.
constexpr std::string_view kBlockEnds[] = {"end", "else", "elseif", "case", "next", "wend", "loop", "catch", "finally"};

}  // namespace

std::string Parser::OpenedAt(std::string_view what, Position at) {
    return std::string(what) + " of line " + std::to_string(at.line);
}

StatementPtr Parser::Make(Action action) const {
    auto statement = std::make_unique<Statement>();
    statement->action = action;
    statement->at = Here();
    return statement;
}

bool Parser::AtBlockEnd() const {
    for (std::string_view word : kBlockEnds)
        if (AtWord(word)) return true;
    return AtFileEnd() || AtDeclaration() || AtExceptionBlock();
}

Block Parser::ParseBlock() {
    if (blockDepth_ >= kDeepestBlock) Fail(kParserSays.blocksTooDeep());
    ++blockDepth_;
    Block block;
    for (;;) {
        CorrectKeyword();
        if (AtBlockEnd()) break;
        ParseLineOfStatements(block);
    }
    --blockDepth_;
    return block;
}

// One line; an error in it is told and the line skipped.
void Parser::ParseLineOfStatements(Block& block) {
    if (Peek().kind == TokenKind::NewLine) return Advance();
    const int depth = blockDepth_;
    try {
        block.push_back(ParseStatement());
        ExpectLineEnd("the statement");
    } catch (const ParseFailure&) {
        blockDepth_ = depth;
        expressionDepth_ = 0;
        SkipLine();
    }
}

void Parser::ExpectEnd(std::string_view word, Position opened) {
    const std::string wanted = "End " + std::string(word);
    if (!AtWord("end")) {
        if (ReportMistyped("End", opened.line)) throw ParseFailure();
        diagnostics_.Add(Here(), kParserSays.expectedEnd(wanted, OpenedAt(word, opened), Found()));
        throw ParseFailure();
    }
    if (AtLineEnd(1)) return Advance();
    if (!AtWord(word, 1)) Fail(kParserSays.expectedEnd(wanted, OpenedAt(word, opened), "End " + Peek(1).text));
    Advance();
    Advance();
}

StatementPtr Parser::ParseStatement() {
    RefuseForeign();
    if (AtWord("dim") || AtWord("var")) return ParseDim(false);
    if (AtWord("static")) return ParseDim(true);
    if (AtWord("const")) return ParseConst();
    if (AtWord("if")) return ParseIf();
    if (AtWord("select")) return ParseSelect();
    if (AtWord("for")) return ParseFor();
    if (AtWord("while")) return ParseWhile();
    if (AtWord("do")) return ParseDo();
    if (AtWord("exit")) return ParseJump(Action::Exit);
    if (AtWord("continue")) return ParseJump(Action::Continue);
    if (AtWord("return")) return ParseReturn();
    if (AtWord("try")) return ParseTry();
    if (AtWord("raise")) return ParseRaise();
    if (AtWord("redim")) return ParseReDim();
    if (AtWord("goto") && AtName(1) && AtLineEnd(2)) return ParseGoTo();
    if (AtLabel()) return ParseLabel();
    if (AtWord("raiseevent") && AtName(1)) return ParseRaiseEvent();
    if ((AtWord("addhandler") || AtWord("removehandler")) && !AtSymbol("=", 1) && !AtSymbol(".", 1))
        return ParseHandlerChange();
    return ParseAssignmentOrCall();
}

// "name" or "name()" or "name(size)".
Declarator Parser::ParseDeclaratorName() {
    Declarator declarator;
    declarator.at = Here();
    declarator.name = ExpectName("the name of a variable");
    if (!TakeSymbol("(")) return declarator;
    declarator.type.array = true;
    if (TakeSymbol(")")) return declarator;
    if (AtSymbol(",")) {
        while (TakeSymbol(",")) ++declarator.type.dimensions;
        ExpectSymbol(")", "the array's name");
        return declarator;
    }
    do declarator.sizes.push_back(ParseExpression());
    while (TakeSymbol(","));
    declarator.type.dimensions = static_cast<int>(declarator.sizes.size());
    ExpectSymbol(")", "the highest index");
    return declarator;
}

// "As [New] Type[(arguments)] [= value]", for all names of a group.
void Parser::ParseDeclaratorType(std::vector<Declarator>& group) {
    ExpectWord("as", "the name; a variable needs a type (Dim x As Integer)");
    const bool isNew = TakeWord("new");
    const TypeName type = isNew ? ParseClassName() : ParseTypeName();
    for (Declarator& declarator : group) {
        const bool array = declarator.type.array || type.array;
        const int dimensions = type.array ? type.dimensions : declarator.type.dimensions;
        declarator.type = type;
        declarator.type.array = array;
        declarator.type.dimensions = dimensions;
        declarator.isNew = isNew;
    }
    // What stands once is worked out for each name.
    if (isNew && AtSymbol("(")) {
        const std::vector<ExpressionPtr> arguments = ParseArguments();
        for (Declarator& declarator : group)
            for (const ExpressionPtr& argument : arguments) declarator.arguments.push_back(CloneWritten(*argument));
    }
    if (!AtSymbol("=")) return;
    if (isNew) Fail(kParserSays.newHasValue());
    Advance();
    const ExpressionPtr value = ParseExpression();
    for (Declarator& declarator : group) declarator.value = CloneWritten(*value);
}

std::vector<Declarator> Parser::ParseDeclarators() {
    std::vector<Declarator> all;
    do {
        std::vector<Declarator> group;
        do group.push_back(ParseDeclaratorName());
        while (TakeSymbol(","));
        ParseDeclaratorType(group);
        for (Declarator& declarator : group) all.push_back(std::move(declarator));
    } while (TakeSymbol(","));
    return all;
}

StatementPtr Parser::ParseDim(bool isStatic) {
    StatementPtr statement = Make(Action::Dim);
    Advance();
    statement->declarators = ParseDeclarators();
    for (Declarator& declarator : statement->declarators) declarator.isStatic = isStatic;
    return statement;
}

StatementPtr Parser::ParseConst() {
    StatementPtr statement = Make(Action::Const);
    Advance();
    do {
        Declarator declarator;
        declarator.at = Here();
        declarator.name = ExpectName("the name of a constant");
        if (TakeWord("as")) declarator.type = ParseTypeName();
        ExpectSymbol("=", "the constant's name");
        declarator.value = ParseExpression();
        statement->declarators.push_back(std::move(declarator));
    } while (TakeSymbol(","));
    return statement;
}

// Statements up to the end of the line or Else, for the one-line If.
Block Parser::ParseRestOfLine() {
    if (blockDepth_ >= kDeepestBlock) Fail(kParserSays.blocksTooDeep());
    ++blockDepth_;
    Block block;
    block.push_back(ParseStatement());
    --blockDepth_;
    return block;
}

void Parser::ParseOneLineIf(Statement& statement) {
    statement.blocks.push_back(ParseRestOfLine());
    if (!TakeWord("else")) return;
    statement.blocks.push_back(ParseRestOfLine());
    statement.hasElse = true;
}

// Whether something follows Then on this line.
bool Parser::IsOneLineIf() const {
    std::size_t ahead = 0;
    while (!AtLineEnd(ahead) && !AtWord("then", ahead)) ++ahead;
    return !AtLineEnd(ahead) && !AtLineEnd(ahead + 1);
}

StatementPtr Parser::ParseIf() {
    StatementPtr statement = Make(Action::If);
    const bool oneLine = IsOneLineIf();
    const auto condition = [&] {
        Advance();
        statement->expressions.push_back(ParseExpression());
        ExpectWord("then", "the condition");
    };
    if (oneLine) {
        condition();
        ParseOneLineIf(*statement);
    } else {
        ParseHead("Then", condition);
        ParseIfBranches(*statement);
    }
    return statement;
}

void Parser::ParseIfBranches(Statement& statement) {
    for (;;) {
        statement.blocks.push_back(ParseBlock());
        if (statement.hasElse) break;
        const bool elseIf = AtWord("elseif") || (AtWord("else") && AtWord("if", 1));
        if (elseIf) {
            ParseHead("Then", [&] {
                TakeWord("else");
                Advance();
                statement.expressions.push_back(ParseExpression());
                ExpectWord("then", "the condition");
            });
        } else if (TakeWord("else")) {
            statement.hasElse = true;
        } else {
            break;
        }
    }
    ExpectEnd("If", statement.at);
}

CaseTest Parser::ParseCaseTest() {
    CaseTest test;
    if (TakeWord("is")) {
        constexpr std::pair<std::string_view, Operator> operators[] = {
            {"=", Operator::Equal},        {"<>", Operator::NotEqual}, {"<", Operator::Less},
            {"<=", Operator::LessOrEqual}, {">", Operator::Greater},   {">=", Operator::GreaterOrEqual}};
        bool found = false;
        for (const auto& [text, op] : operators) {
            if (found || !TakeSymbol(text)) continue;
            test.op = op;
            found = true;
        }
        if (!found) Fail(kParserSays.expectedComparison(Found()));
    }
    test.low = ParseExpression();
    if (TakeWord("to")) test.high = ParseExpression();
    return test;
}

// "Case tests" or "[Case] Else".
void Parser::ParseCaseHead(Statement& statement) {
    const bool plainElse = TakeWord("else");
    if (!plainElse) Advance();
    if (plainElse || TakeWord("else")) {
        statement.hasElse = true;
        return;
    }
    std::vector<CaseTest>& tests = statement.cases.emplace_back();
    do tests.push_back(ParseCaseTest());
    while (TakeSymbol(","));
}

StatementPtr Parser::ParseSelect() {
    StatementPtr statement = Make(Action::Select);
    ParseHead("the value that Select Case looks at", [&] {
        Advance();
        ExpectWord("case", "Select");
        statement->expressions.push_back(ParseExpression());
    });
    while (Peek().kind == TokenKind::NewLine) Advance();
    while (!statement->hasElse && (AtWord("case") || AtWord("else"))) {
        ParseHead("the case", [&] { ParseCaseHead(*statement); });
        statement->blocks.push_back(ParseBlock());
    }
    ExpectEnd("Select", statement->at);
    return statement;
}

// The variable of a loop: declared here ("i As Integer") or one that exists.
void Parser::ParseLoopVariable(Statement& statement) {
    if (AtName() && AtWord("as", 1)) {
        Declarator& declarator = statement.declarators.emplace_back();
        declarator.at = Here();
        declarator.name = ExpectName("the loop's variable");
        Advance();
        declarator.type = ParseTypeName();
        statement.expressions.push_back(nullptr);
    } else {
        statement.expressions.push_back(ParsePostfix());
    }
}

// The word that ends a loop.
void Parser::ExpectLoopEnd(std::string_view word, std::string_view loop, Position opened) {
    if (!AtWord(word)) {
        std::string shown(word);
        shown[0] = static_cast<char>(shown[0] - 'a' + 'A');
        if (ReportMistyped(shown, opened.line)) throw ParseFailure();
        Fail(kParserSays.expectedEnd(shown, OpenedAt(loop, opened), Found()));
    }
    Advance();
}

StatementPtr Parser::ParseFor() {
    StatementPtr statement = Make(Action::For);
    const bool each = AtWord("each", 1);
    if (each) statement->action = Action::ForEach;
    ParseHead("the loop's head", [&] {
        Advance();
        if (each) Advance();
        ParseLoopVariable(*statement);
        each ? ParseForEachRange(*statement) : ParseForRange(*statement);
    });
    statement->blocks.push_back(ParseBlock());
    ExpectLoopEnd("next", each ? "For Each" : "For", statement->at);
    if (AtName()) CheckNextName(*statement);
    return statement;
}

// "Next i" names the variable that its loop counts in.
void Parser::CheckNextName(const Statement& loop) {
    std::string counts;
    if (!loop.declarators.empty()) counts = loop.declarators[0].name;
    if (!loop.expressions.empty() && loop.expressions[0] && loop.expressions[0]->node == Node::Name)
        counts = loop.expressions[0]->text;
    if (!counts.empty() && !AtWord(counts))
        diagnostics_.Add(Here(), kParserSays.nextOfOther(OpenedAt("For", loop.at), counts, Peek().text));
    Advance();
}

void Parser::ParseForRange(Statement& statement) {
    ExpectSymbol("=", "the loop's variable");
    statement.expressions.push_back(ParseExpression());
    statement.down = AtWord("downto");
    if (!TakeWord("downto")) ExpectWord("to", "the loop's first value");
    statement.expressions.push_back(ParseExpression());
    statement.expressions.push_back(TakeWord("step") ? ParseExpression() : nullptr);
}

void Parser::ParseForEachRange(Statement& statement) {
    ExpectWord("in", "the loop's variable");
    statement.expressions.push_back(ParseExpression());
}

StatementPtr Parser::ParseWhile() {
    StatementPtr statement = Make(Action::While);
    ParseHead("the condition", [&] {
        Advance();
        statement->expressions.push_back(ParseExpression());
    });
    statement->blocks.push_back(ParseBlock());
    if (AtWord("end") && AtWord("while", 1)) {
        Advance();
        Advance();
    } else {
        ExpectLoopEnd("wend", "While", statement->at);
    }
    return statement;
}

StatementPtr Parser::ParseDo() {
    StatementPtr statement = Make(Action::Do);
    statement->expressions.resize(2);
    ParseHead("the loop's head", [&] {
        Advance();
        statement->negated = AtWord("until");
        if (TakeWord("while") || TakeWord("until")) statement->expressions[0] = ParseExpression();
    });
    statement->blocks.push_back(ParseBlock());
    ExpectLoopEnd("loop", "Do", statement->at);
    statement->negatedAfter = AtWord("until");
    if (TakeWord("while") || TakeWord("until")) statement->expressions[1] = ParseExpression();
    return statement;
}

StatementPtr Parser::ParseReDim() {
    StatementPtr statement = Make(Action::ReDim);
    Advance();
    ExpressionPtr target = ParsePostfix();
    if (target->node != Node::Apply || target->operands.size() < 2) FailAt(target->at, kParserSays.reDimNeedsArray());
    statement->expressions = std::move(target->operands);
    return statement;
}

// What stands first on a line: a designator, maybe with arguments that have no brackets.
// "Print (a) + b" is Print of a sum: a bracket after the name is the call's own only if the call
// ends behind it.
ExpressionPtr Parser::ParseCallee() {
    const std::size_t start = at_;
    ExpressionPtr callee = ParsePostfix();
    if (AtLineEnd() || AtSymbol("=") || AtWord("else")) return callee;
    if (callee->node == Node::Apply) {
        std::size_t open = start;
        int nested = 0;
        for (std::size_t index = start; index < at_; ++index) {
            if (tokens_[index].kind != TokenKind::Operator) continue;
            if (tokens_[index].text == "(" && nested++ == 0) open = index;
            if (tokens_[index].text == ")") --nested;
        }
        at_ = open;
        callee = std::move(callee->operands[0]);
    } else if (!StartsExpression()) {
        return callee;
    }
    auto apply = std::make_unique<Expression>();
    apply->node = Node::Apply;
    apply->at = callee->at;
    apply->operands.push_back(std::move(callee));
    for (ExpressionPtr& argument : ParseBareArguments()) apply->operands.push_back(std::move(argument));
    return Finish(std::move(apply));
}

StatementPtr Parser::ParseAssignmentOrCall() {
    StatementPtr statement = Make(Action::Call);
    TakeWord("call");
    if (Peek().kind != TokenKind::Identifier && !AtSymbol("(")) Fail(kParserSays.expectedStatement(Found()));
    ExpressionPtr target = ParseCallee();
    statement->expressions.push_back(std::move(target));
    if (!TakeSymbol("=")) return statement;
    statement->action = Action::Assign;
    statement->expressions.push_back(ParseExpression());
    return statement;
}

}  // namespace script
