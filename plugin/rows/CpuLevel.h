// Which instruction set the row functions use.
#pragma once

#include <optional>
#include <string_view>

namespace rows {

enum class CpuLevel {
    Plain,   // what every processor has
    Avx2,    // AVX2, BMI2 and FMA
    Avx512,  // AVX-512 F, BW, DQ, VL, VBMI
};

inline constexpr CpuLevel kCpuLevels[] = {CpuLevel::Plain, CpuLevel::Avx2, CpuLevel::Avx512};

// "plain", "avx2", "avx512", and back; no level for any other name.
const char* NameOf(CpuLevel level);
std::optional<CpuLevel> CpuLevelNamed(std::string_view name);

// The highest level that this processor has, and that the build has code for.
CpuLevel ProcessorCpuLevel();
CpuLevel BuiltCpuLevel();

// The highest level that both have and that the environment variable TQX_CPU_LEVEL, read when the
// module is loaded, does not rule out; or the one forced last. Every table of forms is asked for
// this level, once an operation.
CpuLevel ActiveCpuLevel();

// Makes tables use `level` (or the highest possible below it) from now on; gives what was active
// before. For tests and measurements: every level gives the same bytes.
CpuLevel ForceCpuLevel(CpuLevel level);

}  // namespace rows
