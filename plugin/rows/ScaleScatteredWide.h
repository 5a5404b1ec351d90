// Scattered samples in registers, one a lane, for ScaleScattered.cpp.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

using Doubles = __m512d;
using Places = __m256i;
using Addresses = __m512i;
using Lanes = __mmask8;

ROWS_INLINE Doubles AllDoubles(double value) { return _mm512_set1_pd(value); }
ROWS_INLINE Doubles LoadDoubles(const double* from) { return _mm512_loadu_pd(from); }
ROWS_INLINE void StoreDoubles(double* to, Doubles values) { _mm512_storeu_pd(to, values); }
ROWS_INLINE Doubles DoublesOfBytes(const std::uint8_t* from) {
    return _mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
}
ROWS_INLINE Doubles AddDoubles(Doubles a, Doubles b) { return _mm512_add_pd(a, b); }
ROWS_INLINE Doubles MulDoubles(Doubles a, Doubles b) { return _mm512_mul_pd(a, b); }
ROWS_INLINE Doubles QuotientOf(Doubles sum, Doubles total) {
    const Doubles positive = _mm512_max_pd(_mm512_div_pd(sum, total), _mm512_setzero_pd());
    return _mm512_min_pd(positive, AllDoubles(255));
}
ROWS_INLINE Doubles RoundedToSingles(Doubles values) { return _mm512_cvtps_pd(_mm512_cvtpd_ps(values)); }
ROWS_INLINE Places Truncated(Doubles values) { return _mm512_cvttpd_epi32(values); }

ROWS_INLINE Places LoadPlaces(const std::int32_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
ROWS_INLINE void StorePlaces(std::int32_t* to, Places places) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), places);
}
ROWS_INLINE Places MovedPlaces(Places places, int by) { return _mm256_add_epi32(places, _mm256_set1_epi32(by)); }
ROWS_INLINE Addresses MovedAddresses(Addresses addresses, int by) {
    return _mm512_add_epi64(addresses, _mm512_set1_epi64(by));
}
ROWS_INLINE Lanes LanesAbove(Places counts, int k) { return _mm256_cmpgt_epi32_mask(counts, _mm256_set1_epi32(k)); }

ROWS_INLINE Doubles DoublesAt(Addresses addresses, Lanes lanes) {
    return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), lanes, addresses, nullptr, 1);
}
ROWS_INLINE Doubles BytesAt(const std::uint8_t* row, Places places, Lanes lanes) {
    const Places fours = _mm256_mmask_i32gather_epi32(_mm256_setzero_si256(), lanes, places, row, 1);
    return _mm512_cvtepi32_pd(_mm256_and_si256(fours, _mm256_set1_epi32(255)));
}

#else

using Doubles = __m256d;
using Places = __m128i;
using Addresses = __m256i;
using Lanes = __m128i;

ROWS_INLINE Doubles AllDoubles(double value) { return _mm256_set1_pd(value); }
ROWS_INLINE Doubles LoadDoubles(const double* from) { return _mm256_loadu_pd(from); }
ROWS_INLINE void StoreDoubles(double* to, Doubles values) { _mm256_storeu_pd(to, values); }
ROWS_INLINE Doubles DoublesOfBytes(const std::uint8_t* from) {
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_loadu_si32(from)));
}
ROWS_INLINE Doubles AddDoubles(Doubles a, Doubles b) { return _mm256_add_pd(a, b); }
ROWS_INLINE Doubles MulDoubles(Doubles a, Doubles b) { return _mm256_mul_pd(a, b); }
ROWS_INLINE Doubles QuotientOf(Doubles sum, Doubles total) {
    const Doubles positive = _mm256_max_pd(_mm256_div_pd(sum, total), _mm256_setzero_pd());
    return _mm256_min_pd(positive, AllDoubles(255));
}
ROWS_INLINE Doubles RoundedToSingles(Doubles values) { return _mm256_cvtps_pd(_mm256_cvtpd_ps(values)); }
ROWS_INLINE Places Truncated(Doubles values) { return _mm256_cvttpd_epi32(values); }

ROWS_INLINE Places LoadPlaces(const std::int32_t* from) { return LoadLane(from); }
ROWS_INLINE void StorePlaces(std::int32_t* to, Places places) { StoreLane(to, places); }
ROWS_INLINE Places MovedPlaces(Places places, int by) { return _mm_add_epi32(places, _mm_set1_epi32(by)); }
ROWS_INLINE Addresses MovedAddresses(Addresses addresses, int by) {
    return _mm256_add_epi64(addresses, _mm256_set1_epi64x(by));
}
ROWS_INLINE Lanes LanesAbove(Places counts, int k) { return _mm_cmpgt_epi32(counts, _mm_set1_epi32(k)); }

ROWS_INLINE Doubles DoublesAt(Addresses addresses, Lanes lanes) {
    const Doubles wide = _mm256_castsi256_pd(_mm256_cvtepi32_epi64(lanes));
    return _mm256_mask_i64gather_pd(_mm256_setzero_pd(), nullptr, addresses, wide, 1);
}
ROWS_INLINE Doubles BytesAt(const std::uint8_t* row, Places places, Lanes lanes) {
    const Places fours =
        _mm_mask_i32gather_epi32(_mm_setzero_si128(), reinterpret_cast<const int*>(row), places, lanes, 1);
    return _mm256_cvtepi32_pd(_mm_and_si128(fours, _mm_set1_epi32(255)));
}

#endif

constexpr int kDoubles = sizeof(Doubles) / sizeof(double);

// Samples side by side, as many as the longest register has lanes or some times as many: what is written
// one by one is read a register at a time, and by then it has left the processor's store queue.
constexpr int kSamples = 64;

struct SampleLists {
    std::int32_t places[kSamples];   // of the first byte of each in a row
    std::int32_t counts[kSamples];   // of weights along rows
    std::int64_t weights[kSamples];  // address of the first weight
    double totals[kSamples];
};

// Where a register would not be full, the last sample fills the rest.
void ListSamples(const ScatteredRow& row, const std::int32_t* places, int count, SampleLists& lists) {
    for (int i = 0; i < (count + kDoubles - 1) / kDoubles * kDoubles; ++i) {
        const std::int32_t sample = places[i < count ? i : count - 1];
        const std::int32_t column = sample / row.values;
        const Taps& taps = row.columns[column];
        lists.places[i] = sample + (taps.first - column) * row.values;
        lists.counts[i] = taps.count;
        lists.weights[i] = reinterpret_cast<std::int64_t>(taps.weights);
        lists.totals[i] = taps.total;
    }
}

struct SampleLanes {
    Places places;
    Places counts;
    Addresses weights;
    Doubles totals;
    int most;  // of the counts
};

ROWS_INLINE SampleLanes LanesAt(const SampleLists& lists, int first) {
    int most = 0;
    for (int i = 0; i < kDoubles; ++i) most = most < lists.counts[first + i] ? lists.counts[first + i] : most;
    return {LoadPlaces(lists.places + first), LoadPlaces(lists.counts + first), Load(lists.weights + first),
            LoadDoubles(lists.totals + first), most};
}

// The sums down with `Rows` more rows. Past the end of its list a lane adds 0.
template <int Rows>
ROWS_INLINE Doubles WithRows(const ScatteredRow& row, const SampleLanes& samples, int first, Doubles sum) {
    Doubles across[Rows];
#pragma GCC unroll 4
    for (int i = 0; i < Rows; ++i) across[i] = AllDoubles(0);
    Places places = samples.places;
    Addresses weights = samples.weights;
    for (int k = 0; k < samples.most; ++k) {
        const Lanes lanes = LanesAbove(samples.counts, k);
        const Doubles weight = DoublesAt(weights, lanes);
#pragma GCC unroll 4
        for (int i = 0; i < Rows; ++i)
            across[i] = AddDoubles(across[i], MulDoubles(weight, BytesAt(row.rows[first + i], places, lanes)));
        places = MovedPlaces(places, row.values);
        weights = MovedAddresses(weights, sizeof(double));
    }
#pragma GCC unroll 4
    for (int i = 0; i < Rows; ++i) {
        const Doubles value = RoundedToSingles(QuotientOf(across[i], samples.totals));
        sum = AddDoubles(sum, MulDoubles(AllDoubles(row.down.weights[first + i]), value));
    }
    return sum;
}

Doubles SumDownOf(const ScatteredRow& row, const SampleLanes& samples) {
    Doubles sum = AllDoubles(0);
    int first = 0;
    for (; first + 4 <= row.down.count; first += 4) sum = WithRows<4>(row, samples, first, sum);
    if (row.down.count - first == 3) return WithRows<3>(row, samples, first, sum);
    if (row.down.count - first == 2) return WithRows<2>(row, samples, first, sum);
    if (row.down.count - first == 1) return WithRows<1>(row, samples, first, sum);
    return sum;
}

void SumSamples(const ScatteredRow& row, const std::int32_t* places, int count, std::uint8_t* bytes) {
    SampleLists lists;
    ListSamples(row, places, count, lists);
    std::int32_t whole[kSamples];
    for (int first = 0; first < count; first += kDoubles) {
        const Doubles sum = SumDownOf(row, LanesAt(lists, first));
        StorePlaces(whole + first, Truncated(QuotientOf(sum, AllDoubles(row.down.total))));
    }
    for (int i = 0; i < count; ++i) bytes[places[i]] = static_cast<std::uint8_t>(whole[i]);
}

void SumScattered(const ScatteredRow& row, const std::int32_t* places, std::int64_t count, std::uint8_t* bytes) {
    for (std::int64_t first = 0; first < count; first += kSamples)
        SumSamples(row, places + first, static_cast<int>(count - first < kSamples ? count - first : kSamples), bytes);
}

// --- Long lists -------------------------------------------------------------------------------

// So many rows that their sums, each of which waits for its own last step, keep the processor busy.
constexpr int kRowsTurned = 16, kBytesTurned = 16, kParts = kRowsTurned / kDoubles;

// A sample's sums along rows, one row a lane.
struct RowSums {
    Doubles sum[kParts];

    ROWS_INLINE RowSums() {
#pragma GCC unroll 4
        for (int i = 0; i < kParts; ++i) sum[i] = AllDoubles(0);
    }

    // `bytes` has one of each row.
    ROWS_INLINE void Add(double weight, const std::uint8_t* bytes) {
        const Doubles all = AllDoubles(weight);
#pragma GCC unroll 4
        for (int i = 0; i < kParts; ++i)
            sum[i] = AddDoubles(sum[i], MulDoubles(all, DoublesOfBytes(bytes + i * kDoubles)));
    }

    ROWS_INLINE void StoreValues(double total, double* values) const {
#pragma GCC unroll 4
        for (int i = 0; i < kParts; ++i)
            StoreDoubles(values + i * kDoubles, RoundedToSingles(QuotientOf(sum[i], AllDoubles(total))));
    }
};

// kBytesTurned bytes of each row, the first ones of all rows side by side, then the second ones.
ROWS_INLINE void TurnRowsOf(const std::uint8_t* const* rows, std::int64_t at, std::uint8_t* bytes) {
    __m128i row[8], upper[8], lower[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) row[r] = LoadLane(rows[r] + at);
    TurnLoaded(row, upper);
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) row[r] = LoadLane(rows[8 + r] + at);
    TurnLoaded(row, lower);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) {
        StoreLane(bytes + 2 * i * kRowsTurned, _mm_unpacklo_epi64(upper[i], lower[i]));
        StoreLane(bytes + (2 * i + 1) * kRowsTurned, _mm_unpackhi_epi64(upper[i], lower[i]));
    }
}

// One value of kRowsTurned rows; the last of `count` rows stands for those past it.
void SumTurnedRows(const Taps& taps, const std::uint8_t* const* rows, int count, std::int64_t start, int stride,
                   double* values) {
    const std::uint8_t* from[kRowsTurned];
    for (int r = 0; r < kRowsTurned; ++r) from[r] = rows[r < count ? r : count - 1] + start;
    RowSums sums;
    const int tapsTurned = kBytesTurned / stride;
    for (std::int32_t first = 0; first < taps.count; first += tapsTurned) {
        alignas(kBytesTurned) std::uint8_t bytes[kBytesTurned * kRowsTurned];
        TurnRowsOf(from, std::int64_t{first} * stride, bytes);
        const int left = taps.count - first;
        for (int k = 0; k < tapsTurned && k < left; ++k)
            sums.Add(taps.weights[first + k], bytes + k * stride * kRowsTurned);
    }
    sums.StoreValues(taps.total, values);
}

void SumScatteredLong(const ScatteredRow& row, const std::int32_t* places, std::int64_t count, std::uint8_t* bytes) {
    for (const std::int32_t* place = places; place != places + count; ++place) {
        const std::int32_t column = *place / row.values;
        const Taps& taps = row.columns[column];
        const std::int64_t start = *place + std::int64_t{taps.first - column} * row.values;
        double sum = 0, values[kRowsTurned];
        for (int first = 0; first < row.down.count; first += kRowsTurned) {
            const int left = row.down.count - first, rows = left < kRowsTurned ? left : kRowsTurned;
            SumTurnedRows(taps, row.rows + first, rows, start, row.values, values);
            for (int k = 0; k < rows; ++k) sum += row.down.weights[first + k] * values[k];
        }
        BytesOfSums(&sum, row.down.total, 1, bytes + *place);
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
