// Grays in registers, for Gray.cpp.

namespace rows::ROWS_LEVEL {

namespace {

constexpr std::int32_t kQuarter = kBytes / 4;  // pixels whose channels fill a register

// The grays of a quarter as ints. The weights of red and green, and of green and blue, add up to
// 128 each, so that signed words hold a pair's sum.
ROWS_INLINE Register QuarterOf(const GrayPlan& plan, const std::uint8_t* pixels) {
    const std::int64_t size = plan.colour.pixelSize;
    const Register channels = ShuffleBytes(LoadLanes(pixels, 4 * size), RepeatLane(plan.index));
    const Register pairs = MulAddBytes(channels, RepeatLane(kGrayWeights));
    return ShiftIntsDown<8>(MulAddWords(pairs, Words(1)));
}

ROWS_INLINE void GraysOfStep(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays) {
    const std::int64_t bytes = std::int64_t{kQuarter} * plan.colour.pixelSize;
    const Register first = PackInts(QuarterOf(plan, pixels), QuarterOf(plan, pixels + bytes));
    const Register second = PackInts(QuarterOf(plan, pixels + 2 * bytes), QuarterOf(plan, pixels + 3 * bytes));
    Store(grays, QuartersInOrder(PackWords(first, second)));
}

void GrayRow(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width) {
    if (!plan.compact) return GrayPlain(plan, pixels, grays, width);
    const std::int64_t size = plan.colour.pixelSize, step = kBytes * size;
    const std::int64_t reach = step - 4 * size + 16;  // bytes that a step reads
    const std::uint8_t* from = pixels + plan.span.offset;
    std::int64_t bytes = plan.span.Extent(width);
    std::int32_t left = width;
    for (; bytes >= reach; bytes -= step, left -= kBytes) {
        if (left < kBytes) break;
        GraysOfStep(plan, from, grays);
        from += step;
        grays += kBytes;
    }
    std::uint8_t rest[kBytes * 4 + 16] = {}, restGrays[kBytes];
    while (left > 0) {
        const std::int32_t count = std::min(left, kBytes);
        std::memcpy(rest, from, static_cast<std::size_t>(plan.span.Extent(count)));
        GraysOfStep(plan, rest, restGrays);
        std::memcpy(grays, restGrays, static_cast<std::size_t>(count));
        from += step;
        grays += count;
        left -= count;
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
