// Rows and whole pictures as blocks and strings, in every format.
#include <array>
#include <optional>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

const Thrown kNothing{};
const Thrown kOutOfBounds{"OutOfBoundsException", "Index is out of bounds."};
const Thrown kNil{"NilObjectException", "Memoryblock is nil"};

// --- The conversions, pixel by pixel, as the tests understand them -----------------------------

struct Pixel {
    int red, green, blue, gray;
    int alpha;
};

Pixel PixelAt(const Format& format, const Bytes& pixels, std::size_t index) {
    const std::uint8_t* const at = pixels.data() + index * static_cast<std::size_t>(format.pixelSize);
    const int alpha = format.hasAlpha ? at[format.alpha] : 0;
    if (format.isGray) return {at[format.gray], at[format.gray], at[format.gray], at[format.gray], alpha};
    const int r = at[format.red], g = at[format.green], b = at[format.blue];
    return {r, g, b, (77 * r + 151 * g + 28 * b) / 256, alpha};
}

void PutPixel(const Format& format, Bytes& pixels, std::size_t index, const Pixel& pixel, std::optional<int> alpha) {
    std::uint8_t* const at = pixels.data() + index * static_cast<std::size_t>(format.pixelSize);
    if (format.isGray) at[format.gray] = static_cast<std::uint8_t>(pixel.gray);
    if (format.isRGB) {
        at[format.red] = static_cast<std::uint8_t>(pixel.red);
        at[format.green] = static_cast<std::uint8_t>(pixel.green);
        at[format.blue] = static_cast<std::uint8_t>(pixel.blue);
    }
    if (format.hasAlpha && alpha) at[format.alpha] = static_cast<std::uint8_t>(*alpha);
}

// `into` holds what the destination held before.
Bytes Converted(const Format& from, const Bytes& pixels, const Format& to, Bytes into, bool getter, bool invert) {
    const std::size_t count = pixels.size() / static_cast<std::size_t>(from.pixelSize);
    const int first = PixelAt(from, pixels, 0).alpha;
    for (std::size_t i = 0; i < count; ++i) {
        const Pixel pixel = PixelAt(from, pixels, i);
        std::optional<int> alpha;
        if (from.hasAlpha) alpha = getter && from.isGray && to.isRGB ? first : pixel.alpha;
        if (alpha && invert) alpha = 255 - *alpha;
        PutPixel(to, into, i, pixel, alpha);
    }
    return into;
}

class RowAccess : public PluginTest {};

class RowConversion : public PluginTest, public ::testing::WithParamInterface<Format> {};

constexpr int kWidth = 7, kHeight = 3;

TEST_P(RowConversion, ReadsRowsInEveryFormat) {
    const Format& own = GetParam();
    const auto picture = New("PictureTQX", kWidth, kHeight, own.code);
    FillRandom(picture, 11);
    for (const Format& format : ChannelFormats()) {
        SCOPED_TRACE(format.name);
        const Bytes zeros(static_cast<std::size_t>(kWidth * format.pixelSize), 0);
        Bytes all;
        for (int y = 0; y < kHeight; ++y) {
            const Bytes row = ReadRow(picture, y);
            const Bytes plain = Converted(own, row, format, zeros, true, false);
            const Bytes inverted = Converted(own, row, format, zeros, true, true);
            EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", y, format.code)), plain);
            EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", y, format.code, false)), plain);
            EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", y, format.code, true)), inverted);
            EXPECT_EQ(TextBytes(Call(picture, "RowStringInFormat", y, format.code)), plain);
            all.insert(all.end(), plain.begin(), plain.end());
        }
        EXPECT_EQ(TextBytes(Call(picture, "DataStringInFormat", format.code)), all);
    }
}

TEST_P(RowConversion, WritesRowsInEveryFormat) {
    const Format& own = GetParam();
    for (const Format& format : ChannelFormats()) {
        SCOPED_TRACE(format.name);
        const std::size_t rowBytes = static_cast<std::size_t>(kWidth * format.pixelSize);
        const Bytes given = Random(5).NextBytes(rowBytes * kHeight);
        const Bytes first(given.begin(), given.begin() + static_cast<std::ptrdiff_t>(rowBytes));
        for (const bool invert : {false, true}) {
            const auto picture = New("PictureTQX", kWidth, kHeight, own.code);
            FillRandom(picture, 12);
            const Bytes expected = Converted(format, first, own, ReadRow(picture, 1), false, invert);
            Assign(picture, "RowInFormat", {1, format.code, invert}, MakeBlock(first));
            EXPECT_EQ(ReadRow(picture, 1), expected);
        }
        const auto picture = New("PictureTQX", kWidth, kHeight, own.code);
        FillRandom(picture, 12);
        const Bytes row = Converted(format, first, own, ReadRow(picture, 2), false, false);
        const Bytes whole = Converted(format, given, own, ReadPixels(picture), false, false);
        Assign(picture, "RowInFormat", {2, format.code}, MakeBlock(first));
        EXPECT_EQ(ReadRow(picture, 2), row);
        FillRandom(picture, 12);
        Assign(picture, "RowStringInFormat", {2, format.code}, ToValue(first));
        EXPECT_EQ(ReadRow(picture, 2), row);
        FillRandom(picture, 12);
        Assign(picture, "DataStringInFormat", {format.code}, ToValue(given));
        EXPECT_EQ(ReadPixels(picture), whole);
        EXPECT_EQ(TakeThrown(), kNothing);
    }
}

TEST_P(RowConversion, TakesOnlyTheWholePixelsThatAreThere) {
    const Format& own = GetParam();
    const auto picture = New("PictureTQX", kWidth, kHeight, own.code);
    for (const Format& format : {kFormats[2], kFormats[1], kFormats[12], kFormats[11]}) {
        const std::size_t rowBytes = static_cast<std::size_t>(kWidth * format.pixelSize);
        const Bytes given = Random(6).NextBytes(rowBytes * kHeight);
        for (std::size_t size = 1; size <= rowBytes; ++size) {
            const std::size_t pixels = size / static_cast<std::size_t>(format.pixelSize);
            const Bytes part(given.begin(), given.begin() + static_cast<std::ptrdiff_t>(size));
            const Bytes used(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(pixels) * format.pixelSize);
            FillRandom(picture, 13);
            Bytes expected = ReadRow(picture, 1);
            if (pixels > 0) expected = Converted(format, used, own, expected, false, false);
            Assign(picture, "RowInFormat", {1, format.code}, MakeBlock(part));
            EXPECT_EQ(ReadRow(picture, 1), expected);
            FillRandom(picture, 13);
            Assign(picture, "RowStringInFormat", {1, format.code}, ToValue(part));
            EXPECT_EQ(ReadRow(picture, 1), expected);
        }
        // A whole picture's string that ends inside its second row.
        const std::size_t cut = rowBytes + rowBytes / 2;
        const Bytes part(given.begin(), given.begin() + static_cast<std::ptrdiff_t>(cut));
        FillRandom(picture, 13);
        Bytes expected = ReadPixels(picture);
        const std::size_t pixels = cut / static_cast<std::size_t>(format.pixelSize);
        expected = Converted(format,
                             Bytes(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(pixels) * format.pixelSize),
                             own, expected, false, false);
        Assign(picture, "DataStringInFormat", {format.code}, ToValue(part));
        EXPECT_EQ(ReadPixels(picture), expected);
    }
}

TEST_P(RowConversion, WorksThroughViews) {
    const Format& own = GetParam();
    const auto whole = New("PictureTQX", 12, 9, own.code);
    FillRandom(whole, 14);
    const auto mirrored = CallObject(whole, "MirroredView");
    const auto clip = CallObject(whole, "ClipImage", 3, 2, kWidth, kHeight);
    for (const Format& format : ChannelFormats()) {
        const Bytes zeros(static_cast<std::size_t>(kWidth * format.pixelSize), 0);
        EXPECT_EQ(BlockBytes(CallObject(mirrored, "RowInFormat", 0, format.code)),
                  BlockBytes(CallObject(whole, "RowInFormat", 8, format.code)));
        const Bytes row = ReadRow(whole, 3);
        const auto skip = static_cast<std::ptrdiff_t>(3 * own.pixelSize);
        const Bytes part(row.begin() + skip, row.begin() + skip + kWidth * own.pixelSize);
        EXPECT_EQ(BlockBytes(CallObject(clip, "RowInFormat", 1, format.code)),
                  Converted(own, part, format, zeros, true, false));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RowConversion, ::testing::ValuesIn(ChannelFormats()), FormatName);

// --- Raw rows -----------------------------------------------------------------------------------

TEST_F(RowAccess, RawRowIsTheRowItself) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    const auto row = CallObject(picture, "RawRow", 1);
    BlockAddress(row)[4] = 99;
    EXPECT_EQ(ByteAt(picture, 1, 1, 1), 99);
}

TEST_F(RowAccess, RowCopiesThePadding) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    Bytes row = Random(1).NextBytes(64);
    Assign(picture, "Row", {1}, MakeBlock(row));
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 1)), row);
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 0)), Bytes(64, 0));
}

TEST_F(RowAccess, RowTakesNoMoreThanTheBlockHas) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    Assign(picture, "Row", {0}, MakeBlock(Bytes(64, 7)));
    Assign(picture, "Row", {0}, MakeBlock(Bytes{1, 2, 3}));
    Bytes expected(64, 7);
    expected[0] = 1, expected[1] = 2, expected[2] = 3;
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 0)), expected);
    Assign(picture, "Row", {1}, MakeBlock(Bytes(1000, 5)));
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 1)), Bytes(64, 5));
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 0)), expected);
}

TEST_F(RowAccess, RowTakesARawRow) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    FillRandom(picture, 2);
    Assign(picture, "Row", {1}, CallObject(picture, "RawRow", 0));
    EXPECT_EQ(ReadRow(picture, 1), ReadRow(picture, 0));
    Assign(picture, "Row", {0}, CallObject(picture, "RawRow", 0));
    EXPECT_EQ(ReadRow(picture, 1), ReadRow(picture, 0));
}

TEST_F(RowAccess, RowOfARowSizeBelowOneIsNil) {
    const auto block = MakeBlock(64);
    const auto picture = New("PictureTQX", block, 4, 4, 11, 0);
    EXPECT_FALSE(CallObject(picture, "Row", 0));
    Assign(picture, "Row", {0}, MakeBlock(Bytes(4, 1)));
    EXPECT_EQ(BlockBytes(block), Bytes(64, 0));
}

// --- Checks and their order ----------------------------------------------------------------------

TEST_F(RowAccess, ABadIndexRaises) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    const auto block = MakeBlock(64);
    const Value text = ToValue(Bytes(9, 1));
    for (const int index : {2, 3, -1, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(index);
        for (const char* method : {"RawRow", "Row"}) {
            EXPECT_FALSE(CallObject(picture, method, index));
            EXPECT_EQ(TakeThrown(), kOutOfBounds) << method;
        }
        EXPECT_FALSE(CallObject(picture, "RowInFormat", index, 1));
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        EXPECT_FALSE(CallObject(picture, "RowInFormat", index, 1, true));
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        EXPECT_EQ(Call(picture, "RowStringInFormat", index, 1).string(), nullptr);
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        Assign(picture, "Row", {index}, block);
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        Assign(picture, "RowInFormat", {index, 1}, block);
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        Assign(picture, "RowInFormat", {index, 1, true}, block);
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
        Assign(picture, "RowStringInFormat", {index, 1}, text);
        EXPECT_EQ(TakeThrown(), kOutOfBounds);
    }
}

// Height is compared as an unsigned number: nothing is past a negative one.
TEST_F(RowAccess, NoIndexIsPastANegativeHeight) {
    const auto clip = CallObject(New("PictureTQX", 3, 2, 1), "ClipImage", 0, 5, 3, 2);
    EXPECT_EQ(GetInt(clip, "Height"), -3);
    EXPECT_FALSE(CallObject(clip, "Row", 0));
    EXPECT_FALSE(CallObject(clip, "RowInFormat", INT32_MAX, 1));
    Assign(clip, "Row", {7}, MakeBlock(64));
    EXPECT_EQ(TakeThrown(), kNothing);
    EXPECT_FALSE(CallObject(clip, "Row", -1));
    EXPECT_EQ(TakeThrown(), kOutOfBounds);
}

TEST_F(RowAccess, AssigningNilRaises) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    Assign(picture, "Row", {0}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil);
    Assign(picture, "RowInFormat", {0, 1}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil);
    Assign(picture, "RowInFormat", {0, 1, true}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil);
    // Strings as well speak of a memory block.
    Assign(picture, "RowStringInFormat", {0, 1}, "");
    EXPECT_EQ(TakeThrown(), kNil);
    Assign(picture, "DataStringInFormat", {1}, "");
    EXPECT_EQ(TakeThrown(), kNil);
}

// The row's index is looked at before the block and Valid not at all; the converting setters look
// at the block first and then at Valid.
TEST_F(RowAccess, ChecksComeInTheirOrder) {
    const auto valid = New("PictureTQX", 3, 2, 1);
    Assign(valid, "Row", {9}, nullptr);
    EXPECT_EQ(TakeThrown(), kOutOfBounds);
    Assign(valid, "RowInFormat", {9, 1}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil);
    Assign(valid, "RowStringInFormat", {9, 1}, "");
    EXPECT_EQ(TakeThrown(), kNil);

    const auto invalid = New("PictureTQX", 3, 2, 0);
    const auto block = MakeBlock(64);
    EXPECT_FALSE(CallObject(invalid, "Row", 0));
    EXPECT_FALSE(CallObject(invalid, "Row", -1));
    EXPECT_FALSE(CallObject(invalid, "RawRow", 9));
    EXPECT_FALSE(CallObject(invalid, "RowInFormat", 9, 1));
    EXPECT_EQ(TakeThrown(), kNothing);
    Assign(invalid, "Row", {-1}, block);
    EXPECT_EQ(TakeThrown(), kOutOfBounds);
    Assign(invalid, "Row", {0}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil) << "Valid is not asked for";
    Assign(invalid, "Row", {0}, block);
    Assign(invalid, "RowInFormat", {9, 1}, block);
    Assign(invalid, "RowInFormat", {9, 1, true}, block);
    Assign(invalid, "RowStringInFormat", {9, 1}, "abc");
    Assign(invalid, "DataStringInFormat", {1}, "abc");
    EXPECT_EQ(TakeThrown(), kNothing);
    Assign(invalid, "RowInFormat", {9, 1}, nullptr);
    EXPECT_EQ(TakeThrown(), kNil);
    Assign(invalid, "DataStringInFormat", {1}, "");
    EXPECT_EQ(TakeThrown(), kNil);
}

TEST_F(RowAccess, UnknownAndUnsupportedFormatsAreRefusedSilently) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    FillRandom(picture, 1);
    const Bytes before = ReadPixels(picture);
    const auto block = MakeBlock(Bytes(64, 9));
    const Value text = ToValue(Bytes(64, 9));
    for (const int format : {0, 14, 22, -1, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(format);
        EXPECT_FALSE(CallObject(picture, "RowInFormat", 0, format));
        EXPECT_FALSE(CallObject(picture, "RowInFormat", 0, format, true));
        EXPECT_EQ(Call(picture, "RowStringInFormat", 0, format).string(), nullptr);
        EXPECT_EQ(Call(picture, "DataStringInFormat", format).string(), nullptr);
        Assign(picture, "RowInFormat", {0, format}, block);
        Assign(picture, "RowStringInFormat", {0, format}, text);
        Assign(picture, "DataStringInFormat", {format}, text);
    }
    const auto scaling = New("PictureTQX", 3, 2, 14);
    EXPECT_FALSE(CallObject(scaling, "RowInFormat", 0, 1));
    EXPECT_FALSE(CallObject(scaling, "RowInFormat", 0, 14));
    EXPECT_EQ(TakeThrown(), kNothing);
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(RowAccess, AFailingHostGivesNil) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    const auto block = MakeBlock(Bytes(64, 9));
    for (const char* function : {"newMemoryBlock", "memoryBlockGetPtr"}) {
        const FailingHostFunction failing(function);
        EXPECT_FALSE(CallObject(picture, "Row", 0)) << function;
        EXPECT_FALSE(CallObject(picture, "RowInFormat", 0, 1)) << function;
    }
    {
        const FailingHostFunction failing("PtrToMemoryBlock");
        EXPECT_FALSE(CallObject(picture, "RawRow", 0));
        EXPECT_FALSE(GetObject(picture, "Memory"));
    }
    {
        const FailingHostFunction failing("REALBuildString");
        EXPECT_EQ(Call(picture, "RowStringInFormat", 0, 1).string(), nullptr);
        EXPECT_EQ(Call(picture, "DataStringInFormat", 1).string(), nullptr);
    }
    for (const char* function : {"memoryBlockGetPtr", "REALGetPropValueInt"}) {
        const FailingHostFunction failing(function);
        Assign(picture, "Row", {0}, block);
        Assign(picture, "RowInFormat", {0, 1}, block);
    }
    EXPECT_EQ(ReadPixels(picture), Bytes(18, 0));
}

// --- Values -----------------------------------------------------------------------------------

TEST_F(RowAccess, GrayIsTheWeightedColour) {
    const auto picture = New("PictureTQX", 4, 1, 1);
    WritePixels(picture, {255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255});
    EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", 0, 11)), (Bytes{255, 76, 150, 27}));
}

// Every pixel gets the alpha of its row's first: in getters alone.
TEST_F(RowAccess, GrayAlphaReadAsRgbaRepeatsTheFirstAlpha) {
    const auto picture = New("PictureTQX", 3, 2, 12);
    WritePixels(picture, {1, 10, 2, 20, 3, 30, 4, 40, 5, 50, 6, 60});
    EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", 0, 2)), (Bytes{1, 1, 1, 10, 2, 2, 2, 10, 3, 3, 3, 10}));
    EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", 0, 2, true)),
              (Bytes{1, 1, 1, 245, 2, 2, 2, 245, 3, 3, 3, 245}));
    const Bytes all = TextBytes(Call(picture, "DataStringInFormat", 2));
    EXPECT_EQ(all[7], 10);
    EXPECT_EQ(all[19], 40);
    const auto rgba = New("PictureTQX", 3, 1, 2);
    Assign(rgba, "RowInFormat", {0, 12}, MakeBlock(Bytes{1, 10, 2, 20, 3, 30}));
    EXPECT_EQ(ReadPixels(rgba), (Bytes{1, 1, 1, 10, 2, 2, 2, 20, 3, 3, 3, 30}));
}

TEST_F(RowAccess, AlphaThatIsNotCopiedIsZeroAndNotInverted) {
    const auto picture = New("PictureTQX", 2, 1, 1);
    WritePixels(picture, {1, 2, 3, 4, 5, 6});
    const Bytes expected{1, 2, 3, 0, 4, 5, 6, 0};
    EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", 0, 2)), expected);
    EXPECT_EQ(BlockBytes(CallObject(picture, "RowInFormat", 0, 2, true)), expected);
    EXPECT_EQ(TextBytes(Call(picture, "RowStringInFormat", 0, 2)), expected);
}

TEST_F(RowAccess, DataStringIsPacked) {
    const auto picture = New("PictureTQX", 3, 2, 1);
    const Value text = Call(picture, "DataStringInFormat", 1);
    EXPECT_EQ(text.text().size(), 18u);
    EXPECT_EQ(host::EncodingOf(text.string()), sdk::Encoding::None);
    EXPECT_EQ(host::EncodingOf(Call(picture, "RowStringInFormat", 0, 1).string()), sdk::Encoding::None);
    for (const int rowSize : {9, 10, 64, 100})
        EXPECT_EQ(TextBytes(Call(WrapBlock(3, 2, 1, rowSize).picture, "DataStringInFormat", 1)).size(), 18u);
}

TEST_F(RowAccess, DataStringHasZerosForRowsThatAreNotThere) {
    const auto picture = New("PictureTQX", 2, 6, 11);
    FillRandom(picture, 1);
    const auto clone = CallObject(CallObject(picture, "ClipImage", 0, 2, 2, 3), "Clone");
    const Bytes all = TextBytes(Call(clone, "DataStringInFormat", 11));
    const Bytes row = ReadRow(picture, 2);
    EXPECT_EQ(all, (Bytes{row[0], row[1], 0, 0, 0, 0}));
    Call(picture, "Close");
    EXPECT_EQ(TextBytes(Call(picture, "DataStringInFormat", 11)), Bytes(12, 0));
}

TEST_F(RowAccess, SetterReadsItsOwnRow) {
    // The block is the row itself: each pixel is read whole before it is written.
    const auto picture = New("PictureTQX", 4, 1, 1);
    WritePixels(picture, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    Assign(picture, "RowInFormat", {0, 6}, CallObject(picture, "RawRow", 0));
    EXPECT_EQ(ReadPixels(picture), (Bytes{3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10}));
}

TEST_F(RowAccess, NeverYields) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    Set(picture, "YieldTicks", 1);
    const std::int64_t before = CallsOf("REALYieldToRB");
    Call(picture, "DataStringInFormat", 1);
    Assign(picture, "DataStringInFormat", {1}, ToValue(Bytes(48, 1)));
    Call(picture, "RowInFormat", 0, 1);
    Call(picture, "RowInFormat", 0, 2, true);
    Call(picture, "RowStringInFormat", 0, 1);
    Assign(picture, "RowInFormat", {0, 1}, MakeBlock(12));
    Assign(picture, "RowInFormat", {0, 2, true}, MakeBlock(16));
    Assign(picture, "RowStringInFormat", {0, 1}, ToValue(Bytes(12, 1)));
    Assign(picture, "Row", {0}, MakeBlock(64));
    Call(picture, "Row", 0);
    Call(picture, "RawRow", 0);
    EXPECT_EQ(CallsOf("REALYieldToRB"), before);
}

TEST_F(RowAccess, AbsurdlyDescribedPicturesGiveNil) {
    const auto picture = New("PictureTQX", MakeBlock(64), INT32_MAX, INT32_MAX, 14, 0);
    EXPECT_EQ(Call(picture, "DataStringInFormat", 1).string(), nullptr);
    const auto rgb = New("PictureTQX", MakeBlock(64), INT32_MAX, INT32_MAX, 1, 0);
    EXPECT_EQ(Call(rgb, "DataStringInFormat", 2).string(), nullptr);
}

}  // namespace
