#include "plugin/rows/LookUp.h"

#include <algorithm>

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/LookUpForms.h"

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
        for (int byte = plan.from.offset[i] - plan.span.offset; byte < 64 * LookUpLanes::kRegisters;
             byte += plan.from.pixelSize) {
            lanes.lanes[at][byte / 64] |= std::uint64_t{1} << byte % 64;
            lanes.written[byte / 64] |= std::uint64_t{1} << byte % 64;
        }
    }
    return lanes;
}

}  // namespace

LookUpPlan PlanLookUp(ChannelSet set, const Tables& tables, const PixelLayout& from, const PixelLayout& to) {
    const int count = ChannelCount(set);
    LookUpPlan plan{set, tables, from, to, SpanOf(from.pixelSize, from.offset, count), false, {}};
    plan.inPlace = KeepTheirPlaces(from, to, count, plan.span);
    if (plan.inPlace) plan.lanes = LanesOf(plan, count);
    return plan;
}

void LookUpInOrder(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    ForChannelSet(plan.set, [&]<ChannelSet Set>() {
        LookUpPlain<Set>(plan.tables, plan.from, source, plan.to, destination, width);
    });
}

void LookUpRow(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
#ifdef ROWS_X86
    if (plan.inPlace && ActiveCpuLevel() == CpuLevel::Avx512 &&
        MayReadAhead(plan.span, source, plan.span, destination, width))
        return LookUpAvx512(plan.lanes, source + plan.span.offset, destination + plan.span.offset,
                            plan.span.Extent(width));
#endif
    LookUpInOrder(plan, source, destination, width);
}

}  // namespace rows
