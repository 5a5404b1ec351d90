// Sums across in whole numbers for WholeScale.cpp, a group of eight to a half register or a whole one.

namespace rows::ROWS_LEVEL {

namespace {

constexpr int kGroups = WholeRun::kValues / WholeRun::kGroup;

// What a run's registers hold for all rows.
struct WholeGroups {
    __m256i index[kGroups], weights[kGroups];

    ROWS_INLINE explicit WholeGroups(const WholeRun& run) {
#pragma GCC unroll 4
        for (int i = 0; i < kGroups; ++i) {
            index[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(run.index + i * WholeRun::kGroup));
            weights[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(run.weights + i * WholeRun::kGroup));
        }
    }
};

void WholeSumAcross(const WholeRun* runs, std::int64_t count, const std::uint32_t* const* pairs, int rows, int shift,
                    std::uint8_t* const* bytes) {
    const __m256i bits = _mm256_set1_epi32(shift);
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    for (std::int64_t at = 0; at < count; ++at) {
        const WholeRun& run = runs[at];
        const WholeGroups groups(run);
        for (int row = 0; row < rows; ++row) {
            __m256i sums[kGroups];
#pragma GCC unroll 4
            for (int i = 0; i < kGroups; ++i) {
                const auto* const from = reinterpret_cast<const __m256i*>(pairs[row] + run.base[i]);
                const __m256i pair = _mm256_permutevar8x32_epi32(_mm256_loadu_si256(from), groups.index[i]);
                sums[i] = _mm256_srlv_epi32(_mm256_madd_epi16(pair, groups.weights[i]), bits);
            }
            const __m256i low = _mm256_packus_epi32(sums[0], sums[1]), high = _mm256_packus_epi32(sums[2], sums[3]);
            const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), order);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes[row] + at * WholeRun::kValues), packed);
        }
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
