// Moving channel bytes from the pixels of one row to those of another, or within a row.
//
// A row of moves is planned once an operation and applied to any number of rows. The definition
// is the plain loop: pixel by pixel, each read whole and then written in the order of its moves.
// Wider forms run where they give the same bytes, which the plan and the rows' addresses tell.
#pragma once

#include <cstdint>

#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"
#include "plugin/rows/Streaming.h"

namespace rows {

// What moves within a pixel: byte to[i] of the destination becomes byte from[i] of the source,
// exclusive-or flip[i]. Bytes of the destination that are not named stay as they are.
struct PixelMoves {
    std::int32_t fromPixelSize = 0;  // bytes
    std::int32_t toPixelSize = 0;    // bytes
    std::int32_t count = 0;          // 0 to 4
    std::int32_t from[4] = {};       // bytes from a pixel's start
    std::int32_t to[4] = {};
    std::uint8_t flip[4] = {};

    void Add(std::int32_t fromOffset, std::int32_t toOffset, std::uint8_t flipped = 0);
};

// Every channel of a set to the same channel of another layout.
PixelMoves MovesBetween(ChannelSet set, const PixelLayout& from, const PixelLayout& to);

// The moves of neighbouring pixels as one byte shuffle of 64 bytes.
struct MoveShuffle {
    std::int32_t pixels;        // of one step
    std::uint8_t written[64];   // 255: the byte of the destination is written
    std::uint8_t index[64];     // the source byte of each destination byte, pixels in order
    std::uint8_t reversed[64];  // the same with the source's pixels in reverse
    std::uint8_t flip[64];
};

// The same as shuffles of 16 bytes, of which the sum makes 16 bytes of the destination: whole pixels,
// but for three bytes a pixel, of which there are five and a byte that has no meaning.
struct MoveLanes {
    std::int32_t pixels;
    std::int32_t sources;  // shuffles, 1 to 4: one for each 16 bytes of the source
    bool writesAll;        // all bytes of the pixels
    std::uint8_t written[16];
    std::uint8_t index[4][16];  // 128: not of this part of the source
    std::uint8_t reversed[4][16];
    std::uint8_t flip[16];
};

struct MovePlan;
using MoveFunction = void(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                          std::int32_t width, bool reversed);

using MirrorFunction = void(const MovePlan& plan, std::uint8_t* row, std::int32_t width);

// Moves and what the wider forms need of them.
struct MovePlan {
    MoveFunction* form;          // for compact plans and rows that may be read ahead; from the first moved bytes
    MirrorFunction* mirror;      // of compact plans that move a layout to itself; from the first moved byte
    PixelMoves moves;            // with the spans' offsets taken off
    PixelSpan from;              // the bytes that are read
    PixelSpan to;                // the bytes that are written
    bool compact;                // pixels of up to four bytes that don't interleave: wider forms can run
    bool copies;                 // all bytes of a pixel keep their place and value
    StreamCopyFunction* stream;  // of copies of many bytes; else null
    MoveShuffle shuffle;         // compact plans only
    MoveLanes lanes;
};

// `bytes`: of the pixels of all the rows that are written by the plan.
MovePlan PlanMoves(const PixelMoves& moves, std::int64_t bytes = 0);

// Moves `width` pixels from left to right. The rows may overlap with that meaning. A width of 0
// or below does nothing.
void MoveRow(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width);

// The same with destination pixel x taking source pixel width - 1 - x.
void MoveRowReversed(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width);

// Trades the pixels i and width - 1 - i of one row for i from 0 while i < width / 2; a middle
// pixel stays. The plan moves a layout to itself.
void MirrorRow(const MovePlan& plan, std::uint8_t* row, std::int32_t width);

}  // namespace rows
