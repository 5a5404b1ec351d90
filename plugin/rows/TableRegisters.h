// A table of 256 bytes as the wide levels look bytes up in it: rows::avx2 and rows::avx512.
#pragma once

#include "plugin/rows/Registers.h"

#ifdef ROWS_AVX2

ROWS_BEGIN_AVX2
namespace rows::avx2 {

// A shuffle sees four bits of an index, and gives 0 where its highest bit is set. So the table is
// cut into sixteen parts of 16 entries, each stored as its difference (exclusive or) from the part
// before, in two chains of eight. An index walks down a chain losing 16 at each step; once it is
// below 0 the shuffles add nothing more, and the sum of the differences is the part it came from.
// Indices of the other half are below 0 from the start and, cut off at -128, stay there.
struct TableRegisters {
    Register difference[16];
};

ROWS_INLINE TableRegisters LoadTable(const std::uint8_t* entries) {
    TableRegisters table;
    for (int i = 0; i < 16; ++i) {
        table.difference[i] = RepeatLane(entries + 16 * i);
        if (i % 8 != 0) table.difference[i] = Xor(table.difference[i], RepeatLane(entries + 16 * (i - 1)));
    }
    return table;
}

template <int Parts>
ROWS_INLINE Register LookUpChain(const Register* difference, Register index) {
    const Register part = Bytes(16);
    Register found = ShuffleBytes(difference[0], index);
#pragma GCC unroll 8
    for (int i = 1; i < Parts; ++i) {
        index = SubSignedBytesCapped(index, part);
        found = Xor(found, ShuffleBytes(difference[i], index));
    }
    return found;
}

// The entries of a register of bytes.
ROWS_INLINE Register LookUpBytes(const TableRegisters& table, Register bytes) {
    return Xor(LookUpChain<8>(table.difference, bytes), LookUpChain<8>(table.difference + 8, Xor(bytes, Bytes(128))));
}

// The same for bytes below 64, in less time.
ROWS_INLINE Register LookUpSmallBytes(const TableRegisters& table, Register bytes) {
    return LookUpChain<4>(table.difference, bytes);
}

}  // namespace rows::avx2
ROWS_END_LEVEL

#endif

#ifdef ROWS_AVX512

ROWS_BEGIN_AVX512
namespace rows::avx512 {

struct TableRegisters {
    Register part[4];  // 64 entries each
};

ROWS_INLINE TableRegisters LoadTable(const std::uint8_t* entries) {
    return {{Load(entries), Load(entries + 64), Load(entries + 128), Load(entries + 192)}};
}

// A permutation sees seven bits of an index, the eighth chooses between two.
ROWS_INLINE Register LookUpBytes(const TableRegisters& table, Register bytes) {
    const Register low = _mm512_permutex2var_epi8(table.part[0], bytes, table.part[1]);
    const Register high = _mm512_permutex2var_epi8(table.part[2], bytes, table.part[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), low, high);
}

ROWS_INLINE Register LookUpSmallBytes(const TableRegisters& table, Register bytes) {
    return _mm512_permutexvar_epi8(bytes, table.part[0]);
}

}  // namespace rows::avx512
ROWS_END_LEVEL

#endif
