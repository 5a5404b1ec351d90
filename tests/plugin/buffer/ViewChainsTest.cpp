// Views of views of views, beside a model that knows the rules of views and nothing of the pictures.
#include <algorithm>
#include <limits>
#include <memory>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

enum Channel { kRed, kGreen, kBlue, kGray, kAlpha, kChannels };

constexpr const char* kOffsetNames[] = {"RedOffset", "GreenOffset", "BlueOffset", "GrayOffset", "AlphaOffset"};
constexpr const char* kFlagNames[] = {"HasRed", "HasGreen", "HasBlue", "HasGray", "HasAlpha"};
constexpr const char* kChannelViews[] = {"RedChannel", "GreenChannel", "BlueChannel", "GrayChannel", "AlphaChannel"};

struct Described {
    std::int64_t width = 0, height = 0, rowOffset = 0;
    int format = 0, pixelSize = 0;
    std::int64_t rowSize = 0, totalSize = 0, storageRows = 0;
    std::int64_t offset[kChannels] = {};
    bool has[kChannels] = {};
    bool isRGB = false, isGray = false, mirrored = false;
    bool hidden = false;  // a part of a picture without columns: nothing can be read
};

Described Root(int width, int height, const Format& format) {
    Described root;
    root.width = width;
    root.height = root.storageRows = height;
    root.format = format.code;
    root.pixelSize = format.pixelSize;
    root.rowSize = (std::int64_t{width} * format.pixelSize + 63) / 64 * 64;
    root.totalSize = root.rowSize * height;
    const int offsets[] = {format.red, format.green, format.blue, format.gray, format.alpha};
    const bool flags[] = {format.isRGB, format.isRGB, format.isRGB, format.isGray, format.hasAlpha};
    std::copy_n(offsets, kChannels, root.offset);
    std::copy_n(flags, kChannels, root.has);
    root.isRGB = format.isRGB;
    root.isGray = format.isGray;
    return root;
}

std::int64_t Saturated(std::int64_t value) {
    return std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

struct Span {
    std::int64_t start, size;
};

// Step by step; sizes compare as unsigned numbers.
Span ClipAxis(std::int64_t start, std::int64_t size, std::int64_t extent) {
    constexpr std::int64_t kWrap = std::int64_t{1} << 32;
    const auto u = [](std::int64_t value) { return value < 0 ? value + kWrap : value; };
    if (size < 0) {
        start += size;
        size = -size;
    }
    if (start < 0) {
        size += start;
        start = 0;
    }
    if (u(extent) <= u(start)) size = 0;
    if (u(extent) < u(size + start)) size = extent - start;
    return {start, size};
}

Described Clip(const Described& parent, int x, int y, int width, int height) {
    const Span columns = ClipAxis(x, width, parent.width), lines = ClipAxis(y, height, parent.height);
    Described view = parent;
    for (int c = 0; c < kChannels; ++c)
        view.offset[c] = parent.has[c] ? Saturated(parent.offset[c] + Saturated(columns.start) * parent.pixelSize) : 0;
    view.width = Saturated(columns.size);
    view.height = Saturated(lines.size);
    view.rowOffset = Saturated(Saturated(lines.start) + parent.rowOffset);
    view.hidden = parent.hidden || (parent.width < 0 && view.width > 0);
    return view;
}

Described OneChannel(const Described& parent, int channel) {
    Described view = parent;
    view.format = 11;
    for (int c = 0; c < kChannels; ++c) {
        view.offset[c] = c == kGray ? parent.offset[channel] : 0;
        view.has[c] = c == kGray;
    }
    view.isGray = true;
    view.isRGB = false;
    return view;
}

Described Colors(const Described& parent) {
    Described view = parent;
    view.format = parent.format <= 5 ? 1 : 6;
    for (int c = 0; c < kChannels; ++c) {
        if (c > kBlue) view.offset[c] = 0;
        view.has[c] = false;
    }
    view.isGray = false;
    return view;
}

// A live view beside its model. `base` is the first byte of the storage.
struct Chain {
    Ref<Object> live;
    Described model;
    std::uint8_t* base;
};

class ViewChains : public PluginTest, public ::testing::WithParamInterface<Format> {
  protected:
    static void ExpectDescription(const Ref<Object>& live, const Described& model) {
        EXPECT_TRUE(GetBool(live, "Valid"));
        EXPECT_EQ(GetInt(live, "Width"), model.width);
        EXPECT_EQ(GetInt(live, "Height"), model.height);
        EXPECT_EQ(GetInt(live, "RowOffset"), model.rowOffset);
        EXPECT_EQ(GetInt(live, "ImageFormat"), model.format);
        EXPECT_EQ(GetInt(live, "PixelSize"), model.pixelSize);
        EXPECT_EQ(GetInt(live, "RowSize"), model.rowSize);
        EXPECT_EQ(GetInt(live, "TotalSize"), model.totalSize);
        EXPECT_EQ(GetBool(live, "IsRGB"), model.isRGB);
        EXPECT_EQ(GetBool(live, "IsGray"), model.isGray);
        EXPECT_FALSE(GetBool(live, "IsMapping"));
        for (int c = 0; c < kChannels; ++c) {
            EXPECT_EQ(GetInt(live, kOffsetNames[c]), model.offset[c]) << kOffsetNames[c];
            EXPECT_EQ(GetBool(live, kFlagNames[c]), model.has[c]) << kFlagNames[c];
        }
    }

    static void ExpectRows(const Chain& chain) {
        const Described& model = chain.model;
        const std::int64_t rows = std::min<std::int64_t>(model.height, 40);
        for (std::int64_t y = 0; y < rows; ++y) {
            const std::int64_t row = (model.mirrored ? model.height - y - 1 : y) + model.rowOffset;
            const bool there = row >= 0 && row < model.storageRows && !model.hidden;
            const auto block = CallObject(chain.live, "RawRow", static_cast<int>(y));
            ASSERT_EQ(static_cast<bool>(block), there) << "row " << y;
            if (there) {
                ASSERT_EQ(BlockAddress(block), chain.base + row * model.rowSize) << "row " << y;
            }
        }
    }

    // One more view. False where there is none to be had.
    static bool Step(Random& random, Chain& chain) {
        const Described parent = chain.model;
        Ref<Object> live;
        switch (random.Below(6)) {
            case 0:
            case 1: {
                const auto number = [&] { return random.Below(15) == 0 ? Extreme(random) : random.Between(-12, 30); };
                const int x = number(), y = number(), width = number(), height = number();
                chain.model = Clip(parent, x, y, width, height);
                live = CallObject(chain.live, "ClipImage", x, y, width, height);
                break;
            }
            case 2:
                chain.model = Clip(parent, 0, 0, static_cast<int>(parent.width), static_cast<int>(parent.height));
                live = CallObject(chain.live, "ClipImage");
                break;
            case 3:
                chain.model = Clip(parent, 0, 0, static_cast<int>(parent.width), static_cast<int>(parent.height));
                chain.model.mirrored = !parent.mirrored;
                live = CallObject(chain.live, "MirroredView");
                break;
            case 4: {
                const int channel = random.Below(kChannels);
                live = CallObject(chain.live, kChannelViews[channel]);
                EXPECT_EQ(static_cast<bool>(live), parent.has[channel]) << kChannelViews[channel];
                chain.model = OneChannel(parent, channel);
                break;
            }
            default:
                live = CallObject(chain.live, "RGBChannels");
                EXPECT_EQ(static_cast<bool>(live), parent.isRGB);
                chain.model = Colors(parent);
        }
        if (!live) return false;
        EXPECT_EQ(GetObject(live, "Parent"), chain.live);
        chain.live = live;
        return true;
    }

    static int Extreme(Random& random) {
        constexpr int kEnds[] = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                                 std::numeric_limits<int>::min() + 1, std::numeric_limits<int>::max() / 2};
        return kEnds[random.Below(4)];
    }
};

TEST_P(ViewChains, AreDescribedAndHaveTheirRowsWhereTheRulesSay) {
    Random random(static_cast<std::uint64_t>(GetParam().code));
    for (int round = 0; round < 250; ++round) {
        const int width = random.Between(1, 24), height = random.Between(1, 16);
        const auto root = New("PictureTQX", width, height, GetParam().code);
        Chain chain{root, Root(width, height, GetParam()), BlockAddress(GetObject(root, "Memory"))};
        for (int depth = 0; depth < 5 && Step(random, chain); ++depth) {
            ExpectDescription(chain.live, chain.model);
            ExpectRows(chain);
            ASSERT_FALSE(HasFailure()) << "round " << round << ", depth " << depth;
        }
    }
}

// What such a view is asked for must not reach memory that is not its picture's.
TEST_P(ViewChains, CanBeClonedAndWorkedOn) {
    Random random(static_cast<std::uint64_t>(GetParam().code) + 100);
    for (int round = 0; round < 60; ++round) {
        const auto root = New("PictureTQX", random.Between(1, 24), random.Between(1, 16), GetParam().code);
        Chain chain{root,
                    Root(static_cast<int>(GetInt(root, "Width")), static_cast<int>(GetInt(root, "Height")), GetParam()),
                    BlockAddress(GetObject(root, "Memory"))};
        for (int depth = 0; depth < 4 && Step(random, chain); ++depth) continue;
        if (chain.model.height > 1000 || chain.model.width > 1000) continue;
        const auto clone = CallObject(chain.live, "Clone");
        EXPECT_EQ(static_cast<bool>(clone), chain.model.height >= 0);
        for (const auto& picture : {chain.live, clone}) {
            if (!picture) continue;
            Call(picture, "Invert");
            Call(picture, "VMirror");
            Call(picture, "FillRect", 1, 1, 3, 3, 7);
            CallObject(picture, "SolarizeFilter", nullptr);
            Call(picture, "DataStringInFormat", 2);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, ViewChains, ::testing::ValuesIn(ChannelFormats()), FormatName);

}  // namespace
