#include "rows/DitherForms.h"
#include "rows/TableRegisters.h"

#ifdef ROWS_X86

namespace rows {

TARGET_AVX512 void DitherAvx512(const DitherTables& tables, const CellBytes& cells, std::int32_t start,
                                std::int64_t count, std::uint8_t* pixels) {
    const TableRegisters limit = LoadTable(tables.limit), lower = LoadTable(tables.lower),
                         upper = LoadTable(tables.upper);
    const std::int32_t advance = 64 % cells.period;
    std::int32_t at = start;
    for (std::int64_t i = 0; i < count; i += 64) {
        const __mmask64 present = LowBits(count - i);
        const __m512i bytes = _mm512_maskz_loadu_epi8(present, pixels + i);
        const __m512i threshold = _mm512_loadu_si512(cells.threshold + at);
        const __mmask64 below = _mm512_cmplt_epu8_mask(threshold, LookUpBytes(limit, bytes));
        const __m512i dithered = _mm512_mask_blend_epi8(below, LookUpBytes(upper, bytes), LookUpBytes(lower, bytes));
        _mm512_mask_storeu_epi8(pixels + i, present, dithered);
        at += advance;
        if (at >= cells.period) at -= cells.period;
    }
}

}  // namespace rows

#endif
