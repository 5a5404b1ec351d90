// Construction, cloning and closing, with what each refuses.
#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

class Picture : public PluginTest {};

TEST_F(Picture, PadsRowsToMultiplesOf64) {
    const struct {
        int width, format, rowSize;
    } cases[] = {{1, 1, 64}, {64, 11, 64}, {65, 11, 128}, {16, 2, 64}, {17, 2, 128}, {4, 14, 64}, {5, 14, 128}};
    for (const auto& c : cases) {
        const auto picture = New("PictureTQX", c.width, 3, c.format);
        EXPECT_EQ(GetInt(picture, "RowSize"), c.rowSize) << c.width << " of format " << c.format;
        EXPECT_EQ(GetInt(picture, "TotalSize"), c.rowSize * 3);
    }
    EXPECT_EQ(GetInt(New("PictureTQX", 1, 1, 1), "TotalSize"), 64);
}

TEST_F(Picture, StartsZeroAndWithoutExtras) {
    const auto picture = New("PictureTQX", 7, 5, 2);
    EXPECT_EQ(ReadPixels(picture), Bytes(7 * 5 * 4, 0));
    EXPECT_EQ(GetInt(picture, "YieldTicks"), 0);
    EXPECT_EQ(GetInt(picture, "RowOffset"), 0);
    EXPECT_FALSE(GetBool(picture, "IsMapping"));
    EXPECT_FALSE(GetBool(picture, "DebugPictureEnabled"));
    for (const char* property : {"Parent", "Factory", "Target", "MemoryTarget"})
        EXPECT_FALSE(GetObject(picture, property)) << property;
}

TEST_F(Picture, StartsAtAMultipleOf64) {
    for (const int side : {1, 100, 3000}) {
        const auto picture = New("PictureTQX", side, side, 11);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(RowAddress(picture, 0)) % 64, 0u);
    }
}

TEST_F(Picture, RefusesImpossibleSizes) {
    const struct {
        int width, height, format;
    } cases[] = {
        {-1, 1, 1},         {1, -1, 1},         {-5, -5, 1},     {INT32_MIN, 1, 11},
        {1, INT32_MIN, 11}, {INT32_MAX, 1, 11},  // a row of 2^31 bytes with its padding
        {INT32_MAX, 1, 2},  {INT32_MAX, 1, 14}, {1 << 29, 1, 2}, {INT32_MAX, INT32_MAX, 14},
        {1, 1 << 25, 11},   {32768, 65536, 11},  // exactly 2^31 bytes
    };
    for (const auto& c : cases)
        EXPECT_FALSE(GetBool(New("PictureTQX", c.width, c.height, c.format), "Valid"))
            << c.width << " x " << c.height << " of format " << c.format;
}

TEST_F(Picture, MayBeEmpty) {
    for (const auto& [width, height] : {std::pair{0, 0}, {0, 5}, {5, 0}}) {
        const auto picture = New("PictureTQX", width, height, 1);
        EXPECT_TRUE(GetBool(picture, "Valid"));
        EXPECT_EQ(GetInt(picture, "Width"), width);
        EXPECT_EQ(GetInt(picture, "Height"), height);
        EXPECT_EQ(GetInt(picture, "TotalSize"), width > 0 || height == 0 ? 0 : 0);
        EXPECT_EQ(Call(picture, "DataStringInFormat", 1).string(), nullptr);
    }
}

TEST_F(Picture, IsInvalidWhenMemoryIsShort) {
    const FailingAllocations failing(64 * 1000);
    EXPECT_FALSE(GetBool(New("PictureTQX", 64, 1000, 11), "Valid"));
    EXPECT_GT(failing.failed(), 0);
}

TEST_F(Picture, BeforeItsConstructorIsInvalidAndRefuses) {
    const auto picture = Ref<Object>(host::NewObject(host::Runtime::Get().ClassNamed("PictureTQX")));
    EXPECT_FALSE(GetBool(picture, "Valid"));
    EXPECT_FALSE(CallObject(picture, "Clone"));
    EXPECT_FALSE(CallObject(picture, "Row", 0));
    EXPECT_FALSE(GetObject(picture, "Memory"));
    EXPECT_FALSE(CallObject(picture, "GammaFilter", nullptr, 2.0));
    Call(picture, "Close");
    EXPECT_FALSE(CallObject(picture, "RedChannel"));
    const auto clip = CallObject(picture, "ClipImage");
    EXPECT_FALSE(GetBool(clip, "Valid"));
}

// --- Around a memory block --------------------------------------------------------------------

TEST_F(Picture, UsesAMemoryBlock) {
    const auto block = MakeBlock(40);
    const auto picture = New("PictureTQX", block, 3, 2, 1, 20);
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(GetInt(picture, "RowSize"), 20);
    EXPECT_EQ(GetInt(picture, "TotalSize"), 40);
    EXPECT_EQ(GetObject(picture, "MemoryTarget"), block);
    EXPECT_EQ(BlockAddress(GetObject(picture, "Memory")), BlockAddress(block));
    BlockAddress(block)[20 + 3] = 77;
    EXPECT_EQ(ByteAt(picture, 1, 1, 0), 77);
}

TEST_F(Picture, KeepsItsMemoryBlockAlive) {
    auto block = MakeBlock(64);
    const auto picture = New("PictureTQX", block, 4, 4, 11, 16);
    BlockAddress(block)[17] = 9;
    block = {};
    EXPECT_EQ(ByteAt(picture, 1, 1, 0), 9);
    Call(picture, "Close");
    EXPECT_FALSE(GetObject(picture, "MemoryTarget"));
}

TEST_F(Picture, TrustsTheCallersRowSize) {
    const auto block = MakeBlock(100);
    // Rows that overlap, rows that run backwards (never read here), and products from 2^31 to
    // 2^32 - 1 pass: only the upper word of the product is tested.
    EXPECT_TRUE(GetBool(New("PictureTQX", block, 10, 5, 1, 4), "Valid"));
    const auto backwards = New("PictureTQX", block, 10, 5, 1, -4);
    EXPECT_TRUE(GetBool(backwards, "Valid"));
    EXPECT_EQ(GetInt(backwards, "RowSize"), -4);
    EXPECT_EQ(GetInt(backwards, "TotalSize"), -20);
    EXPECT_FALSE(CallObject(backwards, "Row", 0));
    EXPECT_FALSE(CallObject(backwards, "Clone"));
    const auto large = New("PictureTQX", block, 1, 65536, 11, 65535);
    EXPECT_TRUE(GetBool(large, "Valid"));
    EXPECT_EQ(GetInt(large, "TotalSize"), 65536LL * 65535);
    EXPECT_FALSE(GetBool(New("PictureTQX", block, 1, 65536, 11, 65536), "Valid"));
    EXPECT_FALSE(GetBool(New("PictureTQX", block, 1, INT32_MIN, 11, INT32_MIN), "Valid"));
}

TEST_F(Picture, IsInvalidWithoutABlock) {
    const auto nothing = New("PictureTQX", nullptr, 3, 2, 1, 20);
    EXPECT_FALSE(GetBool(nothing, "Valid"));
    EXPECT_EQ(GetInt(nothing, "Width"), 0) << "the block is looked at before the description is set up";
    EXPECT_EQ(GetInt(nothing, "PixelSize"), 0);
    EXPECT_FALSE(GetBool(New("PictureTQX", MakeBlock(std::size_t{0}), 3, 2, 1, 20), "Valid"));
    EXPECT_FALSE(GetBool(New("PictureTQX", MakeBlock(40), 3, 2, 0, 20), "Valid"));
}

TEST_F(Picture, AroundABlockOfAnUnknownFormatKeepsWhatWasAskedFor) {
    const auto block = MakeBlock(40);
    const auto picture = New("PictureTQX", block, 3, 2, 22, 20);
    EXPECT_FALSE(GetBool(picture, "Valid"));
    EXPECT_EQ(GetInt(picture, "Width"), 3);
    EXPECT_EQ(GetInt(picture, "Height"), 2);
    EXPECT_EQ(GetInt(picture, "ImageFormat"), 22);
    EXPECT_EQ(GetInt(picture, "PixelSize"), 0);
    EXPECT_EQ(GetInt(picture, "RowSize"), 0);
    EXPECT_EQ(block->references, 1);
}

// --- Close --------------------------------------------------------------------------------------

TEST_F(Picture, ClosesOnce) {
    const auto picture = New("PictureTQX", 4, 3, 2);
    FillRandom(picture, 1);
    for (int i = 0; i < 2; ++i) {
        Call(picture, "Close");
        EXPECT_TRUE(GetBool(picture, "Valid")) << "the description stays";
        EXPECT_EQ(GetInt(picture, "Width"), 4);
        EXPECT_EQ(GetInt(picture, "Height"), 3);
        EXPECT_EQ(GetInt(picture, "TotalSize"), 192);
        EXPECT_EQ(GetInt(picture, "ImageFormat"), 2);
        EXPECT_TRUE(GetBool(picture, "HasAlpha"));
    }
    EXPECT_FALSE(CallObject(picture, "RawRow", 0));
    EXPECT_FALSE(CallObject(picture, "Row", 0));
    EXPECT_FALSE(CallObject(picture, "Clone"));
    EXPECT_FALSE(GetObject(picture, "Memory"));
    EXPECT_FALSE(CallObject(picture, "GammaFilter", nullptr, 1.0));
}

TEST_F(Picture, ReleasesItsFactoryInClose) {
    auto factory = NewFactory([](int, int, int) { return Ref<Object>(); });
    const auto picture = New("PictureTQX", 1, 1, 11);
    Set(picture, "Factory", factory);
    EXPECT_EQ(factory->references, 2);
    Call(picture, "Close");
    EXPECT_EQ(factory->references, 1);
    EXPECT_FALSE(GetObject(picture, "Factory"));
}

TEST_F(Picture, CanBeBuiltAnew) {
    const auto block = MakeBlock(64);
    const auto picture = New("PictureTQX", block, 4, 4, 11, 16);
    Set(picture, "YieldTicks", 5);
    Call(picture, "Constructor", 2, 2, 1);
    EXPECT_EQ(block->references, 1);
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(GetInt(picture, "YieldTicks"), 0);
    EXPECT_FALSE(GetObject(picture, "MemoryTarget"));
    EXPECT_EQ(ReadPixels(picture), Bytes(12, 0));
    Call(picture, "Constructor", -1, 2, 1);
    EXPECT_FALSE(GetBool(picture, "Valid"));
    EXPECT_FALSE(CallObject(picture, "RawRow", 0));
}

TEST_F(Picture, CanBeBuiltAnewFromItsOwnBlock) {
    const auto block = MakeBlock(Bytes{1, 2, 3, 4});
    const auto picture = New("PictureTQX", block, 2, 2, 11, 2);
    Call(picture, "Constructor", GetObject(picture, "MemoryTarget"), 4, 1, 11, 4);
    EXPECT_EQ(ReadPixels(picture), (Bytes{1, 2, 3, 4}));
}

// --- Clone --------------------------------------------------------------------------------------

TEST_F(Picture, ClonesEveryFormat) {
    for (int code = 1; code < kFormatCount; ++code) {
        const auto picture = New("PictureTQX", 5, 4, code);
        FillRandom(picture, static_cast<std::uint64_t>(code));
        const auto clone = CallObject(picture, "Clone");
        ASSERT_TRUE(clone);
        for (const char* property :
             {"Width", "Height", "PixelSize", "RowSize", "ImageFormat", "TotalSize", "RowOffset", "RedOffset",
              "GreenOffset", "BlueOffset", "GrayOffset", "AlphaOffset", "MappingBlockSize"})
            EXPECT_EQ(GetInt(clone, property), GetInt(picture, property)) << property;
        for (const char* property :
             {"IsGray", "IsRGB", "HasRed", "HasGreen", "HasBlue", "HasGray", "HasAlpha", "Valid"})
            EXPECT_EQ(GetBool(clone, property), GetBool(picture, property)) << property;
        const Bytes pixels = ReadPixels(picture);
        EXPECT_EQ(ReadPixels(clone), pixels);
        WritePixels(clone, Bytes(pixels.size(), 1));
        EXPECT_EQ(ReadPixels(picture), pixels) << "the clone has memory of its own";
    }
}

TEST_F(Picture, CloneHasNoExtras) {
    const auto block = MakeBlock(64);
    const auto picture = New("PictureTQX", block, 4, 4, 11, 16);
    Set(picture, "YieldTicks", 5);
    Set(picture, "DebugPictureEnabled", true);
    const auto clone = CallObject(CallObject(picture, "ClipImage"), "Clone");
    EXPECT_EQ(GetInt(clone, "YieldTicks"), 0);
    EXPECT_FALSE(GetBool(clone, "DebugPictureEnabled"));
    EXPECT_FALSE(GetObject(clone, "Parent"));
    EXPECT_FALSE(GetObject(clone, "MemoryTarget"));
}

// A clone of a clip takes rows from the storage's base, not from the clip's first row, and keeps
// the clip's row offset; so rows that were not copied are not there.
TEST_F(Picture, CloneOfAClipCopiesFromTheStoragesBase) {
    const auto picture = New("PictureTQX", 4, 10, 11);
    FillRandom(picture, 3);
    const auto clip = CallObject(picture, "ClipImage", 0, 2, 4, 5);
    const auto clone = CallObject(clip, "Clone");
    EXPECT_EQ(GetInt(clone, "RowOffset"), 2);
    EXPECT_EQ(GetInt(clone, "Height"), 5);
    EXPECT_EQ(GetInt(clone, "TotalSize"), 640) << "the parent's";
    for (int y = 0; y < 3; ++y) EXPECT_EQ(ReadRow(clone, y), ReadRow(clip, y)) << y;
    for (int y = 3; y < 5; ++y) EXPECT_FALSE(CallObject(clone, "RawRow", y)) << y;
    EXPECT_FALSE(CallObject(CallObject(picture, "ClipImage", 0, 6, 4, 3), "Clone")->references > 1);
    const auto beyond = CallObject(CallObject(picture, "ClipImage", 0, 6, 4, 3), "Clone");
    for (int y = 0; y < 3; ++y) EXPECT_FALSE(CallObject(beyond, "RawRow", y)) << y;
}

// The block is long enough for the last row's pixels, so the clone's storage has to be as well.
TEST_F(Picture, CloneOfOverlappingRowsHoldsTheLastRowsPixels) {
    const auto block = MakeBlock(Random(7).NextBytes(400));
    const auto picture = New("PictureTQX", block, 100, 2, 11, 5);
    const auto clone = CallObject(picture, "Clone");
    ASSERT_TRUE(clone);
    EXPECT_EQ(GetInt(clone, "TotalSize"), 10);
    Bytes expected(100, 0);
    const Bytes copied = BlockBytes(block);
    std::copy_n(copied.begin() + 5, 5, expected.begin());
    EXPECT_EQ(TextBytes(Call(clone, "RowStringInFormat", 1, 11)), expected) << "what was not copied is zero";
    const Bytes row = Random(8).NextBytes(100);
    Assign(clone, "RowStringInFormat", {Value(1), Value(11)}, ToValue(row));
    EXPECT_EQ(ReadRow(clone, 1), row);
    const auto clip = CallObject(CallObject(picture, "ClipImage", 60, 0, 40, 2), "Clone");
    Assign(clip, "RowStringInFormat", {Value(1), Value(11)}, ToValue(Bytes(40, 9)));
    EXPECT_EQ(TextBytes(Call(clip, "RowStringInFormat", 1, 11)), Bytes(40, 9));
}

TEST_F(Picture, CloneIsNilWhenItCannotBeMade) {
    const auto picture = New("PictureTQX", 64, 1000, 11);
    {
        const FailingAllocations failing(64 * 1000);
        EXPECT_FALSE(CallObject(picture, "Clone"));
    }
    const FailingHostFunction failing("PluginNewInstance");
    EXPECT_FALSE(CallObject(picture, "Clone"));
}

TEST_F(Picture, ClonesOfEmptyAndNegativeViews) {
    EXPECT_TRUE(GetBool(CallObject(New("PictureTQX", 0, 0, 1), "Clone"), "Valid"));
    const auto picture = New("PictureTQX", 10, 10, 1);
    const auto below = CallObject(picture, "ClipImage", 0, 15, 5, 5);
    EXPECT_EQ(GetInt(below, "Height"), -5);
    EXPECT_FALSE(CallObject(below, "Clone"));
}

TEST_F(Picture, MemoryWrapsTheStorage) {
    const auto picture = New("PictureTQX", 3, 2, 11);
    const auto memory = GetObject(picture, "Memory");
    ASSERT_TRUE(memory);
    EXPECT_EQ(BlockAddress(memory), RowAddress(picture, 0));
    BlockAddress(memory)[64] = 5;
    EXPECT_EQ(ByteAt(picture, 0, 1, 0), 5);
}

TEST_F(Picture, IsReleasedWithAllItKeeps) {
    // The fixture counts live objects: what is left over fails the test.
    auto factory = NewFactory([](int, int, int) { return Ref<Object>(); });
    auto picture = New("PictureTQX", MakeBlock(64), 4, 4, 11, 16);
    Set(picture, "Factory", factory);
    auto view = CallObject(CallObject(picture, "MirroredView"), "ClipImage", 1, 1, 2, 2);
    picture = {};
    EXPECT_TRUE(CallObject(view, "RawRow", 0)) << "a view keeps its parents alive";
}

}  // namespace
