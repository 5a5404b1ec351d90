// Which instruction set the row functions use.
#pragma once

namespace rows {

enum class CpuLevel {
    Plain,   // what every processor has
    Avx2,    // AVX2, BMI2 and FMA
    Avx512,  // AVX-512 F, BW, DQ, VL, VBMI
};

// The best level this processor has, or the one forced last. Every chooser asks here, once per call.
CpuLevel ActiveCpuLevel();

// Makes the choosers use `level` (or the processor's best below it) from now on; gives what was
// active before. For tests and measurements: every level gives the same bytes.
CpuLevel ForceCpuLevel(CpuLevel level);

}  // namespace rows
