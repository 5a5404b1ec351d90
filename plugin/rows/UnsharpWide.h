// Sharpening by steps in registers, for Unsharp.cpp.

namespace rows::ROWS_LEVEL {

namespace {

struct StepRegisters {
    TableRegisters step, limit;
};

template <bool Limited>
void SharpenBySteps(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples) {
    const StepRegisters rise{LoadTable(steps.rise), LoadTable(steps.riseLimit)};
    const StepRegisters fall{LoadTable(steps.fall), LoadTable(steps.fallLimit)};
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register from = LoadPart(reference + at, count - at), sample = LoadPart(samples + at, count - at);
        const Register below = SubBytesCapped(from, sample);
        const Register distance = Or(below, SubBytesCapped(sample, from));
        const Mask falls = NotZero(below);
        Register result = Choose(falls, SubBytesCapped(from, LookUpBytes(fall.step, distance)),
                                 AddBytesCapped(from, LookUpBytes(rise.step, distance)));
        if constexpr (Limited) {
            const Register limit = Choose(falls, LookUpBytes(fall.limit, distance), LookUpBytes(rise.limit, distance));
            result = Choose(Less(result, limit), SubBytesCapped(result, Bytes(1)), result);
        }
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
