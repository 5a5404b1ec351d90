#include "rows/Move.h"

#include <algorithm>
#include <cstring>

#include "rows/CpuLevel.h"
#include "rows/MoveForms.h"

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

// Wider form first, what is left plain. Addresses of the first moved bytes.
void MoveAhead(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
               bool reversed) {
    std::int32_t done = 0;
#ifdef ROWS_X86
    const CpuLevel level = ActiveCpuLevel();
    if (level == CpuLevel::Avx512)
        done = MoveAvx512(plan, source, destination, width, reversed);
    else if (level == CpuLevel::Avx2)
        done = MoveAvx2(plan, source, destination, width, reversed);
#endif
    const std::int32_t left = width - done;
    if (left <= 0) return;
    const std::int64_t size = plan.moves.fromPixelSize;
    const std::uint8_t* const next = source + (reversed ? left - 1 : done) * size;
    MovePlainOf(plan.moves, next, reversed ? -size : size, destination + std::int64_t{done} * plan.moves.toPixelSize,
                left);
}

// Bytes from the first moved byte of `width` pixels to the last, both counted.
std::int64_t Extent(std::int32_t pixelSize, std::int32_t span, std::int32_t width) {
    return (std::int64_t{width} - 1) * pixelSize + span;
}

bool AreDisjoint(const MovePlan& plan, const std::uint8_t* source, const std::uint8_t* destination,
                 std::int32_t width) {
    const auto from = reinterpret_cast<std::uintptr_t>(source);
    const auto to = reinterpret_cast<std::uintptr_t>(destination);
    return from + static_cast<std::uintptr_t>(Extent(plan.moves.fromPixelSize, plan.fromSpan, width)) <= to ||
           to + static_cast<std::uintptr_t>(Extent(plan.moves.toPixelSize, plan.toSpan, width)) <= from;
}

// Of addresses of first moved bytes. Among pixels of one size a byte written by pixel i is read by
// a later one only where it lies a whole pixel or more past what pixel i reads.
bool MayReadAheadOf(const MovePlan& plan, const std::uint8_t* source, const std::uint8_t* destination,
                    std::int32_t width) {
    if (!plan.compact) return false;
    if (AreDisjoint(plan, source, destination, width)) return true;
    const auto ahead = static_cast<std::intptr_t>(reinterpret_cast<std::uintptr_t>(destination) -
                                                  reinterpret_cast<std::uintptr_t>(source));
    return plan.moves.fromPixelSize == plan.moves.toPixelSize && ahead + plan.toSpan - 1 < plan.moves.fromPixelSize;
}

void FillShuffle(const PixelMoves& moves, std::int32_t registerSize, MoveShuffle& shuffle) {
    shuffle = {};
    shuffle.pixels = registerSize / std::max(moves.fromPixelSize, moves.toPixelSize);
    for (std::int32_t pixel = 0; pixel < shuffle.pixels; ++pixel) {
        const std::int32_t opposite = shuffle.pixels - 1 - pixel;
        for (std::int32_t i = 0; i < moves.count; ++i) {  // of two moves to one byte the later counts
            const std::int32_t at = pixel * moves.toPixelSize + moves.to[i];
            shuffle.index[at] = static_cast<std::uint8_t>(pixel * moves.fromPixelSize + moves.from[i]);
            shuffle.reversed[at] = static_cast<std::uint8_t>(opposite * moves.fromPixelSize + moves.from[i]);
            shuffle.flip[at] = moves.flip[i];
            shuffle.written |= std::uint64_t{1} << at;
        }
    }
}

// Takes the least offset off a side's offsets; gives it and the span that is left.
void Normalize(std::int32_t (&offsets)[4], std::int32_t count, std::int32_t& least, std::int32_t& span) {
    least = *std::min_element(offsets, offsets + count);
    for (std::int32_t i = 0; i < count; ++i) offsets[i] -= least;
    span = *std::max_element(offsets, offsets + count) + 1;
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

MovePlan PlanMoves(const PixelMoves& moves) {
    constexpr std::int32_t kLargestPixel = 4;
    MovePlan plan{};
    plan.moves = moves;
    if (moves.count < 1) return plan;
    Normalize(plan.moves.from, moves.count, plan.fromOffset, plan.fromSpan);
    Normalize(plan.moves.to, moves.count, plan.toOffset, plan.toSpan);
    plan.compact = plan.fromSpan <= moves.fromPixelSize && plan.toSpan <= moves.toPixelSize &&
                   moves.fromPixelSize <= kLargestPixel && moves.toPixelSize <= kLargestPixel;
    if (!plan.compact) return plan;
    plan.copies = Copies(plan.moves);
    FillShuffle(plan.moves, 64, plan.wide);
    FillShuffle(plan.moves, 16, plan.narrow);
    return plan;
}

bool MayReadAhead(const MovePlan& plan, const std::uint8_t* source, const std::uint8_t* destination,
                  std::int32_t width) {
    return MayReadAheadOf(plan, source + plan.fromOffset, destination + plan.toOffset, width);
}

void MoveRow(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    source += plan.fromOffset;
    destination += plan.toOffset;
    if (!MayReadAheadOf(plan, source, destination, width))
        return MovePlainOf(plan.moves, source, plan.moves.fromPixelSize, destination, width);
    if (plan.copies)
        std::memmove(destination, source, static_cast<std::size_t>(width) * plan.moves.fromPixelSize);
    else
        MoveAhead(plan, source, destination, width, false);
}

void MoveRowReversed(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width) {
    if (width <= 0) return;
    source += plan.fromOffset;
    destination += plan.toOffset;
    if (plan.compact && AreDisjoint(plan, source, destination, width))
        return MoveAhead(plan, source, destination, width, true);
    const std::int64_t size = plan.moves.fromPixelSize;
    MovePlainOf(plan.moves, source + (width - 1) * size, -size, destination, width);
}

namespace {

// Trades `count` pixels at the left with as many at the right, through copies of both.
void TradeEnds(const MovePlan& plan, std::uint8_t* left, std::uint8_t* right, std::int32_t count) {
    constexpr std::int32_t kMostBytes = 1024;
    std::uint8_t leftCopy[kMostBytes];
    std::uint8_t rightCopy[kMostBytes];
    const auto size = static_cast<std::size_t>(Extent(plan.moves.toPixelSize, plan.toSpan, count));
    std::memcpy(leftCopy, left, size);
    std::memcpy(rightCopy, right, size);
    MoveAhead(plan, rightCopy, left, count, true);
    MoveAhead(plan, leftCopy, right, count, true);
}

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
    row += plan.toOffset;
    if (!plan.compact) return MirrorPlain(plan.moves, row, width);
    constexpr std::int32_t kPixelsATime = 252;  // whole steps of every form; four bytes each fit
    const std::int32_t half = width / 2;
    for (std::int32_t done = 0; done < half; done += kPixelsATime) {
        const std::int32_t count = std::min(kPixelsATime, half - done);
        const std::int64_t size = plan.moves.toPixelSize;
        TradeEnds(plan, row + done * size, row + (std::int64_t{width} - done - count) * size, count);
    }
}

}  // namespace rows
