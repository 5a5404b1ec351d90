// The compiler's insides: one instance compiles one function.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/script/Ast.h"
#include "host/script/Compiler.h"

namespace script {

// A register with a value in it. A temporary is given back with Free.
struct Operand {
    std::uint16_t index = 0;
    bool temporary = false;
};

// Where a jump stands whose target is not known yet.
using JumpList = std::vector<std::size_t>;

struct FunctionTooLarge {};

class FunctionCompiler {
  public:
    FunctionCompiler(Symbols& symbols, Function& function, bool isMain)
        : symbols_(symbols), function_(function), isMain_(isMain) {}

    void CompileMain(Program& program);
    void CompileStep(Program& program, const std::vector<ClassSymbol*>& classes);
    void CompileRoutine(RoutineSymbol& routine);
    void CompileInitializer(ClassSymbol& symbol);

  private:
    // A stretch of code whose exceptions go to a handler. The code of a Finally stands once, behind
    // what it protects; every way out of that puts its number into a register and jumps there, and
    // behind the Finally the number decides where it goes on.
    struct OpenTry {
        std::size_t from = 0;
        std::size_t scopes = 0;  // open ones around it
        bool hasFinally = false;
        std::uint16_t way = 0;                    // the register with the number
        JumpList entries;                         // jumps to the Finally
        std::vector<std::function<void()>> ways;  // compile what follows it; kFirstWay and up
    };
    static constexpr int kStraightOn = 0;
    static constexpr int kRaiseOn = 1;
    static constexpr int kFirstWay = 2;
    struct OpenLoop {
        LoopKind kind = LoopKind::For;
        JumpList exits;
        JumpList continues;
        std::size_t tries = 0;   // open ones around the loop
        std::size_t scopes = 0;  // likewise
    };

    // A label of a block that is open. Jumps to it before it is met are landed then.
    struct OpenLabel {
        std::string name;
        std::size_t tries = 0;   // open ones around the block
        std::size_t scopes = 0;  // likewise, with the block's own
        JumpList jumps;
        std::size_t target = kNotMet;
    };
    static constexpr std::size_t kNotMet = static_cast<std::size_t>(-1);

    // --- Registers and code (Compiler.cpp)
    std::uint16_t Allocate(Type type);
    void Release(std::uint16_t index);
    void Free(Operand operand);
    Operand Temporary(Type type) { return {Allocate(type), true}; }
    Operand Constant(Type type, host::Value value);
    bool TextConstant(const std::string& text, Operand& constant);
    std::size_t Emit(Op op, std::uint16_t a = 0, std::uint16_t b = 0, std::uint16_t c = 0);
    std::size_t EmitNumber(Op op, std::uint16_t a, std::size_t number);
    std::size_t Here() const { return function_.code.size(); }
    void Jump(JumpList& list) { list.push_back(EmitNumber(Op::Jump, 0, 0)); }
    void JumpTo(std::size_t target) { EmitNumber(Op::Loop, 0, target); }
    void Land(const JumpList& list) { LandAt(list, Here()); }
    void LandAt(const JumpList& list, std::size_t target);
    std::uint16_t TypeIndex(Type type);
    void OpenScope() { scopes_.emplace_back(); }
    void CloseScope();
    std::uint16_t DeclareVariable(Variable& variable);
    void ClearScopes(std::size_t downTo);
    bool IsReference(std::uint16_t index) const;
    void EmitDefaultReturn();
    void EmitReturnNothing() { Emit(isMain_ ? Op::End : Op::ReturnNothing); }
    void Finish();

    // --- Expressions (CompilerExpressions.cpp)
    Operand Compile(Expression& expression);
    void CompileTo(Expression& expression, std::uint16_t target);
    Operand CompileBefore(Expression& expression, const Expression& later);
    Operand CompileKept(Expression& expression, std::size_t index);
    Operand CompileLiteral(const Expression& expression);
    void CompileNode(Expression& expression, std::uint16_t target);
    void LoadLiteral(const Expression& literal, std::uint16_t target);
    void LoadVariable(const Expression& expression, std::uint16_t target);
    void CompileArithmetic(Expression& expression, std::uint16_t target);
    void CompileComparison(Expression& expression, std::uint16_t target);
    void CompileBinaryInto(Op op, Expression& expression, std::uint16_t target, bool swapped);
    void CompileUnaryInto(Op op, Expression& operand, std::uint16_t target, std::uint16_t c = 0);
    void CompileLogic(Expression& expression, std::uint16_t target);
    void CompileConvert(Expression& expression, std::uint16_t target);
    void CompileField(Expression& expression, std::uint16_t target);
    void CompileElement(Expression& expression, std::uint16_t target);
    void CompileIntrinsic(Expression& expression, std::uint16_t target);
    Operand CompileIndex(Expression& element, Operand array, const Expression* later);
    std::uint16_t SiteOf(CallSite site);
    std::uint16_t SiteOfRest(const std::vector<Operand>& operands);
    void CompileMakeArray(Expression& expression, std::uint16_t target);
    void CompileArrayMethod(Expression& expression, std::uint16_t target);
    void CompileSelf(std::uint16_t target) { Emit(Op::Move, target, self_); }
    void JumpUnless(Expression& condition, JumpList& list);
    void JumpWhen(Expression& condition, JumpList& list);
    bool EmitTest(Expression& condition);

    // --- Calls and assignments (CompilerCalls.cpp)
    void CompileCall(Expression& expression, std::uint16_t target);
    void CompileNew(Expression& expression, std::uint16_t target);
    void CompileNewDelegate(Expression& expression, std::uint16_t target);
    void CompileCallDelegate(Expression& expression, std::uint16_t target);
    void CompileHandle(Expression& expression);
    void CompileArguments(CallSite& site, Expression& expression, std::size_t first, const Signature* signature,
                          std::vector<Operand>& temporaries);
    Operand CompileByRef(Expression& argument);
    void RefVariable(const Variable& variable, std::uint16_t target);
    void RefProperty(Expression& argument, std::uint16_t target);
    void EmitCall(CallSite site, Expression& expression, std::uint16_t target, const std::vector<Operand>& temporaries);
    static std::uint16_t FieldOffset(const ClassSymbol& owner, std::int32_t slot);
    static std::uint16_t FieldOffset(const Expression& field) { return FieldOffset(*field.owner, field.fieldIndex); }
    void CompileProperty(Expression& expression, std::uint16_t target);
    bool IsOverridden(const RoutineSymbol& routine) const;
    void Assign(Expression& target, Expression& value);
    bool AssignGrown(Expression& target, Expression& value);
    void StoreVariable(const Expression& target, Operand value);
    void StoreElementOrField(const Expression& target, Operand object, Operand index, Operand value);
    std::uint16_t PropertyIndex(const host::Property* property);

    // --- Statements (CompilerStatements.cpp)
    void CompileBlock(Block& block);
    void CompileStatements(Block& block);
    void CompileGoTo(const Statement& statement);
    void LandLabel(const std::string& name);
    void CompileReDim(Statement& statement);
    void CompileStatement(Statement& statement);
    void CompileDim(Declarator& declarator);
    void CompileGlobal(Declarator& declarator, Variable& variable);
    void CompileFirstValue(Declarator& declarator, Type type, std::uint16_t target);
    void CompileDiscarded(Expression& expression);
    void CompileIf(Statement& statement);
    void CompileSelect(Statement& statement);
    void CompileFor(Statement& statement);
    void CompileForTest(Statement& statement, Operand variable, Operand step, bool stepKnown, bool down,
                        JumpList& exits);
    void StoreLoopVariable(Expression& target, Operand value);
    void CompileForEach(Statement& statement);
    void CompileWhile(Statement& statement);
    void CompileDo(Statement& statement);
    void CompileJump(const Statement& statement);
    void CompileReturn(Statement& statement);
    void CompileTry(Statement& statement);
    void CompileCatches(Statement& statement, std::uint16_t exception, JumpList& done);
    void CompileFinally(Statement& statement, OpenTry open, std::uint16_t exception);
    void TakeWay(const OpenTry& open, int number);
    void Leave(std::size_t downTo, const std::function<void()>& goOn);
    void OpenProtection();
    OpenTry CloseProtection(std::uint16_t exception);
    void ClearSince(std::size_t logSize, const std::vector<std::uint16_t>& kept = {});

    Symbols& symbols_;
    Function& function_;
    bool isMain_;
    std::uint16_t self_ = kNoRegister;
    Position at_;
    std::map<int, std::vector<std::uint16_t>> free_;  // by kind of register
    std::vector<int> kinds_;                          // of each register
    std::vector<std::uint16_t> log_;                  // every allocation of a register for references
    std::map<std::pair<int, std::int64_t>, std::uint16_t> constants_;
    std::map<std::string, Operand> textConstants_;
    std::vector<std::vector<std::uint16_t>> scopes_;
    std::vector<OpenTry> tries_;
    std::vector<OpenLoop> loops_;
    std::vector<OpenLabel> labels_;
};

// Whether evaluating it may run other code of the script, which may change variables.
bool MayRunScript(const Expression& expression);

bool HoldsReference(Type type);

// Where a class's own fields begin, in values from an instance's address.
std::size_t FirstField(const ClassSymbol& symbol);

}  // namespace script
