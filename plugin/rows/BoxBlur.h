// Box sums of packed rows: columns of samples down a picture, and windows along a row.
//
// Sums are 32 bits wide, or 16 where that is enough and quicker. The caller sees to it that
// 255 × (2 radius + 1) fits into them.
#pragma once

#include <cstdint>

namespace rows {

// Whether sums of so many samples can be 16 bits wide: 3 to 201 of them.
bool FitsWords(std::int32_t size);

// Sums of the columns of `size` rows, `size` odd; Sum is std::int32_t, or std::uint16_t where that
// fits. Made once an operation.
template <class Sum>
struct ColumnBlur {
    std::int32_t size;
    void (*add)(const std::uint8_t* row, std::int32_t times, std::int32_t count, Sum* sums);
    void (*slide)(Sum* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
                  std::int32_t count, std::uint8_t* result);
};

template <class Sum>
ColumnBlur<Sum> PlanColumnBlur(std::int32_t size);

// sums[i] += times × row[i].
template <class Sum>
void AddRow(const ColumnBlur<Sum>& blur, const std::uint8_t* row, std::int32_t times, std::int32_t count, Sum* sums);

// For each column: result = sum / size, truncated (sums are at most 255 × size); then the sum loses
// `leaving` and gains `entering`. A null row is all zero. The result is neither row.
template <class Sum>
void SlideRow(const ColumnBlur<Sum>& blur, Sum* sums, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result);

// Windows that slide along a stretch of a row: at each step the sums lose one pixel and gain one.
struct WindowStretch {
    const std::uint8_t* leaving;
    const std::uint8_t* entering;
    std::int64_t count;  // bytes, whole pixels
    std::uint8_t* result;
};

// Windows of 2 radius + 1 pixels along rows; made once an operation.
struct RowBlur {
    std::int32_t radius;
    // Stores the means of a stretch and leaves the sums of `channels` channels as they are behind it.
    void (*stretch)(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums);
};

RowBlur PlanRowBlur(std::int32_t radius);

// Averages each channel of `width` packed pixels over the window around it, truncated. The row's
// ends stand for what lies beyond them. The result is not the row.
void BlurRow(const RowBlur& blur, const std::uint8_t* row, int channels, std::int32_t width, std::uint8_t* result);

}  // namespace rows
