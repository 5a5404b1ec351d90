// A plain loop compiled once for each CpuLevel.
//
// The loop is the definition and its own wider forms: the compiler vectorises it with what each
// level has, exactly, since nothing is reordered or contracted.
//
//   struct Doubling {
//       static void Run(const std::uint8_t* from, int count, std::uint8_t* to) { … }
//   };
//   LoopOf<Doubling>()(from, count, to);
//
// Run and whatever it calls must be ROWS_INLINE: only inlined code is compiled for the level.
#pragma once

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/X86.h"

#define ROWS_INLINE [[gnu::always_inline]] inline

namespace rows {

template <class Loop, class Signature = decltype(Loop::Run)>
struct LoopForms;

template <class Loop, class... Arguments>
struct LoopForms<Loop, void(Arguments...)> {
    using Form = void (*)(Arguments...);

    static void Plain(Arguments... arguments) { Loop::Run(arguments...); }
#ifdef ROWS_X86
    TARGET_AVX2_LOOP static void Avx2(Arguments... arguments) { Loop::Run(arguments...); }
    TARGET_AVX512_LOOP static void Avx512(Arguments... arguments) { Loop::Run(arguments...); }
#endif

    static Form Choose() {
#ifdef ROWS_X86
        if (ActiveCpuLevel() == CpuLevel::Avx512) return &Avx512;
        if (ActiveCpuLevel() == CpuLevel::Avx2) return &Avx2;
#endif
        return &Plain;
    }
};

// The form of a loop for the active level.
template <class Loop>
typename LoopForms<Loop>::Form LoopOf() {
    return LoopForms<Loop>::Choose();
}

}  // namespace rows
