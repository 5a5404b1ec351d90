// Shears plainly, in doubles, and by shares where whole numbers give the same.
#include "plugin/rows/Skew.h"

#include <algorithm>

#include "plugin/rows/Blocks.h"
#include "plugin/rows/LoopForms.h"
#include "plugin/rows/TableRegisters.h"

#define ROWS_WIDE "plugin/rows/SkewWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

// Part of a row: source pixels first .. end - 1 have a place in the destination.
struct Reach {
    std::int64_t first;
    std::int64_t end;
};

Reach ReachOf(std::int64_t offset, std::int32_t sourceWidth, std::int32_t destinationWidth) {
    const std::int64_t first = std::max<std::int64_t>(0, -offset);
    return {first, std::max(first, std::min<std::int64_t>(sourceWidth, destinationWidth - offset))};
}

struct MakeTables {
    ROWS_INLINE static void Run(double weight, SkewTables* tables) {
        for (int v = 0; v < 256; ++v)
            tables->left[v] = static_cast<std::uint8_t>(static_cast<std::int32_t>(weight * v));
        tables->share = ShareOfSkew(weight);
    }
};

// Some columns at a time by their shares; where one leaves a doubt, all of them by their weights.
struct SkewEach {
    static constexpr std::int32_t kAtOnce = 64;

    ROWS_INLINE static bool ByShares(const std::uint16_t* __restrict shares, const std::uint8_t* __restrict values,
                                     std::int32_t count, std::uint8_t* __restrict leaves) {
        std::uint16_t doubts = 0;
        for (std::int32_t i = 0; i < count; ++i) {
            const std::uint16_t value = values[i];
            const auto fraction = static_cast<std::uint16_t>(value * std::uint32_t{shares[i]});
            const auto sum = static_cast<std::uint16_t>(fraction + value);
            doubts = static_cast<std::uint16_t>(doubts | (sum < value));
            leaves[i] = static_cast<std::uint8_t>(value * std::uint32_t{shares[i]} >> 16);
        }
        return doubts == 0;
    }

    ROWS_INLINE static void ByWeights(const double* __restrict weights, const std::uint8_t* __restrict values,
                                      std::int32_t count, std::uint8_t* __restrict leaves) {
        for (std::int32_t i = 0; i < count; ++i)
            leaves[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(weights[i] * values[i]));
    }

    ROWS_INLINE static void Run(const double* weight, const std::uint16_t* share, const std::uint8_t* value,
                                std::uint8_t* left, std::uint8_t* moved, std::int32_t count) {
        for (const auto [at, some] : Blocks(count, kAtOnce)) {
            std::uint8_t leaves[kAtOnce];
            if (!ByShares(share + at, value + at, some, leaves)) ByWeights(weight + at, value + at, some, leaves);
            const std::uint8_t* __restrict const values = value + at;
            std::uint8_t* __restrict const lefts = left + at;
            std::uint8_t* __restrict const results = moved + at;
            for (std::int32_t i = 0; i < some; ++i) {
                results[i] = static_cast<std::uint8_t>(values[i] - leaves[i] + lefts[i]);
                lefts[i] = leaves[i];
            }
        }
    }
};

// The definition, after the fill: from the left, each pixel read whole and then written.
template <int Count>
void SkewPlain(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, const Reach& reach,
               std::int64_t offset, std::uint8_t (&previous)[4], std::uint8_t* destination) {
    for (std::int64_t i = reach.first; i < reach.end; ++i) {
        const std::uint8_t* const from = source + i * plan.from.pixelSize;
        std::uint8_t* const to = destination + (offset + i) * plan.to.pixelSize;
        std::uint8_t value[Count];
        for (int c = 0; c < Count; ++c) value[c] = from[plan.from.offset[c]];
        for (int c = 0; c < Count; ++c) {
            to[plan.to.offset[c]] = static_cast<std::uint8_t>(value[c] - tables.left[value[c]] + previous[c]);
            previous[c] = tables.left[value[c]];
        }
    }
}

void SkewPlainOf(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, const Reach& reach,
                 std::int64_t offset, std::uint8_t (&previous)[4], std::uint8_t* destination) {
    switch (plan.count) {
        case 1:
            return SkewPlain<1>(plan, tables, source, reach, offset, previous, destination);
        case 2:
            return SkewPlain<2>(plan, tables, source, reach, offset, previous, destination);
        case 3:
            return SkewPlain<3>(plan, tables, source, reach, offset, previous, destination);
        default:
            return SkewPlain<4>(plan, tables, source, reach, offset, previous, destination);
    }
}

void ShearPlain(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, std::uint8_t* destination,
                std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i)
        for (int c = 0; c < plan.count; ++c) {
            const std::int64_t at = i * plan.from.pixelSize + plan.from.offset[c] - plan.fromSpan.offset;
            const std::uint8_t value = source[at], before = source[at - plan.from.pixelSize];
            destination[at] = static_cast<std::uint8_t>(value - tables.left[value] + tables.left[before]);
        }
}

constexpr Forms<ShearFunction> kShearRow = ROWS_FORMS(ShearPlain, ShearRow);

// Whether channels keep their places relative to each other, in pixels of one size.
bool KeepPlaces(const SkewPlan& plan) {
    if (plan.from.pixelSize != plan.to.pixelSize || plan.from.pixelSize < 1 || plan.from.pixelSize > 4) return false;
    for (int c = 0; c < plan.count; ++c)
        if (plan.from.offset[c] - plan.fromSpan.offset != plan.to.offset[c] - plan.toSpan.offset) return false;
    return plan.fromSpan.IsCompact();
}

// What pixel `index` of the source leaves.
void ReadLeft(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, std::int64_t index,
              std::uint8_t (&previous)[4]) {
    const std::uint8_t* const pixel = source + index * plan.from.pixelSize;
    for (int c = 0; c < plan.count; ++c) previous[c] = tables.left[pixel[plan.from.offset[c]]];
}

}  // namespace

SkewPlan PlanSkew(int count, const PixelLayout& from, const PixelLayout& to, const std::uint8_t* background) {
    SkewPlan plan{};
    plan.makeTables = LoopForms<MakeTables>::kTable.Chosen();
    plan.shear = kShearRow.Chosen();
    plan.count = count;
    plan.from = from;
    plan.to = to;
    std::copy_n(background, count, plan.background);
    plan.fromSpan = SpanOf(from.pixelSize, from.offset, count);
    plan.toSpan = SpanOf(to.pixelSize, to.offset, count);
    if (plan.toSpan.IsCompact() && to.pixelSize <= 4) plan.fill = FillPattern(to, count, background);
    plan.inPlace = KeepPlaces(plan);
    if (!plan.inPlace) return plan;
    for (int c = 0; c < count; ++c)
        for (int at = to.offset[c] - plan.toSpan.offset; at < SkewPlan::kPeriod; at += to.pixelSize)
            plan.channels[at] = 255;
    plan.writesAll = std::count(plan.channels, plan.channels + SkewPlan::kPeriod, 255) == SkewPlan::kPeriod;
    return plan;
}

void FillBackground(const SkewPlan& plan, std::uint8_t* row, std::int32_t width) {
    if (plan.fill.span.size > 0) return ApplyPattern(plan.fill, row, width);
    for (std::int64_t x = 0; x < width; ++x)
        for (int c = 0; c < plan.count; ++c) row[x * plan.to.pixelSize + plan.to.offset[c]] = plan.background[c];
}

void SkewRow(const SkewPlan& plan, double weight, std::int64_t offset, const std::uint8_t* source,
             std::int32_t sourceWidth, std::uint8_t* destination, std::int32_t destinationWidth) {
    FillBackground(plan, destination, destinationWidth);
    SkewTables tables;
    plan.makeTables(weight, &tables);
    std::uint8_t previous[4];
    for (int c = 0; c < plan.count; ++c) previous[c] = tables.left[plan.background[c]];
    Reach reach = ReachOf(offset, sourceWidth, destinationWidth);
    const bool skips = reach.first > 0 && reach.first <= sourceWidth;
    if (skips) ReadLeft(plan, tables, source, reach.first - 1, previous);
    const bool whole = reach.end == sourceWidth || sourceWidth <= 0;
    const std::int32_t extent = std::max(sourceWidth, destinationWidth);
    if (plan.inPlace && reach.end - reach.first > 1 &&
        AreDisjoint(plan.fromSpan, source, plan.toSpan, destination, extent)) {
        const Reach one = {reach.first, reach.first + 1};
        SkewPlainOf(plan, tables, source, one, offset, previous, destination);
        plan.shear(plan, tables, source + plan.fromSpan.offset + one.end * plan.from.pixelSize,
                   destination + plan.toSpan.offset + (offset + one.end) * plan.to.pixelSize, reach.end - one.end);
        ReadLeft(plan, tables, source, reach.end - 1, previous);
        reach.first = reach.end;
    }
    SkewPlainOf(plan, tables, source, reach, offset, previous, destination);
    const std::int64_t last = offset + std::max(sourceWidth, 0);
    if (!whole || last < 0 || last >= destinationWidth) return;
    std::uint8_t* const end = destination + last * plan.to.pixelSize;
    for (int c = 0; c < plan.count; ++c) end[plan.to.offset[c]] = EndOfSkew(weight, plan.background[c], previous[c]);
}

const Forms<SkewColumnsFunction> kSkewColumns = LoopForms<SkewEach>::kTable;

}  // namespace rows
