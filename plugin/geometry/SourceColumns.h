// The source columns that some neighbouring columns of a scaling are made of.
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/rows/Blocks.h"

namespace tqx {

struct SourceColumns {
    std::int32_t first;
    std::int32_t count;
};

// Of any lists of taps, none of them empty. They needn't ascend: weights of 0 at the ends are left out.
template <class Lists>
SourceColumns SourceColumnsOf(const Lists& lists, const rows::Block& columns) {
    std::int32_t first = lists[columns.first].first, end = first;
    for (std::int32_t x = columns.first; x < columns.End(); ++x) {
        first = std::min(first, lists[x].first);
        end = std::max(end, lists[x].first + lists[x].count);
    }
    return {first, end - first};
}

}  // namespace tqx
