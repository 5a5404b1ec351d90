// A table of 256 bytes in four registers, for the forms that look bytes up.
#pragma once

#include "plugin/rows/X86.h"

#ifdef ROWS_X86

namespace rows {

struct TableRegisters {
    __m512i part[4];  // 64 entries each
};

TARGET_AVX512 inline TableRegisters LoadTable(const std::uint8_t* entries) {
    return {{_mm512_loadu_si512(entries), _mm512_loadu_si512(entries + 64), _mm512_loadu_si512(entries + 128),
             _mm512_loadu_si512(entries + 192)}};
}

// The entries of 64 bytes: a permutation sees seven bits of an index, the eighth chooses between two.
TARGET_AVX512 inline __m512i LookUpBytes(const TableRegisters& table, __m512i bytes) {
    const __m512i low = _mm512_permutex2var_epi8(table.part[0], bytes, table.part[1]);
    const __m512i high = _mm512_permutex2var_epi8(table.part[2], bytes, table.part[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), low, high);
}

}  // namespace rows

#endif
