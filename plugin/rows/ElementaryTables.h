// What the estimates of elementary functions look up: values at multiples of 1/64, and constants
// cut so that products with small whole numbers are exact. The compiler computes them.
#pragma once

#include "plugin/rows/FixedSeries.h"

namespace rows {

constexpr int kSteps = 64;  // to 1

// For angles to π / 4.
struct CircleTable {
    static constexpr int kEntries = 52;

    DoubleDouble sine[kEntries], cosine[kEntries];
};

constexpr CircleTable MakeCircleTable() {
    CircleTable table{};
    for (std::uint32_t i = 0; i < CircleTable::kEntries; ++i) {
        const TimesRatioSquared square{i, kSteps};
        table.sine[i] = ToDoubleDouble(SineSeries(Scaled(i, -6), square));
        table.cosine[i] = ToDoubleDouble(CosineSeries(square));
    }
    return table;
}

// Logarithms from 1/√2 to √2; that of 1 is exactly 0.
struct LogTable {
    static constexpr int kFirst = 45, kEntries = 47;

    DoubleDouble log[kEntries];
};

// log(i / 64) = 2 artanh((i - 64) / (i + 64)).
constexpr DoubleDouble LogOfSteps(std::uint32_t i) {
    const bool isBelowOne = i < kSteps;
    const std::uint32_t distance = isBelowOne ? kSteps - i : i - kSteps;
    const TimesRatioSquared square{distance, i + kSteps};
    const FixedPoint half = InverseTanhSeries(Divide(Scaled(distance, 0), i + kSteps), square);
    const DoubleDouble magnitude = ToDoubleDouble(Multiply(half, 2));
    return isBelowOne ? Negate(magnitude) : magnitude;
}

constexpr LogTable MakeLogTable() {
    LogTable table{};
    for (std::uint32_t i = 0; i < LogTable::kEntries; ++i) table.log[i] = LogOfSteps(LogTable::kFirst + i);
    return table;
}

// Powers of e below 2.
struct ExpTable {
    static constexpr int kEntries = 45;

    DoubleDouble exp[kEntries];
};

constexpr FixedPoint ExpOfSteps(std::uint32_t i) {
    FixedPoint term = Scaled(1, 0), sum = term;
    for (std::uint32_t n = 1; !IsZero(term); ++n) {
        term = Divide(Multiply(term, i), kSteps * n);
        sum = Add(sum, term);
    }
    return sum;
}

constexpr ExpTable MakeExpTable() {
    ExpTable table{};
    for (std::uint32_t i = 0; i < ExpTable::kEntries; ++i) table.exp[i] = ToDoubleDouble(ExpOfSteps(i));
    return table;
}

constexpr CircleTable kCircleTable = MakeCircleTable();
constexpr LogTable kLogTable = MakeLogTable();
constexpr ExpTable kExpTable = MakeExpTable();

static_assert(sizeof kCircleTable + sizeof kLogTable + sizeof kExpTable < 4096);

// π / 2 and log 2 in pieces, the first ones short.
constexpr int kShort = 40;
constexpr double kHalfPiTop = BitsOf(kHalfPi, 0, kShort), kHalfPiNext = BitsOf(kHalfPi, kShort, kShort);
constexpr DoubleDouble kHalfPiRest = {BitsOf(kHalfPi, 2 * kShort, 53), BitsOf(kHalfPi, 2 * kShort + 53, 53)};
constexpr double kLog2Top = BitsOf(kLog2, 0, kShort);
constexpr DoubleDouble kLog2Rest = {BitsOf(kLog2, kShort, 53), BitsOf(kLog2, kShort + 53, 53)};

}  // namespace rows
