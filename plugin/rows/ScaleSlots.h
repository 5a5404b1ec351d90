// The pixels of a scaling's intermediate picture: four single-precision slots, red, green, blue and
// alpha. Which of them a scaling uses depends on its channels.
#pragma once

#include <cstdint>

namespace rows {

inline constexpr int kSlots = 4;
inline constexpr int kSlotPixelSize = 16;  // bytes

struct SlotLayout {
    int values;        // of a pixel, 1 to 4
    int slot[kSlots];  // of each value
    bool clearsRest;   // slots without a value become 0; else they stay as they are
};

// Writes pixels from their values, each of which a single can hold. The row may lie at any address.
void ValuesToSlots(const SlotLayout& layout, const double* values, std::int64_t pixels, std::uint8_t* row);

// The reverse.
void SlotsToValues(const SlotLayout& layout, const std::uint8_t* row, std::int64_t pixels, double* values);

}  // namespace rows
