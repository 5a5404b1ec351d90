// New pictures in memory that another one left: nothing of that is ever seen, in padding neither.
#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

constexpr int kWidth = 1990, kHeight = 1439;  // 8 MB and more from three bytes a pixel on, with padding in each row
constexpr int kRGB = 1, kRGBA = 2, kRGBX = 3;

class RecycledMemory : public PluginTest {
  protected:
    // Leaves a block behind, full of ones, that the next large picture gets.
    static void LeaveOnes(int format) {
        const auto picture = New("PictureTQX", kHeight, kWidth, format);
        std::fill_n(BlockAddress(GetObject(picture, "Memory")), GetInt(picture, "TotalSize"), std::uint8_t{255});
    }

    static Bytes StorageOf(const Ref<Object>& picture) {
        return BlockBytes(GetObject(picture, "Memory"), static_cast<std::size_t>(GetInt(picture, "TotalSize")));
    }

    static Ref<Object> RandomPicture(int format) {
        const auto picture = New("PictureTQX", kWidth, kHeight, format);
        FillRandom(picture, 7);
        return picture;
    }

    // Whether a member gives the same bytes in recycled memory as in a picture of zeros.
    template <class... Arguments>
    static void ExpectNothingOld(const Ref<Object>& picture, bool turns, const char* member,
                                 const Arguments&... arguments) {
        const int width = turns ? kHeight : kWidth, height = turns ? kWidth : kHeight;
        const auto zeros = New("PictureTQX", width, height, GetInt(picture, "ImageFormat"));
        const auto expected = CallObject(picture, member, zeros, arguments...);
        LeaveOnes(kRGBA);
        const auto actual = CallObject(picture, member, nullptr, arguments...);
        EXPECT_NE(actual.get(), nullptr) << member;
        EXPECT_TRUE(SameBytes(StorageOf(actual), StorageOf(expected))) << member;
    }
};

TEST_F(RecycledMemory, IsClearedForANewPicture) {
    LeaveOnes(kRGB);
    const Bytes bytes = StorageOf(New("PictureTQX", kWidth, kHeight, kRGB));
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(bytes.size()));
}

TEST_F(RecycledMemory, ShowsNowhereInWhatMembersGive) {
    for (const int format : {kRGB, kRGBA, kRGBX}) {
        const auto picture = RandomPicture(format);
        ExpectNothingOld(picture, false, "GammaFilter", 2.2);
        ExpectNothingOld(picture, false, "GammaFilter", 2.2, 1.7);
        ExpectNothingOld(picture, false, "SolarizeFilter");
        ExpectNothingOld(picture, false, "BoxBlurFilter", 3.0);
        ExpectNothingOld(picture, false, "BoxBlurFractionalFilter", 0.4);
        ExpectNothingOld(picture, false, "DitherFilter", 4, 2);
        ExpectNothingOld(picture, false, "EngraveFilter", 2);
        ExpectNothingOld(picture, false, "NeonFilter");
        ExpectNothingOld(picture, false, "Rotate180");
        ExpectNothingOld(picture, true, "Rotate90");
        ExpectNothingOld(picture, true, "Rotate270slow");
    }
}

TEST_F(RecycledMemory, ShowsNowhereInWhatPartsAndViewsGive) {
    const auto picture = RandomPicture(kRGBA);
    for (const char* view : {"GreenChannel", "RGBChannels", "MirroredView"})
        ExpectNothingOld(CallObject(picture, view), false, "GammaFilter", 2.2);
}

// Rows that are asked for are not all written.
TEST_F(RecycledMemory, ShowsNowhereWhereAFilterRefuses) {
    const auto picture = RandomPicture(kRGB);
    ExpectNothingOld(picture, false, "DitherFilter", 12345, 2);
    ExpectNothingOld(picture, false, "BoxBlurFilter", 1e9);
}

TEST_F(RecycledMemory, ShowsNowhereInWhatAViewGivesWhoseParentIsClosed) {
    const auto picture = RandomPicture(kRGB);
    const auto clip = CallObject(picture, "ClipImage");
    Call(picture, "Close");
    LeaveOnes(kRGB);
    const auto result = CallObject(clip, "GammaFilter", nullptr, 2.2);
    ASSERT_NE(result.get(), nullptr);
    const Bytes bytes = StorageOf(result);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(bytes.size()));
}

TEST_F(RecycledMemory, ShowsNowhereInARotatedPicture) {
    const auto picture = RandomPicture(kRGB);
    const auto first = CallObject(picture, "Rotate", 10.0, 1, 2, 3, 4, 5);
    const Bytes expected = StorageOf(first);
    LeaveOnes(kRGBA);
    EXPECT_TRUE(SameBytes(StorageOf(CallObject(picture, "Rotate", 10.0, 1, 2, 3, 4, 5)), expected));
}

TEST_F(RecycledMemory, ShowsNowhereWhenScriptCodeClosesTheSource) {
    const auto picture = RandomPicture(kRGB);
    Set(picture, "YieldTicks", Value(1));
    LeaveOnes(kRGB);
    const OnYield closes([&] { Call(picture, "Close"); });
    const auto result = CallObject(picture, "GammaFilter", nullptr, 2.2);
    if (!result) return;  // it was closed before there was one
    const Bytes bytes = StorageOf(result);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 255), 0);
}

}  // namespace
