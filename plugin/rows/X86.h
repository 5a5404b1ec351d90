// The instruction sets of a build for x86: ROWS_AVX2 and ROWS_AVX512 stand for the levels that it
// has code for. The build caps them by ROWS_MAX_LEVEL (0: plain, 1: AVX2, 2: AVX-512).
#pragma once

#include <cstdint>

// What is inlined everywhere, and so compiled for the level of every form that calls it.
#define ROWS_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__) && defined(__GNUC__)
#define ROWS_X86 1
#ifndef ROWS_MAX_LEVEL
#define ROWS_MAX_LEVEL 2
#endif
#endif

#if defined(ROWS_X86) && ROWS_MAX_LEVEL >= 1

#define ROWS_AVX2 1

#include <immintrin.h>

#define ROWS_PRAGMA_OF(text) _Pragma(#text)
#define ROWS_PRAGMA(text) ROWS_PRAGMA_OF(text)

// One function for the instructions of a level; and all functions up to ROWS_END_LEVEL.
#define ROWS_AVX2_SET "avx2,bmi2,fma"
#define TARGET_AVX2 __attribute__((target(ROWS_AVX2_SET)))
#ifdef __clang__
#define ROWS_BEGIN_AVX2 ROWS_PRAGMA(clang attribute push(TARGET_AVX2, apply_to = function))
#define ROWS_END_LEVEL ROWS_PRAGMA(clang attribute pop)
#else
#define ROWS_BEGIN_AVX2 ROWS_PRAGMA(GCC push_options) ROWS_PRAGMA(GCC target(ROWS_AVX2_SET))
#define ROWS_END_LEVEL ROWS_PRAGMA(GCC pop_options)
#endif

#if ROWS_MAX_LEVEL >= 2

#define ROWS_AVX512 1

#ifdef __clang__
#define ROWS_AVX512_SET "avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,bmi2,fma"
#define TARGET_AVX512 __attribute__((target(ROWS_AVX512_SET)))
#define ROWS_BEGIN_AVX512 ROWS_PRAGMA(clang attribute push(TARGET_AVX512, apply_to = function))
#else
#define ROWS_AVX512_SET "avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,bmi2,fma,prefer-vector-width=512"
#define TARGET_AVX512 __attribute__((target(ROWS_AVX512_SET)))
#define ROWS_BEGIN_AVX512 ROWS_PRAGMA(GCC push_options) ROWS_PRAGMA(GCC target(ROWS_AVX512_SET))
#endif

#endif
#endif
