// What the compiler hands to the machine.
//
// A register machine: each routine has a frame of registers, and an instruction names up to three
// of them. A register is a host::Value that keeps its kind for as long as the frame lives, so
// numbers are worked on in their eight bytes without looking at the kind; only registers of type
// Variant change kind. Registers that hold references (strings, arrays, objects, variants) are
// listed, so that a frame can be taken down from any point. Constants, numbers and most texts, are
// registers too, set when the frame is laid out and never written; their texts are the function's. Which operation is
// meant is settled by the compiler: every type has its own instruction, nothing is looked up by name while a script
// runs. A ByRef parameter's register holds a reference (Place.h) to what the caller gave.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/framework/QuickForms.h"
#include "host/objects/Class.h"
#include "host/objects/Value.h"
#include "host/script/Diagnostics.h"
#include "host/script/Symbols.h"

namespace script {

// In the descriptions A, B and C are registers and N is the number in B and C together.
// I: Integer, L: Int64, U: UInt32, W: UInt64, D: Double. Other whole numbers are calculated as Integer.
// A "bits" form moves numbers; the plain form moves references and variants and counts them.
// clang-format off
enum class Op : std::uint16_t {
    MoveBits, Move,            // A = B
    LoadText,                  // A = texts[N]
    Clear,                     // A = its first value
    LoadGlobalBits, LoadGlobal,    // A = global N
    StoreGlobalBits, StoreGlobal,  // global N = A
    LoadRef, StoreRef,         // A = *B; *A = B
    RefLocal, RefGlobal,       // A = reference to B; to global N
    RefField, RefElement,      // A = reference to value C of object B; to B(C)
    RefProperty,               // A = reference to properties[C] of B
    LoadFieldBits, LoadField,  // A = value C of object B
    StoreFieldBits, StoreField,      // value C of object A = B
    LoadElementBits, LoadElement,    // A = B(C)
    StoreElementBits, StoreElement,  // A(B) = C

    AddI, SubtractI, MultiplyI, DivideI, ModuloI,  // A = B op C
    AddL, SubtractL, MultiplyL, DivideL, ModuloL,
    AddU, SubtractU, MultiplyU, DivideU, ModuloU,
    DivideW, ModuloW,  // the others are those of L
    AddD, SubtractD, MultiplyD, DivideD, PowerD,
    And, Or, Xor,
    NegateI, NegateL, NegateD,  // A = op B
    NotWhole,                   // A = Not B, of kind C
    NotBoolean,

    EqualI, NotEqualI, LessI, LessOrEqualI,  // A = B op C; all whole numbers, booleans, colours
    LessW, LessOrEqualW,
    EqualD, NotEqualD, LessD, LessOrEqualD,
    EqualText, NotEqualText, LessText, LessOrEqualText,
    Same, NotSame,  // references

    ToByte, ToInteger, ToWhole,           // A = B, a whole number; of kind C
    WholeToDouble, WholeToSingle, WideToDouble, WideToSingle,  // A = B, a whole number; a UInt64
    DoubleToInteger, DoubleToByte, DoubleToWhole, DoubleToSingle,  // A = B; of kind C
    ConvertValue,  // A = B as types[C]; may raise
    Cast,          // A = B, an object of types[C] or nil; may raise
    TextOf,        // A = B as Print shows it
    IsA,           // A = B is of types[C]

    Jump,                  // to N
    Loop,                  // to N, backwards: where interrupts are noticed
    JumpIf, JumpUnless,    // to N on A
    TestEqualI, TestNotEqualI, TestLessI, TestLessOrEqualI,  // skips the next instruction if A op B
    TestEqualD, TestNotEqualD, TestLessD, TestLessOrEqualD,
    TestLessOrEqualW,
    TestForI, TestForW, TestForD,  // skips the next instruction if A has not passed B in steps of C
    StepI, StepL, StepW, StepWhole,  // A += B, of kind C, and skips the next instruction, unless A would overflow
    StepSingle, StepD,              // A += B and skips the next instruction

    Call, CallVirtual,     // A = sites[N]
    CallDelegate,          // A = sites[N], whose receiver is the delegate
    Handle,                // events[C] of A is handled by B
    CallNative, CallQuick,  // A = sites[N]; by the quick form of what is called
    CallSetter,            // sites[N]
    GetProperty,           // A = properties[C] of B
    SetProperty,           // properties[C] of A = B
    NewObject,             // A = new types[N]
    NewArray,              // A = array of types[C] with highest index B
    NewGrid, ReDimGrid,    // A = array of types[C], sites[B] are the highest indices; A gets others
    GridIndex,             // A = where the element of array B with the indices in sites[C] lies
    UboundOf,              // A = highest index of array B in dimension C, a register
    MakeArray,             // A = array of types[C], sites[B] are its elements
    Append, Insert, Remove, Ubound, ReDim, Sort, Shuffle, Pop,  // A array; results in A, array in B
    SortWith,              // array A, and the arrays in sites[B] in the same order
    IndexOf,               // A = where array B has what is first in sites[C], from the second on if there is one
    Concatenate,           // A = B + C
    // A text grows: the first += C. B is what it was before C was worked out, and given up; kNoRegister
    // where that can't change it.
    Grow, GrowGlobal,      // A; global A
    GrowField,             // value C of object A += B; what it was is A of the next instruction
    ColorPart,             // A = byte C of colour B
    VariantOperation, VariantCompare,  // A = B op C; op is A of the next instruction
    Print,                 // A
    Quit,                  // code A
    Raise,                 // A
    Return,                // A
    ReturnNothing,
    End,                   // of the program, whose frame stays: it holds the globals
};
// clang-format on

inline constexpr std::uint16_t kNoRegister = 0xFFFF;
inline constexpr std::size_t kMostRegisters = 0xFFF0;

struct Instruction {
    Op op;
    std::uint16_t a;
    std::uint16_t b;
    std::uint16_t c;

    std::uint32_t Number() const { return b | static_cast<std::uint32_t>(c) << 16; }
};

static_assert(sizeof(Instruction) == 8);

// A call: what is called and where its arguments lie, the receiver first.
struct CallSite {
    RoutineSymbol* routine = nullptr;
    const host::Method* native = nullptr;
    host::QuickForm quick = nullptr;  // of the native method
    bool hasReceiver = false;
    std::vector<std::uint16_t> arguments;
    // The class that a virtual call met last, and what it called there.
    const host::Class* seen = nullptr;
    Function* seenCode = nullptr;
};

// An exception raised by instructions from `from` up to `to` goes on at `target`, in a register.
struct Handler {
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t target;
    std::uint16_t exception;
};

struct TypeEntry {
    Type type;
    host::Type host;
    const host::Class* made = nullptr;  // of objects, once all classes exist
};

struct Function {
    std::string name;
    RoutineSymbol* routine = nullptr;
    bool ready = false;
    std::vector<Instruction> code;
    std::vector<Position> positions;        // of each instruction
    std::vector<host::Value> prototype;     // the registers of a fresh frame; what they refer to stays here
    std::vector<std::uint16_t> references;  // registers that hold references
    std::vector<std::uint16_t> parameters;  // registers of the arguments, the receiver first
    std::vector<Handler> handlers;          // inner ones first
    std::vector<CallSite> sites;
    std::vector<host::Value> texts;
    std::vector<TypeEntry> types;
    std::vector<const host::Property*> properties;
    std::vector<const host::Event*> events;
};

}  // namespace script
