// Convolution by pairs of products in registers, for Convolve.cpp: of bytes where the sums stay within 16
// bits, else of words.

namespace rows::ROWS_LEVEL {

namespace {

constexpr std::int64_t kWords = kBytes / 2;  // bytes that one register holds as words

// The weights of one column of the kernel, in pairs of rows as they are multiplied.
struct ColumnWeights {
    Register upper, middle, lower;
};

ROWS_INLINE Register Pair(std::int32_t first, std::int32_t second) {
    return Ints(static_cast<std::int32_t>((static_cast<std::uint32_t>(second) << 16) |
                                          (static_cast<std::uint32_t>(first) & 0xFFFF)));
}

ROWS_INLINE ColumnWeights WeightsOfColumn(const Kernel& kernel, int column) {
    const std::int32_t* const weight = kernel.weight + column;
    return {Pair(weight[0], weight[5]), Pair(weight[10], weight[15]), Pair(weight[20], 0)};
}

// Sums of neighbouring bytes, in the order in which words of two rows interleave.
struct Sums {
    Register low, high;
};

ROWS_INLINE void Accumulate(Sums& sums, Register upper, Register lower, Register weights) {
    sums.low = AddInts(sums.low, MulAddWords(UnpackLowWords(upper, lower), weights));
    sums.high = AddInts(sums.high, MulAddWords(UnpackHighWords(upper, lower), weights));
}

template <bool Scales>
void ConvolvePairs(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                   std::uint8_t* result) {
    ColumnWeights weights[5];
    for (int column = 0; column < 5; ++column) weights[column] = WeightsOfColumn(kernel, column);
    const Register delta = Ints(kernel.delta);
    for (std::int64_t i = 0; i < count; i += kWords) {
        i = std::min(i, count - kWords);  // the last step repeats a part of the one before
        Sums sums{delta, delta};
        for (int column = 0; column < 5; ++column) {
            const std::int64_t from = at + i + (column - 2) * rows.channels;
            Accumulate(sums, LoadWords(rows.row[0] + from), LoadWords(rows.row[1] + from), weights[column].upper);
            Accumulate(sums, LoadWords(rows.row[2] + from), LoadWords(rows.row[3] + from), weights[column].middle);
            Accumulate(sums, LoadWords(rows.row[4] + from), Zero(), weights[column].lower);
        }
        if constexpr (Scales) sums = {ScaledInts(sums.low, kernel.scale), ScaledInts(sums.high, kernel.scale)};
        // Packing undoes the interleaving.
        StoreWords(result + i, MaxSignedWords(PackInts(sums.low, sums.high), Zero()));
    }
}

void ConvolvePairs(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                   std::uint8_t* result) {
    if (count < kWords) return Convolving::Run(kernel, rows, at, count, result);
    if (kernel.scale == 1)
        ConvolvePairs<false>(kernel, rows, at, count, result);
    else
        ConvolvePairs<true>(kernel, rows, at, count, result);
}

// The neighbours that have a weight, in pairs as bytes are multiplied.
struct TapPairs {
    const std::uint8_t* from[26];  // by twos, for the pixel at `at`
    Register weights[13];
    int count;

    ROWS_INLINE TapPairs(const Kernel& kernel, const KernelRows& rows, std::int64_t at) {
        std::int32_t weight[26] = {};
        int taps = 0;
        for (int k = 0; k < 25; ++k) {
            if (kernel.weight[k] == 0) continue;
            from[taps] = rows.row[k / 5] + at + (k % 5 - 2) * rows.channels;
            weight[taps++] = kernel.weight[k];
        }
        from[taps] = rows.row[2] + at;  // beside a last one
        count = (taps + 1) / 2;
        for (int i = 0; i < count; ++i) weights[i] = Words((weight[2 * i + 1] << 8) | (weight[2 * i] & 0xFF));
    }
};

// Sums of neighbouring bytes as signed words, in the order in which bytes of two rows interleave.
struct WordSums {
    Register low, high;
};

ROWS_INLINE void Accumulate(WordSums& sums, Register first, Register second, Register weights) {
    sums.low = AddWords(sums.low, MulAddBytes(UnpackLowBytes(first, second), weights));
    sums.high = AddWords(sums.high, MulAddBytes(UnpackHighBytes(first, second), weights));
}

ROWS_INLINE Register ScaledWords(Register words, double scale) {
    const Register low = ShiftSignedIntsDown<16>(UnpackLowWords(words, words));
    const Register high = ShiftSignedIntsDown<16>(UnpackHighWords(words, words));
    return PackInts(ScaledInts(low, scale), ScaledInts(high, scale));
}

template <bool Scales>
void ConvolveBytes(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                   std::uint8_t* result) {
    const TapPairs pairs(kernel, rows, at);
    const Register delta = Words(kernel.delta);
    constexpr std::int64_t kStep = 2 * kBytes;
    for (std::int64_t i = 0; i < count; i += kStep) {
        i = std::min(i, count - kStep);
        WordSums sums[2] = {{delta, delta}, {delta, delta}};
        for (int pair = 0; pair < pairs.count; ++pair) {
            const std::uint8_t* const first = pairs.from[2 * pair] + i;
            const std::uint8_t* const second = pairs.from[2 * pair + 1] + i;
            Accumulate(sums[0], Load(first), Load(second), pairs.weights[pair]);
            Accumulate(sums[1], Load(first + kBytes), Load(second + kBytes), pairs.weights[pair]);
        }
        for (int half = 0; half < 2; ++half) {
            Register low = sums[half].low, high = sums[half].high;
            if constexpr (Scales) low = ScaledWords(low, kernel.scale), high = ScaledWords(high, kernel.scale);
            Store(result + i + half * kBytes, PackWords(low, high));
        }
    }
}

void ConvolveBytes(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                   std::uint8_t* result) {
    if (count < 2 * kBytes) return ConvolvePairs(kernel, rows, at, count, result);
    if (kernel.scale == 1)
        ConvolveBytes<false>(kernel, rows, at, count, result);
    else
        ConvolveBytes<true>(kernel, rows, at, count, result);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
