// Picking whole pixels of rows by the same columns, planned once for all rows.
//
// A step makes some bytes of the result at once, which all come from the few bytes behind one place of the
// row: which of them is the same in every row. Steps reach as far as neither they read past the row nor
// write past the result; pixels after them, or all where columns lie too far apart, are picked one by one.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// Bytes that a step makes at most, and the bytes of the row that it sees for each of them.
inline constexpr std::int32_t kMostStepBytes = 64;
inline constexpr std::int32_t kStepReach = 2;

// Pixels that are picked, and the steps. Who plans them owns the arrays.
struct PickedPixels {
    std::int32_t pixelSize;       // 1 to 4 bytes
    std::int32_t width;           // of the row, in pixels
    const std::int32_t* columns;  // `count` of them, which don't fall and are below width
    std::int32_t count;

    std::int32_t stepBytes;  // of the result; a last byte that fills no pixel is the next step's first
    std::int32_t steps;
    std::int32_t* from;   // where a step's bytes begin in the row; room for count elements
    std::uint8_t* index;  // stepBytes for each step, counted from there; room for count × 4 + kMostStepBytes

    std::int32_t StepPixels() const { return stepBytes / pixelSize; }
};

// Plans the steps for the active level, none for the plain one: fills in what follows `count`, but for the
// arrays themselves.
void PlanPickSteps(PickedPixels& pixels);

// Makes the steps' bytes. The result is apart from the row.
using PickStepsFunction = void(const PickedPixels& pixels, const std::uint8_t* row, std::uint8_t* picked);
extern const Forms<PickStepsFunction> kPickSteps;

// Picks all `count` pixels by a form of kPickSteps for the level that they were planned for.
void PickRow(const PickedPixels& pixels, PickStepsFunction* steps, const std::uint8_t* row, std::uint8_t* picked);

}  // namespace rows
