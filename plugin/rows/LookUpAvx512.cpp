#include "plugin/rows/LookUpForms.h"
#include "plugin/rows/TableRegisters.h"

#ifdef ROWS_X86

namespace rows {

namespace {

// Bytes that go through no table keep what the destination has.
template <int Tables>
TARGET_AVX512 void LookUpLanesOf(const LookUpLanes& lanes, const std::uint8_t* source, std::uint8_t* destination,
                                 std::int64_t count) {
    TableRegisters table[Tables];
    for (int i = 0; i < Tables; ++i) table[i] = LoadTable(lanes.table[i]->entry);
    int part = 0;
    for (std::int64_t at = 0; at < count; at += 64) {
        const __mmask64 present = LowBits(count - at);
        const __m512i bytes = _mm512_maskz_loadu_epi8(present, source + at);
        __m512i mapped = LookUpBytes(table[0], bytes);
        for (int i = 1; i < Tables; ++i)
            mapped = _mm512_mask_mov_epi8(mapped, lanes.lanes[i][part], LookUpBytes(table[i], bytes));
        const __mmask64 written = lanes.written[part] & present;
        if (written == ~std::uint64_t{0})
            _mm512_storeu_si512(destination + at, mapped);
        else
            _mm512_mask_storeu_epi8(destination + at, written, mapped);
        part = part == LookUpLanes::kRegisters - 1 ? 0 : part + 1;
    }
}

}  // namespace

TARGET_AVX512 void LookUpAvx512(const LookUpLanes& lanes, const std::uint8_t* source, std::uint8_t* destination,
                                std::int64_t count) {
    switch (lanes.tables) {
        case 1:
            return LookUpLanesOf<1>(lanes, source, destination, count);
        case 2:
            return LookUpLanesOf<2>(lanes, source, destination, count);
        case 3:
            return LookUpLanesOf<3>(lanes, source, destination, count);
        case 4:
            return LookUpLanesOf<4>(lanes, source, destination, count);
        default:
            return;
    }
}

}  // namespace rows

#endif
