// Table look-ups in registers, for LookUp.cpp.

namespace rows::ROWS_LEVEL {

namespace {

ROWS_INLINE Mask LaneMask(const std::uint8_t* lanes) { return MaskOfBytes(Load(lanes)); }

// Maps `count` bytes, from the first channel byte of a row to the last. Bytes that go through no
// table keep what the destination has.
template <int Tables, bool WritesAll>
void LookUpLanesOf(const LookUpLanes& lanes, const std::uint8_t* source, std::uint8_t* destination,
                   std::int64_t count) {
    TableRegisters table[Tables];
    for (int i = 0; i < Tables; ++i) table[i] = LoadTable(lanes.table[i]->entry);
    int part = 0;
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register bytes = LoadPart(source + at, count - at);
        Register mapped = LookUpBytes(table[0], bytes);
        for (int i = 1; i < Tables; ++i)
            mapped = Choose(LaneMask(lanes.lanes[i] + part), LookUpBytes(table[i], bytes), mapped);
        if constexpr (!WritesAll)
            mapped = Choose(LaneMask(lanes.written + part), mapped, LoadPart(destination + at, count - at));
        StorePart(destination + at, mapped, count - at);
        part = part + kBytes == LookUpLanes::kPeriod ? 0 : part + kBytes;
    }
}

template <int Tables>
void LookUpTables(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    const std::int64_t count = plan.span.Extent(width);
    source += plan.span.offset;
    destination += plan.span.offset;
    if (plan.lanes.writesAll)
        LookUpLanesOf<Tables, true>(plan.lanes, source, destination, count);
    else
        LookUpLanesOf<Tables, false>(plan.lanes, source, destination, count);
}

void LookUpRow(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    switch (plan.lanes.tables) {
        case 1:
            return LookUpTables<1>(plan, source, destination, width);
        case 2:
            return LookUpTables<2>(plan, source, destination, width);
        case 3:
            return LookUpTables<3>(plan, source, destination, width);
        case 4:
            return LookUpTables<4>(plan, source, destination, width);
        default:
            return;
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
