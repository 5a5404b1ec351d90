// Masked draws and blends plainly, and the plans that the wide forms read.
#include "plugin/rows/HostPixels.h"

#include <algorithm>

namespace rows {

namespace {

constexpr int kHostPixel = 4;
constexpr int kColors = 3;
constexpr int kLanePixels = 4;

constexpr std::uint8_t Blend(int keep, int destination, int picture) {
    return static_cast<std::uint8_t>((keep * destination + (255 - keep) * picture) / 255);
}

// The definition: one pixel after the other.
void DrawMaskedPlain(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                     std::uint8_t* destination, std::int32_t width) {
    const PixelLayout& to = plan.layout;
    for (std::int32_t x = 0; x < width; ++x) {
        const std::uint8_t colors[kColors] = {picture[1], picture[2], picture[3]};
        destination[to.offset[3]] = (mask ? mask[1] : std::uint8_t{255}) ^ plan.flip;
        for (int c = 0; c < kColors; ++c) destination[to.offset[c]] = colors[c];
        picture += kHostPixel;
        if (mask) mask += kHostPixel;
        destination += to.pixelSize;
    }
}

// The definition, likewise.
void BlendMaskedPlain(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                      std::uint8_t* destination, std::int32_t width) {
    const PixelLayout& to = plan.layout;
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t blended[kColors];
        for (int c = 0; c < kColors; ++c)
            blended[c] = Blend(mask[c + 1] ^ plan.flip, destination[to.offset[c]], picture[c + 1]);
        for (int c = 0; c < kColors; ++c) destination[to.offset[c]] = blended[c];
        picture += kHostPixel;
        mask += kHostPixel;
        destination += to.pixelSize;
    }
}

// Byte `host` of every host pixel goes to a channel of its destination pixel; what was planned for
// the same place before gives way.
void PlanByte(MaskedPlan& plan, int host, std::int32_t offset, bool fromMask, std::uint8_t flip) {
    for (std::int32_t pixel = 0; pixel < kLanePixels; ++pixel) {
        const std::int32_t at = pixel * plan.layout.pixelSize + (offset - plan.span.offset);
        const std::int32_t from = pixel * kHostPixel + host;
        plan.index[at] = static_cast<std::uint8_t>(from);
        plan.inverse[from] = static_cast<std::uint8_t>(at);
        plan.fromMask[at] = fromMask ? 255 : 0;
        plan.maskFlip[at] = flip;
        plan.written[at] = 255;
    }
}

MaskedPlan BeginPlan(const PixelLayout& to, int channels, bool invert) {
    MaskedPlan plan{};
    plan.layout = to;
    plan.flip = invert ? 255 : 0;
    plan.host = {kHostPixel, 1, kColors};
    plan.span = SpanOf(to.pixelSize, to.offset, channels);
    plan.compact = plan.span.IsCompact() && (to.pixelSize == 3 || to.pixelSize == 4);
    return plan;
}

void PlanColors(MaskedPlan& plan) {
    for (int c = 0; c < kColors; ++c) PlanByte(plan, c + 1, plan.layout.offset[c], false, 0);
}

// Whether several pixels may be read before the first of them is written.
bool MayWiden(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
              const std::uint8_t* destination, std::int32_t width) {
    return plan.compact && MayReadAhead(plan.host, picture, plan.span, destination, width) &&
           (!mask || MayReadAhead(plan.host, mask, plan.span, destination, width));
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/HostPixelsWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<MaskedFunction> kDrawRow = ROWS_FORMS(DrawMaskedPlain, DrawMasked);
constexpr Forms<MaskedFunction> kBlendRow = ROWS_FORMS(BlendMaskedPlain, BlendMasked);

}  // namespace

MaskedPlan PlanMaskedDraw(const PixelLayout& to, bool invert) {
    MaskedPlan plan = BeginPlan(to, kColors + 1, invert);
    plan.form = kDrawRow.Chosen();
    if (!plan.compact) return plan;
    PlanByte(plan, 1, to.offset[3], true, plan.flip);  // the mask's red
    PlanColors(plan);
    return plan;
}

MaskedPlan PlanMaskedBlend(const PixelLayout& to, bool invert) {
    MaskedPlan plan = BeginPlan(to, kColors, invert);
    plan.form = kBlendRow.Chosen();
    if (plan.compact) PlanColors(plan);
    return plan;
}

void DrawMaskedRow(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                   std::uint8_t* destination, std::int32_t width) {
    const bool ahead = width > 0 && MayWiden(plan, picture, mask, destination, width);
    (ahead ? plan.form : &DrawMaskedPlain)(plan, picture, mask, destination, width);
}

void BlendMaskedRow(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                    std::uint8_t* destination, std::int32_t width) {
    const bool ahead = width > 0 && MayWiden(plan, picture, mask, destination, width);
    (ahead ? plan.form : &BlendMaskedPlain)(plan, picture, mask, destination, width);
}

}  // namespace rows
