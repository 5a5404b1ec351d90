// The processor asked once, and the variable that holds it down.
#include "plugin/rows/CpuLevel.h"

#include <algorithm>
#include <cstdlib>

#include "plugin/rows/X86.h"

namespace rows {

namespace {

// A variable that names no level rules out none.
CpuLevel AllowedCpuLevel() {
    const char* const name = std::getenv("TQX_CPU_LEVEL");
    return name ? CpuLevelNamed(name).value_or(CpuLevel::Avx512) : CpuLevel::Avx512;
}

const CpuLevel bestLevel = std::min({ProcessorCpuLevel(), BuiltCpuLevel(), AllowedCpuLevel()});
CpuLevel activeLevel = bestLevel;

}  // namespace

const char* NameOf(CpuLevel level) {
    switch (level) {
        case CpuLevel::Avx512:
            return "avx512";
        case CpuLevel::Avx2:
            return "avx2";
        case CpuLevel::Plain:
            break;
    }
    return "plain";
}

std::optional<CpuLevel> CpuLevelNamed(std::string_view name) {
    for (const CpuLevel level : kCpuLevels)
        if (name == NameOf(level)) return level;
    return std::nullopt;
}

CpuLevel ProcessorCpuLevel() {
#ifdef ROWS_X86
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                        __builtin_cpu_supports("avx512vbmi");
    if (avx2) return avx512 ? CpuLevel::Avx512 : CpuLevel::Avx2;
#endif
    return CpuLevel::Plain;
}

CpuLevel BuiltCpuLevel() {
#if defined(ROWS_AVX512)
    return CpuLevel::Avx512;
#elif defined(ROWS_AVX2)
    return CpuLevel::Avx2;
#else
    return CpuLevel::Plain;
#endif
}

CpuLevel ActiveCpuLevel() { return activeLevel; }

CpuLevel ForceCpuLevel(CpuLevel level) {
    const CpuLevel before = activeLevel;
    activeLevel = std::min(level, bestLevel);
    return before;
}

}  // namespace rows
