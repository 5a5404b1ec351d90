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

// The distances between samples and their references.
struct Distances {
    Register of;
    Mask falls;

    ROWS_INLINE Distances(Register from, Register sample) {
        const Register below = SubBytesCapped(from, sample);
        of = Or(below, SubBytesCapped(sample, from));
        falls = NotZero(below);
    }
};

struct ProductRegisters {
    __m128i shift;
    Register rise, fall, threshold, oddLow, oddHigh, bits;

    ROWS_INLINE explicit ProductRegisters(const UnsharpProducts& products)
        : shift(_mm_cvtsi32_si128(products.shift)),
          rise(Words(products.rise)),
          fall(Words(products.fall)),
          threshold(Bytes(products.threshold)),
          oddLow(RepeatLane(products.oddLow)),
          oddHigh(RepeatLane(products.oddHigh)),
          bits(RepeatLane(kBits)) {}

    // A bit for each value of three bits.
    alignas(16) static constexpr std::uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128};

    ROWS_INLINE bool AnyOdd(Register distance) const {
        const Register odd = Or(ShuffleBytes(oddLow, distance), ShuffleBytes(oddHigh, Xor(distance, Bytes(128))));
        return AnySet(odd, ShuffleBytes(bits, And(ShiftWordsDown<4>(distance), Bytes(7))));
    }

    ROWS_INLINE Register Sharpened(Register from, Register sample, const Distances& distance) const {
        const Register low = ShiftWordsUpBy(UnpackLowBytes(distance.of, Zero()), shift);
        const Register high = ShiftWordsUpBy(UnpackHighBytes(distance.of, Zero()), shift);
        const Register risen = AddBytesCapped(from, PackWords(MulHighWords(low, rise), MulHighWords(high, rise)));
        const Register fallen = SubBytesCapped(from, PackWords(MulHighWords(low, fall), MulHighWords(high, fall)));
        const Register result = Choose(distance.falls, SubBytesCapped(fallen, Bytes(1)), risen);
        return Choose(Less(distance.of, threshold), sample, result);
    }
};

// Small distances are quickest by their tables, others by products, but for the odd ones.
template <bool Limited>
void SharpenBySteps(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples) {
    const SharpenRegisters tables(steps);
    const ProductRegisters products(steps.products);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register from = LoadPart(reference + at, count - at), sample = LoadPart(samples + at, count - at);
        const Distances distance(from, sample);
        Register result;
        if (!AnySet(distance.of, Bytes(256 - kNear)))
            result = SharpenedNear<Limited>(tables, from, distance.falls, distance.of);
        else if (steps.products.serve && !(steps.products.odd && products.AnyOdd(distance.of)))
            result = products.Sharpened(from, sample, distance);
        else
            result = SharpenedFar<Limited>(tables, from, distance.falls, distance.of);
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
