// Three weights plainly.
#include "plugin/rows/Gray.h"

#include <algorithm>

#include "plugin/rows/Forms.h"

namespace rows {

namespace {

// The definition.
void GrayPlain(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width) {
    for (std::int64_t x = 0; x < width; ++x) {
        const std::uint8_t* const pixel = pixels + x * plan.colour.pixelSize;
        grays[x] = Gray(pixel[plan.colour.offset[0]], pixel[plan.colour.offset[1]], pixel[plan.colour.offset[2]]);
    }
}

// Of red, green, green and blue: what green weighs is in two parts.
alignas(16) [[maybe_unused]] constexpr std::int8_t kGrayWeights[16] = {77, 51, 100, 28, 77, 51, 100, 28,
                                                                       77, 51, 100, 28, 77, 51, 100, 28};

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/GrayWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<GrayFunction> kGrayRow = ROWS_FORMS(GrayPlain, GrayRow);

}  // namespace

GrayPlan PlanGray(const PixelLayout& colour) {
    GrayPlan plan{kGrayRow.Chosen(), colour, SpanOf(colour.pixelSize, colour.offset, 3), false, {}};
    plan.compact = plan.span.IsCompact() && plan.span.pixelSize <= 4;
    if (!plan.compact) return plan;
    for (int pixel = 0; pixel < 4; ++pixel)
        for (int i = 0; i < 4; ++i) {
            const std::int32_t offset = colour.offset[(i + 1) / 2] - plan.span.offset;
            plan.index[4 * pixel + i] = static_cast<std::uint8_t>(pixel * colour.pixelSize + offset);
        }
    return plan;
}

void GrayRow(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width) {
    if (width > 0) plan.form(plan, pixels, grays, width);
}

}  // namespace rows
