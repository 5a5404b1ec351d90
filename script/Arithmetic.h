// The language's arithmetic, defined for every operand: whole numbers wrap at their width, and
// the quotient of the most negative number by -1 wraps to itself. Division by zero is the
// caller's to refuse.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

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

}  // namespace script
