// Masked draws at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/rows/HostPixels.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows::MaskedPlan;
using rows::PixelLayout;
using rows_test::Bytes;
using rows_test::Random;

constexpr int kMostWidth = 70;  // past four steps of the widest form
constexpr std::size_t kRowBytes = kMostWidth * 4 + 64;

// --- Plain references -------------------------------------------------------------------------

void ReferenceDraw(const PixelLayout& to, bool invert, const std::uint8_t* picture, const std::uint8_t* mask,
                   std::uint8_t* destination, int width) {
    for (int x = 0; x < width; ++x) {
        const int alpha = mask ? mask[4 * x + 1] : 255;
        const std::uint8_t red = picture[4 * x + 1], green = picture[4 * x + 2], blue = picture[4 * x + 3];
        std::uint8_t* const pixel = destination + x * to.pixelSize;
        pixel[to.offset[3]] = static_cast<std::uint8_t>(invert ? 255 - alpha : alpha);
        pixel[to.offset[0]] = red;
        pixel[to.offset[1]] = green;
        pixel[to.offset[2]] = blue;
    }
}

std::uint8_t ReferenceBlend(bool invert, int m, int d, int p) {
    if (invert) return static_cast<std::uint8_t>(((255 - m) * d + m * p) / 255);
    return static_cast<std::uint8_t>((m * d + (255 - m) * p) / 255);
}

void ReferenceBlendRow(const PixelLayout& to, bool invert, const std::uint8_t* picture, const std::uint8_t* mask,
                       std::uint8_t* destination, int width) {
    for (int x = 0; x < width; ++x) {
        std::uint8_t* const pixel = destination + x * to.pixelSize;
        std::uint8_t value[3];
        for (int c = 0; c < 3; ++c)
            value[c] = ReferenceBlend(invert, mask[4 * x + 1 + c], pixel[to.offset[c]], picture[4 * x + 1 + c]);
        for (int c = 0; c < 3; ++c) pixel[to.offset[c]] = value[c];
    }
}

// --- Cases ------------------------------------------------------------------------------------

// Layouts of 3 and 4 bytes in any order; at times moved right as a clip's, with alpha left behind
// or on a colour's byte.
PixelLayout RandomLayout(Random& random) {
    PixelLayout layout{random.Between(3, 4), {0, 1, 2, 0}};
    if (layout.pixelSize == 4) layout.offset[3] = 3;
    for (int i = layout.pixelSize - 1; i > 0; --i) std::swap(layout.offset[i], layout.offset[random.Below(i + 1)]);
    if (random.Below(3) == 0) layout.offset[3] = 0;
    const int shift = random.Below(3) == 0 ? random.Below(20) : 0;
    const int channels = random.Below(2) == 0 ? 3 : 4;
    for (int c = 0; c < channels; ++c) layout.offset[c] += shift;
    return layout;
}

struct MaskedCase {
    PixelLayout layout;
    bool invert;
    bool blends;
    bool masked;
    int width;
};

MaskedCase RandomCase(Random& random) {
    const bool blends = random.Below(2) == 0;
    return {RandomLayout(random), random.Below(2) == 0, blends, blends || random.Below(4) != 0,
            random.Below(kMostWidth)};
}

void Reference(const MaskedCase& work, const std::uint8_t* picture, const std::uint8_t* mask,
               std::uint8_t* destination) {
    const std::uint8_t* const used = work.masked ? mask : nullptr;
    if (work.blends)
        ReferenceBlendRow(work.layout, work.invert, picture, used, destination, work.width);
    else
        ReferenceDraw(work.layout, work.invert, picture, used, destination, work.width);
}

MaskedPlan Plan(const MaskedCase& work) {
    return work.blends ? rows::PlanMaskedBlend(work.layout, work.invert)
                       : rows::PlanMaskedDraw(work.layout, work.invert);
}

void DrawOrBlend(const MaskedCase& work, const std::uint8_t* picture, const std::uint8_t* mask,
                 std::uint8_t* destination) {
    const std::uint8_t* const used = work.masked ? mask : nullptr;
    const auto run = work.blends ? &rows::BlendMaskedRow : &rows::DrawMaskedRow;
    run(Plan(work), picture, used, destination, work.width);
}

AT_EACH_LEVEL(MaskedRow);

TEST_P(MaskedRow, GivesThePlainBytesForAnyLayoutAndWidthAtEveryLevel) {
    Random random(1);
    for (int round = 0; round < 4000; ++round) {
        const MaskedCase work = RandomCase(random);
        const Bytes picture = random.NextBytes(kRowBytes), mask = random.NextBytes(kRowBytes);
        Bytes expected = random.NextBytes(kRowBytes);
        Bytes actual = expected;
        Reference(work, picture.data(), mask.data(), expected.data());
        DrawOrBlend(work, picture.data(), mask.data(), actual.data());
        ASSERT_TRUE(support::SameBytes(actual, expected, 0, work.layout.pixelSize))
            << "round " << round << " width " << work.width;
    }
}

// Picture, mask and destination at random places of the same bytes.
TEST_P(MaskedRow, KeepsThePixelOrderWhereRowsOverlap) {
    Random random(2);
    for (int round = 0; round < 4000; ++round) {
        const MaskedCase work = RandomCase(random);
        Bytes expected = random.NextBytes(2 * kRowBytes + 200);
        Bytes actual = expected;
        const auto place = [&] { return static_cast<std::size_t>(random.Below(random.Below(2) == 0 ? 9 : 400)); };
        const std::size_t picture = place(), mask = place(), destination = place();
        Reference(work, expected.data() + picture, expected.data() + mask, expected.data() + destination);
        DrawOrBlend(work, actual.data() + picture, actual.data() + mask, actual.data() + destination);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << work.width;
    }
}

// Blocks that end with their last byte, so that a step too far is seen by the sanitizer.
TEST_P(MaskedRow, TouchesNothingPastTheLastPixel) {
    Random random(3);
    for (int round = 0; round < 1000; ++round) {
        MaskedCase work = RandomCase(random);
        if (work.width == 0) continue;
        const PixelLayout& layout = work.layout;
        const int last = *std::max_element(layout.offset, layout.offset + (work.blends ? 3 : 4));
        const Bytes picture = random.NextBytes(static_cast<std::size_t>(work.width) * 4);
        const Bytes mask = random.NextBytes(picture.size());
        Bytes expected = random.NextBytes(static_cast<std::size_t>((work.width - 1) * layout.pixelSize + last + 1));
        Bytes actual = expected;
        Reference(work, picture.data(), mask.data(), expected.data());
        DrawOrBlend(work, picture.data(), mask.data(), actual.data());
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round;
    }
}

// Every mask byte against every destination byte, for picture bytes at both ends and between.
TEST_P(MaskedRow, BlendsEveryPairOfBytesAsTheFormulaSays) {
    const PixelLayout layout{4, {1, 2, 3}};
    for (const int p : {0, 1, 77, 128, 254, 255})
        for (int m = 0; m < 256; ++m) {
            Bytes picture(1024, static_cast<std::uint8_t>(p)), mask(1024, static_cast<std::uint8_t>(m));
            Bytes row(1024);
            for (int d = 0; d < 256; ++d) std::fill_n(row.begin() + 4 * d, 4, static_cast<std::uint8_t>(d));
            const bool invert = m % 2 == 1;
            rows::BlendMaskedRow(rows::PlanMaskedBlend(layout, invert), picture.data(), mask.data(), row.data(), 256);
            for (int d = 0; d < 256; ++d) {
                ASSERT_EQ(row[static_cast<std::size_t>(4 * d)], d) << "the byte that is no colour";
                for (int c = 1; c < 4; ++c)
                    ASSERT_EQ(row[static_cast<std::size_t>(4 * d + c)], ReferenceBlend(invert, m, d, p))
                        << "m " << m << " d " << d << " p " << p;
            }
        }
}

TEST_P(MaskedRow, OfNoPixelsDoesNothing) {
    const PixelLayout layout{4, {0, 1, 2, 3}};
    rows::DrawMaskedRow(rows::PlanMaskedDraw(layout, false), nullptr, nullptr, nullptr, 0);
    rows::BlendMaskedRow(rows::PlanMaskedBlend(layout, false), nullptr, nullptr, nullptr, -3);
}

// The wider forms must run where they can, or the tests above compare the plain form with itself.
TEST(MaskedPlan, IsCompactForTheOrdinaryLayouts) {
    for (const PixelLayout& layout :
         {PixelLayout{3, {0, 1, 2, 0}}, PixelLayout{3, {2, 1, 0, 0}}, PixelLayout{4, {0, 1, 2, 3}},
          PixelLayout{4, {3, 2, 1, 0}}, PixelLayout{4, {0, 1, 2, 0}}, PixelLayout{4, {21, 22, 23, 20}}}) {
        EXPECT_TRUE(rows::PlanMaskedDraw(layout, false).compact);
        EXPECT_TRUE(rows::PlanMaskedBlend(layout, false).compact);
    }
    EXPECT_FALSE(rows::PlanMaskedDraw(PixelLayout{3, {6, 7, 8, 0}}, false).compact) << "alpha left behind by a clip";
}

}  // namespace
