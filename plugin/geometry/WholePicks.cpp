// The columns' plan, and rows that are kept to be copied again.
#include "plugin/geometry/WholePicks.h"

namespace tqx {

namespace {

constexpr std::int32_t kWidest = 1 << 16;  // pixels; the plan takes up to 12 bytes for each

}  // namespace

bool WholePicks::Prepare(const rows::ConversionPlan& plan, std::int32_t sourceWidth, std::int32_t width) {
    if (!plan.byMoves || !plan.moves.copies || width > kWidest || sourceWidth > kWidest) return false;
    if (!columns_.Allocate(width) || !stepFrom_.Allocate(width) || !index_.Allocate(width, 4, rows::kMostStepBytes))
        return false;
    const double step = static_cast<double>(sourceWidth) / width;
    for (std::int32_t x = 0; x < width; ++x) columns_[x] = SourceOf(step, x);
    pixels_.pixelSize = plan.conversion.from.pixelSize;
    pixels_.width = sourceWidth;
    pixels_.columns = columns_.data();
    pixels_.count = width;
    pixels_.from = stepFrom_.data();
    pixels_.index = index_.data();
    rows::PlanPickSteps(pixels_);
    steps_ = rows::kPickSteps.Chosen();
    from_ = plan.from.offset;
    to_ = plan.to.offset;
    return true;
}

bool WholePicks::MakeApart(std::int64_t bytes) {
    copy_ = bytes >= rows::kBytesToStream ? rows::kStreamCopy.Chosen() : rows::kStreamCopy.plain;
    return row_.Allocate(pixels_.count, pixels_.pixelSize);
}

void WholePicks::Pick(const std::uint8_t* source, bool again, std::uint8_t* destination) const {
    if (!row_) return rows::PickRow(pixels_, steps_, source + from_, destination + to_);
    if (!again) rows::PickRow(pixels_, steps_, source + from_, row_.data());
    copy_(row_.data(), destination + to_, std::int64_t{pixels_.count} * pixels_.pixelSize);
}

}  // namespace tqx
