// The language's arithmetic, defined for every operand: whole numbers wrap at their width, and
// the quotient of the most negative number by -1 wraps to itself. Division by zero is the
// caller's to refuse.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "host/script/Ast.h"

namespace script {

template <class T>
T WrapAdd(T a, T b) {
    using U = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<U>(a) + static_cast<U>(b));
}

template <class T>
T WrapSubtract(T a, T b) {
    using U = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<U>(a) - static_cast<U>(b));
}

template <class T>
T WrapMultiply(T a, T b) {
    using U = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<U>(a) * static_cast<U>(b));
}

template <class T>
T WrapNegate(T a) {
    return WrapSubtract(T{0}, a);
}

// Truncated toward zero; b is not 0.
template <class T>
T WrapDivide(T a, T b) {
    if constexpr (std::is_signed_v<T>)
        if (b == -1) return WrapNegate(a);
    return a / b;
}

// The remainder has the sign of a; b is not 0.
template <class T>
T WrapModulo(T a, T b) {
    if constexpr (std::is_signed_v<T>)
        if (b == -1) return 0;
    return a % b;
}

// x / y of doubles. Division by zero gives infinity or not-a-number, as IEEE has it.
inline double Quotient(double x, double y) { return x / y; }

// Any operator of whole numbers that gives one.
inline std::int64_t WholeResult(Operator op, std::int64_t a, std::int64_t b) {
    switch (op) {
        case Operator::Add:
            return WrapAdd(a, b);
        case Operator::Subtract:
            return WrapSubtract(a, b);
        case Operator::Multiply:
            return WrapMultiply(a, b);
        case Operator::IntegerDivide:
            return WrapDivide(a, b);
        case Operator::Modulo:
            return WrapModulo(a, b);
        case Operator::And:
            return a & b;
        case Operator::Or:
            return a | b;
        default:
            return a ^ b;
    }
}

// Any operator of doubles that gives one.
inline double RealResult(Operator op, double a, double b) {
    switch (op) {
        case Operator::Add:
            return a + b;
        case Operator::Subtract:
            return a - b;
        case Operator::Multiply:
            return a * b;
        case Operator::Divide:
            return Quotient(a, b);
        default:
            return std::pow(a, b);
    }
}

}  // namespace script
