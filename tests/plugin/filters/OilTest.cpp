// Oil paint beside a model with slots of its own that live as long as the plug-in's.
#include <climits>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;
using namespace scenes;

struct Slot {
    std::array<std::int32_t, 256> count{}, sum{};
};

// The four slots as they stand since the plug-in was loaded, by channel. The reference works on a
// copy of its own that runs along: every call of the filter in this process must go through here.
std::array<Slot, 5> slots;

// The slots that a picture's channels are emptied in. Alpha is never emptied.
void EmptySlots(const Pixels& source, int levels) {
    const std::vector<Channel> emptied = source.isGray
                                             ? (source.hasAlpha ? std::vector{kGreen, kRed} : std::vector{kGreen})
                                             : std::vector{kRed, kGreen, kBlue};
    for (const Channel channel : emptied) {
        std::fill_n(slots[channel].count.begin(), levels, 0);
        std::fill_n(slots[channel].sum.begin(), levels, 0);
    }
}

Slot& SlotOf(Channel channel) { return slots[channel == kGray ? kGreen : channel]; }

int OutputOf(const Slot& slot, const Slot& compared, int levels) {
    int best = 0;
    for (int i = 1; i < levels; ++i)
        if (compared.count[static_cast<std::size_t>(best)] < slot.count[static_cast<std::size_t>(i)]) best = i;
    const std::int64_t count = slot.count[static_cast<std::size_t>(best)];
    return count == 0 ? 0 : static_cast<int>(slot.sum[static_cast<std::size_t>(best)] / count) & 255;
}

void Gather(const Pixels& source, int x, int y, int levels, std::int64_t range) {
    for (std::int64_t sy = std::max<std::int64_t>(0, y - range);
         sy <= std::min<std::int64_t>(source.height - 1, y + range); ++sy)
        for (std::int64_t sx = std::max<std::int64_t>(0, x - range);
             sx <= std::min<std::int64_t>(source.width - 1, x + range); ++sx) {
            if (!source.Has(sx, sy)) continue;
            for (const Channel channel : source.channels) {
                const int value = source.Value(sx, sy, channel);
                const auto bin = static_cast<std::size_t>(levels * value >> 8);
                ++SlotOf(channel).count[bin];
                SlotOf(channel).sum[bin] += value;
            }
        }
}

Reference Walk(int levels, int range) {
    return [=](const Pixels& source, const Pixels& destination) {
        const int bins = std::min(levels, 256);
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x) {
                if (!source.Has(x, y) || source.channels.empty()) continue;
                EmptySlots(source, bins);
                Gather(source, x, y, bins, range);
                std::vector<int> values;
                for (const Channel channel : source.channels)
                    values.push_back(OutputOf(SlotOf(channel),
                                              slots[channel == kAlpha  ? kBlue
                                                    : channel == kGray ? kGreen
                                                                       : channel],
                                              bins));
                if (!destination.Has(x, y)) continue;
                for (std::size_t c = 0; c < values.size(); ++c)
                    *destination.At(x, y, source.channels[c]) = static_cast<std::uint8_t>(values[c]);
            }
    };
}

Filter Oil(int levels, int range) {
    return [=](const auto& picture, const auto& to) { return CallObject(picture, "OilFilter", to, levels, range); };
}

// All that reads alpha: what it gathers depends on every call since the plug-in was loaded.
void PaintEveryScene() {
    const auto Expect = [](const std::vector<FilterScene>& all, int levels, int range) {
        SCOPED_TRACE("levels " + std::to_string(levels) + ", range " + std::to_string(range));
        ExpectScenes(all, Oil(levels, range), Walk(levels, range));
    };
    Expect(AllScenes(), 20, 1);
    Expect(AllScenes(), 256, 2);
    Expect(AllScenes(), 20, 4);  // more rows than bins are quick to add
    for (const int format : {1, 2, 11, 12, 2, 12}) {
        SCOPED_TRACE(format);
        for (const int levels : {1, 2, 7, 255, 1000, INT_MAX}) Expect({Plain(format, 7, 6)}, levels, 1);
        for (const int range : {0, 3, 100, INT_MAX, -1, INT_MIN}) Expect({Plain(format, 7, 6)}, 30, range);
    }
    const auto draw = [](Random& random) {
        const int levels = random.Below(4) == 0 ? std::max(AnyInteger(random), 1) : random.Between(1, 256);
        const int range = random.Below(5) == 0 ? AnyInteger(random) : random.Between(0, 4);
        return Trial{Oil(levels, range), Walk(levels, range)};
    };
    ExpectRandomScenes(150, draw, {20, 10});
    // A destination that shares all its pixels with a wider source: what it lacks stays as it was.
    for (const int format : {1, 2, 11}) {
        const auto narrower = [=] {
            const auto whole = New("PictureTQX", 9, 7, format);
            FillRandom(whole, 3);
            return Pictures{whole, CallObject(whole, "ClipImage", 0, 0, 5, 7), {whole}};
        };
        Expect({{"into its own left part", narrower}}, 30, 2);
    }
    // Wide enough for several strips of columns, and neighbourhoods up to the largest that fit them.
    for (const int format : {1, 11})
        for (const int levels : {256, 200, 16}) {
            for (const int range : {1, 40, 127, 128}) Expect({Plain(format, 700, 3)}, levels, range);
            Expect({Plain(12, 6, 6)}, levels, 2);
        }
    // Blue is left over from the last colour picture, and gray with alpha is compared with it.
    Expect({Plain(1, 5, 5, 9), Plain(13, 5, 5, 10), Plain(13, 5, 5, 11)}, 16, 2);
}

class OilPaint : public PluginTest {};

// In a process of its own, where no other test has called the filter.
TEST_F(OilPaint, PaintsEverySceneAndGathersAlphaOverAllCalls) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto paintAndExit = [] {
        PaintEveryScene();
        std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(paintAndExit(), ::testing::ExitedWithCode(0), "");
}

TEST_F(OilPaint, OfOneLevelIsTheMean) {
    const auto picture = New("PictureTQX", 3, 3, 11);
    WritePixels(picture, {10, 20, 30, 40, 50, 60, 70, 80, 95});
    const Bytes painted = ReadPixels(CallObject(picture, "OilFilter", nullptr, 1, 1));
    EXPECT_EQ(painted[4], 455 / 9);
    EXPECT_EQ(painted[0], 120 / 4) << "a corner sees two by two pixels";
    EXPECT_EQ(painted[1], 210 / 6);
}

TEST_F(OilPaint, TakesMoreThan256LevelsAs256) {
    const auto picture = New("PictureTQX", 9, 7, 1);
    FillRandom(picture, 2);
    EXPECT_EQ(ReadPixels(CallObject(picture, "OilFilter", nullptr, 1000, 2)),
              ReadPixels(CallObject(picture, "OilFilter", nullptr, 256, 2)));
}

TEST_F(OilPaint, PrefersTheLowestOfEquallyFullBins) {
    const auto picture = New("PictureTQX", 2, 1, 11);
    WritePixels(picture, {200, 100});
    EXPECT_EQ(ReadPixels(CallObject(picture, "OilFilter", nullptr, 256, 1)), (Bytes{100, 100}));
}

TEST_F(OilPaint, RefusesLevelsBelowOne) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    for (const int levels : {0, -5, INT_MIN}) {
        EXPECT_FALSE(CallObject(picture, "OilFilter", nullptr, levels, 1));
        EXPECT_FALSE(CallObject(picture, "OilFilter", picture, levels, 1));
    }
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 0), "OilFilter", nullptr, 20, 1));
}

// Without room for copies of rows it goes pixel by pixel.
TEST_F(OilPaint, PaintsTheSameWhenMemoryIsShort) {
    const auto picture = New("PictureTQX", 300, 12, 1);
    FillRandom(picture, 4);
    for (const int range : {2, 40, 400}) {
        const auto expected = ReadPixels(CallObject(picture, "OilFilter", nullptr, 30, range));
        int nth = 1;
        for (;; ++nth) {
            const auto destination = New("PictureTQX", 300, 12, 1);
            const FailingCall failing(SystemCall::Calloc, nth);
            CallObject(picture, "OilFilter", destination, 30, range);
            if (failing.failed() == 0) break;
            ASSERT_TRUE(SameBytes(ReadPixels(destination), expected)) << range << ", " << nth;
        }
        EXPECT_GE(nth, 3);
    }
}

// A window that reaches past all edges changes by a row at a time, whatever its size.
TEST_F(OilPaint, OfTheWholePictureTakesNoLongerThanItsPixels) {
    for (const int format : {1, 11}) {
        const auto picture = New("PictureTQX", 60, 16383, format);
        Call(picture, "FillRect", 77);
        const Bytes flat = ReadPixels(picture);
        CallObject(picture, "OilFilter", picture, 256, INT_MAX);
        EXPECT_TRUE(SameBytes(ReadPixels(picture), flat)) << format;
    }
}

TEST_F(OilPaint, WithoutSamplesIsBlack) {
    const auto picture = New("PictureTQX", 3, 3, 1);
    FillRandom(picture, 1);
    EXPECT_EQ(ReadPixels(CallObject(picture, "OilFilter", nullptr, 20, -1)), Bytes(27, 0));
}

}  // namespace
