// The wider form of a sheared row, for Skew.cpp alone.
#pragma once

#include <cstdint>

#include "plugin/rows/Skew.h"
#include "plugin/rows/X86.h"

namespace rows {

// What each value of a row leaves for the next pixel, and the rest of it.
struct SkewTables {
    std::uint8_t left[256];
    std::uint8_t rest[256];
};

#ifdef ROWS_X86
// Shears `count` pixels of a plan in place, each of which has one before it in the source; from
// the addresses of the first pixel's first channel byte on both sides. The rows don't overlap.
void SkewAvx512(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source, std::uint8_t* destination,
                std::int64_t count);
#endif

}  // namespace rows
