#include "rows/LookUp.h"

namespace rows {

namespace {

// The definition: one pixel after the other.
template <ChannelSet Set>
void LookUpPlain(const Tables& tables, const PixelLayout& from, const std::uint8_t* source, const PixelLayout& to,
                 std::uint8_t* destination, std::int32_t width) {
    constexpr int kCount = ChannelCount(Set);
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t value[kCount];
        for (int c = 0; c < kCount; ++c) value[c] = source[from.offset[c]];
        for (int c = 0; c < kCount; ++c)
            if (tables.channel[c]) destination[to.offset[c]] = tables.channel[c]->entry[value[c]];
        source += from.pixelSize;
        destination += to.pixelSize;
    }
}

}  // namespace

void LookUpRow(ChannelSet set, const Tables& tables, const PixelLayout& from, const std::uint8_t* source,
               const PixelLayout& to, std::uint8_t* destination, std::int32_t width) {
    ForChannelSet(set, [&]<ChannelSet Set>() { LookUpPlain<Set>(tables, from, source, to, destination, width); });
}

}  // namespace rows
