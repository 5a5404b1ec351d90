// Lines, shapes and pictures drawn, pixel by pixel.
#include <string>

#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using GraphicsTest = FrameworkTest;

// The picture's rows as text: '.' white, '#' black, else the letter of the colour.
std::string Drawn(const Ref<Object>& picture) {
    std::string text;
    for (int y = 0; y < GetInt(picture, "Height"); ++y) {
        for (int x = 0; x < GetInt(picture, "Width"); ++x) {
            const std::uint32_t color = PixelOf(picture, x, y);
            text += color == 0xffffff ? '.' : color == 0 ? '#' : color == 0xff0000 ? 'R' : '?';
        }
        text += '\n';
    }
    return text;
}

// Colours count along: pixel (x, y) is 0x10000 * x + 0x100 * y + 1.
Ref<Object> Counting(int width, int height, int depth = 32) {
    auto picture = New("Picture", width, height, depth);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            SetPixelOf(picture, x, y, static_cast<std::uint32_t>(x * 0x10000 + y * 0x100 + 1));
    return picture;
}

std::uint32_t Count(int x, int y) { return static_cast<std::uint32_t>(x * 0x10000 + y * 0x100 + 1); }

TEST_F(GraphicsTest, FillsAndFramesRectangles) {
    const auto picture = New("Picture", 6, 5, 32), graphics = GetObject(picture, "Graphics");
    Call(graphics, "FillRect", 1, 1, 2, 3);
    Set(graphics, "ForeColor", Value(static_cast<sdk::Color>(0xff0000)));
    Call(graphics, "DrawRect", 2, 2, 4, 3);
    EXPECT_EQ(Drawn(picture), "......\n.##...\n.#RRRR\n.#R..R\n..RRRR\n");
    Call(graphics, "ClearRect", 0, 0, 6, 3);
    EXPECT_EQ(Drawn(picture), "......\n......\n......\n.#R..R\n..RRRR\n");
}

TEST_F(GraphicsTest, ForeColorBelongsToThePicture) {
    const auto picture = New("Picture", 2, 2, 32);
    Set(GetObject(picture, "Graphics"), "ForeColor", Value(static_cast<sdk::Color>(0xff0000)));
    EXPECT_EQ(Get(GetObject(picture, "Graphics"), "ForeColor").ToInt64(), 0xff0000);
    Call(GetObject(picture, "Graphics"), "FillRect", 0, 0, 1, 1);
    EXPECT_EQ(Drawn(picture), "R.\n..\n");
}

TEST_F(GraphicsTest, ShapesAreClippedWhateverTheirSize) {
    const auto picture = New("Picture", 3, 3, 32), graphics = GetObject(picture, "Graphics");
    for (const char* shape : {"FillRect", "DrawRect", "FillOval", "DrawOval", "DrawLine", "ClearRect"})
        for (int x : {INT32_MIN, -5, 0, 5, INT32_MAX})
            for (int width : {INT32_MIN, -1, 0, INT32_MAX}) Call(graphics, shape, x, x, width, width);
    Call(graphics, "ClearRect", 0, 0, 3, 3);
    Call(graphics, "FillRect", -1, -1, 2, 2);
    Call(graphics, "FillRect", 2, 2, INT32_MAX, INT32_MAX);
    EXPECT_EQ(Drawn(picture), "#..\n...\n..#\n");
    Call(graphics, "FillRect", INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_EQ(Drawn(picture), "#..\n...\n..#\n");
}

TEST_F(GraphicsTest, OvalsAreRoundAndSymmetric) {
    const auto picture = New("Picture", 7, 5, 32), graphics = GetObject(picture, "Graphics");
    Call(graphics, "FillOval", 0, 0, 7, 5);
    EXPECT_EQ(Drawn(picture), ".#####.\n#######\n#######\n#######\n.#####.\n");
    Call(graphics, "ClearRect", 0, 0, 7, 5);
    Call(graphics, "DrawOval", 1, 0, 5, 5);
    EXPECT_EQ(Drawn(picture), "..###..\n.#...#.\n.#...#.\n.#...#.\n..###..\n");
    Call(graphics, "ClearRect", 0, 0, 7, 5);
    Call(graphics, "FillOval", 3, 2, 1, 1);
    Call(graphics, "FillOval", 0, 0, 0, 3);
    EXPECT_EQ(Drawn(picture), ".......\n.......\n...#...\n.......\n.......\n");
}

TEST_F(GraphicsTest, LinesIncludeBothEnds) {
    const auto picture = New("Picture", 5, 4, 32), graphics = GetObject(picture, "Graphics");
    Call(graphics, "DrawLine", 0, 0, 4, 2);
    EXPECT_EQ(Drawn(picture), "#....\n.##..\n...##\n.....\n");
    Call(graphics, "ClearRect", 0, 0, 5, 4);
    Call(graphics, "DrawLine", 2, 3, 2, 1);
    Call(graphics, "DrawLine", 0, 0, 0, 0);
    EXPECT_EQ(Drawn(picture), "#....\n..#..\n..#..\n..#..\n");
}

TEST_F(GraphicsTest, HugeLinesPassWhereTheyShould) {
    const auto picture = New("Picture", 3, 3, 32), graphics = GetObject(picture, "Graphics");
    Call(graphics, "DrawLine", INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_EQ(Drawn(picture), "#..\n.#.\n..#\n");
}

TEST_F(GraphicsTest, PixelsOutsideAreBlackAndCantBeSet) {
    const auto picture = New("Picture", 2, 1, 32), graphics = GetObject(picture, "Graphics");
    Assign(graphics, "Pixel", {1, 0}, Value(static_cast<sdk::Color>(0xff0000)));
    EXPECT_EQ(Call(graphics, "Pixel", 1, 0).ToInt64(), 0xff0000);
    Assign(graphics, "Pixel", {2, 0}, Value(static_cast<sdk::Color>(0xff0000)));
    EXPECT_EQ(Call(graphics, "Pixel", 2, 0).ToInt64(), 0);
    EXPECT_EQ(Drawn(picture), ".R\n");
}

// --- DrawPicture ----------------------------------------------------------------------------

TEST_F(GraphicsTest, LongestFormIsFoundByItsDeclaration) {
    const auto graphics = GetObject(New("Picture", 1, 1, 32), "Graphics");
    EXPECT_NE(HostFunctionSlot<sdk::kREALLoadObjectMethod>::Call(
                  graphics.get(),
                  "DrawPicture( p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, "
                  "sx as Integer, sy as Integer, sw as Integer, sh as Integer )"),
              nullptr);
}

TEST_F(GraphicsTest, ShorterFormsMeanTheWholePicture) {
    const auto source = Counting(3, 2);
    const auto draw = [&](auto... rest) {
        const auto picture = New("Picture", 6, 4, 32);
        Call(GetObject(picture, "Graphics"), "DrawPicture", source, rest...);
        return picture;
    };
    EXPECT_EQ(PixelOf(draw(1, 1), 3, 2), Count(2, 1));
    EXPECT_EQ(PixelOf(draw(0, 0, 6), 5, 1), Count(2, 1));
    EXPECT_EQ(PixelOf(draw(0, 0, 6), 5, 2), 0xffffffu);
    EXPECT_EQ(PixelOf(draw(0, 0, 6, 4), 5, 3), Count(2, 1));
    EXPECT_EQ(PixelOf(draw(0, 0, 3, 2, 1), 0, 0), Count(1, 0));
    EXPECT_EQ(PixelOf(draw(0, 0, 3, 2, 1), 2, 0), 0xffffffu);
    EXPECT_EQ(PixelOf(draw(0, 0, 3, 2, 1, 1), 0, 0), Count(1, 1));
    EXPECT_EQ(PixelOf(draw(0, 0, 2, 2, 1, 1, 2), 1, 0), Count(2, 1));
    EXPECT_EQ(PixelOf(draw(0, 0, 2, 2, 1, 1, 2, 1), 1, 1), Count(2, 1));
}

TEST_F(GraphicsTest, CopiesEveryPixelBetweenAllDepths) {
    for (int depth : {32, 24, 16, 8, 1}) {
        const auto source = New("Picture", 9, 4, depth), picture = New("Picture", 9, 4, 32);
        for (int i = 0; i < 9; ++i) SetPixelOf(source, i, i % 4, static_cast<std::uint32_t>(i) * 0x1b1b1b);
        Call(GetObject(picture, "Graphics"), "DrawPicture", source, 0, 0);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 9; ++x) EXPECT_EQ(PixelOf(picture, x, y), PixelOf(source, x, y)) << depth;
    }
}

TEST_F(GraphicsTest, EnlargesByTheNearestPixel) {
    const auto source = Counting(2, 2), picture = New("Picture", 5, 5, 32);
    Call(GetObject(picture, "Graphics"), "DrawPicture", source, 0, 0, 5, 5);
    // Centres at 0.2, 0.6, 1.0, 1.4 and 1.8 of two pixels.
    const int from[] = {0, 0, 1, 1, 1};
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(PixelOf(picture, x, y), Count(from[x], from[y]));
}

TEST_F(GraphicsTest, DrawsOnlyWhatSourceAndTargetHave) {
    const auto source = Counting(3, 3), picture = New("Picture", 3, 3, 32);
    const auto graphics = GetObject(picture, "Graphics");
    Call(graphics, "DrawPicture", source, -1, -1);
    EXPECT_EQ(PixelOf(picture, 0, 0), Count(1, 1));
    EXPECT_EQ(PixelOf(picture, 1, 1), Count(2, 2));
    EXPECT_EQ(PixelOf(picture, 2, 2), 0xffffffu);
    Call(graphics, "ClearRect", 0, 0, 3, 3);
    Call(graphics, "DrawPicture", source, 0, 0, 3, 3, -2, -2, 3, 3);
    EXPECT_EQ(PixelOf(picture, 1, 1), 0xffffffu);
    EXPECT_EQ(PixelOf(picture, 2, 2), Count(0, 0));
    for (int x : {INT32_MIN, INT32_MAX})
        for (int size : {INT32_MIN, -1, 0, INT32_MAX})
            Call(graphics, "DrawPicture", source, x, x, size, size, x, x, size, size);
    EXPECT_EQ(PixelOf(picture, 1, 1), 0xffffffu);
}

TEST_F(GraphicsTest, HugeScalesAreClippedBeforeTheyCost) {
    const auto source = Counting(2, 2), picture = New("Picture", 3, 3, 32);
    Call(GetObject(picture, "Graphics"), "DrawPicture", source, -1000000000, 0, INT32_MAX, 3);
    EXPECT_EQ(PixelOf(picture, 0, 0), Count(0, 0));
    Call(GetObject(picture, "Graphics"), "DrawPicture", source, 0, 0, 1, 1, 0, 0, INT32_MAX, INT32_MAX);
    EXPECT_EQ(PixelOf(picture, 1, 1), Count(0, 1));
}

TEST_F(GraphicsTest, BlendsThroughTheMask) {
    const auto source = New("Picture", 3, 1, 32), picture = New("Picture", 3, 1, 32);
    for (int x = 0; x < 3; ++x) SetPixelOf(source, x, 0, 0x204060);
    const auto mask = GetObject(source, "Mask");
    SetPixelOf(mask, 0, 0, 0x000000);
    SetPixelOf(mask, 1, 0, 0x808080);
    Call(GetObject(picture, "Graphics"), "DrawPicture", source, 0, 0);
    EXPECT_EQ(PixelOf(picture, 0, 0), 0x204060u);
    // (128 * 255 + 127 * colour) / 255, rounded.
    EXPECT_EQ(PixelOf(picture, 1, 0), 0x90a0b0u);
    EXPECT_EQ(PixelOf(picture, 2, 0), 0xffffffu);
}

TEST_F(GraphicsTest, DrawsNothingOutsideASmallerMask) {
    const auto source = Counting(3, 3), picture = New("Picture", 3, 3, 32), mask = New("Picture", 2, 1, 32);
    Call(GetObject(mask, "Graphics"), "FillRect", 0, 0, 2, 1);
    Set(source, "Mask", Value(mask));
    Call(GetObject(picture, "Graphics"), "DrawPicture", source, 0, 0);
    EXPECT_EQ(PixelOf(picture, 1, 0), Count(1, 0));
    EXPECT_EQ(PixelOf(picture, 2, 0), 0xffffffu);
    EXPECT_EQ(PixelOf(picture, 0, 1), 0xffffffu);
}

TEST_F(GraphicsTest, APictureDrawnOntoItselfReadsWhatWasThere) {
    const auto picture = Counting(4, 4);
    Call(GetObject(picture, "Graphics"), "DrawPicture", picture, 1, 1);
    for (int i = 1; i < 4; ++i) EXPECT_EQ(PixelOf(picture, i, i), Count(i - 1, i - 1));
    const auto masked = Counting(3, 3), mask = GetObject(masked, "Mask");
    Call(GetObject(mask, "Graphics"), "DrawPicture", masked, 0, 0);
    EXPECT_EQ(PixelOf(mask, 1, 1), 0xffffffu);
}

TEST_F(GraphicsTest, NilAndOrphansRaise) {
    Call(GetObject(New("Picture", 1, 1, 32), "Graphics"), "DrawPicture", nullptr, 0, 0);
    EXPECT_EQ(RaisedClass(), "NilObjectException");
    const auto orphan = New("Graphics");
    Call(orphan, "FillRect", 0, 0, 1, 1);
    EXPECT_EQ(RaisedClass(), "NilObjectException");
    Get(orphan, "ForeColor");
    EXPECT_EQ(RaisedClass(), "NilObjectException");
}

}  // namespace
}  // namespace host
