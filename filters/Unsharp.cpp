#include "filters/Unsharp.h"

#include <cmath>

#include "buffer/Destination.h"
#include "buffer/Sharing.h"
#include "filters/PackedRows.h"
#include "platform/PixelMemory.h"
#include "rows/Unsharp.h"

namespace tqx {

namespace {

bool AreAlike(const PixelBuffer& a, const PixelBuffer& b) {
    return a.Width == b.Width && a.Height == b.Height && a.ImageFormat == b.ImageFormat;
}

// Yields for both; false when script code took either's storage meanwhile.
bool YieldForBoth(PixelBuffer& picture, PixelBuffer& reference) {
    const StorageWatch pictureWatch(picture), referenceWatch(reference);
    Yield(picture);
    if (pictureWatch.Holds() && referenceWatch.Holds()) Yield(reference);
    return pictureWatch.Holds() && referenceWatch.Holds();
}

// Row by row, or pixel by pixel where a pixel written may be the reference of a later one. False
// when memory is short.
bool Sharpen(PixelBuffer& picture, PixelBuffer& reference, rows::ChannelSet set, const rows::UnsharpRule& rule) {
    const PackedRows rows(picture, picture, set, PackedOrder::OfTheSet);
    const PackedRows references(reference, reference, set, PackedOrder::OfTheSet);
    const bool byRows = SharingOf(reference, picture, set) != Sharing::Overlapping && HasBytesOfItsOwn(picture, set);
    const std::int32_t step = byRows ? picture.Width : 1;
    const std::int64_t bytes = rows.BytesOf(step);
    const platform::PixelBlock samples(bytes), others(bytes);
    if (!samples || !others) return false;
    for (std::int32_t y = 0; y < picture.Height; ++y)
        for (std::int32_t first = 0; first < picture.Width; first += step) {
            if (!references.Read(y, first, step, others.Bytes())) break;
            if (!rows.Read(y, first, step, samples.Bytes())) break;
            rows::UnsharpRow(rule, others.Bytes(), bytes, samples.Bytes());
            rows.Write(y, first, step, samples.Bytes());
        }
    return true;
}

}  // namespace

bool UnsharpFilter(sdk::Object* self, sdk::Object* reference, double amount, std::int32_t threshold) {
    PixelBuffer& picture = *BufferOf(self);
    if (!reference) return false;
    PixelBuffer& other = *BufferOf(reference);
    if (!picture.Valid || !other.Valid || !AreAlike(picture, other)) return false;
    if (!IsUsable(picture) || !IsUsable(other) || !YieldForBoth(picture, other)) return false;
    rows::ChannelSet set;
    if (!ChooseChannels(picture, &set) || picture.Width <= 0) return true;
    return Sharpen(picture, other, set, {std::fma(4.0, amount, 1.0), threshold});
}

}  // namespace tqx
