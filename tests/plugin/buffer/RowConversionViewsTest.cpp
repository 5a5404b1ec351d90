// Rows read and written in every format, of every kind of picture and of many widths, beside
// models; and setters whose block is memory of the picture itself.
#include <algorithm>

#include "tests/support/Scene.h"

namespace {

using namespace support;

// Where the channels lie in a pixel; a channel that is absent is -1.
struct Layout {
    int pixelSize;
    bool colour;
    int red, green, blue, gray, alpha;
};

Layout LayoutOf(const Format& format) {
    return {format.pixelSize,
            format.isRGB,
            format.red,
            format.green,
            format.blue,
            format.gray,
            format.hasAlpha ? format.alpha : -1};
}

Layout LayoutOf(const ModelPicture& picture) {
    return {picture.pixelSize,
            picture.isRGB,
            picture.red,
            picture.green,
            picture.blue,
            picture.gray,
            picture.hasAlpha ? picture.alpha : -1};
}

enum class AlphaOf { EachPixel, FirstPixel };

// Pixel by pixel, each read whole and then written: red, green, blue (or gray), alpha.
void Convert(const Layout& from, const std::uint8_t* source, const Layout& to, std::uint8_t* destination, int width,
             AlphaOf alphaOf, bool invert) {
    const int first = from.alpha >= 0 && width > 0 ? source[from.alpha] : 0;
    for (int x = 0; x < width; ++x, source += from.pixelSize, destination += to.pixelSize) {
        const int red = source[from.colour ? from.red : from.gray],
                  green = source[from.colour ? from.green : from.gray],
                  blue = source[from.colour ? from.blue : from.gray];
        int alpha = from.alpha >= 0 ? source[from.alpha] : 0;
        if (alphaOf == AlphaOf::FirstPixel && !from.colour && to.colour) alpha = first;
        if (invert) alpha = 255 - alpha;
        if (to.colour) {
            destination[to.red] = static_cast<std::uint8_t>(red);
            destination[to.green] = static_cast<std::uint8_t>(green);
            destination[to.blue] = static_cast<std::uint8_t>(blue);
        } else {
            destination[to.gray] =
                static_cast<std::uint8_t>(from.colour ? (77 * red + 151 * green + 28 * blue) / 256 : red);
        }
        if (from.alpha >= 0 && to.alpha >= 0) destination[to.alpha] = static_cast<std::uint8_t>(alpha);
    }
}

Bytes Expected(const ModelPicture& picture, int y, const Format& format, bool invert) {
    Bytes row(static_cast<std::size_t>(picture.width * format.pixelSize));
    if (const std::uint8_t* const source = picture.Row(y))
        Convert(LayoutOf(picture), source, LayoutOf(format), row.data(), picture.width, AlphaOf::FirstPixel, invert);
    return row;
}

class RowConversionViews : public PluginTest, public ::testing::WithParamInterface<Format> {
  protected:
    static int RandomWidth(Random& random) {
        return random.Below(10) == 0 ? random.Between(500, 700) : random.Between(1, 140);
    }
};

TEST_P(RowConversionViews, ReadEveryFormat) {
    Scene scene(static_cast<std::uint64_t>(GetParam().code));
    Random& random = scene.random();
    for (int kind = 0; kind < Scene::kKinds; ++kind)
        for (const Format& format : ChannelFormats()) {
            scene.Clear();
            const Twin twin = scene.Kind(kind, RandomWidth(random), random.Between(1, 4), GetParam().code);
            Bytes all;
            for (int y = 0; y < twin.model.height; ++y) {
                const Bytes plain = Expected(twin.model, y, format, false);
                const Bytes inverted = Expected(twin.model, y, format, true);
                all.insert(all.end(), plain.begin(), plain.end());
                if (!twin.model.Row(y)) continue;
                const int code = format.code;
                ASSERT_TRUE(SameBytes(BlockBytes(CallObject(twin.live, "RowInFormat", y, code)), plain)) << kind;
                ASSERT_TRUE(SameBytes(BlockBytes(CallObject(twin.live, "RowInFormat", y, code, true)), inverted))
                    << kind;
                ASSERT_TRUE(SameBytes(TextBytes(Call(twin.live, "RowStringInFormat", y, code)), plain)) << kind;
            }
            ASSERT_TRUE(SameBytes(TextBytes(Call(twin.live, "DataStringInFormat", format.code)), all))
                << "kind " << kind << " as " << format.name;
        }
}

TEST_P(RowConversionViews, WriteEveryFormat) {
    Scene scene(static_cast<std::uint64_t>(GetParam().code));
    Random& random = scene.random();
    for (int kind = 0; kind < Scene::kKinds; ++kind)
        for (const Format& format : ChannelFormats()) {
            scene.Clear();
            const Twin twin = scene.Kind(kind, RandomWidth(random), random.Between(1, 4), GetParam().code);
            const ModelPicture& model = twin.model;
            const Layout from = LayoutOf(format), to = LayoutOf(model);
            const Bytes bytes = random.NextBytes(static_cast<std::size_t>(model.width * format.pixelSize));
            const int y = random.Below(model.height);
            const bool invert = random.Below(2) == 0;
            Assign(twin.live, "RowInFormat", {y, format.code, invert}, MakeBlock(bytes));
            if (model.Row(y)) Convert(from, bytes.data(), to, model.Row(y), model.width, AlphaOf::EachPixel, invert);
            ASSERT_TRUE(scene.Same()) << "block of " << format.name << " to kind " << kind;

            const Bytes all = random.NextBytes(bytes.size() * static_cast<std::size_t>(model.height));
            Assign(twin.live, "DataStringInFormat", {format.code}, ToValue(all));
            for (int row = 0; row < model.height; ++row)
                if (model.Row(row))
                    Convert(from, all.data() + static_cast<std::size_t>(row) * bytes.size(), to, model.Row(row),
                            model.width, AlphaOf::EachPixel, false);
            ASSERT_TRUE(scene.Same()) << "string of " << format.name << " to kind " << kind;

            Assign(twin.live, "RowStringInFormat", {y, format.code}, ToValue(bytes));
            if (model.Row(y)) Convert(from, bytes.data(), to, model.Row(y), model.width, AlphaOf::EachPixel, false);
            ASSERT_TRUE(scene.Same()) << "row string of " << format.name << " to kind " << kind;
        }
}

// The block that is assigned is a raw row of another view of the same memory, a few bytes off.
TEST_P(RowConversionViews, WriteFromTheirOwnMemoryPixelByPixel) {
    Scene scene(static_cast<std::uint64_t>(GetParam().code));
    Random& random = scene.random();
    for (const Format& format : ChannelFormats())
        for (int round = 0; round < 8; ++round) {
            scene.Clear();
            const int width = RandomWidth(random);
            // Room for a row of any format behind the picture's own.
            const int rowSize = width * 4 + 40;
            const Twin twin = scene.Block(width, 3, GetParam().code, rowSize);
            const int shift = random.Below(20), y = random.Below(2);
            const auto memory = GetObject(twin.live, "Memory");
            // A picture whose rows are shift bytes long: its raw row y begins y × shift bytes on.
            const auto shifted = New("PictureTQX", memory, 1, 3, 11, shift);
            Assign(twin.live, "RowInFormat", {y, format.code}, CallObject(shifted, "RawRow", 1));
            std::uint8_t* const base = twin.model.storage->bytes.data();
            Convert(LayoutOf(format), base + shift, LayoutOf(twin.model), base + y * rowSize, width, AlphaOf::EachPixel,
                    false);
            ASSERT_TRUE(scene.Same()) << format.name << ", width " << width << ", " << shift << " bytes off";
        }
}

TEST_P(RowConversionViews, TakeNothingPastTheBytesThatAreThere) {
    Scene scene(static_cast<std::uint64_t>(GetParam().code));
    Random& random = scene.random();
    // The guards beside a block's memory would not see a read, so whole sizes are tried: what comes
    // after the last whole pixel must not change the picture.
    for (const Format& format : ChannelFormats()) {
        scene.Clear();
        const int width = random.Between(60, 140);
        const Twin twin = scene.Memory(width, 2, GetParam().code);
        const auto size = static_cast<std::size_t>(random.Between(0, width * format.pixelSize));
        const Bytes bytes = random.NextBytes(size);
        Assign(twin.live, "RowInFormat", {1, format.code}, MakeBlock(bytes));
        Convert(LayoutOf(format), bytes.data(), LayoutOf(twin.model), twin.model.Row(1),
                static_cast<int>(size) / format.pixelSize, AlphaOf::EachPixel, false);
        ASSERT_TRUE(scene.Same()) << format.name << ", " << size << " bytes";
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RowConversionViews, ::testing::ValuesIn(ChannelFormats()), FormatName);

}  // namespace
