// Quick sums in registers, for QuickScale.cpp.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

using Floats = __m512;
constexpr int kFloats = 16;

ROWS_INLINE Floats LoadFloats(const float* from) { return _mm512_loadu_ps(from); }
ROWS_INLINE void StoreFloats(float* to, Floats value) { _mm512_storeu_ps(to, value); }
ROWS_INLINE Floats AllFloats(float value) { return _mm512_set1_ps(value); }
ROWS_INLINE Floats AddFloats(Floats a, Floats b) { return _mm512_add_ps(a, b); }
ROWS_INLINE Floats MulAddFloats(Floats a, Floats b, Floats sum) { return _mm512_fmadd_ps(a, b, sum); }
ROWS_INLINE Floats ClampFloats(Floats value, Floats least, Floats most) {
    return _mm512_min_ps(_mm512_max_ps(value, least), most);
}
ROWS_INLINE Register TruncatedInts(Floats value) { return _mm512_cvttps_epi32(value); }
ROWS_INLINE Register ChooseBytes(std::uint64_t bits, Register where, Register elsewhere) {
    return _mm512_mask_blend_epi8(bits, elsewhere, where);
}
ROWS_INLINE std::uint64_t Differences(Register a, Register b) { return _mm512_cmpneq_epi8_mask(a, b); }

ROWS_INLINE Floats FloatsOfInts(Register ints) { return _mm512_cvtepi32_ps(ints); }

// 32 bytes of 16 rows, as TurnFours has them of 8.
ROWS_INLINE void TurnRows(const std::uint8_t* band, std::int64_t stride, Register* turned) {
    __m256i upper[8], lower[8];
    TurnFours(band, stride, upper);
    TurnFours(band + 8 * stride, stride, lower);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) turned[i] = _mm512_inserti64x4(_mm512_castsi256_si512(upper[i]), lower[i], 1);
}

#else

using Floats = __m256;
constexpr int kFloats = 8;

ROWS_INLINE Floats LoadFloats(const float* from) { return _mm256_loadu_ps(from); }
ROWS_INLINE void StoreFloats(float* to, Floats value) { _mm256_storeu_ps(to, value); }
ROWS_INLINE Floats AllFloats(float value) { return _mm256_set1_ps(value); }
ROWS_INLINE Floats AddFloats(Floats a, Floats b) { return _mm256_add_ps(a, b); }
ROWS_INLINE Floats MulAddFloats(Floats a, Floats b, Floats sum) { return _mm256_fmadd_ps(a, b, sum); }
ROWS_INLINE Floats ClampFloats(Floats value, Floats least, Floats most) {
    return _mm256_min_ps(_mm256_max_ps(value, least), most);
}
ROWS_INLINE Register TruncatedInts(Floats value) { return _mm256_cvttps_epi32(value); }
ROWS_INLINE Register ChooseBytes(std::uint64_t bits, Register where, Register elsewhere) {
    const Register spread =
        ShuffleBytes(_mm256_set1_epi32(static_cast<int>(bits)),
                     _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303));
    const Register bit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201));
    return _mm256_blendv_epi8(elsewhere, where, _mm256_cmpeq_epi8(And(spread, bit), bit));
}
ROWS_INLINE std::uint64_t Differences(Register a, Register b) {
    return static_cast<std::uint32_t>(~_mm256_movemask_epi8(_mm256_cmpeq_epi8(a, b)));
}

ROWS_INLINE Floats FloatsOfInts(Register ints) { return _mm256_cvtepi32_ps(ints); }

ROWS_INLINE void TurnRows(const std::uint8_t* band, std::int64_t stride, Register* turned) {
    TurnFours(band, stride, turned);
}

#endif

// The signed byte of each number that begins at a bit.
template <int Bit>
ROWS_INLINE Floats SignedByteAt(Register fours) {
    return FloatsOfInts(ShiftSignedIntsDown<24>(ShiftIntsUp<24 - Bit>(fours)));
}

// Four values of the lanes of a register.
ROWS_INLINE void StoreFours(Register fours, float* to) {
    StoreFloats(to, SignedByteAt<0>(fours));
    StoreFloats(to + kQuickLanes, SignedByteAt<8>(fours));
    StoreFloats(to + 2 * kQuickLanes, SignedByteAt<16>(fours));
    StoreFloats(to + 3 * kQuickLanes, SignedByteAt<24>(fours));
}

// Less kMiddle, a byte is a signed one with its highest bit turned over. Turned by fours, a value's
// bytes come into place by shifts, which more units of a processor have than shuffles.
void QuickBytesToLanes(const std::uint8_t* band, std::int64_t stride, std::int64_t count, float* lanes) {
    constexpr int kTurned = 32;
    const Register middle = Bytes(kMiddle);
    for (std::int64_t v = 0; v < count; v += kTurned)
        for (int lane = 0; lane < kQuickLanes; lane += kFloats) {
            Register turned[kTurned / 4];
            TurnRows(band + lane * stride + v, stride, turned);
            float* const to = lanes + v * kQuickLanes + lane;
#pragma GCC unroll 8
            for (int i = 0; i < kTurned / 4; ++i)
                if (v + 4 * i < count) StoreFours(Xor(turned[i], middle), to + 4 * i * kQuickLanes);
        }
}

// Sums of weighted values, neighbours in memory.
template <int Registers>
struct QuickSums {
    Floats sum[Registers];

    ROWS_INLINE QuickSums() {
#pragma GCC unroll 8
        for (int i = 0; i < Registers; ++i) sum[i] = AllFloats(0);
    }

    ROWS_INLINE void Add(float weight, const float* values) {
        const Floats all = AllFloats(weight);
#pragma GCC unroll 8
        for (int i = 0; i < Registers; ++i) sum[i] = MulAddFloats(all, LoadFloats(values + i * kFloats), sum[i]);
    }
};

// So many columns go along together that their sums, each of which waits for its own last step, keep
// the processor busy and stay in its registers.
template <int Values>
constexpr int kColumnsAtOnce = std::clamp(12 * kFloats / (Values * kQuickLanes), 1, 4);

// The sums of neighbouring columns with as many weights each; `Shared`: with the same ones, which are so fetched
// once.
template <int Values, int Columns, bool Shared>
ROWS_INLINE void QuickSumColumns(const QuickTaps* columns, const float* lanes, std::int64_t firstColumn, float* sums) {
    constexpr int kColumn = Values * kQuickLanes, kRegisters = kColumn / kFloats;
    const float *column[Columns], *weights[Columns];
    QuickSums<kRegisters> made[Columns];
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) {
        column[c] = lanes + (columns[c].first - firstColumn) * kColumn;
        weights[c] = columns[Shared ? 0 : c].weights;
    }
    std::int64_t first = 0, last = columns->count - 1;
    for (; first < last; ++first, --last) {
#pragma GCC unroll 4
        for (int c = 0; c < Columns; ++c) made[c].Add(weights[c][first], column[c] + first * kColumn);
#pragma GCC unroll 4
        for (int c = 0; c < Columns; ++c) made[c].Add(weights[c][last], column[c] + last * kColumn);
    }
    const Floats least = AllFloats(0.0F - kMiddle), most = AllFloats(255.0F - kMiddle);
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) {
        if (first == last) made[c].Add(weights[c][first], column[c] + first * kColumn);
#pragma GCC unroll 8
        for (int i = 0; i < kRegisters; ++i)
            StoreFloats(sums + c * kColumn + i * kFloats, ClampFloats(made[c].sum[i], least, most));
    }
}

ROWS_INLINE bool HaveSameCounts(const QuickTaps* columns, int count) {
    bool same = true;
    for (int c = 1; c < count; ++c) same &= columns[c].count == columns->count;
    return same;
}

ROWS_INLINE bool HaveSameWeights(const QuickTaps* columns, int count) {
    bool same = true;
    for (int c = 1; c < count; ++c) same &= columns[c].weights == columns->weights;
    return same;
}

template <int Values>
void QuickSumAcrossOf(const QuickTaps* columns, std::int64_t count, const float* lanes, std::int64_t firstColumn,
                      float* sums) {
    constexpr int kAtOnce = kColumnsAtOnce<Values>, kColumn = Values * kQuickLanes;
    std::int64_t x = 0;
    while (x < count) {
        const bool together = x + kAtOnce <= count && HaveSameCounts(columns + x, kAtOnce);
        if (!together)
            QuickSumColumns<Values, 1, false>(columns + x, lanes, firstColumn, sums + x * kColumn);
        else if (HaveSameWeights(columns + x, kAtOnce))
            QuickSumColumns<Values, kAtOnce, true>(columns + x, lanes, firstColumn, sums + x * kColumn);
        else
            QuickSumColumns<Values, kAtOnce, false>(columns + x, lanes, firstColumn, sums + x * kColumn);
        x += together ? kAtOnce : 1;
    }
}

void QuickSumAcross(int values, const QuickTaps* columns, std::int64_t count, const float* lanes,
                    std::int64_t firstColumn, float* sums) {
    switch (values) {
        case 1:
            return QuickSumAcrossOf<1>(columns, count, lanes, firstColumn, sums);
        case 2:
            return QuickSumAcrossOf<2>(columns, count, lanes, firstColumn, sums);
        case 3:
            return QuickSumAcrossOf<3>(columns, count, lanes, firstColumn, sums);
        default:
            return QuickSumAcrossOf<4>(columns, count, lanes, firstColumn, sums);
    }
}

void QuickLanesToRows(const float* sums, std::int64_t count, float* rows, std::int64_t stride) {
    for (std::int64_t v = 0; v < count; v += 8)
        for (int half = 0; half < kQuickLanes; half += 8) {
            __m256 row[8];
            TurnFloats(sums + v * kQuickLanes + half, kQuickLanes, row);
#pragma GCC unroll 8
            for (int r = 0; r < 8; ++r) _mm256_storeu_ps(rows + (half + r) * stride + v, row[r]);
        }
}

// Four registers of sums as bytes, clamped and truncated.
ROWS_INLINE Register TruncatedBytes(const Floats* sums, Floats shift) {
    Register ints[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) ints[i] = TruncatedInts(AddFloats(sums[i], shift));
    return QuartersInOrder(PackWords(PackInts(ints[0], ints[1]), PackInts(ints[2], ints[3])));
}

void QuickSumPiece(const QuickRow& output, std::int64_t at) {
    constexpr int kRegisters = kPiece / kFloats;
    QuickSums<kRegisters> made;
    int first = 0, last = output.count - 1;
    for (; first < last; ++first, --last) {
        made.Add(output.weights[first], output.rows[first] + at);
        made.Add(output.weights[last], output.rows[last] + at);
    }
    if (first == last) made.Add(output.weights[first], output.rows[first] + at);
    const Floats low = AllFloats(output.low), high = AllFloats(output.high);
    const bool doubts = output.low != output.high;
    const std::uint64_t whole = doubts && output.whole ? output.whole[at / kPiece] : 0;
    std::uint64_t undecided = 0;
#pragma GCC unroll 2
    for (int i = 0; i < kRegisters; i += 4) {
        Register bytes = TruncatedBytes(made.sum + i, low);
        if (doubts) {
            const Register above = TruncatedBytes(made.sum + i, high);
            undecided |= Differences(bytes, above) << (i * kFloats);
            if (output.whole) bytes = ChooseBytes(whole >> (i * kFloats), above, bytes);
        }
        Store(output.bytes + at + i * kFloats, bytes);
    }
    output.undecided[at / kPiece] = undecided & ~whole;
}

// Piece by piece, so that the rows that several outputs share come from the nearest cache.
void QuickSumDown(const QuickRow* outputs, int count, std::int64_t at, std::int64_t end) {
    for (; at < end; at += kPiece)
        for (int i = 0; i < count; ++i) QuickSumPiece(outputs[i], at);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
