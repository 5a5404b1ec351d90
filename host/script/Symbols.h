// What names mean: variables, fields, routines, classes of the script, and the host's classes and
// functions under the same kinds of records, so that one overload rule serves all.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/objects/Class.h"
#include "host/script/Ast.h"
#include "host/script/Types.h"

namespace script {

struct Function;

enum class Storage : std::uint8_t {
    Local,     // a register of its routine's frame
    Global,    // a register of the program's frame, which lives as long as the script does
    ByRef,     // a register with a reference to the caller's variable, element or property
    Constant,  // no storage: `value` is a literal
};

struct Variable {
    std::string name;
    Type type;
    Storage storage = Storage::Local;
    Position at;
    ExpressionPtr value;       // of a constant
    Variable* flag = nullptr;  // of a Static one: whether it has its first value
    std::uint16_t index = 0;   // its register, given by the compiler
};

// How something is called; a default is a literal's value.
using ParameterSymbol = host::ParameterOf<Type>;
using Signature = host::DeclarationOf<Type>;

struct NativeMethod {
    const host::Method* method = nullptr;
    Signature signature;
};

struct RoutineSymbol {
    Signature signature;
    RoutineDeclaration* declaration = nullptr;
    ClassSymbol* owner = nullptr;  // null: of the program
    bool shared = false;
    bool isPrivate = false;
    bool needsPrefix = false;
    const host::Event* event = nullptr;         // that it handles
    std::vector<Variable*> parameterVariables;  // without the receiver
    Function* code = nullptr;
    host::Method* method = nullptr;  // as the host sees it

    bool HasReceiver() const { return owner && !shared; }
};

struct FieldSymbol {
    std::string name;
    Type type;
    ClassSymbol* owner = nullptr;
    std::int32_t slot = 0;       // of the class's own
    Variable* shared = nullptr;  // a shared property's or a constant's variable
    bool isPrivate = false;
    FieldDeclaration* declaration = nullptr;
};

// A class, of the host or of the script.
struct ClassSymbol {
    std::string name;
    const ClassSymbol* base = nullptr;
    host::Class* made = nullptr;          // of a script's class, once it is registered
    const host::Class* native = nullptr;  // null for Object, the root of all
    ClassDeclaration* declaration = nullptr;
    std::map<std::string, FieldSymbol*, std::less<>> fields;                   // by lower-case name, own ones
    std::map<std::string, std::vector<RoutineSymbol*>, std::less<>> routines;  // own ones
    std::vector<FieldSymbol*> ownFields;                                       // in the order declared
    std::vector<const ClassSymbol*> interfaces;                                // that it implements itself
    std::vector<const ClassSymbol*> implementers;                              // of an interface: the classes
    std::unique_ptr<Signature> invoke;                                         // of a delegate: how it is called
    std::int32_t slotCount = 0;                                                // own fields that are not shared
    Function* initializer = nullptr;  // gives the fields their first values; null: none needed
};

// What a class is declared as.
ClassForm FormOf(const ClassSymbol& symbol);

// Whether `type` is `base`, inherits or implements it.
bool Inherits(const ClassSymbol* type, const ClassSymbol* base);

// Whether an object of one type may turn out to be of the other: a subclass, or what an interface hides.
bool MayBecome(Type from, Type to);

// How many steps up `base` is; -1 when it isn't.
int Distance(const ClassSymbol* type, const ClassSymbol* base);

// Everything that a program declares, and what it uses of the host's. Owns all symbols, which
// stay where they are.
class Symbols {
  public:
    Symbols();

    // --- The host's
    ClassSymbol* FindClass(std::string_view name);   // also the script's; null if unknown
    ClassSymbol* FindHolder(std::string_view name);  // also what holds the constants of Variant, which is no class
    std::vector<const NativeMethod*> Functions(std::string_view name);
    std::vector<const NativeMethod*> Methods(const ClassSymbol& type, std::string_view name);
    std::vector<const NativeMethod*> SharedMethods(const ClassSymbol& type, std::string_view name);
    const host::Property* FindProperty(const ClassSymbol& type, std::string_view name);
    Type FromHost(const host::Type& type);
    const NativeMethod* Wrap(const host::Method& method);

    // --- The script's
    ClassSymbol* AddClass(std::string name);
    ClassDeclaration& AddDeclaration() { return declarations_.emplace_back(); }            // of what no text declares
    FieldDeclaration& AddFieldDeclaration() { return fieldDeclarations_.emplace_back(); }  // likewise
    Variable* AddVariable(std::string name, Type type, Storage storage, Position at);
    RoutineSymbol* AddRoutine() { return &routines_.emplace_back(); }
    FieldSymbol* AddField() { return &fields_.emplace_back(); }
    FieldSymbol* FindField(const ClassSymbol& type, std::string_view name) const;
    // All overloads, inherited ones too unless one with the same parameters is nearer.
    std::vector<RoutineSymbol*> FindRoutines(const ClassSymbol& type, std::string_view name) const;

    std::map<std::string, std::vector<RoutineSymbol*>, std::less<>> routines;  // of the program
    std::map<std::string, Variable*, std::less<>> globalNames;                 // of its own level, by lower-case name
    std::vector<ClassSymbol*> scriptClasses;                                   // bases before subclasses
    std::vector<Variable*> globals;                                            // Storage::Global ones, in the order met
    ClassSymbol* object = nullptr;                                             // the root

    std::deque<RoutineSymbol>& AllRoutines() { return routines_; }

    // What a program declared so far, to go back to when the next step of it has mistakes.
    struct Declared {
        std::map<std::string, std::vector<RoutineSymbol*>, std::less<>> routines;
        std::map<std::string, Variable*, std::less<>> globalNames;
        std::vector<ClassSymbol*> scriptClasses;
        std::size_t globals;
        std::size_t allRoutines;
    };
    Declared Save() const { return {routines, globalNames, scriptClasses, globals.size(), routines_.size()}; }
    void Restore(const Declared& before);

  private:
    std::vector<const NativeMethod*> WrapAll(const std::vector<const host::Method*>& methods);

    std::deque<ClassSymbol> classes_;
    ClassSymbol* variant_ = nullptr;
    std::unordered_map<std::string, ClassSymbol*, host::NameHash, host::NameEqual> classIndex_;
    std::deque<Variable> variables_;
    std::deque<RoutineSymbol> routines_;
    std::deque<FieldSymbol> fields_;
    std::deque<ClassDeclaration> declarations_;
    std::deque<FieldDeclaration> fieldDeclarations_;
    std::unordered_map<const host::Method*, std::unique_ptr<NativeMethod>> natives_;
};

// "Name(a As Integer, ByRef b As Double, c As Boolean = False) As String", as messages show it.
std::string TextOf(const Signature& signature);

// A parameter that an assignment to a call fills; it comes last.
bool TakesAssignment(const Signature& signature);

// Whether the two take the same types in the same way.
bool SameParameters(const Signature& a, const Signature& b);

// The host's form of a type.
host::Type ToHost(Type type);

// What a variable of a type holds at first; an array none at all.
host::Value FirstValueOf(Type type);

}  // namespace script
