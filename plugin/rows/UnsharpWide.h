// Sharpening by steps in registers, for Unsharp.cpp.

namespace rows::ROWS_LEVEL {

namespace {

struct StepRegisters {
    TableRegisters step, limit;
};

// `Small`: all distances are below 64, as in most pictures they are.
template <bool Small>
ROWS_INLINE Register LookUpDistance(const TableRegisters& table, Register distance) {
    if constexpr (Small) return LookUpSmallBytes(table, distance);
    return LookUpBytes(table, distance);
}

// Of samples that are their references less `below`, or lie above them.
template <bool Limited, bool Small>
ROWS_INLINE Register Sharpened(const StepRegisters& rise, const StepRegisters& fall, Register from, Register below,
                               Register distance) {
    const Mask falls = NotZero(below);
    const Register result = Choose(falls, SubBytesCapped(from, LookUpDistance<Small>(fall.step, distance)),
                                   AddBytesCapped(from, LookUpDistance<Small>(rise.step, distance)));
    if constexpr (!Limited) return result;
    const Register limit =
        Choose(falls, LookUpDistance<Small>(fall.limit, distance), LookUpDistance<Small>(rise.limit, distance));
    return Choose(Less(result, limit), SubBytesCapped(result, Bytes(1)), result);
}

template <bool Limited>
void SharpenBySteps(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples) {
    const StepRegisters rise{LoadTable(steps.rise), LoadTable(steps.riseLimit)};
    const StepRegisters fall{LoadTable(steps.fall), LoadTable(steps.fallLimit)};
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register from = LoadPart(reference + at, count - at), sample = LoadPart(samples + at, count - at);
        const Register below = SubBytesCapped(from, sample);
        const Register distance = Or(below, SubBytesCapped(sample, from));
        const Register result = AnySet(distance, Bytes(0xC0))
                                    ? Sharpened<Limited, false>(rise, fall, from, below, distance)
                                    : Sharpened<Limited, true>(rise, fall, from, below, distance);
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
