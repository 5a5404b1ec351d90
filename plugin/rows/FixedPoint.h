// Unsigned fixed-point numbers of 32 bits before the point and 288 after it, in steps of whole
// numbers: what decides where doubles can't, and what the tables for doubles are made with.
#pragma once

#include <compare>
#include <cstdint>

#include "plugin/rows/DoubleDouble.h"

namespace rows {

struct FixedPoint {
    static constexpr int kWords = 10;
    static constexpr int kWordBits = 32;

    std::uint32_t word[kWords] = {};  // the whole part, then the fraction, its highest bits first

    constexpr auto operator<=>(const FixedPoint&) const = default;
};

// The sum must be below 2^32.
constexpr FixedPoint Add(FixedPoint a, const FixedPoint& b) {
    std::uint64_t carry = 0;
    for (int i = FixedPoint::kWords - 1; i >= 0; --i) {
        carry += std::uint64_t{a.word[i]} + b.word[i];
        a.word[i] = static_cast<std::uint32_t>(carry);
        carry >>= FixedPoint::kWordBits;
    }
    return a;
}

// b must not exceed a.
constexpr FixedPoint Subtract(FixedPoint a, const FixedPoint& b) {
    std::uint64_t borrow = 0;
    for (int i = FixedPoint::kWords - 1; i >= 0; --i) {
        const std::uint64_t difference = std::uint64_t{a.word[i]} - b.word[i] - borrow;
        a.word[i] = static_cast<std::uint32_t>(difference);
        borrow = difference >> 63;
    }
    return a;
}

// The product must be below 2^32.
constexpr FixedPoint Multiply(FixedPoint a, std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (int i = FixedPoint::kWords - 1; i >= 0; --i) {
        carry += std::uint64_t{a.word[i]} * factor;
        a.word[i] = static_cast<std::uint32_t>(carry);
        carry >>= FixedPoint::kWordBits;
    }
    return a;
}

// The product, below 2^32, less what lies behind the last bit.
constexpr FixedPoint Multiply(const FixedPoint& a, const FixedPoint& b) {
    std::uint32_t product[2 * FixedPoint::kWords] = {};
    for (int i = FixedPoint::kWords - 1; i >= 0; --i) {
        std::uint64_t carry = 0;
        for (int j = FixedPoint::kWords - 1; j >= 0; --j) {
            carry += std::uint64_t{a.word[i]} * b.word[j] + product[i + j + 1];
            product[i + j + 1] = static_cast<std::uint32_t>(carry);
            carry >>= FixedPoint::kWordBits;
        }
        product[i] = static_cast<std::uint32_t>(carry);
    }
    FixedPoint result;
    for (int i = 0; i < FixedPoint::kWords; ++i) result.word[i] = product[i + 1];
    return result;
}

constexpr FixedPoint Divide(FixedPoint a, std::uint32_t divisor) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : a.word) {
        rest = rest << FixedPoint::kWordBits | word;
        word = static_cast<std::uint32_t>(rest / divisor);
        rest %= divisor;
    }
    return a;
}

// a × 2^bits, which must be below 2^32, less what lies behind the last bit.
constexpr FixedPoint Shift(const FixedPoint& a, int bits) {
    const auto wordAt = [&](int i) { return i >= 0 && i < FixedPoint::kWords ? std::uint64_t{a.word[i]} : 0; };
    const int words = bits >= 0 ? bits / 32 : -((31 - bits) / 32), rest = bits - words * 32;
    FixedPoint result;
    for (int i = 0; i < FixedPoint::kWords; ++i)
        result.word[i] = static_cast<std::uint32_t>((wordAt(i + words) << 32 | wordAt(i + words + 1)) << rest >> 32);
    return result;
}

// mantissa × 2^exponent, under the same conditions.
constexpr FixedPoint Scaled(std::uint64_t mantissa, int exponent) {
    FixedPoint fraction;
    fraction.word[1] = static_cast<std::uint32_t>(mantissa >> 32);
    fraction.word[2] = static_cast<std::uint32_t>(mantissa);
    return Shift(fraction, exponent + 64);
}

constexpr bool IsZero(const FixedPoint& a) { return a == FixedPoint{}; }

// `numerator` / `denominator`, of which the former is the smaller and both are below 2^63.
constexpr FixedPoint Ratio(std::uint64_t numerator, std::uint64_t denominator) {
    FixedPoint result;
    for (int i = 1; i < FixedPoint::kWords; ++i)
        for (int bit = FixedPoint::kWordBits - 1; bit >= 0; --bit) {
            numerator <<= 1;
            if (numerator < denominator) continue;
            numerator -= denominator;
            result.word[i] |= std::uint32_t{1} << bit;
        }
    return result;
}

// The bits of the values 2^-first down to 2^-(first + count - 1), as a double; 1 <= count <= 53.
constexpr double BitsOf(const FixedPoint& a, int first, int count) {
    double sum = 0, value = 1;
    for (int i = 0; i < first; ++i) value /= 2;
    for (int i = first; i < first + count; ++i, value /= 2) {
        const int word = (i + FixedPoint::kWordBits - 1) / FixedPoint::kWordBits;
        if (a.word[word] >> (word * FixedPoint::kWordBits - i) & 1) sum += value;
    }
    return sum;
}

// Of a number below 2, to 2^-104 of it.
constexpr DoubleDouble ToDoubleDouble(const FixedPoint& a) {
    if (IsZero(a)) return {0, 0};
    int first = 0;
    while (BitsOf(a, first, 1) == 0) ++first;
    return FastTwoSum(BitsOf(a, first, 53), BitsOf(a, first + 53, 53));
}

}  // namespace rows
