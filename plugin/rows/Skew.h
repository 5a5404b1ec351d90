// Shearing: moving the pixels of a row, or each column of some rows, by a distance that is no
// whole number.
//
// A shear by offset + weight (0 to 1) splits every value v: trunc(weight · v) is left behind for the
// next pixel, which passes on what it got from the one before. So pixel offset + i of the result
// is v[i] - left[i] + left[i - 1], in bytes that wrap; before the first pixel and after the last
// stands the background. Rotation by three shears: Paeth (A Fast Algorithm for General Raster
// Rotation, 1986).
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/rows/Fill.h"
#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

// What a value leaves for the next pixel.
inline std::uint8_t LeftOfSkew(double weight, std::uint8_t value) {
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(weight * value));
}

// The background after the last pixel, given what that one left.
inline std::uint8_t EndOfSkew(double weight, std::uint8_t background, std::uint8_t left) {
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(background - (weight * background - left)));
}

// A weight as 65536ths, rounded down, 65535 for 1. Unless the fraction of share × v and v itself add up
// to 1 or more, its whole part is that of weight × v in doubles: the true product lies between
// share × v and (share + 1) × v 65536ths, and where no whole number does, none is within rounding.
inline std::uint16_t ShareOfSkew(double weight) {
    return static_cast<std::uint16_t>(std::min(static_cast<std::int32_t>(weight * 65536), 65535));
}

// What each value of a row leaves for the next pixel.
struct SkewTables {
    std::uint8_t left[256];
    std::uint16_t share;
};

struct SkewPlan;
using MakeSkewTablesFunction = void(double weight, SkewTables* tables);
using ShearFunction = void(const SkewPlan& plan, const SkewTables& tables, const std::uint8_t* source,
                           std::uint8_t* destination, std::int64_t count);

// Which channels are sheared, and over what; made once a pass.
struct SkewPlan {
    MakeSkewTablesFunction* makeTables;
    ShearFunction* shear;  // of pixels in place, each with one before it; from the first channel byte on both sides
    int count;             // channels, 1 to 4
    PixelLayout from;
    PixelLayout to;
    std::uint8_t background[4];
    PixelSpan fromSpan;
    PixelSpan toSpan;
    PixelPattern fill;  // the background, where toSpan is compact
    bool inPlace;       // channels keep their places within pixels of 1 to 4 bytes
    static constexpr int kPeriod = 192;
    std::uint8_t channels[kPeriod];  // 255: the byte of neighbouring pixels is a channel
    bool writesAll;                  // every byte is one
};

SkewPlan PlanSkew(int count, const PixelLayout& from, const PixelLayout& to, const std::uint8_t* background);

// Fills the channels of `width` pixels with the background.
void FillBackground(const SkewPlan& plan, std::uint8_t* row, std::int32_t width);

// Fills the destination row with the background and shears the source row into it. What falls
// outside the destination is left out. The rows may overlap: the row is filled first, and then
// each pixel is read when its turn comes, from the left.
void SkewRow(const SkewPlan& plan, double weight, std::int64_t offset, const std::uint8_t* source,
             std::int32_t sourceWidth, std::uint8_t* destination, std::int32_t destinationWidth);

// One row of many columns: moved[i] is value[i] less what it leaves plus left[i], and left[i]
// becomes what it leaves, by each column's own weight and its share. Nothing overlaps.
using SkewColumnsFunction = void(const double* weight, const std::uint16_t* share, const std::uint8_t* value,
                                 std::uint8_t* left, std::uint8_t* moved, std::int32_t count);
extern const Forms<SkewColumnsFunction> kSkewColumns;

}  // namespace rows
