#include "plugin/rows/CpuLevel.h"

#include <algorithm>

namespace rows {

namespace {

CpuLevel DetectCpuLevel() {
#if defined(__x86_64__) && defined(__GNUC__)
    __builtin_cpu_init();
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                        __builtin_cpu_supports("avx512vbmi");
    if (avx512) return CpuLevel::Avx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma"))
        return CpuLevel::Avx2;
#endif
    return CpuLevel::Plain;
}

const CpuLevel bestLevel = DetectCpuLevel();
CpuLevel activeLevel = bestLevel;

}  // namespace

CpuLevel ActiveCpuLevel() { return activeLevel; }

CpuLevel ForceCpuLevel(CpuLevel level) {
    const CpuLevel before = activeLevel;
    activeLevel = std::min(level, bestLevel);
    return before;
}

}  // namespace rows
