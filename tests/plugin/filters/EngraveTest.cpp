// Engraving beside a model, edges and in place.
#include <climits>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"

namespace {

using namespace support;
using namespace scenes;

Reference Walk(std::int64_t level) {
    return InPixelOrder([=](const Pixels& source, Channel channel, int x, int y) {
        const auto nx = std::clamp<std::int64_t>(x + level, 0, source.width - 1);
        const auto ny = std::clamp<std::int64_t>(y + level, 0, source.height - 1);
        const int other = source.Has(nx, ny) ? source.Value(nx, ny, channel) : 0;
        return std::clamp(source.Value(x, y, channel) - other + 128, 0, 255);
    });
}

Filter Engraved(int level) {
    return [=](const auto& picture, const auto& to) { return CallObject(picture, "EngraveFilter", to, level); };
}

class Engrave : public PluginTest {};

TEST_F(Engrave, ServesEveryViewSharingAndFormat) {
    for (const int level : {1, -2}) ExpectScenes(AllScenes(), Engraved(level), Walk(level));
}

TEST_F(Engrave, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const int level = random.Below(4) == 0 ? AnyInteger(random) : random.Between(-9, 12);
        return Trial{Engraved(level), Walk(level)};
    };
    ExpectRandomScenes(1000, draw);
}

TEST_F(Engrave, TakesEveryLevel) {
    for (const int level : {0, 1, 2, 7, 8, 100, INT_MAX, -1, -3, -8, -100, INT_MIN})
        for (const FilterScene& scene : ScenesOf(kFormats[2], 11, 8)) ExpectScene(scene, Engraved(level), Walk(level));
    for (const int level : {1, 5, 64, -1, -70})
        for (const int format : {11, 12, 1, 2}) ExpectScene(Plain(format, 150, 9), Engraved(level), Walk(level));
}

TEST_F(Engrave, MakesFlatPicturesMiddleGrayAlphaIncluded) {
    const auto picture = New("PictureTQX", 5, 5, 2);
    WritePixels(picture, Bytes(100, 255));
    EXPECT_EQ(ReadPixels(CallObject(picture, "EngraveFilter", nullptr, 1)), Bytes(100, 128));
    FillRandom(picture, 1);
    EXPECT_EQ(ReadPixels(CallObject(picture, "EngraveFilter", nullptr, 0)), Bytes(100, 128));
}

TEST_F(Engrave, ClampsTheDifference) {
    const auto picture = New("PictureTQX", 2, 2, 11);
    WritePixels(picture, {255, 0, 0, 0});
    EXPECT_EQ(ByteAt(CallObject(picture, "EngraveFilter", nullptr, 1), 0, 0, 0), 255);
    WritePixels(picture, {0, 0, 0, 255});
    EXPECT_EQ(ByteAt(CallObject(picture, "EngraveFilter", nullptr, 1), 0, 0, 0), 0);
    WritePixels(picture, {0, 0, 0, 128});
    EXPECT_EQ(ByteAt(CallObject(picture, "EngraveFilter", nullptr, 1), 0, 0, 0), 0);
}

TEST_F(Engrave, RefusesUnusablePictures) {
    const auto invalid = New("PictureTQX", 4, 4, 0);
    EXPECT_FALSE(CallObject(invalid, "EngraveFilter", nullptr, 1));
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 1), "EngraveFilter", invalid, 1));
}

}  // namespace
