// Differences to a reference, by tables or in doubles, as the amount allows.
#include "plugin/filters/Unsharp.h"

#include <cmath>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/Unsharp.h"

namespace tqx {

namespace {

bool AreAlike(const PixelBuffer& a, const PixelBuffer& b) {
    return a.Width == b.Width && a.Height == b.Height && a.ImageFormat == b.ImageFormat;
}

// Both pictures' channels in an order that is the same for both.
PackedOrder OrderFor(const RowCursor& picture, const RowCursor& reference, rows::ChannelSet set) {
    return LayoutOf(picture.Picture(), set) == LayoutOf(reference.Picture(), set) ? PackedOrder::AsItSuits
                                                                                  : PackedOrder::OfTheSet;
}

// Rows of the picture and of its reference, and room for a packed copy of either.
class Sharpening {
  public:
    Sharpening(RowCursor& picture, RowCursor& reference, rows::ChannelSet set, const rows::UnsharpRule& rule)
        : picture_(picture, picture, set, OrderFor(picture, reference, set)),
          reference_(reference, reference, set, OrderFor(picture, reference, set)),
          sharing_(SharingOf(reference.Picture(), picture.Picture(), set)),
          byRows_(sharing_ != Sharing::Overlapping && HasBytesOfItsOwn(picture.Picture(), set)),
          plan_(rows::PlanUnsharp(rule, byRows_ ? picture_.BytesOf(picture->Width) * picture->Height : 0)),
          samples_(picture_.BytesOf(Step())),
          references_(picture_.BytesOf(Step())) {}

    // False when memory was short.
    explicit operator bool() const { return samples_ && references_; }

    // Pixels at once: a pixel written may be the reference of a later one.
    std::int32_t Step() const { return byRows_ ? picture_.Width() : 1; }

    // Sharpens `Step` pixels; false when either picture has no row y.
    bool At(std::int32_t y, std::int32_t first) const {
        const std::uint8_t* const references = References(y, first);
        if (!references) return false;
        const std::int64_t bytes = picture_.BytesOf(Step());
        if (std::uint8_t* const row = picture_.PackedInPlace(y, first, Step())) {
            rows::UnsharpRow(plan_, references, bytes, row);
            return true;
        }
        if (!picture_.Read(y, first, Step(), samples_.data())) return false;
        rows::UnsharpRow(plan_, references, bytes, samples_.data());
        picture_.Write(y, first, Step(), samples_.data());
        return true;
    }

  private:
    const std::uint8_t* References(std::int32_t y, std::int32_t first) const {
        if (sharing_ == Sharing::Apart) return reference_.Packed(y, first, Step(), references_.data());
        return reference_.Read(y, first, Step(), references_.data()) ? references_.data() : nullptr;
    }

    PackedRows picture_;
    PackedRows reference_;
    Sharing sharing_;
    bool byRows_;
    rows::UnsharpPlan plan_;
    ScratchBytes samples_;
    ScratchBytes references_;
};

// False when memory is short.
bool Sharpen(RowCursor& picture, RowCursor& reference, rows::ChannelSet set, const rows::UnsharpRule& rule) {
    const Sharpening sharpening(picture, reference, set, rule);
    if (!sharpening) return false;
    const RowRange range = CommonRows(picture.Rows(), reference.Rows());
    for (std::int32_t y = range.first; y < range.end; ++y)
        for (const rows::Block part : rows::Blocks(picture->Width, sharpening.Step()))
            if (!sharpening.At(y, part.first)) break;
    return true;
}

}  // namespace

bool UnsharpFilter(sdk::Object* self, sdk::Object* reference, double amount, std::int32_t threshold) {
    if (!reference) return false;
    RowCursor picture(*BufferOf(self)), other(*BufferOf(reference));
    if (!picture->Valid || !other->Valid || !AreAlike(picture.Picture(), other.Picture())) return false;
    if (!IsUsable(other.Picture()) || !Begin({&picture, &other})) return false;
    rows::ChannelSet set;
    if (!ChooseChannels(picture.Picture(), &set) || picture->Width <= 0) return true;
    return Sharpen(picture, other, set, {std::fma(4.0, amount, 1.0), threshold});
}

}  // namespace tqx
