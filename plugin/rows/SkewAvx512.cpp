#include "plugin/rows/SkewForms.h"
#include "plugin/rows/TableRegisters.h"

#ifdef ROWS_X86

namespace rows {

// The pixel before lies pixelSize bytes before each byte, so one load further left has what was
// left for all of them. Bytes between channels are read and looked up too, but not stored.
TARGET_AVX512 void SkewAvx512(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source,
                              std::uint8_t* destination, std::int64_t count) {
    const std::int64_t size = plan.from.pixelSize;
    const std::int64_t pixels = 64 / size;
    const TableRegisters left = LoadTable(tables.left);
    const TableRegisters rest = LoadTable(tables.rest);
    for (std::int64_t i = 0; i < count; i += pixels) {
        const std::int64_t here = count - i < pixels ? count - i : pixels;
        const __mmask64 read = LowBits((here - 1) * size + plan.fromSpan.size);
        const __m512i values = _mm512_maskz_loadu_epi8(read, source + i * size);
        const __m512i before = _mm512_maskz_loadu_epi8(read, source + (i - 1) * size);
        const __m512i moved = _mm512_add_epi8(LookUpBytes(rest, values), LookUpBytes(left, before));
        _mm512_mask_storeu_epi8(destination + i * size, plan.channels & read, moved);
    }
}

}  // namespace rows

#endif
