// Pictures around a host picture's pixels.
#include "host/calls/HostFunctionSlot.h"
#include "tests/plugin/interop/HostModels.h"

namespace {

using namespace interop_test;

constexpr int kRGB = 1, kARGB = 4, kXRGB = 5;

class HostPicture : public PluginTest {
  protected:
    Random random{5};
};

TEST_F(HostPicture, OfDepth32IsWrappedWithOrWithoutAlpha) {
    const auto picture = RandomHostPicture(random, 5, 3);
    for (const bool alpha : {false, true}) {
        const auto buffer = New("PictureTQX", picture, alpha);
        EXPECT_TRUE(GetBool(buffer, "Valid"));
        EXPECT_EQ(GetInt(buffer, "ImageFormat"), alpha ? kARGB : kXRGB);
        EXPECT_EQ(GetBool(buffer, "HasAlpha"), alpha);
        EXPECT_EQ(GetInt(buffer, "PixelSize"), 4);
        EXPECT_EQ(GetInt(buffer, "RedOffset"), 1);
        EXPECT_EQ(GetInt(buffer, "GreenOffset"), 2);
        EXPECT_EQ(GetInt(buffer, "BlueOffset"), 3);
        EXPECT_EQ(GetInt(buffer, "AlphaOffset"), 0);
        EXPECT_EQ(GetInt(buffer, "Width"), 5);
        EXPECT_EQ(GetInt(buffer, "Height"), 3);
        EXPECT_EQ(GetInt(buffer, "RowSize"), 32) << "rows are padded";
        EXPECT_EQ(GetInt(buffer, "TotalSize"), 96);
        EXPECT_EQ(GetInt(buffer, "RowOffset"), 0);
        EXPECT_TRUE(GetBool(buffer, "IsRGB"));
        EXPECT_FALSE(GetBool(buffer, "IsGray"));
        EXPECT_FALSE(GetBool(buffer, "HasGray"));
        EXPECT_FALSE(GetBool(buffer, "IsMapping"));
        EXPECT_EQ(GetObject(buffer, "Target"), picture);
        EXPECT_EQ(GetObject(buffer, "Parent"), nullptr);
        EXPECT_EQ(BlockAddress(GetObject(buffer, "Memory")), StorageOf(picture).bytes);
    }
}

TEST_F(HostPicture, HasNoAlphaUnlessAskedFor) {
    EXPECT_EQ(GetInt(New("PictureTQX", RandomHostPicture(random, 2, 2)), "ImageFormat"), kXRGB);
}

TEST_F(HostPicture, OfDepth24IsWrappedAsRGB) {
    const auto picture = RandomHostPicture(random, 5, 3, 24);
    const auto buffer = New("PictureTQX", picture, true);
    EXPECT_TRUE(GetBool(buffer, "Valid"));
    EXPECT_EQ(GetInt(buffer, "ImageFormat"), kRGB);
    EXPECT_EQ(GetInt(buffer, "PixelSize"), 3);
    EXPECT_FALSE(GetBool(buffer, "HasAlpha"));
    EXPECT_EQ(GetInt(buffer, "RedOffset"), 0);
    EXPECT_EQ(GetInt(buffer, "BlueOffset"), 2);
    host::RgbColor color;
    host::LoadColors(StorageOf(picture), 4, 2, 1, &color);
    EXPECT_EQ(ByteAt(buffer, 4, 2, 0), static_cast<int>(color >> 16));
    EXPECT_EQ(ByteAt(buffer, 4, 2, 2), static_cast<int>(color & 255));
}

TEST_F(HostPicture, OfAnotherDepthIsRefused) {
    for (const int depth : {16, 8, 1}) {
        const auto picture = RandomHostPicture(random, 3, 3, depth);
        const auto buffer = New("PictureTQX", picture, false);
        EXPECT_FALSE(GetBool(buffer, "Valid")) << depth;
        EXPECT_EQ(GetObject(buffer, "Target"), nullptr) << depth;
        EXPECT_TRUE(NothingIsLocked(picture));
    }
}

TEST_F(HostPicture, OfNilIsRefused) { EXPECT_FALSE(GetBool(New("PictureTQX", Ref<Object>(), false), "Valid")); }

TEST_F(HostPicture, SharesItsPixelsBothWays) {
    const auto picture = New("Picture", 4, 4, 32);
    const auto buffer = New("PictureTQX", picture, false);
    Call(buffer, "FillRectRGB", 1, 2, 1, 1, 16, 32, 48);
    EXPECT_EQ(Call(GetObject(picture, "RGBSurface"), "Pixel", 1, 2).ToInt64(), 0x102030);
    Assign(GetObject(picture, "RGBSurface"), "Pixel", {3, 3}, Value(static_cast<sdk::Color>(0x405060)));
    EXPECT_EQ(ByteAt(buffer, 3, 3, 1), 64);
}

TEST_F(HostPicture, IsKeptAliveByItsBufferAndGivenUpByClose) {
    auto buffer = New("PictureTQX", New("Picture", 2, 2, 32), false);
    EXPECT_EQ(ByteAt(buffer, 1, 1, 1), 255) << "the host's white";
    Call(buffer, "Close");
    EXPECT_EQ(GetObject(buffer, "Target"), nullptr);
    EXPECT_EQ(RowAddress(buffer, 0), nullptr);
}

TEST_F(HostPicture, IsKeptAliveByViews) {
    auto buffer = New("PictureTQX", New("Picture", 4, 2, 32), false);
    const auto view = CallObject(buffer, "ClipImage", 1, 0, 2, 2);
    EXPECT_NE(GetObject(view, "Target"), nullptr);
    buffer = nullptr;
    EXPECT_EQ(ByteAt(view, 1, 1, GetInt(view, "RedOffset")), 255);
}

TEST_F(HostPicture, IsDescribedOnceAndNotLeftLocked) {
    const auto picture = New("Picture", 2, 2, 32);
    const std::int64_t locks = CallsOf("lockPictureDescription"), unlocks = CallsOf("unlockPictureDescription");
    const auto buffer = New("PictureTQX", picture, false);
    EXPECT_EQ(CallsOf("lockPictureDescription"), locks + 1);
    EXPECT_EQ(CallsOf("unlockPictureDescription"), unlocks + 1);
    EXPECT_TRUE(NothingIsLocked(picture));
}

// --- Descriptions that give nothing to wrap ----------------------------------------------------

class HostDescription : public HostPicture {
  protected:
    using Slot = host::HostFunctionSlot<sdk::klockPictureDescription>;

    Ref<Object> WrapDescribed(const sdk::PictureDescription& described) {
        const auto picture = New("Picture", 2, 2, 32);
        const auto before =
            Slot::Replace([&](sdk::Object*, sdk::PictureDescription* description) { *description = described; });
        const auto buffer = New("PictureTQX", picture, true);
        Slot::Replace(before);
        return buffer;
    }
};

TEST_F(HostDescription, WithoutAWorldIsRefused) {
    std::uint8_t pixels[64] = {};
    sdk::GWorld world{{pixels, 16, 32, 0, nullptr}, 4, 4, nullptr};
    EXPECT_FALSE(GetBool(WrapDescribed({sdk::kPictureKindNone, &world, 4, 4}), "Valid"));
    EXPECT_FALSE(GetBool(WrapDescribed({1, &world, 4, 4}), "Valid"));
    EXPECT_FALSE(GetBool(WrapDescribed({sdk::kPictureKindWorld, nullptr, 4, 4}), "Valid"));
    EXPECT_TRUE(GetBool(WrapDescribed({sdk::kPictureKindWorld, &world, 4, 4}), "Valid"));
}

TEST_F(HostDescription, WithANullBaseOrAnotherDepthIsRefused) {
    std::uint8_t pixels[64] = {};
    sdk::GWorld world{{nullptr, 16, 32, 0, nullptr}, 4, 4, nullptr};
    EXPECT_FALSE(GetBool(WrapDescribed({sdk::kPictureKindWorld, &world, 4, 4}), "Valid"));
    for (const int depth : {0, 8, 16, 33}) {
        world.pixMap.baseAddress = pixels;
        world.pixMap.depth = depth;
        EXPECT_FALSE(GetBool(WrapDescribed({sdk::kPictureKindWorld, &world, 4, 4}), "Valid")) << depth;
    }
}

TEST_F(HostDescription, ThatFailsIsRefused) {
    const auto picture = New("Picture", 2, 2, 32);
    const FailingHostFunction failing("lockPictureDescription");
    EXPECT_FALSE(GetBool(New("PictureTQX", picture, false), "Valid"));
}

// Intended: the total has no upper word.
TEST_F(HostDescription, OfMoreThanFourGigabytesKeepsTheLowWordOfItsTotal) {
    std::uint8_t pixels[64] = {};
    sdk::GWorld world{{pixels, 1 << 20, 32, 0, nullptr}, 4, 4, nullptr};
    const auto buffer = WrapDescribed({sdk::kPictureKindWorld, &world, 4, 4097});
    EXPECT_EQ(GetInt(buffer, "TotalSize"), 1 << 20);
}

}  // namespace
