// Conversions at every level, for every pair of layouts and length.
#include <gtest/gtest.h>

#include "plugin/rows/Convert.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows::AlphaRule;
using rows::ChannelSet;
using rows::Conversion;
using rows::PixelLayout;
using rows_test::Bytes;
using rows_test::Random;

constexpr int kMostWidth = 1200;
constexpr int kBytes = kMostWidth * 4 + 64;

bool IsColour(ChannelSet set) { return set == ChannelSet::Rgb || set == ChannelSet::RgbAlpha; }
bool HasAlpha(ChannelSet set) { return set == ChannelSet::GrayAlpha || set == ChannelSet::RgbAlpha; }

// Pixel by pixel, in the words of the header.
void Reference(const Conversion& c, const std::uint8_t* source, std::uint8_t* destination, int width) {
    const int alphaFrom = IsColour(c.fromSet) ? 3 : 1;
    const int alphaTo = IsColour(c.toSet) ? 3 : 1;
    const bool first = c.alpha == AlphaRule::CopyFirst || c.alpha == AlphaRule::InvertFirst;
    const bool inverts = c.alpha == AlphaRule::Invert || c.alpha == AlphaRule::InvertFirst;
    const int firstAlpha = HasAlpha(c.fromSet) && width > 0 ? source[c.from.offset[alphaFrom]] : 0;
    for (int x = 0; x < width; ++x) {
        const std::uint8_t* const from = source + x * c.from.pixelSize;
        std::uint8_t* const to = destination + x * c.to.pixelSize;
        int colour[3];
        for (int i = 0; i < 3; ++i) colour[i] = from[c.from.offset[IsColour(c.fromSet) ? i : 0]];
        int alpha = first ? firstAlpha : HasAlpha(c.fromSet) ? from[c.from.offset[alphaFrom]] : 0;
        if (inverts) alpha = 255 - alpha;
        const int gray = IsColour(c.fromSet) ? (77 * colour[0] + 151 * colour[1] + 28 * colour[2]) / 256 : colour[0];
        if (IsColour(c.toSet))
            for (int i = 0; i < 3; ++i) to[c.to.offset[i]] = static_cast<std::uint8_t>(colour[i]);
        else
            to[c.to.offset[0]] = static_cast<std::uint8_t>(gray);
        if (c.alpha != AlphaRule::Leave && HasAlpha(c.toSet))
            to[c.to.offset[alphaTo]] = static_cast<std::uint8_t>(alpha);
    }
}

PixelLayout RandomLayout(Random& random, ChannelSet set) {
    PixelLayout layout{random.Between(1, 4), {}};
    const int shift = random.Below(4) == 0 ? random.Below(20) : 0;
    const int reach = random.Below(8) == 0 ? 8 : layout.pixelSize;
    for (int i = 0; i < rows::ChannelCount(set); ++i) layout.offset[i] = shift + random.Below(reach);
    return layout;
}

Conversion RandomConversion(Random& random) {
    const ChannelSet sets[] = {ChannelSet::Gray, ChannelSet::GrayAlpha, ChannelSet::Rgb, ChannelSet::RgbAlpha};
    Conversion c{};
    c.fromSet = sets[random.Below(4)];
    c.toSet = sets[random.Below(4)];
    c.from = RandomLayout(random, c.fromSet);
    c.to = RandomLayout(random, c.toSet);
    const AlphaRule rules[] = {AlphaRule::Leave, AlphaRule::Copy, AlphaRule::Invert, AlphaRule::CopyFirst,
                               AlphaRule::InvertFirst};
    if (HasAlpha(c.fromSet) && HasAlpha(c.toSet)) c.alpha = rules[random.Below(5)];
    return c;
}

int RandomWidth(Random& random) { return random.Below(8) == 0 ? random.Below(kMostWidth) : random.Below(150); }

AT_EACH_LEVEL(ConvertRow);
AT_EACH_LEVEL(GrayRow);
AT_EACH_LEVEL(Gray);

TEST_P(ConvertRow, GivesThePlainBytesForAnyLayoutsAtEveryLevel) {
    Random random(11);
    for (int round = 0; round < 2500; ++round) {
        const Conversion conversion = RandomConversion(random);
        const int width = RandomWidth(random);
        const Bytes source = random.NextBytes(kBytes);
        Bytes expected = random.NextBytes(kBytes);
        Bytes planned = expected, single = expected;
        Reference(conversion, source.data(), expected.data(), width);
        rows::ConvertRow(rows::PlanConversion(conversion), source.data(), planned.data(), width);
        rows::ConvertRow(conversion, source.data(), single.data(), width);
        ASSERT_TRUE(support::SameBytes(planned, expected)) << "round " << round << " width " << width;
        ASSERT_TRUE(support::SameBytes(single, expected)) << "round " << round << " width " << width;
    }
}

TEST_P(ConvertRow, KeepsThePixelOrderWhereRowsOverlap) {
    Random random(12);
    for (int round = 0; round < 2500; ++round) {
        Conversion conversion = RandomConversion(random);
        // The first pixel's alpha is read once, before it can be overwritten.
        if (random.Below(2) == 0) conversion.to.pixelSize = conversion.from.pixelSize;
        const int width = RandomWidth(random);
        const int from = 40 + random.Below(20), to = 40 + random.Below(20);
        Bytes expected = random.NextBytes(kBytes + 100);
        Bytes actual = expected;
        Reference(conversion, expected.data() + from, expected.data() + to, width);
        rows::ConvertRow(rows::PlanConversion(conversion), actual.data() + from, actual.data() + to, width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

TEST_P(GrayRow, ReadsNothingPastTheLastChannel) {
    for (int width = 1; width < 150; ++width) {
        const Bytes pixels(static_cast<std::size_t>(width - 1) * 4 + 3, 255);
        Bytes grays(static_cast<std::size_t>(width));
        rows::GrayRow(rows::PlanGray({4, {0, 1, 2}}), pixels.data(), grays.data(), width);
        ASSERT_EQ(grays, Bytes(static_cast<std::size_t>(width), 255));
    }
}

TEST_P(Gray, WeighsAndTruncates) {
    EXPECT_EQ(rows::Gray(255, 255, 255), 255);
    EXPECT_EQ(rows::Gray(255, 0, 0), 76);
    EXPECT_EQ(rows::Gray(0, 255, 0), 150);
    EXPECT_EQ(rows::Gray(0, 0, 255), 27);
    EXPECT_EQ(rows::Gray(0, 1, 0), 0);
}

}  // namespace
