// What the forms for x86 instruction sets share. Where ROWS_X86 is not defined there are none.
#pragma once

#include <cstdint>

#if defined(__x86_64__) && defined(__GNUC__)

#define ROWS_X86 1

#include <immintrin.h>

// Marks a function for the instructions of a CpuLevel.
#define TARGET_AVX2 __attribute__((target("avx2,bmi2,fma")))
#define TARGET_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi")))

// The same for plain loops that the compiler is to vectorise with the widest registers.
#define TARGET_AVX2_LOOP TARGET_AVX2
#define TARGET_AVX512_LOOP \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,prefer-vector-width=512")))

namespace rows {

// A mask of the lowest `count` of 64 lanes; all of them from 64 on, none below 1.
constexpr std::uint64_t LowBits(std::int64_t count) {
    if (count >= 64) return ~std::uint64_t{0};
    return count < 1 ? 0 : (std::uint64_t{1} << count) - 1;
}

}  // namespace rows

#endif
