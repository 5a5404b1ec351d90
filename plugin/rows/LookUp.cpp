// Bytes through one table, or through a table a channel, plainly.
#include "plugin/rows/LookUp.h"

#include <algorithm>

#include "plugin/rows/TableRegisters.h"

#define ROWS_WIDE "plugin/rows/LookUpWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

// The definition: one pixel after the other.
template <ChannelSet Set>
void LookUpPlain(const Tables& tables, const PixelLayout& from, const std::uint8_t* source, const PixelLayout& to,
                 std::uint8_t* destination, std::int32_t width) {
    constexpr int kCount = ChannelCount(Set);
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t value[kCount];
        for (int c = 0; c < kCount; ++c) value[c] = source[from.offset[c]];
        for (int c = 0; c < kCount; ++c)
            if (tables.channel[c]) destination[to.offset[c]] = tables.channel[c]->entry[value[c]];
        source += from.pixelSize;
        destination += to.pixelSize;
    }
}

// Channels with a byte of their own, at the same place in both layouts.
bool KeepTheirPlaces(const PixelLayout& from, const PixelLayout& to, int count, const PixelSpan& span) {
    if (from.pixelSize != to.pixelSize || from.pixelSize < 1 || from.pixelSize > 4 || !span.IsCompact()) return false;
    for (int i = 0; i < count; ++i) {
        if (from.offset[i] != to.offset[i]) return false;
        if (std::find(from.offset, from.offset + i, from.offset[i]) != from.offset + i) return false;
    }
    return true;
}

LookUpLanes LanesOf(const LookUpPlan& plan, int count) {
    LookUpLanes lanes{};
    for (int i = 0; i < count; ++i) {
        const Table* const table = plan.tables.channel[i];
        if (!table) continue;
        const auto at = static_cast<int>(std::find(lanes.table, lanes.table + lanes.tables, table) - lanes.table);
        if (at == lanes.tables) lanes.table[lanes.tables++] = table;
        for (int byte = plan.from.offset[i] - plan.span.offset; byte < LookUpLanes::kPeriod;
             byte += plan.from.pixelSize)
            lanes.lanes[at][byte] = lanes.written[byte] = 255;
    }
    lanes.writesAll = std::count(lanes.written, lanes.written + LookUpLanes::kPeriod, 255) == LookUpLanes::kPeriod;
    return lanes;
}

void LookUpPlainOf(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    ForChannelSet(plan.set, [&]<ChannelSet Set>() {
        LookUpPlain<Set>(plan.tables, plan.from, source, plan.to, destination, width);
    });
}

constexpr Forms<LookUpFunction> kLookUpRow = ROWS_FORMS(LookUpPlainOf, LookUpRow);

}  // namespace

LookUpPlan PlanLookUp(ChannelSet set, const Tables& tables, const PixelLayout& from, const PixelLayout& to) {
    const int count = ChannelCount(set);
    LookUpPlan plan{&LookUpPlainOf, set, tables, from, to, SpanOf(from.pixelSize, from.offset, count), false, {}};
    plan.inPlace = KeepTheirPlaces(from, to, count, plan.span);
    if (!plan.inPlace) return plan;
    plan.form = kLookUpRow.Chosen();
    plan.lanes = LanesOf(plan, count);
    return plan;
}

void LookUpInOrder(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    LookUpPlainOf(plan, source, destination, width);
}

void LookUpRow(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    const bool ahead = plan.inPlace && MayReadAhead(plan.span, source, plan.span, destination, width);
    (ahead ? plan.form : &LookUpPlainOf)(plan, source, destination, width);
}

}  // namespace rows
