// Box sums of packed rows: columns of samples down a picture, and windows along a row.
//
// Sums are 32 bits wide, or 16 where that is enough and quicker. The caller sees to it that
// 255 × (2 radius + 1) fits into them.
#pragma once

#include <cstdint>

namespace rows {

// Whether sums of so many samples can be 16 bits wide: 3 to 201 of them.
bool FitsWords(std::int32_t size);

// sums[i] += times × row[i].
void AddRow(const std::uint8_t* row, std::int32_t times, std::int32_t count, std::int32_t* sums);
void AddRow(const std::uint8_t* row, std::int32_t times, std::int32_t count, std::uint16_t* sums);

// For each column: result = sum / size, truncated (sums are at most 255 × size; size is odd); then
// the sum loses `leaving` and gains `entering`. A null row is all zero. The result is neither row.
void SlideRow(std::int32_t* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result);
void SlideRow(std::uint16_t* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result);

// Averages each channel of `width` packed pixels over the window of 2 radius + 1 pixels around
// it, truncated. The row's ends stand for what lies beyond them. The result is not the row.
void BlurRow(const std::uint8_t* row, int channels, std::int32_t width, std::int32_t radius, std::uint8_t* result);

}  // namespace rows
