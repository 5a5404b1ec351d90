// A plain loop compiled once for each CpuLevel.
//
// The loop is the definition and its own wider forms: the compiler vectorises it with what each
// level has, exactly, since nothing is reordered or contracted.
//
//   struct Doubling {
//       ROWS_INLINE static void Run(const std::uint8_t* from, int count, std::uint8_t* to) { … }
//   };
//   const Forms<decltype(Doubling::Run)> kDoubleRow = LoopForms<Doubling>::kTable;
//
// Run and whatever it calls must be ROWS_INLINE: only inlined code is compiled for the level.
#pragma once

#include "plugin/rows/Forms.h"

namespace rows {

template <class Loop, class Signature = decltype(Loop::Run)>
struct LoopForms;

template <class Loop, class Result, class... Arguments>
struct LoopForms<Loop, Result(Arguments...)> {
    static Result Plain(Arguments... arguments) { return Loop::Run(arguments...); }
#ifdef ROWS_AVX2
    TARGET_AVX2 static Result Avx2(Arguments... arguments) { return Loop::Run(arguments...); }
#endif
#ifdef ROWS_AVX512
    TARGET_AVX512 static Result Avx512(Arguments... arguments) { return Loop::Run(arguments...); }
#endif

    static constexpr Forms<Result(Arguments...)> kTable = {
        &Plain,
#ifdef ROWS_AVX2
        &Avx2,
#else
        nullptr,
#endif
#ifdef ROWS_AVX512
        &Avx512,
#else
        nullptr,
#endif
    };
};

}  // namespace rows
