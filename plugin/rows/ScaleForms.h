// The wide forms of scaling, for ScaleAcross.cpp and ScaleDown.cpp alone. Arguments are those of
// the functions without a suffix.
#pragma once

#include <cstdint>

#include "plugin/rows/ScaleDown.h"
#include "plugin/rows/Taps.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
void BytesToLanesAvx2(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes);
void SumAcrossAvx2(int values, const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                   float* sums);
void LanesToRowsAvx2(const float* sums, std::int64_t count, double* rows, std::int64_t stride);
void SumDownAvx2(const DownRow* outputs, int count, std::int64_t values);

void BytesToLanesAvx512(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes);
void SumAcrossAvx512(int values, const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                     float* sums);
void LanesToRowsAvx512(const float* sums, std::int64_t count, double* rows, std::int64_t stride);
void SumDownAvx512(const DownRow* outputs, int count, std::int64_t values);
#endif

}  // namespace rows
