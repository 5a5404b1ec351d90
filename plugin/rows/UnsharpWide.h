// Sharpening by steps in registers, for Unsharp.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// Steps and limits of one direction, by distance.
struct StepRegisters {
    TableRegisters step, limit;
};

// Those of both directions for distances below kNear, which most are: falls behind rises.
constexpr int kNear = 32;

ROWS_INLINE TableRegisters LoadNear(const std::uint8_t* rise, const std::uint8_t* fall) {
    std::uint8_t entries[256] = {};
    std::copy_n(rise, kNear, entries);
    std::copy_n(fall, kNear, entries + kNear);
    return LoadTable(entries);
}

struct SharpenRegisters {
    StepRegisters rise, fall, near;

    ROWS_INLINE explicit SharpenRegisters(const UnsharpSteps& steps)
        : rise{LoadTable(steps.rise), LoadTable(steps.riseLimit)},
          fall{LoadTable(steps.fall), LoadTable(steps.fallLimit)},
          near{LoadNear(steps.rise, steps.fall), LoadNear(steps.riseLimit, steps.fallLimit)} {}
};

// A reference and its step one way or the other, cut back by the limit.
template <bool Limited>
ROWS_INLINE Register Stepped(Register from, Mask falls, Register rise, Register fall, Register limit) {
    const Register result = Choose(falls, SubBytesCapped(from, fall), AddBytesCapped(from, rise));
    if constexpr (!Limited) return result;
    return Choose(Less(result, limit), SubBytesCapped(result, Bytes(1)), result);
}

template <bool Limited>
ROWS_INLINE Register SharpenedFar(const SharpenRegisters& tables, Register from, Mask falls, Register distance) {
    Register limit = Zero();
    if constexpr (Limited)
        limit = Choose(falls, LookUpBytes(tables.fall.limit, distance), LookUpBytes(tables.rise.limit, distance));
    return Stepped<Limited>(from, falls, LookUpBytes(tables.rise.step, distance),
                            LookUpBytes(tables.fall.step, distance), limit);
}

template <bool Limited>
ROWS_INLINE Register SharpenedNear(const SharpenRegisters& tables, Register from, Mask falls, Register distance) {
    const Register index = Choose(falls, Or(distance, Bytes(kNear)), distance);
    const Register step = LookUpSmallBytes(tables.near.step, index);
    Register limit = Zero();
    if constexpr (Limited) limit = LookUpSmallBytes(tables.near.limit, index);
    return Stepped<Limited>(from, falls, step, step, limit);
}

template <bool Limited>
void SharpenBySteps(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples) {
    const SharpenRegisters tables(steps);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register from = LoadPart(reference + at, count - at), sample = LoadPart(samples + at, count - at);
        const Register below = SubBytesCapped(from, sample);
        const Register distance = Or(below, SubBytesCapped(sample, from));
        const Mask falls = NotZero(below);
        const Register result = AnySet(distance, Bytes(256 - kNear))
                                    ? SharpenedFar<Limited>(tables, from, falls, distance)
                                    : SharpenedNear<Limited>(tables, from, falls, distance);
        StorePart(samples + at, result, count - at);
    }
}

void SharpenBySteps(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples) {
    return steps.limited ? SharpenBySteps<true>(steps, reference, count, samples)
                         : SharpenBySteps<false>(steps, reference, count, samples);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
