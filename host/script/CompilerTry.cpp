// Try, Catch and Finally.
//
// The body of a Try is a stretch of code with an entry in the function's table of handlers; an
// exception raised in it goes on behind the stretch, where the Catches are tried one by one.
//
// A Finally runs on every way out of its Try: behind the last statement, with an exception on its
// way, by Return, Exit, Continue and GoTo. Its code stands once, and what comes after it differs
// by the way taken; so every way has a number. Straight on is 0, an exception to raise again is 1; each jump out
// of the Try adds one of its own when it is compiled. A jump does not compile where it
// goes: it puts its number into the Try's register `way`, jumps to the Finally, and leaves a
// function (OpenTry::ways) that compiles the rest of the journey - its continuation. Behind the Finally's code
// CompileFinally tests the number against each that was handed out and has that continuation write its
// code there. By then the Try is closed, so a continuation which has another Finally to pass
// does the same again with the next Try outwards: Leave calls Leave. A value that Return takes along waits in
// a register of its own meanwhile.
#include <algorithm>
#include <set>

#include "host/script/FunctionCompiler.h"

namespace script {

void FunctionCompiler::OpenProtection() {
    OpenTry& open = tries_.emplace_back();
    open.from = Here();
    open.scopes = scopes_.size();
}

// Ends the protected stretch; exceptions raised in it come to what is compiled next.
FunctionCompiler::OpenTry FunctionCompiler::CloseProtection(std::uint16_t exception) {
    OpenTry open = std::move(tries_.back());
    tries_.pop_back();
    if (open.from != Here()) {
        function_.handlers.push_back({static_cast<std::uint32_t>(open.from), static_cast<std::uint32_t>(Here()),
                                      static_cast<std::uint32_t>(Here()), exception});
    }
    return open;
}

void FunctionCompiler::TakeWay(const OpenTry& open, int number) {
    Emit(Op::MoveBits, open.way, Constant(kIntegerType, host::Value(number)).index);
}

// Goes on as `goOn` compiles it, after the Finallys of the Trys that are left, from the inside out.
void FunctionCompiler::Leave(std::size_t downTo, const std::function<void()>& goOn) {
    const auto end = tries_.rend() - static_cast<std::ptrdiff_t>(downTo);
    const auto innermost = std::find_if(tries_.rbegin(), end, [](const OpenTry& open) { return open.hasFinally; });
    if (innermost == end) return goOn();
    ClearScopes(innermost->scopes);
    TakeWay(*innermost, kFirstWay + static_cast<int>(innermost->ways.size()));
    Jump(innermost->entries);
    innermost->ways.emplace_back([this, downTo, goOn] { Leave(downTo, goOn); });
}

// The Finally, and behind it every way on.
void FunctionCompiler::CompileFinally(Statement& statement, OpenTry open, std::uint16_t exception) {
    CompileBlock(statement.finallyBlock);
    open.ways.insert(open.ways.begin(), [this, &statement, exception] {
        at_ = statement.at;
        Emit(Op::Raise, exception);
    });
    for (std::size_t i = 0; i < open.ways.size(); ++i) {
        const auto number = static_cast<std::int32_t>(kRaiseOn + i);
        JumpList next;
        Emit(Op::TestEqualI, open.way, Constant(kIntegerType, host::Value(number)).index);
        Jump(next);
        open.ways[i]();
        Land(next);
    }
}

// What was put into registers since and may be left there when an exception comes.
void FunctionCompiler::ClearSince(std::size_t logSize, const std::vector<std::uint16_t>& kept) {
    std::set<std::uint16_t> used(log_.begin() + static_cast<std::ptrdiff_t>(logSize), log_.end());
    for (const std::uint16_t index : kept) used.erase(index);
    for (const std::uint16_t index : used) Emit(Op::Clear, index);
}

void FunctionCompiler::CompileTry(Statement& statement) {
    const Operand exception = Temporary({Base::Object, false, symbols_.object});
    const Operand way = Temporary(kIntegerType);
    const std::size_t log = log_.size();
    if (statement.hasFinally) {
        OpenProtection();
        tries_.back().hasFinally = true;
        tries_.back().way = way.index;
    }
    if (!statement.catches.empty()) {
        OpenProtection();
        statement.wholeRoutine ? CompileStatements(statement.blocks[0]) : CompileBlock(statement.blocks[0]);
        JumpList bodyDone;
        Jump(bodyDone);
        CloseProtection(exception.index);
        // The handlers of a whole routine see its variables.
        ClearSince(log, statement.wholeRoutine ? scopes_.back() : std::vector<std::uint16_t>());
        CompileCatches(statement, exception.index, bodyDone);
        Land(bodyDone);
    } else {
        CompileBlock(statement.blocks[0]);
    }
    if (statement.hasFinally) {
        TakeWay(tries_.back(), kStraightOn);
        Jump(tries_.back().entries);
        OpenTry open = CloseProtection(exception.index);
        ClearSince(log);
        TakeWay(open, kRaiseOn);
        Land(open.entries);
        CompileFinally(statement, std::move(open), exception.index);
    }
    Free(way);
    Free(exception);
}

// The first Catch whose class fits takes the exception; if none does it is raised on.
void FunctionCompiler::CompileCatches(Statement& statement, std::uint16_t exception, JumpList& done) {
    for (Catch& handler : statement.catches) {
        at_ = handler.at;
        JumpList next;
        const Operand fits = Temporary(kBooleanType);
        Emit(Op::IsA, fits.index, exception, TypeIndex(handler.exception.type.resolved));
        next.push_back(EmitNumber(Op::JumpUnless, fits.index, 0));
        Free(fits);
        OpenScope();
        DeclareVariable(*handler.exception.variable);
        Emit(Op::Move, handler.exception.variable->index, exception);
        Emit(Op::Clear, exception);
        CompileBlock(handler.body);
        CloseScope();
        Jump(done);
        Land(next);
    }
    at_ = statement.at;
    Emit(Op::Raise, exception);
}

}  // namespace script
