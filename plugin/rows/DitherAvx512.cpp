#include "plugin/rows/DitherForms.h"
#include "plugin/rows/TableRegisters.h"

#ifdef ROWS_X86

namespace rows {

namespace {

// `TwoLevels`: of the tables only the limits depend on the byte.
template <bool TwoLevels>
TARGET_AVX512 void DitherBytes(const DitherTables& tables, const CellBytes& cells, std::int32_t start,
                               std::int64_t count, const std::uint8_t* pixels, std::uint8_t* result) {
    const TableRegisters limit = LoadTable(tables.limit), lower = LoadTable(tables.lower),
                         upper = LoadTable(tables.upper);
    const std::int32_t advance = 64 % cells.period;
    std::int32_t at = start;
    for (std::int64_t i = 0; i < count; i += 64) {
        const __mmask64 present = LowBits(count - i);
        const __m512i bytes = _mm512_maskz_loadu_epi8(present, pixels + i);
        const __m512i threshold = _mm512_loadu_si512(cells.threshold + at);
        const __mmask64 below = _mm512_cmplt_epu8_mask(threshold, LookUpBytes(limit, bytes));
        const __m512i low = TwoLevels ? lower.part[0] : LookUpBytes(lower, bytes);
        const __m512i high = TwoLevels ? upper.part[0] : LookUpBytes(upper, bytes);
        _mm512_mask_storeu_epi8(result + i, present, _mm512_mask_blend_epi8(below, high, low));
        at += advance;
        if (at >= cells.period) at -= cells.period;
    }
}

}  // namespace

void DitherAvx512(const DitherTables& tables, const CellBytes& cells, std::int32_t start, std::int64_t count,
                  const std::uint8_t* pixels, std::uint8_t* result) {
    if (tables.twoLevels)
        DitherBytes<true>(tables, cells, start, count, pixels, result);
    else
        DitherBytes<false>(tables, cells, start, count, pixels, result);
}

}  // namespace rows

#endif
