// The checker's insides, shared by its files: declarations, statements, expressions, members,
// calls, conversions.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/calls/Overload.h"
#include "host/messages/CheckerMessages.h"
#include "host/script/Ast.h"
#include "host/script/Diagnostics.h"
#include "host/script/Symbols.h"

namespace script {

// One way to call something: a routine of the script or a method of the host.
struct Candidate {
    const Signature* signature = nullptr;
    RoutineSymbol* routine = nullptr;
    const NativeMethod* native = nullptr;
};

// Whether the script asked for a conversion by name.
enum class Casting { Implicit, Explicit };

// What a routine's body may refer to.
struct RoutineContext {
    RoutineSymbol* routine = nullptr;  // null: the program itself, or a class's first values
    ClassSymbol* owner = nullptr;
    bool hasSelf = false;
    std::vector<std::map<std::string, Variable*, std::less<>>> scopes;
    std::vector<LoopKind> loops;
    std::vector<const Block*> blocks;  // that are open, for their labels
};

// Ends a message about a number where a text is wanted.
inline constexpr std::string_view kUseStr = "; Str makes a text of a number";

class Checker {
  public:
    Checker(Program& program, Symbols& symbols, Diagnostics& diagnostics)
        : program_(program), symbols_(symbols), diagnostics_(diagnostics) {}

    void Run();

  private:
    // --- Declarations (CheckerDeclarations.cpp)
    void DeclareClasses();
    void ResolveBases();
    void OrderClasses();
    void DeclareMembers(ClassSymbol& symbol);
    void DeclareField(ClassSymbol& symbol, FieldDeclaration& declaration);
    RoutineSymbol* DeclareRoutine(RoutineDeclaration& declaration, ClassSymbol* owner);
    void DeclareParameters(RoutineSymbol& routine);
    void AddRoutine(std::vector<RoutineSymbol*>& overloads, RoutineSymbol& routine, const std::string& there);
    void CheckOverride(const RoutineSymbol& routine);
    void ResolveInterfaces(ClassSymbol& symbol);
    void CheckInterfaces(const ClassSymbol& symbol);
    void DeclareEvent(ClassSymbol& symbol, RoutineSymbol& event);
    ClassSymbol* MakeDelegate(const std::string& name, Signature signature, Position at);
    static Signature HandlerOf(const Signature& event, const ClassSymbol& sender);
    const host::Event* FindNativeEvent(const ClassSymbol& type, std::string_view name) const;
    void CheckEvent(RoutineSymbol& routine);
    void DeclareGlobals(Block& block);
    void CheckClassBodies(ClassSymbol& symbol);
    void CheckField(FieldSymbol& field);
    void CheckRoutine(RoutineSymbol& routine);
    void CheckMainProgram();

    // --- Statements (CheckerStatements.cpp)
    void CheckBlock(Block& block);
    void CheckStatements(Block& block);
    void CheckGoTo(const Statement& statement) const;
    void CheckSizes(std::vector<ExpressionPtr>& sizes);
    void CheckStatement(Statement& statement);
    void CheckDim(Statement& statement);
    void CheckDeclarator(Declarator& declarator);
    void CheckConst(Declarator& declarator);
    void CheckAssign(Statement& statement);
    void CheckCallStatement(Statement& statement);
    void CheckIf(Statement& statement);
    void CheckSelect(Statement& statement);
    ExpressionPtr CaseCondition(CaseTest& test, Variable* subject);
    void CheckFor(Statement& statement);
    void CheckForEach(Statement& statement);
    void CheckLoopVariable(Statement& statement, Type deduced);
    void CheckWhile(Statement& statement);
    void CheckDo(Statement& statement);
    void CheckLoopBody(Statement& statement, LoopKind kind);
    void CheckJump(const Statement& statement);
    void CheckReturn(Statement& statement);
    void CheckTry(Statement& statement);
    void CheckCatch(Catch& handler);
    void CheckReDim(Statement& statement);
    void CheckCondition(ExpressionPtr& condition);

    // --- Expressions (CheckerExpressions.cpp). Each resolves the node in place.
    void CheckExpression(ExpressionPtr& expression, bool wantsValue = true);
    void CheckValue(ExpressionPtr& expression);  // that must have one
    void CheckLiteral(Expression& expression);
    void CheckUnary(ExpressionPtr& expression);
    void CheckBinary(ExpressionPtr& expression);
    void CheckArithmetic(ExpressionPtr& expression);
    void CheckComparison(ExpressionPtr& expression);
    void CheckIdentity(ExpressionPtr& expression);
    void CheckLogic(ExpressionPtr& expression);
    void CheckIsA(Expression& expression);
    void CheckNew(ExpressionPtr& expression);
    void CheckCast(ExpressionPtr& expression);
    void CheckSelf(Expression& expression);
    Type OperandType(const Expression& left, const Expression& right) const;
    void MakeVariantOperation(Expression& expression, bool comparison);
    void Wrong(Expression& expression, const host::Said& message);  // tells and marks

    // --- Names and members (CheckerMembers.cpp)
    void CheckName(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments, bool hasArguments, bool wantsValue);
    void CheckMember(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments, bool hasArguments,
                     bool wantsValue);
    void CheckApply(ExpressionPtr& expression, bool wantsValue);
    bool ResolveSelfMember(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments, bool hasArguments,
                           bool wantsValue);
    bool ResolveObjectMember(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                             std::vector<ExpressionPtr>& arguments, bool hasArguments, bool wantsValue);
    bool ResolveSharedMember(ExpressionPtr& expression, const ClassSymbol& type, std::vector<ExpressionPtr>& arguments,
                             bool hasArguments, bool wantsValue);
    bool ResolveField(ExpressionPtr& expression, FieldSymbol& field, ExpressionPtr& receiver);
    bool ResolveAccessor(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                         std::vector<ExpressionPtr>& arguments, bool wantsValue);
    bool ResolveModuleMember(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments, bool hasArguments,
                             bool wantsValue);
    std::vector<Candidate> FunctionCandidates(std::string_view name, bool extending);
    bool ResolveExtension(ExpressionPtr& expression, ExpressionPtr& receiver, std::vector<ExpressionPtr>& arguments,
                          bool wantsValue);
    bool HasAccessor(const ClassSymbol& type, std::string_view name) const;
    std::vector<ClassSymbol*> ModulesWith(std::string_view name) const;
    std::vector<Candidate> OwnRoutines(std::string_view name) const;
    ClassSymbol* FindHolder(const Expression& name, std::string_view member = {});
    void UnfoldModule(ExpressionPtr& object);
    bool ResolveArrayMember(ExpressionPtr& expression, ExpressionPtr& receiver, std::vector<ExpressionPtr>& arguments);
    bool ResolveValueMember(ExpressionPtr& expression, ExpressionPtr& receiver, std::vector<ExpressionPtr>& arguments,
                            bool wantsValue);
    bool ResolveIntrinsic(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments);
    void MakeArrayOf(Expression& expression, std::vector<ExpressionPtr> arguments);
    void MakeCast(ExpressionPtr& expression, Type type, std::vector<ExpressionPtr>& arguments);
    void ApplyIndex(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments);
    void UseVariable(Expression& expression, Variable& variable);
    bool MayReach(const ClassSymbol* owner, bool isPrivate) const;
    bool IsAhead(const Variable& variable, Position at) const;
    void AddMemberNames(const ClassSymbol& type, std::vector<std::string>& names) const;
    const RoutineSymbol* FindPrivate(const ClassSymbol& type, std::string_view name) const;
    std::vector<std::string> ValueMembers(Type type);  // of what is no object
    std::vector<Candidate> TextFunctions(std::string_view name);
    host::Said UnknownMember(const ClassSymbol& type, std::string_view name);
    host::Said UnknownName(std::string_view name, bool wantsValue);
    std::vector<Candidate> AssignableCandidates(Expression& member, ExpressionPtr& receiver);
    bool ResolveAssignableCall(Statement& statement);
    bool ResolveAccessorSet(Statement& statement);
    bool ResolvePropertySet(Statement& statement);

    // --- Calls (CheckerCalls.cpp)
    std::vector<Candidate> MethodCandidates(const ClassSymbol& type, std::string_view name, bool shared);
    bool ResolveCall(ExpressionPtr& expression, const std::vector<Candidate>& candidates, ExpressionPtr receiver,
                     std::vector<ExpressionPtr>& arguments, bool wantsValue);
    const Candidate* Choose(const std::vector<Candidate>& candidates, std::vector<ExpressionPtr>& arguments,
                            bool wantsValue, Position at);
    std::optional<host::Fit> FitOfCall(const Signature& signature, const std::vector<ExpressionPtr>& arguments) const;
    int ArgumentCost(const ParameterSymbol& parameter, const Expression& argument, host::Passing passing) const;
    std::vector<ExpressionPtr> FitArguments(const Signature& signature, std::vector<ExpressionPtr>& arguments);
    void FitByRef(const ParameterSymbol& parameter, ExpressionPtr& argument);
    void ReportNoCandidate(const std::vector<Candidate>& candidates, const std::vector<ExpressionPtr>& arguments,
                           bool wantsValue, Position at);
    host::Said MismatchText(const Signature& signature, const std::vector<ExpressionPtr>& arguments) const;
    void CheckArguments(std::vector<ExpressionPtr>& arguments);

    // --- Types and conversions (CheckerConversions.cpp)
    Type ResolveType(TypeName& name);
    ClassSymbol* FindTypeSymbol(std::string_view name);
    int ConversionCost(const Expression& from, Type to) const;  // -1: none
    void Convert(ExpressionPtr& expression, Type to, std::string_view use, Casting casting = Casting::Implicit);
    void WarnOfLoss(const Expression& literal, Type to);
    std::vector<std::string> TypeNames() const;
    host::Said UnknownType(const std::string& name) const;
    void ForceConvert(ExpressionPtr& expression, Type to);
    void Fold(ExpressionPtr& expression);
    // Delegates (CheckerDelegates.cpp)
    void CheckAddressOf(Expression& expression);
    void CheckHandle(Expression& expression);
    bool ResolveInvoke(ExpressionPtr& expression, ExpressionPtr& delegate, std::vector<ExpressionPtr>& arguments,
                       bool wantsValue);
    RoutineSymbol* FindAddressed(const Expression& address, Type delegate) const;
    void MakeAddressed(Expression& address, Type delegate) const;
    const ClassSymbol* DelegateOf(const host::Event& event, const ClassSymbol& type, Position at);
    // Operators that classes have (CheckerOperators.cpp)
    bool ResolveOperator(ExpressionPtr& expression);
    bool ResolveUnaryOperator(ExpressionPtr& expression);
    bool ResolveCompare(ExpressionPtr& expression);
    bool CallOperator(ExpressionPtr& call, const std::string& name, std::size_t receiver, ExpressionPtr* operands,
                      std::size_t count);
    RoutineSymbol* FindOperatorConvert(Type from, Type to) const;
    void CallOperatorConvert(ExpressionPtr& expression, RoutineSymbol& convert, Type to);
    bool ResolveSubscript(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments);
    bool ResolveLookup(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                       std::vector<ExpressionPtr>& arguments, bool wantsValue);
    Type CommonType(Type a, Type b) const;  // of two numbers
    Type JoinedType(Type a, Type b) const;

    Variable* Declare(std::string_view name, Type type, Storage storage, Position at);
    Variable* FindLocal(std::string_view name);
    Variable* FindGlobal(std::string_view name);
    template <class Work>
    void ForEachRoutine(const Work& work) {
        for (std::size_t i = known_; i < symbols_.AllRoutines().size(); ++i) work(symbols_.AllRoutines()[i]);
    }

    bool AtProgramLevel() const { return !context_.routine && !context_.owner && context_.scopes.size() == 1; }

    Program& program_;
    Symbols& symbols_;
    Diagnostics& diagnostics_;
    RoutineContext context_;
    std::map<std::string, Variable*, std::less<>>& globals_ = symbols_.globalNames;
    std::set<std::string> declared_;                     // names of globals that this program declares
    std::vector<ClassSymbol*> classes_;                  // that it declares, bases before subclasses
    std::size_t known_ = symbols_.AllRoutines().size();  // routines that were there before
};

// --- Small makers of resolved nodes

ExpressionPtr MakeExpression(Node node, Type type, Position at);
ExpressionPtr MakeIntegerLiteral(std::int64_t value, Position at);
ExpressionPtr CloneLiteral(const Expression& literal, Position at);
ExpressionPtr UseOf(Variable& variable, Position at);
bool IsLiteral(const Expression& expression);
Type SimpleTypeNamed(std::string_view name);

}  // namespace script
