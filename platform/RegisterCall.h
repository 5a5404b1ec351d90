// Calls of C functions whose arguments all travel in registers.
//
// The calling conventions of x86-64 (System V) and little-endian AArch64 hand out two rows of registers, each in
// the order of the arguments: one for whole numbers and pointers, one for floating point. What an
// argument is within its row does not matter, nor do registers beyond the last argument. So one
// C++ signature with a full set of both can call every function that needs no stack, without
// working out its shape anew. Elsewhere a general library does it (kRegisterCalls is false).
#pragma once

#include <array>
#include <cstdint>

namespace platform {

#if (defined(__x86_64__) && !defined(_WIN32)) || (defined(__AARCH64EL__) && !defined(__APPLE__))
inline constexpr bool kRegisterCalls = true;
#else
inline constexpr bool kRegisterCalls = false;
#endif

// What the registers hold. Of a number narrower than its register the low bytes count; a single
// lies in the low half of its register.
struct Registers {
    static constexpr std::size_t kWhole = 6;
    static constexpr std::size_t kReal = 8;

    std::array<std::int64_t, kWhole> whole;
    std::array<double, kReal> real;
};

// The one compiler's sanitizer knows the type of a function that is called.
#if defined(__clang__)
#define TQX_CALLS_OTHER_TYPES __attribute__((no_sanitize("function")))
#else
#define TQX_CALLS_OTHER_TYPES
#endif

// Calls a function that gives Result: a type that one register holds, or void.
template <class Result>
TQX_CALLS_OTHER_TYPES Result CallInRegisters(void (*function)(), const Registers& in, bool reals) {
    using Whole = std::int64_t;
    const auto& w = in.whole;
    if (!reals) {
        using Function = Result (*)(Whole, Whole, Whole, Whole, Whole, Whole);
        return reinterpret_cast<Function>(function)(w[0], w[1], w[2], w[3], w[4], w[5]);
    }
    using Function = Result (*)(Whole, Whole, Whole, Whole, Whole, Whole, double, double, double, double, double,
                                double, double, double);
    const auto& r = in.real;
    return reinterpret_cast<Function>(function)(w[0], w[1], w[2], w[3], w[4], w[5], r[0], r[1], r[2], r[3], r[4], r[5],
                                                r[6], r[7]);
}

}  // namespace platform
