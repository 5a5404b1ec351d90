// Diffusion with the C library's random numbers drawn alongside.
#include <climits>
#include <cstdlib>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"

namespace {

using namespace support;
using namespace scenes;

constexpr unsigned kSeed = 4711;

Filter Diffused(int level) {
    return [=](const auto& picture, const auto& to) {
        std::srand(kSeed);
        return CallObject(picture, "DiffuseFilter", to, level);
    };
}

// Draws and copies pixel by pixel, all channels of a pixel read before one is written. Rows that the
// source doesn't have draw nothing.
Reference Walk(int level) {
    return [=](const Pixels& source, const Pixels& destination) {
        std::srand(kSeed);
        const std::int64_t range = 2 * std::int64_t{level} + 1;
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width && source.Has(x, y); ++x) {
                const std::int64_t sx = std::clamp<std::int64_t>(x + std::rand() % range - level, 0, source.width - 1);
                const std::int64_t sy = std::clamp<std::int64_t>(y + std::rand() % range - level, 0, source.height - 1);
                if (!source.Has(sx, sy) || !destination.Has(x, y)) continue;
                std::vector<std::uint8_t> pixel;
                for (const Channel channel : source.channels) pixel.push_back(*source.At(sx, sy, channel));
                for (std::size_t c = 0; c < pixel.size(); ++c) *destination.At(x, y, source.channels[c]) = pixel[c];
            }
    };
}

class Diffuse : public PluginTest {};

TEST_F(Diffuse, CopiesDrawnPixelsInEverySceneAndOrder) {
    for (const int level : {0, 1, 3}) ExpectScenes(AllScenes(), Diffused(level), Walk(level));
}

TEST_F(Diffuse, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const int level = random.Below(4) == 0 ? AnyInteger(random) : random.Between(-2, 40);
        return Trial{Diffused(level), Walk(level)};
    };
    ExpectRandomScenes(1000, draw);
}

TEST_F(Diffuse, TakesAnyLevel) {
    for (const int level : {-1, -2, -5, 40, 1000, INT_MAX, INT_MIN})
        for (const int format : {1, 2, 12}) {
            SCOPED_TRACE(level);
            ExpectScene(Plain(format, 9, 7), Diffused(level), Walk(level));
        }
}

// More rows around a pixel than a narrow picture has copied, and fewer.
TEST_F(Diffuse, TakesManyRowsAroundAPixel) {
    for (const int width : {20, 150})
        for (const int format : {2, 11}) {
            ExpectScene(Plain(format, width, 140), Diffused(40), Walk(40));
            ExpectScene({"InPlace",
                         [=] {
                             const auto picture = New("PictureTQX", width, 140, format);
                             FillRandom(picture, 5);
                             return scenes::Pictures{picture, picture, {picture}};
                         }},
                        Diffused(40), Walk(40));
        }
}

TEST_F(Diffuse, OfLevelZeroIsACopyWithItsAlpha) {
    const auto picture = New("PictureTQX", 6, 5, 2);
    FillRandom(picture, 1);
    EXPECT_EQ(ReadPixels(CallObject(picture, "DiffuseFilter", nullptr, 0)), ReadPixels(picture));
}

// The remainder by -1 is 0, so level -1 moves every pixel one place up and left.
TEST_F(Diffuse, OfLevelMinusOneShifts) {
    const auto picture = New("PictureTQX", 3, 2, 11);
    WritePixels(picture, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(ReadPixels(CallObject(picture, "DiffuseFilter", nullptr, -1)), (Bytes{5, 6, 6, 5, 6, 6}));
}

TEST_F(Diffuse, DrawsTwiceForEveryPixel) {
    const auto picture = New("PictureTQX", 5, 4, 1);
    std::srand(kSeed);
    for (int i = 0; i < 2 * 5 * 4; ++i) std::rand();
    const int next = std::rand();
    std::srand(kSeed);
    CallObject(picture, "DiffuseFilter", New("PictureTQX", 1, 1, 1), 2);
    EXPECT_EQ(std::rand(), next) << "also for pixels that the destination has no room for";
}

TEST_F(Diffuse, RefusesAsEveryFilterDoes) {
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 0), "DiffuseFilter", nullptr, 1));
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 1), "DiffuseFilter", New("PictureTQX", 4, 4, 0), 1));
}

}  // namespace
