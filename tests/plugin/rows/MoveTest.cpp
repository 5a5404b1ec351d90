// Moves at every level, forward, reversed and within a row.
#include <gtest/gtest.h>

#include "plugin/rows/Move.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows::MovePlan;
using rows::PixelMoves;
using rows_test::Bytes;
using rows_test::Random;

constexpr int kMargin = 80;  // bytes beside a row that must stay
constexpr int kMostWidth = 140;

// --- Plain references -------------------------------------------------------------------------

void MovePixel(const PixelMoves& moves, const std::uint8_t* from, std::uint8_t* to) {
    std::uint8_t value[4];
    for (int i = 0; i < moves.count; ++i) value[i] = from[moves.from[i]] ^ moves.flip[i];
    for (int i = 0; i < moves.count; ++i) to[moves.to[i]] = value[i];
}

void ReferenceMove(const PixelMoves& moves, const std::uint8_t* source, std::uint8_t* destination, int width,
                   bool reversed) {
    for (int x = 0; x < width; ++x) {
        const int from = reversed ? width - 1 - x : x;
        MovePixel(moves, source + from * moves.fromPixelSize, destination + x * moves.toPixelSize);
    }
}

void ReferenceMirror(const PixelMoves& moves, std::uint8_t* row, int width) {
    for (int i = 0; i < width / 2; ++i) {
        std::uint8_t* const left = row + i * moves.toPixelSize;
        std::uint8_t* const right = row + (width - 1 - i) * moves.toPixelSize;
        const Bytes leftPixel(left, left + 32), rightPixel(right, right + 32);
        MovePixel(moves, rightPixel.data(), left);
        MovePixel(moves, leftPixel.data(), right);
    }
}

// --- Cases ------------------------------------------------------------------------------------

// Moves between random layouts: mostly pixels of 1 to 4 bytes with distinct channels, at times
// shared bytes, shifted ones, or channels that reach into neighbouring pixels.
PixelMoves RandomMoves(Random& random) {
    PixelMoves moves{random.Between(1, 4), random.Between(1, 4)};
    const int count = random.Between(1, 4);
    const int fromShift = random.Below(4) == 0 ? random.Below(20) : 0;
    const int toShift = random.Below(4) == 0 ? random.Below(20) : 0;
    const bool spread = random.Below(8) == 0;
    for (int i = 0; i < count; ++i) {
        const int from = random.Below(spread ? 9 : moves.fromPixelSize) + fromShift;
        const int to = random.Below(spread ? 9 : moves.toPixelSize) + toShift;
        moves.Add(from, to, random.Below(3) == 0 ? 255 : 0);
    }
    return moves;
}

constexpr std::size_t kRowBytes = kMostWidth * 4 + 32;

AT_EACH_LEVEL(MoveRow);
AT_EACH_LEVEL(MirrorRow);

TEST_P(MoveRow, GivesThePlainBytesForAnyLayoutAndWidthAtEveryLevel) {
    Random random(1);
    for (int round = 0; round < 3000; ++round) {
        const PixelMoves moves = RandomMoves(random);
        const int width = random.Below(kMostWidth);
        const bool reversed = random.Below(2) == 0;
        const Bytes source = random.NextBytes(kRowBytes);
        Bytes expected = random.NextBytes(kRowBytes + kMargin);
        Bytes actual = expected;
        ReferenceMove(moves, source.data(), expected.data(), width, reversed);
        const MovePlan plan = rows::PlanMoves(moves);
        if (reversed)
            rows::MoveRowReversed(plan, source.data(), actual.data(), width);
        else
            rows::MoveRow(plan, source.data(), actual.data(), width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

// Source and destination at random distances in the same bytes.
TEST_P(MoveRow, KeepsThePixelOrderWhereRowsOverlap) {
    Random random(2);
    for (int round = 0; round < 3000; ++round) {
        PixelMoves moves = RandomMoves(random);
        if (random.Below(2) == 0) moves.toPixelSize = moves.fromPixelSize;
        const int width = random.Below(kMostWidth);
        const bool reversed = random.Below(2) == 0;
        const std::size_t from = 300 + static_cast<std::size_t>(random.Below(40));
        const std::size_t to = 300 + static_cast<std::size_t>(random.Below(random.Below(2) == 0 ? 6 : 300));
        Bytes expected = random.NextBytes(kRowBytes + 700);
        Bytes actual = expected;
        ReferenceMove(moves, expected.data() + from, expected.data() + to, width, reversed);
        const MovePlan plan = rows::PlanMoves(moves);
        if (reversed)
            rows::MoveRowReversed(plan, actual.data() + from, actual.data() + to, width);
        else
            rows::MoveRow(plan, actual.data() + from, actual.data() + to, width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

// Blocks that end with their last channel byte, so that a step too far is seen by the sanitizer.
TEST_P(MoveRow, ReadsAndWritesNothingPastTheLastChannel) {
    Random random(3);
    for (int width = 1; width < kMostWidth; ++width) {
        const PixelMoves moves = RandomMoves(random);
        const MovePlan plan = rows::PlanMoves(moves);
        const auto sourceSize = static_cast<std::size_t>((width - 1) * moves.fromPixelSize + plan.from.size);
        const auto size = static_cast<std::size_t>((width - 1) * moves.toPixelSize + plan.to.size);
        const Bytes source = random.NextBytes(sourceSize);
        Bytes forward = random.NextBytes(size);
        Bytes reversed = forward, expected = forward, expectedReversed = forward;
        const std::uint8_t* const from = source.data() - plan.from.offset;
        ReferenceMove(moves, from, expected.data() - plan.to.offset, width, false);
        ReferenceMove(moves, from, expectedReversed.data() - plan.to.offset, width, true);
        rows::MoveRow(plan, from, forward.data() - plan.to.offset, width);
        rows::MoveRowReversed(plan, from, reversed.data() - plan.to.offset, width);
        ASSERT_TRUE(support::SameBytes(forward, expected)) << "width " << width;
        ASSERT_TRUE(support::SameBytes(reversed, expectedReversed)) << "width " << width;
    }
}

TEST_P(MoveRow, DoesNothingForNoWidth) {
    PixelMoves moves{3, 3};
    moves.Add(0, 0);
    const MovePlan plan = rows::PlanMoves(moves);
    std::uint8_t byte = 7;
    rows::MoveRow(plan, nullptr, &byte, 0);
    rows::MoveRowReversed(plan, nullptr, &byte, -3);
    rows::MirrorRow(plan, &byte, 1);
    EXPECT_EQ(byte, 7);
}

TEST_P(MoveRow, MovesNothingWithoutMoves) {
    const MovePlan plan = rows::PlanMoves(PixelMoves{3, 3});
    Bytes row = {1, 2, 3, 4, 5, 6};
    rows::MoveRow(plan, row.data(), row.data() + 3, 1);
    rows::MirrorRow(plan, row.data(), 2);
    EXPECT_EQ(row, (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_P(MirrorRow, TradesThePixelsOfBothEndsAtEveryLevel) {
    Random random(4);
    for (int round = 0; round < 1500; ++round) {
        PixelMoves moves = RandomMoves(random);
        moves.toPixelSize = moves.fromPixelSize;
        for (int i = 0; i < moves.count; ++i) {
            moves.to[i] = moves.from[i];
            moves.flip[i] = 0;
        }
        const int width = random.Below(10) == 0 ? random.Below(1200) : random.Below(kMostWidth);
        Bytes expected = random.NextBytes(static_cast<std::size_t>(width) * 4 + kMargin + 40);
        Bytes actual = expected;
        ReferenceMirror(moves, expected.data(), width);
        rows::MirrorRow(rows::PlanMoves(moves), actual.data(), width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

TEST_P(MirrorRow, TradesWholePixelsOfEveryWidth) {
    Random random(5);
    for (int size = 1; size <= 4; ++size) {
        PixelMoves moves{size, size};
        for (int i = 0; i < size; ++i) moves.Add(i, i);
        for (int width = 0; width < 300; ++width) {
            Bytes expected = random.NextBytes(static_cast<std::size_t>(width * size) + 70);
            Bytes actual = expected;
            ReferenceMirror(moves, expected.data() + 35, width);
            rows::MirrorRow(rows::PlanMoves(moves), actual.data() + 35, width);
            ASSERT_TRUE(support::SameBytes(actual, expected)) << width << " of " << size;
        }
    }
}

TEST_P(MirrorRow, LeavesTheMiddlePixel) {
    PixelMoves moves{1, 1};
    moves.Add(0, 0);
    Bytes row = {1, 2, 3};
    rows::MirrorRow(rows::PlanMoves(moves), row.data(), 3);
    EXPECT_EQ(row, (Bytes{3, 2, 1}));
}

}  // namespace
