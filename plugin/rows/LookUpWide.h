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

#if !ROWS_LEVEL_IS_AVX512

// Shuffles that sort the bytes of 16 pixels of a size by their places in the pixel, and back.
template <int Size>
struct PlaneShuffles {
    alignas(16) std::uint8_t apart[Size][Size][16];     // by plane and 16 bytes of pixels
    alignas(16) std::uint8_t together[Size][Size][16];  // the other way round

    constexpr PlaneShuffles() : apart{}, together{} {
        for (int plane = 0; plane < Size; ++plane)
            for (int part = 0; part < Size; ++part)
                for (int i = 0; i < 16; ++i) {
                    const int from = i * Size + plane, to = part * 16 + i;
                    apart[plane][part][i] = static_cast<std::uint8_t>(from / 16 == part ? from % 16 : 128);
                    together[part][plane][i] = static_cast<std::uint8_t>(to % Size == plane ? to / Size : 128);
                }
    }
};

template <int Size>
constexpr PlaneShuffles<Size> kPlanes;

// The bytes of `Size` registers that a shuffle takes.
template <int Size>
ROWS_INLINE Register Gathered(const Register* parts, const std::uint8_t (*index)[16]) {
    Register gathered = ShuffleBytes(parts[0], RepeatLane(index[0]));
#pragma GCC unroll 4
    for (int i = 1; i < Size; ++i) gathered = Or(gathered, ShuffleBytes(parts[i], RepeatLane(index[i])));
    return gathered;
}

// Where the tables of the places of a pixel are.
template <int Size>
struct PlaneTables {
    TableRegisters table[Size];
    bool has[Size];

    explicit PlaneTables(const LookUpLanes& lanes) : has{} {
        for (int plane = 0; plane < Size; ++plane)
            for (int i = 0; i < lanes.tables; ++i)
                if (lanes.lanes[i][plane]) {
                    table[plane] = LoadTable(lanes.table[i]->entry);
                    has[plane] = true;
                }
    }
};

// A chain of shuffles costs more than sorting the bytes by their tables, which saves looking up
// each in all of them. Gives how many bytes, whole pixels, it mapped.
template <int Size>
std::int64_t LookUpPlanes(const LookUpLanes& lanes, const std::uint8_t* source, std::uint8_t* destination,
                          std::int64_t count) {
    constexpr std::int64_t kLane = 16 * Size;
    const PlaneTables<Size> tables(lanes);
    std::int64_t at = 0;
    for (; at + kLaneCount * kLane <= count; at += kLaneCount * kLane) {
        Register parts[Size], planes[Size];
#pragma GCC unroll 4
        for (int i = 0; i < Size; ++i) parts[i] = LoadLanes(source + at + 16 * i, kLane);
#pragma GCC unroll 4
        for (int i = 0; i < Size; ++i) {
            planes[i] = Gathered<Size>(parts, kPlanes<Size>.apart[i]);
            if (tables.has[i]) planes[i] = LookUpBytes(tables.table[i], planes[i]);
        }
#pragma GCC unroll 4
        for (int i = 0; i < Size; ++i) {
            std::uint8_t* const to = destination + at + 16 * i;
            Register mapped = Gathered<Size>(planes, kPlanes<Size>.together[i]);
            if (!lanes.writesAll)
                mapped = Choose(MaskOfBytes(RepeatLane(lanes.written + 16 * i)), mapped, LoadLanes(to, kLane));
            StoreLanes(to, kLane, mapped);
        }
    }
    return at;
}

std::int64_t LookUpPlanes(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                          std::int64_t count) {
    if (plan.lanes.tables < 2) return 0;
    switch (plan.from.pixelSize) {
        case 2:
            return LookUpPlanes<2>(plan.lanes, source, destination, count);
        case 3:
            return LookUpPlanes<3>(plan.lanes, source, destination, count);
        default:
            return LookUpPlanes<4>(plan.lanes, source, destination, count);
    }
}

#else

std::int64_t LookUpPlanes(const LookUpPlan&, const std::uint8_t*, std::uint8_t*, std::int64_t) { return 0; }

#endif

template <int Tables>
void LookUpTables(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    std::int64_t count = plan.span.Extent(width);
    source += plan.span.offset;
    destination += plan.span.offset;
    const std::int64_t done = LookUpPlanes(plan, source, destination, count);
    source += done;
    destination += done;
    count -= done;
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
