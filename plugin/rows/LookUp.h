// Mapping bytes through tables.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

// 256 entries, indexed by the source byte.
struct Table {
    std::uint8_t entry[256];
};

// One table a channel of the set, in its order; null: the channel is neither read nor written.
struct Tables {
    const Table* channel[4];
};

// Tables by their bytes in neighbouring pixels, of which so many fill 192 bytes that every pixel
// size from 1 to 4 and every register begins anew after them.
struct LookUpLanes {
    static constexpr int kPeriod = 192;
    int tables;  // different ones
    const Table* table[4];
    std::uint8_t lanes[4][kPeriod];  // 255: the byte goes through the table
    std::uint8_t written[kPeriod];   // through any
    bool writesAll;                  // every byte goes through one
};

struct LookUpPlan;
using LookUpFunction = void(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                            std::int32_t width);

// A mapping, prepared once an operation. The tables must live as long.
struct LookUpPlan {
    LookUpFunction* form;  // for rows that may be read ahead
    ChannelSet set;
    Tables tables;
    PixelLayout from;
    PixelLayout to;
    PixelSpan span;  // of all channels, in both layouts; only where `inPlace`
    bool inPlace;    // every channel keeps its place in the pixel: wider forms can run
    LookUpLanes lanes;
};

LookUpPlan PlanLookUp(ChannelSet set, const Tables& tables, const PixelLayout& from, const PixelLayout& to);

// For each of `width` pixels from left to right: reads the channels of the set from the source
// pixel, then writes their table entries to the destination's channels in the set's order. The
// rows may overlap with that meaning. A width of 0 or below does nothing.
void LookUpRow(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width);

// The same, pixel by pixel even where the addresses don't tell that the rows overlap, as those of
// two mappings of one file.
void LookUpInOrder(const LookUpPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width);

}  // namespace rows
