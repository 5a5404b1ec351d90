// Convolution by pairs of 16-bit products in registers, for Convolve.cpp.

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

}  // namespace

}  // namespace rows::ROWS_LEVEL
