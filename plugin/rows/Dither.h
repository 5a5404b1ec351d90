// Ordered dithering of packed rows.
#pragma once

#include <cstdint>

namespace rows {

// What a byte becomes: `lower` in the cells of the threshold matrix whose value is below `limit`,
// `upper` in the others. Indexed by the byte.
struct DitherTables {
    std::uint8_t limit[256];
    std::uint8_t lower[256];
    std::uint8_t upper[256];
    bool twoLevels;  // lower and upper are the same for all bytes
};

// One row of a threshold matrix, repeated along the picture's row.
struct DitherCells {
    const std::uint8_t* threshold;
    std::int32_t size;
};

// Packed pixels of a row, the first of them in column `first`. All channels of a pixel share its
// cell. The result may be the pixels themselves, and may not otherwise overlap them.
struct DitherJob {
    DitherCells cells;
    std::int32_t first;
    int channels;
    std::int32_t count;  // pixels
    const std::uint8_t* pixels;
    std::uint8_t* result;
};

struct DitherPlan;
using DitherFunction = void(const DitherPlan& plan, const DitherJob& job);

// Tables, and what the wider forms need of them; made once an operation.
struct DitherPlan {
    DitherFunction* form;
    DitherTables tables;
    std::uint8_t highest[256];  // by threshold: the highest byte that becomes `upper`
};

DitherPlan PlanDither(const DitherTables& tables);

void DitherRow(const DitherPlan& plan, const DitherJob& job);

}  // namespace rows
