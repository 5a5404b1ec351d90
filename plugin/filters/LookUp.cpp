#include "plugin/filters/LookUp.h"

#include <cstdint>

#include "plugin/buffer/RowWalk.h"
#include "plugin/buffer/Sharing.h"

namespace tqx {

namespace {

rows::Tables TablesOf(const Curves& curves, rows::ChannelSet set) {
    switch (set) {
        case rows::ChannelSet::Gray:
            return {{curves.gray}};
        case rows::ChannelSet::GrayAlpha:
            return {{curves.gray, curves.alpha}};
        case rows::ChannelSet::Rgb:
            return {{curves.red, curves.green, curves.blue}};
        case rows::ChannelSet::RgbAlpha:
            break;
    }
    return {{curves.red, curves.green, curves.blue, curves.alpha}};
}

}  // namespace

void LookUpPicture(const Operation& operation, const Curves& curves) {
    const rows::LookUpPlan plan =
        rows::PlanLookUp(operation.channels, TablesOf(curves, operation.channels), operation.From(), operation.To());
    const auto lookUp = SharingOf(operation) == Sharing::Overlapping ? &rows::LookUpInOrder : &rows::LookUpRow;
    const std::int32_t width = operation.CommonWidth();
    const RowRange range = operation.Rows();
    RowWalk sourceWalk(*operation.source, range), destinationWalk(*operation.destination, range);
    for (std::int32_t y = range.first; y < range.end; ++y) {
        sourceWalk.To(y);
        destinationWalk.To(y);
        const std::uint8_t* const source = RowAddress(*operation.source, y);
        std::uint8_t* const destination = RowAddress(*operation.destination, y);
        if (source && destination) lookUp(plan, source, destination, width);
    }
}

}  // namespace tqx
