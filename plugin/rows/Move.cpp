// Plans of moves as shuffles, and the moves one by one.
#include "plugin/rows/Move.h"

#include <algorithm>
#include <cstring>

#include "plugin/rows/AskFor.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Forms.h"

namespace rows {

namespace {

// The definition. `step` is the way from a source pixel to the next one, in bytes.
template <int Count>
void MovePlain(const PixelMoves& moves, const std::uint8_t* source, std::int64_t step, std::uint8_t* destination,
               std::int32_t width) {
    for (std::int64_t x = 0; x < width; ++x) {
        const std::uint8_t* const from = source + x * step;
        std::uint8_t* const to = destination + x * moves.toPixelSize;
        std::uint8_t value[Count];
        for (int i = 0; i < Count; ++i) value[i] = from[moves.from[i]] ^ moves.flip[i];
        for (int i = 0; i < Count; ++i) to[moves.to[i]] = value[i];
    }
}

void MovePlainOf(const PixelMoves& moves, const std::uint8_t* source, std::int64_t step, std::uint8_t* destination,
                 std::int32_t width) {
    switch (moves.count) {
        case 1:
            return MovePlain<1>(moves, source, step, destination, width);
        case 2:
            return MovePlain<2>(moves, source, step, destination, width);
        case 3:
            return MovePlain<3>(moves, source, step, destination, width);
        case 4:
            return MovePlain<4>(moves, source, step, destination, width);
        default:
            return;
    }
}

// The definition of a form.
void MoveEach(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
              bool reversed) {
    const std::int64_t size = plan.moves.fromPixelSize;
    MovePlainOf(plan.moves, reversed ? source + (width - 1) * size : source, reversed ? -size : size, destination,
                width);
}

void FillShuffle(const PixelMoves& moves, MoveShuffle& shuffle) {
    shuffle.pixels = 64 / std::max(moves.fromPixelSize, moves.toPixelSize);
    for (std::int32_t pixel = 0; pixel < shuffle.pixels; ++pixel) {
        const std::int32_t opposite = shuffle.pixels - 1 - pixel;
        for (std::int32_t i = 0; i < moves.count; ++i) {  // of two moves to one byte the later counts
            const std::int32_t at = pixel * moves.toPixelSize + moves.to[i];
            shuffle.index[at] = static_cast<std::uint8_t>(pixel * moves.fromPixelSize + moves.from[i]);
            shuffle.reversed[at] = static_cast<std::uint8_t>(opposite * moves.fromPixelSize + moves.from[i]);
            shuffle.flip[at] = moves.flip[i];
            shuffle.written[at] = 255;
        }
    }
}

// One of the bytes of a lane's sources.
void SetIndex(std::uint8_t (&index)[4][16], std::int32_t at, std::int32_t from) {
    for (std::int32_t part = 0; part < 4; ++part)
        index[part][at] = static_cast<std::uint8_t>(from / 16 == part ? from % 16 : 128);
}

void FillLanes(const MovePlan& plan, MoveLanes& lanes) {
    const PixelMoves& moves = plan.moves;
    lanes.pixels = 16 / moves.toPixelSize;
    lanes.sources = (lanes.pixels * moves.fromPixelSize + 15) / 16;
    // In reverse the sources end where the pixels end.
    const auto shift = static_cast<std::int32_t>(16 * lanes.sources - plan.from.Extent(lanes.pixels));
    std::int32_t bytes = 0;
    for (std::int32_t pixel = 0; pixel < lanes.pixels; ++pixel)
        for (std::int32_t i = 0; i < moves.count; ++i) {
            const std::int32_t at = pixel * moves.toPixelSize + moves.to[i];
            const std::int32_t opposite = lanes.pixels - 1 - pixel;
            SetIndex(lanes.index, at, pixel * moves.fromPixelSize + moves.from[i]);
            SetIndex(lanes.reversed, at, opposite * moves.fromPixelSize + moves.from[i] + shift);
            lanes.flip[at] = moves.flip[i];
            bytes += lanes.written[at] == 0;
            lanes.written[at] = 255;
        }
    lanes.writesAll = bytes == lanes.pixels * moves.toPixelSize;
}

// Trades `count` pixels at the left with as many at the right, through copies of both.
void TradeEnds(const MovePlan& plan, std::uint8_t* left, std::uint8_t* right, std::int32_t count) {
    constexpr std::int32_t kMostBytes = 1024;
    std::uint8_t leftCopy[kMostBytes];
    std::uint8_t rightCopy[kMostBytes];
    const auto size = static_cast<std::size_t>(plan.to.Extent(count));
    AskFor(left + 2 * kMostBytes, kMostBytes);  // what the next ends but one are
    AskFor(right - 2 * kMostBytes, kMostBytes);
    std::memcpy(leftCopy, left, size);
    std::memcpy(rightCopy, right, size);
    plan.form(plan, rightCopy, left, count, true);
    plan.form(plan, leftCopy, right, count, true);
}

// Mirrors by pieces of both halves.
void MirrorByEnds(const MovePlan& plan, std::uint8_t* row, std::int32_t width) {
    constexpr std::int32_t kPixelsATime = 252;  // whole steps of every form; four bytes each fit
    const std::int32_t half = width / 2;
    for (const auto [done, count] : Blocks(half, kPixelsATime)) {
        const std::int64_t size = plan.moves.toPixelSize;
        TradeEnds(plan, row + done * size, row + (std::int64_t{width} - done - count) * size, count);
    }
}

bool Copies(const PixelMoves& moves) {
    if (moves.fromPixelSize != moves.toPixelSize) return false;
    unsigned bytes = 0;
    for (std::int32_t i = 0; i < moves.count; ++i) {
        if (moves.from[i] != moves.to[i] || moves.flip[i] != 0) return false;
        bytes |= 1U << moves.to[i];
    }
    return bytes + 1 == 1U << moves.toPixelSize;
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/MoveWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<MoveFunction> kMoveRow = ROWS_FORMS(MoveEach, MoveAhead);

// Of whole pixels that fill lanes.
constexpr Forms<MirrorFunction> kMirrorRow = ROWS_FORMS(MirrorByEnds, MirrorRegisters);

}  // namespace

void PixelMoves::Add(std::int32_t fromOffset, std::int32_t toOffset, std::uint8_t flipped) {
    from[count] = fromOffset;
    to[count] = toOffset;
    flip[count] = flipped;
    ++count;
}

PixelMoves MovesBetween(ChannelSet set, const PixelLayout& from, const PixelLayout& to) {
    PixelMoves moves{from.pixelSize, to.pixelSize};
    for (int channel = 0; channel < ChannelCount(set); ++channel) moves.Add(from.offset[channel], to.offset[channel]);
    return moves;
}

MovePlan PlanMoves(const PixelMoves& moves, std::int64_t bytes) {
    constexpr std::int32_t kLargestPixel = 4;
    MovePlan plan{};
    plan.form = kMoveRow.Chosen();
    plan.moves = moves;
    plan.from = SpanOf(moves.fromPixelSize, moves.from, moves.count);
    plan.to = SpanOf(moves.toPixelSize, moves.to, moves.count);
    for (std::int32_t i = 0; i < moves.count; ++i) {
        plan.moves.from[i] -= plan.from.offset;
        plan.moves.to[i] -= plan.to.offset;
    }
    plan.compact = moves.count > 0 && plan.from.IsCompact() && plan.to.IsCompact() &&
                   moves.fromPixelSize <= kLargestPixel && moves.toPixelSize <= kLargestPixel;
    if (!plan.compact) return plan;
    plan.copies = Copies(plan.moves);
    plan.mirror = plan.copies && 16 % moves.toPixelSize == 0 ? kMirrorRow.Chosen() : &MirrorByEnds;
    if (plan.copies && bytes >= kBytesToStream) plan.stream = kStreamCopy.Chosen();
    FillShuffle(plan.moves, plan.shuffle);
    FillLanes(plan, plan.lanes);
    return plan;
}

void MoveRow(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    const bool ahead = plan.compact && MayReadAhead(plan.from, source, plan.to, destination, width);
    const bool streams = plan.stream && AreDisjoint(plan.from, source, plan.to, destination, width);
    source += plan.from.offset;
    destination += plan.to.offset;
    if (!ahead)
        MovePlainOf(plan.moves, source, plan.moves.fromPixelSize, destination, width);
    else if (streams)
        plan.stream(source, destination, plan.to.Extent(width));
    else if (plan.copies)
        std::memmove(destination, source, static_cast<std::size_t>(width) * plan.moves.fromPixelSize);
    else
        plan.form(plan, source, destination, width, false);
}

void MoveRowReversed(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    const bool ahead = plan.compact && AreDisjoint(plan.from, source, plan.to, destination, width);
    source += plan.from.offset;
    destination += plan.to.offset;
    const std::int64_t size = plan.moves.fromPixelSize;
    if (ahead)
        plan.form(plan, source, destination, width, true);
    else
        MovePlainOf(plan.moves, source + (width - 1) * size, -size, destination, width);
}

namespace {

// The definition of MirrorRow.
void MirrorPlain(const PixelMoves& moves, std::uint8_t* row, std::int32_t width) {
    for (std::int32_t i = 0; i < width / 2; ++i) {
        std::uint8_t* const left = row + std::int64_t{i} * moves.toPixelSize;
        std::uint8_t* const right = row + (std::int64_t{width} - 1 - i) * moves.toPixelSize;
        std::uint8_t fromLeft[4], fromRight[4];
        for (std::int32_t c = 0; c < moves.count; ++c) {
            fromLeft[c] = left[moves.to[c]];
            fromRight[c] = right[moves.to[c]];
        }
        for (std::int32_t c = 0; c < moves.count; ++c) left[moves.to[c]] = fromRight[c];
        for (std::int32_t c = 0; c < moves.count; ++c) right[moves.to[c]] = fromLeft[c];
    }
}

}  // namespace

void MirrorRow(const MovePlan& plan, std::uint8_t* row, std::int32_t width) {
    if (width <= 1) return;
    row += plan.to.offset;
    if (!plan.compact) return MirrorPlain(plan.moves, row, width);
    plan.mirror(plan, row, width);
}

}  // namespace rows
