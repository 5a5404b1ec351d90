// Whole numbers bit by bit: global functions, and the class Bitwise, which has no instances.
#include <algorithm>

#include "host/framework/NumberFunctions.h"
#include "host/framework/Support.h"

namespace host {

namespace {

using Whole = std::int32_t;
using Long = std::int64_t;

sdk::ClassDefinition definition{.name = "Bitwise"};

template <class Number>
Number And(Number a, Number b) {
    return a & b;
}

template <class Number>
Number Or(Number a, Number b) {
    return a | b;
}

template <class Number>
Number Xor(Number a, Number b) {
    return a ^ b;
}

template <class Number, Number (*Join)(Number, Number)>
Number OfThree(Number a, Number b, Number c) {
    return Join(Join(a, b), c);
}

template <class Number, Number (*Join)(Number, Number)>
Number OfFour(Number a, Number b, Number c, Number d) {
    return Join(Join(a, b), Join(c, d));
}

template <class Number>
Number Complement(Number value) {
    return ~value;
}

// --- Shifts: of a number's lowest `bits` bits, as a number without a sign ---------------------

// Ones in the lowest bits; all for as many bits as there are, or more.
template <class Number>
std::make_unsigned_t<Number> LowBits(std::int32_t bits) {
    using Unsigned = std::make_unsigned_t<Number>;
    constexpr std::int32_t kBits = sizeof(Number) * 8;
    if (bits < 1) return 0;
    return static_cast<Unsigned>(~Unsigned{0}) >> (kBits - std::min(bits, kBits));
}

// What leaves the bits is gone. A negative count shifts the other way.
template <class Number>
Number Shifted(Number value, std::int64_t left, std::int32_t bits) {
    constexpr std::int64_t kBits = sizeof(Number) * 8;
    const auto kept = LowBits<Number>(bits);
    const auto from = static_cast<std::make_unsigned_t<Number>>(value) & kept;
    if (left >= kBits || left <= -kBits) return 0;
    return static_cast<Number>(left >= 0 ? from << left & kept : from >> -left);
}

template <class Number>
Number ShiftLeft(Number value, std::int32_t count, std::int32_t bits) {
    return Shifted(value, count, bits);
}

template <class Number>
Number ShiftRight(Number value, std::int32_t count, std::int32_t bits) {
    return Shifted(value, -std::int64_t{count}, bits);
}

constexpr std::int32_t kFlags = sdk::kMemberPortable;

// Of two to four numbers; those of 32 bits give one of 32 bits.
const sdk::MethodRecord kJoining[] = {
    sdk::SharedMethod<"BitAnd(a as integer, b as integer) as integer", Guarded<&And<Whole>>>(kFlags),
    sdk::SharedMethod<"BitAnd(a as integer, b as integer, c as integer) as integer",
                      Guarded<&OfThree<Whole, &And<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitAnd(a as integer, b as integer, c as integer, d as integer) as integer",
                      Guarded<&OfFour<Whole, &And<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitAnd(a as int64, b as int64) as int64", Guarded<&And<Long>>>(kFlags),
    sdk::SharedMethod<"BitAnd(a as int64, b as int64, c as int64) as int64", Guarded<&OfThree<Long, &And<Long>>>>(
        kFlags),
    sdk::SharedMethod<"BitAnd(a as int64, b as int64, c as int64, d as int64) as int64",
                      Guarded<&OfFour<Long, &And<Long>>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as integer, b as integer) as integer", Guarded<&Or<Whole>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as integer, b as integer, c as integer) as integer",
                      Guarded<&OfThree<Whole, &Or<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as integer, b as integer, c as integer, d as integer) as integer",
                      Guarded<&OfFour<Whole, &Or<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as int64, b as int64) as int64", Guarded<&Or<Long>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as int64, b as int64, c as int64) as int64", Guarded<&OfThree<Long, &Or<Long>>>>(kFlags),
    sdk::SharedMethod<"BitOr(a as int64, b as int64, c as int64, d as int64) as int64",
                      Guarded<&OfFour<Long, &Or<Long>>>>(kFlags),
    sdk::SharedMethod<"BitXor(a as integer, b as integer) as integer", Guarded<&Xor<Whole>>>(kFlags),
    sdk::SharedMethod<"BitXor(a as integer, b as integer, c as integer) as integer",
                      Guarded<&OfThree<Whole, &Xor<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitXor(a as integer, b as integer, c as integer, d as integer) as integer",
                      Guarded<&OfFour<Whole, &Xor<Whole>>>>(kFlags),
    sdk::SharedMethod<"BitXor(a as int64, b as int64) as int64", Guarded<&Xor<Long>>>(kFlags),
    sdk::SharedMethod<"BitXor(a as int64, b as int64, c as int64) as int64", Guarded<&OfThree<Long, &Xor<Long>>>>(
        kFlags),
    sdk::SharedMethod<"BitXor(a as int64, b as int64, c as int64, d as int64) as int64",
                      Guarded<&OfFour<Long, &Xor<Long>>>>(kFlags),
};

const sdk::MethodRecord kShifting[] = {
    sdk::SharedMethod<"OnesComplement(value as integer) as integer", Guarded<&Complement<Whole>>>(kFlags),
    sdk::SharedMethod<"OnesComplement(value as int64) as int64", Guarded<&Complement<Long>>>(kFlags),
    sdk::SharedMethod<"ShiftLeft(value as integer, count as integer, bits as integer = 32) as integer",
                      Guarded<&ShiftLeft<Whole>>>(kFlags),
    sdk::SharedMethod<"ShiftLeft(value as int64, count as integer, bits as integer = 64) as int64",
                      Guarded<&ShiftLeft<Long>>>(kFlags),
    sdk::SharedMethod<"ShiftRight(value as integer, count as integer, bits as integer = 32) as integer",
                      Guarded<&ShiftRight<Whole>>>(kFlags),
    sdk::SharedMethod<"ShiftRight(value as int64, count as integer, bits as integer = 64) as int64",
                      Guarded<&ShiftRight<Long>>>(kFlags),
};

}  // namespace

void RegisterBitFunctions(Runtime& runtime) {
    static sdk::MethodRecord members[std::size(kJoining) + std::size(kShifting)];
    std::copy(std::begin(kShifting), std::end(kShifting), std::copy(std::begin(kJoining), std::end(kJoining), members));
    SetSharedMethods(definition, members);
    RegisterOrAbort(runtime, definition);
    runtime.RegisterFunctions(kJoining);
}

}  // namespace host
