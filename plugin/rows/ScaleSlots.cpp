// Values to slots and back.
#include "plugin/rows/ScaleSlots.h"

#include <cstring>

namespace rows {

namespace {

template <int Values>
void ToSlots(const int* slot, const double* values, std::int64_t pixels, std::uint8_t* row) {
    for (std::int64_t x = 0; x < pixels; ++x)
        for (int c = 0; c < Values; ++c) {
            const float value = static_cast<float>(values[x * Values + c]);
            std::memcpy(row + x * kSlotPixelSize + slot[c] * 4, &value, sizeof(value));
        }
}

template <int Values>
void FromSlots(const int* slot, const std::uint8_t* row, std::int64_t pixels, double* values) {
    for (std::int64_t x = 0; x < pixels; ++x)
        for (int c = 0; c < Values; ++c) {
            float value;
            std::memcpy(&value, row + x * kSlotPixelSize + slot[c] * 4, sizeof(value));
            values[x * Values + c] = value;
        }
}

}  // namespace

void ValuesToSlots(const SlotLayout& layout, const double* values, std::int64_t pixels, std::uint8_t* row) {
    if (pixels <= 0) return;
    if (layout.clearsRest) std::memset(row, 0, static_cast<std::size_t>(pixels) * kSlotPixelSize);
    switch (layout.values) {
        case 1:
            return ToSlots<1>(layout.slot, values, pixels, row);
        case 2:
            return ToSlots<2>(layout.slot, values, pixels, row);
        case 3:
            return ToSlots<3>(layout.slot, values, pixels, row);
        default:
            return ToSlots<4>(layout.slot, values, pixels, row);
    }
}

void SlotsToValues(const SlotLayout& layout, const std::uint8_t* row, std::int64_t pixels, double* values) {
    switch (layout.values) {
        case 1:
            return FromSlots<1>(layout.slot, row, pixels, values);
        case 2:
            return FromSlots<2>(layout.slot, row, pixels, values);
        case 3:
            return FromSlots<3>(layout.slot, row, pixels, values);
        default:
            return FromSlots<4>(layout.slot, row, pixels, values);
    }
}

}  // namespace rows
