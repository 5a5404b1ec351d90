// Fills, clears and copies of pictures that are larger than a processor's cache.
#include "tests/support/Scene.h"

namespace {

using namespace support;

constexpr int kRGB = 1, kRGBA = 2;
constexpr int kWidth = 4099, kHeight = 2900;  // 36 MB in three bytes a pixel, with padding

class LargePictures : public PluginTest {};

void SetPixels(const ModelPicture& picture, const Bytes& pixel) {
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) std::copy(pixel.begin(), pixel.end(), picture.Pixel(x, y));
}

TEST_F(LargePictures, AreFilledButForTheirPadding) {
    Scene scene(1);
    const Twin picture = scene.Memory(kWidth, kHeight, kRGB);
    Call(picture.live, "FillRectRGB", 1, 2, 3);
    SetPixels(picture.model, {1, 2, 3});
    EXPECT_TRUE(scene.Same());
}

TEST_F(LargePictures, AreFilledWithinAClipOfABlock) {
    Scene scene(2);
    const Twin whole = scene.Block(kWidth, kHeight, kRGBA, kWidth * 4 + 1);
    const Twin clip = scene.View(whole, "ClipImage", 5, 7, kWidth - 11, kHeight - 13);
    Call(clip.live, "FillRectRGB", 1, 2, 3, 4);
    for (int y = 0; y < clip.model.height; ++y)
        for (int x = 0; x < clip.model.width; ++x) {
            std::uint8_t* const row = clip.model.Row(y) + x * 4;
            for (int c = 0; c < 4; ++c)
                row[clip.model.Channels()[static_cast<std::size_t>(c)]] = static_cast<std::uint8_t>(c + 1);
        }
    EXPECT_TRUE(scene.Same());
}

TEST_F(LargePictures, AreClearedPaddingAndAll) {
    Scene scene(3);
    const Twin picture = scene.Memory(kWidth, kHeight, kRGB);
    const Twin mirrored = scene.View(picture, "MirroredView");
    Call(mirrored.live, "ClearRect");
    std::fill(picture.model.storage->bytes.begin(), picture.model.storage->bytes.end(), std::uint8_t{0});
    EXPECT_TRUE(scene.Same());
}

TEST_F(LargePictures, AreCopiedWithinTheRectangle) {
    Scene scene(4);
    const Twin from = scene.Memory(kWidth, kHeight, kRGB), to = scene.Block(kWidth, kHeight, kRGB, kWidth * 3 + 5);
    Call(to.live, "CopyPixels", from.live, 1, 2, kWidth, kHeight, 3, 4);
    for (int y = 0; y < kHeight - 4; ++y)
        std::copy_n(from.model.Pixel(3, y + 4), (kWidth - 3) * 3, to.model.Pixel(1, y + 2));
    EXPECT_TRUE(scene.Same());
}

TEST_F(LargePictures, AreCopiedOntoThemselvesInOrder) {
    Scene scene(5);
    const Twin picture = scene.Memory(kWidth, kHeight, kRGB);
    const ModelPicture& model = picture.model;
    Call(picture.live, "CopyPixels", picture.live, 0, 0, kWidth, kHeight, 1, 0);
    for (int y = 0; y < kHeight; ++y) std::copy_n(model.Pixel(1, y), (kWidth - 1) * 3, model.Pixel(0, y));
    EXPECT_TRUE(scene.Same());
}

// Refused at their making, since no memory holds them; their numbers stay and are counted with.
TEST_F(LargePictures, OfMoreBytesThanThereAreNumbersAreLeftAlone) {
    const auto picture = New("PictureTQX", INT32_MAX, INT32_MAX, kRGBA);
    const auto other = New("PictureTQX", INT32_MAX, INT32_MAX, kRGB);
    Call(picture, "FillRectRGB", 1, 2, 3, 4);
    Call(picture, "FillRect", 5);
    Call(picture, "CopyPixels", other, 0, 0, INT32_MAX, INT32_MAX, 0, 0);
    Call(picture, "ClearRect", 0, 0, INT32_MAX, INT32_MAX);
    EXPECT_FALSE(GetBool(picture, "Valid"));
}

}  // namespace
