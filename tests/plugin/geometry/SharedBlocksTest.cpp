// Copies, scalings and turns between two pictures around one memory block: of any formats, row
// sizes and sizes, a few bytes apart. What is written may be read again, in pixel order.
#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

constexpr int kBlockBytes = 9000;

// A picture in the block, as its own arithmetic has it.
struct Model {
    std::uint8_t* base;
    int width, height, rowSize;
    const Format* format;

    std::uint8_t* Pixel(int x, int y) const { return base + y * rowSize + x * format->pixelSize; }
};

struct Pair {
    Ref<Object> live;
    Model model;
};

struct Color {
    int red, green, blue, gray, alpha;
};

Color Read(const Format& format, const std::uint8_t* pixel) {
    const int alpha = format.hasAlpha ? pixel[format.alpha] : 0;
    if (format.isGray) return {pixel[format.gray], pixel[format.gray], pixel[format.gray], pixel[format.gray], alpha};
    const int red = pixel[format.red], green = pixel[format.green], blue = pixel[format.blue];
    return {red, green, blue, (77 * red + 151 * green + 28 * blue) / 256, alpha};
}

void Put(const Format& format, std::uint8_t* pixel, const Color& color, bool writesAlpha) {
    if (format.isRGB) {
        pixel[format.red] = static_cast<std::uint8_t>(color.red);
        pixel[format.green] = static_cast<std::uint8_t>(color.green);
        pixel[format.blue] = static_cast<std::uint8_t>(color.blue);
    } else {
        pixel[format.gray] = static_cast<std::uint8_t>(color.gray);
    }
    if (writesAlpha) pixel[format.alpha] = static_cast<std::uint8_t>(color.alpha);
}

void ReferenceCopy(const Model& dest, const Model& source, int dx, int dy, int sx, int sy) {
    const int width = std::min(dest.width - dx, source.width - sx);
    const int height = std::min(dest.height - dy, source.height - sy);
    const bool alpha = source.format->hasAlpha && dest.format->hasAlpha;
    for (int j = 0; j < height; ++j)
        for (int i = 0; i < width; ++i)
            Put(*dest.format, dest.Pixel(dx + i, dy + j), Read(*source.format, source.Pixel(sx + i, sy + j)), alpha);
}

void ReferenceScale(const Model& dest, const Model& source, int width, int height) {
    const bool alpha =
        source.format->hasAlpha && dest.format->hasAlpha && (source.format->isRGB || dest.format->isGray);
    const double xstep = static_cast<double>(source.width) / width, ystep = static_cast<double>(source.height) / height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            Put(*dest.format, dest.Pixel(x, y),
                Read(*source.format, source.Pixel(static_cast<int>(xstep * x), static_cast<int>(ystep * y))), alpha);
}

// The source's channels to the destination's offsets of the same names.
void Move(const Model& source, int x, int y, const Model& dest, int toX, int toY) {
    if (toX >= dest.width || toY >= dest.height) return;
    const Format &from = *source.format, &to = *dest.format;
    std::vector<std::pair<int, int>> moves;
    if (from.isGray)
        moves = {{from.gray, to.gray}};
    else
        moves = {{from.red, to.red}, {from.green, to.green}, {from.blue, to.blue}};
    if (from.hasAlpha) moves.emplace_back(from.alpha, to.alpha);
    std::vector<std::uint8_t> values;
    for (const auto& move : moves) values.push_back(source.Pixel(x, y)[move.first]);
    for (std::size_t i = 0; i < moves.size(); ++i) dest.Pixel(toX, toY)[moves[i].second] = values[i];
}

void ReferenceHalfTurn(const Model& source, const Model& dest) {
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x) Move(source, source.width - 1 - x, y, dest, x, source.height - 1 - y);
}

void ReferenceQuarter(const Model& source, const Model& dest, bool left, int block) {
    for (int y0 = 0; y0 < source.height; y0 += block)
        for (int x0 = 0; x0 < source.width; x0 += block)
            for (int y = y0; y < std::min(y0 + block, source.height); ++y)
                for (int x = x0; x < std::min(x0 + block, source.width); ++x)
                    Move(source, x, y, dest, left ? y : source.height - 1 - y, left ? source.width - 1 - x : x);
}

class SharedBlocks : public PluginTest, public ::testing::WithParamInterface<Format> {
  protected:
    // The block's bytes, live and in the model.
    struct Block {
        Ref<Object> live;
        Bytes model;
    };

    static Block NewBlock(Random& random) {
        const Bytes bytes = random.NextBytes(kBlockBytes);
        return {MakeBlock(bytes), bytes};
    }

    // A picture that begins somewhere in the block and lies within it.
    static Pair NewPicture(Random& random, Block& block, const Format& format) {
        const bool wide = random.Below(3) == 0;
        const int width = random.Between(1, wide ? 220 : 14), height = random.Between(1, wide ? 4 : 14);
        const int pixels = width * format.pixelSize;
        const int rowSize = random.Below(3) == 0 ? random.Below(pixels) : pixels + random.Below(9);
        const int shift = random.Below(4) == 0 ? random.Below(400) : random.Below(12);
        const auto shifted = New("PictureTQX", block.live, 1, 2, 11, shift);
        const auto live = New("PictureTQX", CallObject(shifted, "RawRow", 1), width, height, format.code, rowSize);
        return {live, {block.model.data() + shift, width, height, rowSize, &kFormats[format.code]}};
    }

    static ::testing::AssertionResult Same(const Block& block) {
        return SameBytes(BlockBytes(block.live), block.model);
    }
};

TEST_P(SharedBlocks, KeepThePixelOrderOfCopies) {
    Random random(static_cast<std::uint64_t>(GetParam().code));
    for (const Format& format : ChannelFormats())
        for (int round = 0; round < 12; ++round) {
            Block block = NewBlock(random);
            const Pair dest = NewPicture(random, block, GetParam()), source = NewPicture(random, block, format);
            const int dx = random.Below(3), dy = random.Below(2), sx = random.Below(3), sy = random.Below(2);
            Call(dest.live, "CopyPixels", source.live, dx, dy, 1000, 1000, sx, sy);
            ReferenceCopy(dest.model, source.model, dx, dy, sx, sy);
            ASSERT_TRUE(Same(block)) << "from " << format.name << ", round " << round;
        }
}

TEST_P(SharedBlocks, KeepThePixelOrderOfFastScaling) {
    Random random(static_cast<std::uint64_t>(GetParam().code) + 30);
    for (const Format& format : ChannelFormats())
        for (int round = 0; round < 12; ++round) {
            Block block = NewBlock(random);
            const Pair dest = NewPicture(random, block, GetParam()), source = NewPicture(random, block, format);
            const int width = random.Between(1, dest.model.width), height = random.Between(1, dest.model.height);
            EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, width, height));
            ReferenceScale(dest.model, source.model, width, height);
            ASSERT_TRUE(Same(block)) << "from " << format.name << ", round " << round;
        }
}

TEST_P(SharedBlocks, KeepThePixelOrderOfTurns) {
    Random random(static_cast<std::uint64_t>(GetParam().code) + 60);
    for (const Format& format : ChannelFormats())
        for (const std::string name : {"Rotate180", "Rotate90", "Rotate90slow", "Rotate270", "Rotate270slow"})
            for (int round = 0; round < 3; ++round) {
                Block block = NewBlock(random);
                const Pair source = NewPicture(random, block, GetParam()), dest = NewPicture(random, block, format);
                EXPECT_EQ(CallObject(source.live, name, dest.live), dest.live);
                const int inBlocks = std::max(std::min(source.model.height, dest.model.height) - 2, 1);
                const bool slow = name.ends_with("slow");
                if (name == "Rotate180")
                    ReferenceHalfTurn(source.model, dest.model);
                else
                    ReferenceQuarter(source.model, dest.model, name.starts_with("Rotate90"), slow ? 1000 : inBlocks);
                ASSERT_TRUE(Same(block)) << name << " to " << format.name << ", round " << round;
            }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, SharedBlocks, ::testing::ValuesIn(ChannelFormats()), FormatName);

}  // namespace
