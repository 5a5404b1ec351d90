// A script as a tree.
//
// The parser builds the tree from the text alone. The checker then resolves it in place: a
// written node (Name, Member, Apply, Binary, …) becomes a resolved one (Local, CallNative,
// Arithmetic, …) that states exactly what is to be done, with every implicit conversion as a node
// of its own. The compiler knows only resolved nodes. One record serves every kind of expression:
// the kinds differ in few fields, and turning one into another then is an assignment.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/objects/Signature.h"
#include "host/script/Diagnostics.h"
#include "host/script/Types.h"

namespace host {
struct Event;
struct Property;
}  // namespace host

namespace script {

struct Expression;
struct Statement;
struct Variable;
struct RoutineSymbol;
struct NativeMethod;

using ExpressionPtr = std::unique_ptr<Expression>;
using StatementPtr = std::unique_ptr<Statement>;
using Block = std::vector<StatementPtr>;

// A tree deeper than this is refused, so that walking it can't exhaust the stack.
inline constexpr int kDeepestExpression = 400;
inline constexpr int kDeepestBlock = 100;

enum class Node : std::uint8_t {
    // Written
    IntegerLiteral,
    RealLiteral,
    StringLiteral,
    ColorLiteral,
    BooleanLiteral,
    NilLiteral,
    Name,       // text
    Member,     // operands[0] . text
    Apply,      // operands[0] ( operands[1…] )
    New,        // typeName ( operands )
    Unary,      // op operands[0]
    Binary,     // operands[0] op operands[1]
    IsA,        // operands[0] IsA typeName
    Cast,       // operands[0] as typeName
    AddressOf,  // operands[0] names a routine
    Self,       // also Me
    Super,

    // Resolved; literals, Self and IsA stay what they are
    Local,         // variable: a register, or the caller's variable behind a ByRef parameter
    Global,        // variable: of the program, shared, or Static
    Field,         // operands[0] . fieldIndex
    Element,       // operands[0] ( operands[1…] ), an index for each dimension
    Convert,       // operands[0] to type
    Arithmetic,    // op on two operands of one type
    Comparison,    // op on two operands of one type
    Logic,         // And, Or of two Booleans, from left to right as far as needed
    Negate,        // a number
    Complement,    // Not of a Boolean or a whole number
    CallRoutine,   // routine; operands[0] is the receiver if it has one; direct: not overridden
    CallNative,    // native; operands as the interface wants them, receiver first
    CallSetter,    // native's setter, likewise, the assigned value last
    GetProperty,   // property of operands[0]
    SetProperty,   // property of operands[0] to operands[1]
    NewDelegate,   // of type, that calls routine; operands[0] is the receiver if it has one
    CallDelegate,  // operands[0] ( operands[1…] )
    Handle,        // operands[0]'s event is handled by operands[1], a delegate or Nil
    NewObject,     // type; native or routine is the constructor, or neither; operands its arguments
    MakeArray,     // operands are the elements
    ArrayMethod,   // arrayMethod on operands[0]
    Intrinsic,     // intrinsic on operands
    Nothing,       // after an error
};

enum class Operator : std::uint8_t {
    None,
    Add,
    Subtract,
    Multiply,
    Divide,         // a double
    IntegerDivide,  // truncated
    Modulo,
    Power,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Is,
    And,
    Or,
    Xor,
    Not,
    Negate,
};

enum class ArrayMethodKind : std::uint8_t {
    Append,
    Insert,
    Remove,
    Ubound,
    ReDim,
    Sort,
    SortWith,
    Shuffle,
    Pop,
    IndexOf
};

enum class IntrinsicKind : std::uint8_t {
    Print,
    Quit,
    RedOf,
    GreenOf,
    BlueOf,
    Concatenate,
    VariantOperation,
    VariantCompare
};

struct TypeName {
    std::string name;  // perhaps behind a module's and a dot
    bool array = false;
    int dimensions = 1;  // of an array
    Position at;
    Type resolved;
};

struct Expression {
    Node node = Node::Nothing;
    Operator op = Operator::None;
    Position at;
    int depth = 1;  // of the tree below and with this node
    std::string text;
    std::vector<ExpressionPtr> operands;
    TypeName typeName;
    bool bracketed = false;  // "(x)" or "f()": written with brackets of its own

    // Literals. A hexadecimal or binary literal is a bit pattern: its Integer is the low 32 bits as
    // they stand, its Int64 the number as written.
    bool pattern = false;
    std::int64_t integer = 0;
    double real = 0;

    // Resolved
    Type type;
    Variable* variable = nullptr;
    RoutineSymbol* routine = nullptr;
    std::vector<RoutineSymbol*> routines;  // of an address: of one name
    const NativeMethod* native = nullptr;
    const host::Property* property = nullptr;
    const host::Event* event = nullptr;
    const ClassSymbol* owner = nullptr;  // of a field
    std::int32_t fieldIndex = 0;
    bool direct = false;
    ArrayMethodKind arrayMethod = ArrayMethodKind::Append;
    IntrinsicKind intrinsic = IntrinsicKind::Print;
};

// A copy of a tree that is not resolved yet.
ExpressionPtr CloneWritten(const Expression& written);

enum class Action : std::uint8_t {
    Dim,       // declarators
    Const,     // declarators
    Assign,    // expressions[0] = expressions[1]
    Call,      // expressions[0]
    If,        // expressions are the conditions, blocks their bodies; one block more is Else
    Select,    // expressions[0]; cases; blocks[i] of cases[i]; one block more is Else
    For,       // loop
    ForEach,   // loop
    While,     // expressions[0], blocks[0]
    Do,        // expressions[0] before, expressions[1] after, either may be null; blocks[0]
    Exit,      // loopKind
    Continue,  // loopKind
    Return,    // expressions[0] or nothing
    Try,       // blocks[0]; catches; finallyBlock
    Raise,     // expressions[0]
    ReDim,     // expressions[0] to expressions[1…]
    Label,     // name
    GoTo,      // name
};

// Which loop an Exit or Continue means.
enum class LoopKind : std::uint8_t { Innermost, For, While, Do, Select, Routine };

// "name(size) As [New] Type(arguments) = value"
struct Declarator {
    std::string name;
    Position at;
    TypeName type;  // empty name: taken from the value (Const, For Each)
    bool isStatic = false;
    bool isNew = false;
    std::vector<ExpressionPtr> arguments;  // of New
    std::vector<ExpressionPtr> sizes;      // highest indices; none given: an empty array
    ExpressionPtr value;
    Variable* variable = nullptr;
};

struct CaseTest {
    Operator op = Operator::Equal;  // subject op low; Equal with high: low To high
    ExpressionPtr low;
    ExpressionPtr high;
};

struct Catch {
    Declarator exception;  // empty name: any, unnamed
    Block body;
    Position at;
};

struct Statement {
    Action action = Action::Call;
    Position at;
    std::vector<ExpressionPtr> expressions;
    std::vector<Block> blocks;
    std::vector<Declarator> declarators;
    std::vector<std::vector<CaseTest>> cases;
    std::vector<Catch> catches;
    Block finallyBlock;
    std::string name;
    bool hasElse = false;
    bool hasFinally = false;
    bool wholeRoutine = false;  // Try: made of Exception blocks; the body's variables are the routine's
    bool negated = false;       // Do: the condition before is Until
    bool negatedAfter = false;  // Do: the condition after is Until
    bool down = false;          // For: DownTo

    LoopKind loopKind = LoopKind::Innermost;
    // For and ForEach: the variable is declarators[0] when declared here, else expressions[0];
    // For: expressions[1] To expressions[2] Step expressions[3] (null: 1); ForEach: expressions[1].
    Variable* scratch = nullptr;  // Select's subject, ForEach's array
    Variable* counter = nullptr;  // ForEach's index
};

// What an accessor or an event is called among a class's routines: no script can spell these.
inline constexpr std::string_view kGetterMark = "get ";
inline constexpr std::string_view kSetterMark = "set ";
inline constexpr std::string_view kEventMark = "event ";

enum class RoutineKind : std::uint8_t { Sub, Function, Event };

struct Parameter : host::ParameterFlags {
    std::string name;
    Position at;
    TypeName type;
    ExpressionPtr defaultValue;  // null: none is written
};

struct RoutineDeclaration {
    std::string name;
    Position at;
    RoutineKind kind = RoutineKind::Sub;
    bool shared = false;
    bool isPrivate = false;
    bool needsPrefix = false;    // of a module: known elsewhere by the module's name and a dot only
    bool declaresEvent = false;  // Event: without a body of its own
    std::vector<Parameter> parameters;
    TypeName result;  // empty name: none
    Block body;
};

struct FieldDeclaration {
    Declarator declarator;
    bool shared = false;
    bool constant = false;
    bool isPrivate = false;
    bool needsPrefix = false;  // as of a routine
};

enum class ClassForm : std::uint8_t { Class, Module, Interface, Enum, Delegate };

struct ClassDeclaration {
    std::string name;
    Position at;
    ClassForm form = ClassForm::Class;
    std::string enclosing;  // the module or class it stands in
    TypeName base;          // empty name: none; of an Enum the type of its members
    std::vector<TypeName> interfaces;
    std::vector<FieldDeclaration> fields;
    std::vector<RoutineDeclaration> routines;
};

struct Program {
    Block body;
    std::vector<RoutineDeclaration> routines;
    std::vector<ClassDeclaration> classes;
};

}  // namespace script
