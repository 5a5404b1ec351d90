// One walk over source and destination, through tables by the channels' order.
#include "plugin/filters/LookUp.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

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

int TableCount(const rows::Tables& tables) {
    return static_cast<int>(std::count_if(std::begin(tables.channel), std::end(tables.channel),
                                          [](const rows::Table* table) { return table != nullptr; }));
}

}  // namespace

void LookUpPicture(Operation& operation, const Curves& curves) {
    const rows::Tables tables = TablesOf(curves, operation.channels);
    const rows::LookUpPlan plan = rows::PlanLookUp(operation.channels, tables, operation.From(), operation.To());
    const auto lookUp = operation.Sharing() == Sharing::Overlapping ? &rows::LookUpInOrder : &rows::LookUpRow;
    const std::int32_t width = operation.CommonWidth();
    operation.WillWrite(TableCount(tables));
    const RowRange range = operation.Rows();
    RowPairs pairs(operation.source, operation.destination);
    for (std::int32_t y = range.first; y < range.end; ++y)
        if (const RowPair pair = pairs.At(y, y)) lookUp(plan, pair.source, pair.destination, width);
}

}  // namespace tqx
