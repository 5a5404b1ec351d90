// Statements that leave the straight way: jumps, exceptions, events and their handlers.
#include "host/script/Parser.h"

namespace script {

StatementPtr Parser::ParseJump(Action action) {
    StatementPtr statement = Make(action);
    Advance();
    if (TakeWord("for")) {
        statement->loopKind = LoopKind::For;
    } else if (TakeWord("while")) {
        statement->loopKind = LoopKind::While;
    } else if (TakeWord("do")) {
        statement->loopKind = LoopKind::Do;
    } else if (action == Action::Exit && TakeWord("select")) {
        statement->loopKind = LoopKind::Select;
    } else if (action == Action::Exit && (TakeWord("sub") || TakeWord("function"))) {
        statement->loopKind = LoopKind::Routine;
    }
    return statement;
}

StatementPtr Parser::ParseReturn() {
    StatementPtr statement = Make(Action::Return);
    Advance();
    if (!AtLineEnd() && !AtWord("else")) statement->expressions.push_back(ParseExpression());
    return statement;
}

Catch Parser::ParseCatch() {
    Catch handler;
    handler.at = Here();
    ParseHead("Catch", [&] {
        Advance();
        if (!AtName()) return;
        handler.exception.at = Here();
        handler.exception.name = ExpectName("the exception's name");
        if (TakeWord("as")) handler.exception.type = ParseClassName();
    });
    handler.body = ParseBlock();
    return handler;
}

StatementPtr Parser::ParseTry() {
    StatementPtr statement = Make(Action::Try);
    Advance();
    ExpectLineEnd("Try");
    statement->blocks.push_back(ParseBlock());
    while (AtWord("catch")) statement->catches.push_back(ParseCatch());
    if (TakeWord("finally")) {
        ExpectLineEnd("Finally");
        statement->hasFinally = true;
        statement->finallyBlock = ParseBlock();
    }
    if (statement->catches.empty() && !statement->hasFinally)
        Fail(kParserSays.expectedHandler(OpenedAt("Try", statement->at), Found()));
    ExpectEnd("Try", statement->at);
    return statement;
}

StatementPtr Parser::ParseRaise() {
    StatementPtr statement = Make(Action::Raise);
    Advance();
    statement->expressions.push_back(ParseExpression());
    return statement;
}

bool Parser::AtLabel() const { return AtName() && AtSymbol(":", 1) && AtLineEnd(2); }

StatementPtr Parser::ParseLabel() {
    StatementPtr statement = Make(Action::Label);
    statement->name = ExpectName("a label");
    Advance();
    return statement;
}

StatementPtr Parser::ParseGoTo() {
    StatementPtr statement = Make(Action::GoTo);
    Advance();
    statement->name = ExpectName("a label");
    return statement;
}

// "RaiseEvent Name(arguments)" calls the event's routine of the object itself.
StatementPtr Parser::ParseRaiseEvent() {
    StatementPtr statement = Make(Action::Call);
    Advance();
    ExpressionPtr call = ParseCallee();
    Expression& name = call->node == Node::Apply ? *call->operands[0] : *call;
    if (name.node != Node::Name) FailAt(call->at, kParserSays.expectedEventName());
    name.text.insert(0, kEventMark);
    statement->expressions.push_back(std::move(call));
    return statement;
}

// "AddHandler object.Event, AddressOf Routine", and the same to take it away.
StatementPtr Parser::ParseHandlerChange() {
    StatementPtr statement = Make(Action::Call);
    auto handle = std::make_unique<Expression>();
    handle->node = Node::Handle;
    handle->at = Here();
    handle->direct = AtWord("removehandler");
    const std::string word = handle->direct ? "RemoveHandler" : "AddHandler";
    Advance();
    handle->operands.push_back(ParsePostfix());
    ExpectSymbol(",", "the event of an object: " + word + " clock.Action, AddressOf Tick");
    handle->operands.push_back(ParseExpression());
    statement->expressions.push_back(Finish(std::move(handle)));
    return statement;
}

// "Exception [name] [As Class]" at the end of a routine.
bool Parser::AtExceptionBlock() const {
    if (!AtWord("exception") || DeclaresRoutine("exception")) return false;
    return AtLineEnd(1) || (AtName(1) && (AtWord("as", 2) || AtLineEnd(2)));
}

// The body becomes a Try of its own, with a Catch for each block.
void Parser::ParseExceptionBlocks(Block& body) {
    if (!AtExceptionBlock()) return;
    StatementPtr statement = Make(Action::Try);
    statement->wholeRoutine = true;
    statement->blocks.push_back(std::move(body));
    while (AtExceptionBlock()) statement->catches.push_back(ParseCatch());
    body.clear();
    body.push_back(std::move(statement));
}

}  // namespace script
