// Neon beside a model, edges and in place.
#include <cmath>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;
using namespace scenes;

// Copies of a row's RowSize bytes, the current one and the next, both taken before anything is
// written to the row.
Reference Walk() {
    return [](const Pixels& source, const Pixels& destination) {
        const auto copyOf = [&](int y) {
            Bytes copy(static_cast<std::size_t>(std::max(source.rowSize, 0)));
            if (y < source.height && source.rows[static_cast<std::size_t>(y)])
                std::copy_n(source.rows[static_cast<std::size_t>(y)], copy.size(), copy.begin());
            else
                std::fill(copy.begin(), copy.end(), std::uint8_t{0});
            return copy;
        };
        Bytes current = copyOf(0);
        for (int y = 0; y < source.height; ++y) {
            const Bytes next = copyOf(y + 1);
            for (int x = 0; x < source.width; ++x) {
                if (!source.Has(x, y) || !destination.Has(x, y)) continue;
                for (const Channel channel : source.channels) {
                    const auto byte = [&](const Bytes& row, int column) {
                        const auto at = static_cast<std::size_t>(column * source.pixelSize + source.offset[channel]);
                        return at < row.size() ? row[at] : 0;
                    };
                    const int c = byte(current, x), r = byte(current, x + 1), b = byte(next, x);
                    const double value = 2 * std::sqrt(double((c - r) * (c - r) + (c - b) * (c - b)));
                    *destination.At(x, y, channel) = value >= 256 ? 255 : static_cast<std::uint8_t>(value);
                }
            }
            current = next;
        }
    };
}

const Filter kNeon = [](const auto& picture, const auto& to) { return CallObject(picture, "NeonFilter", to); };

class Neon : public PluginTest {};

TEST_F(Neon, ServesEveryViewSharingAndFormat) { ExpectScenes(AllScenes(), kNeon, Walk()); }

TEST_F(Neon, ServesRandomScenes) {
    ExpectRandomScenes(1000, [](Random&) { return Trial{kNeon, Walk()}; });
}

TEST_F(Neon, WorksOnWideRows) {
    for (const int format : {11, 12, 1, 2, 5})
        for (const int width : {1, 15, 16, 17, 64, 128, 131}) ExpectScene(Plain(format, width, 5), kNeon, Walk());
}

TEST_F(Neon, IsExactForEveryPairOfDifferences) {
    const auto picture = New("PictureTQX", 2 * 256, 2, 11);
    for (int across = 0; across < 256; ++across) {
        for (int down = 0; down < 256; ++down) {
            RowAddress(picture, 0)[2 * down] = 0;
            RowAddress(picture, 0)[2 * down + 1] = static_cast<std::uint8_t>(across);
            RowAddress(picture, 1)[2 * down] = static_cast<std::uint8_t>(down);
        }
        const Bytes row = ReadRow(CallObject(picture, "NeonFilter", nullptr), 0);
        for (int down = 0; down < 256; ++down) {
            const double value = 2 * std::sqrt(double(across * across + down * down));
            ASSERT_EQ(row[static_cast<std::size_t>(2 * down)], value >= 256 ? 255 : static_cast<int>(value))
                << across << ", " << down;
        }
    }
}

TEST_F(Neon, LightsUpTheBottomRowAndWhateverBordersOnPadding) {
    const auto picture = New("PictureTQX", 3, 3, 11);
    WritePixels(picture, Bytes(9, 100));
    EXPECT_EQ(ReadPixels(CallObject(picture, "NeonFilter", nullptr)), (Bytes{0, 0, 200, 0, 0, 200, 200, 200, 255}));
    for (int y = 0; y < 3; ++y) RowAddress(picture, y)[3] = 90;  // the padding behind the last pixel
    EXPECT_EQ(ReadPixels(CallObject(picture, "NeonFilter", nullptr)), (Bytes{0, 0, 20, 0, 0, 20, 200, 200, 200}));
}

TEST_F(Neon, CountsZeroBehindRowsWithoutPadding) {
    const auto wrapped = WrapBlock(3, 2, 11, 3);
    WritePixels(wrapped.picture, Bytes(6, 10));
    EXPECT_EQ(ReadPixels(CallObject(wrapped.picture, "NeonFilter", nullptr)), (Bytes{0, 0, 20, 20, 20, 28}));
}

TEST_F(Neon, SeesThePixelsRightOfAClip) {
    const auto picture = New("PictureTQX", 4, 1, 11);
    WritePixels(picture, {5, 5, 9, 0});
    const auto clip = CallObject(picture, "ClipImage", 0, 0, 2, 1);
    EXPECT_EQ(ReadPixels(CallObject(clip, "NeonFilter", nullptr))[1], 12);  // 2 √(16 + 25)
}

TEST_F(Neon, LeavesTheDestinationWhenMemoryIsShort) {
    const auto picture = New("PictureTQX", 600, 4, 1);
    const auto destination = New("PictureTQX", 600, 4, 1);
    FillRandom(picture, 6);
    int nth = 1;
    for (;; ++nth) {
        const FailingCall failing(SystemCall::Calloc, nth);
        EXPECT_EQ(CallObject(picture, "NeonFilter", destination), destination);
        if (failing.failed() == 0) break;
        ASSERT_TRUE(SameBytes(ReadPixels(destination), Bytes(7200, 0)));
    }
    EXPECT_GE(nth, 3);
}

TEST_F(Neon, RefusesUnusablePictures) {
    const auto invalid = New("PictureTQX", 4, 4, 0);
    EXPECT_FALSE(CallObject(invalid, "NeonFilter", nullptr));
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 1), "NeonFilter", invalid));
}

}  // namespace
