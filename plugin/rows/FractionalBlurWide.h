// Three-tap averages in whole numbers in registers, for FractionalBlur.cpp.

namespace rows::ROWS_LEVEL {

namespace {

struct Averages {
    Register reached;  // where products that come close count as whole
    Register below;    // where they don't
};

// Samples plus their products, rounded down; the products of each lane in two halves.
ROWS_INLINE Register Rounded(Register sample, Register left, Register right) {
    return AddWords(sample,
                    PackInts(ShiftSignedIntsDown<kFractionBits>(left), ShiftSignedIntsDown<kFractionBits>(right)));
}

// Of samples with the sums of their neighbours, as words.
template <bool Limited>
ROWS_INLINE Averages AverageWords(const SplitGain& gain, Register sample, Register neighbours) {
    const Register difference = SubWords(neighbours, AddWords(sample, sample));
    const Register high = ShiftWordsUp<6>(difference), low = AddWords(difference, Words(gain.shift));
    const Register left = MulAddWords(UnpackLowWords(high, low), Ints(gain.Pair()));
    const Register right = MulAddWords(UnpackHighWords(high, low), Ints(gain.Pair()));
    Averages averages{Rounded(sample, left, right), Zero()};
    if constexpr (Limited)
        averages.below = Rounded(sample, SubInts(left, Ints(2 * kTie)), SubInts(right, Ints(2 * kTie)));
    return averages;
}

template <bool Limited>
void MixWhole(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
              std::int64_t count, std::uint8_t* result) {
    const SplitGain gain(taps.gain);
    const TableRegisters limit = LoadTable(taps.limit);
    const Register one = Bytes(1), flip = Bytes(taps.flip);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register sample = LoadPart(row + at, count - at);
        const Register a = LoadPart(first + at, count - at), b = LoadPart(second + at, count - at);
        const Averages left =
            AverageWords<Limited>(gain, UnpackLowBytes(sample, Zero()), MulAddBytes(UnpackLowBytes(a, b), one));
        const Averages right =
            AverageWords<Limited>(gain, UnpackHighBytes(sample, Zero()), MulAddBytes(UnpackHighBytes(a, b), one));
        Register average = PackWords(left.reached, right.reached);
        if constexpr (Limited) {
            const Register turned = MaxBytes(Xor(sample, flip), one);
            const Mask stays = Less(LookUpBytes(limit, average), turned);
            average = Choose(stays, PackWords(left.below, right.below), average);
        }
        StorePart(result + at, average, count - at);
    }
}

void MixWhole(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
              std::int64_t count, std::uint8_t* result) {
    return taps.limited ? MixWhole<true>(taps, first, row, second, count, result)
                        : MixWhole<false>(taps, first, row, second, count, result);
}

// Samples come with their fraction bits out of the unpacking.
ROWS_INLINE Register AverageInWords(Register sample, Register neighbours, Register gain) {
    const Register difference = SubWords(neighbours, ShiftWordsDown<1>(sample));
    return ShiftWordsDown<6>(AddWords(MulHighSignedWords(difference, gain), ShiftWordsDown<2>(sample)));
}

void MixWords(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
              std::int64_t count, std::uint8_t* result) {
    const Register gain = Words(taps.wordGain), tie = Bytes(kWordTie), unit = Bytes(64);
    for (std::int64_t at = 0; at < count; at += kBytes) {
        const Register sample = LoadPart(row + at, count - at);
        const Register a = LoadPart(first + at, count - at), b = LoadPart(second + at, count - at);
        const Register low = AverageInWords(UnpackLowBytes(tie, sample), MulAddBytes(UnpackLowBytes(a, b), unit), gain);
        const Register high =
            AverageInWords(UnpackHighBytes(tie, sample), MulAddBytes(UnpackHighBytes(a, b), unit), gain);
        StorePart(result + at, PackWords(low, high), count - at);
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
