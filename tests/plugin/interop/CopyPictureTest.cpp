// Host pictures and masks made of pictures.
#include <string>

#include "host/framework/FolderItem.h"
#include "tests/plugin/interop/HostModels.h"
#include "tests/plugin/ops/Rectangles.h"
#include "tests/support/Interpose.h"

namespace {

using namespace interop_test;
using ops_test::RandomNumber;

constexpr int kRGB = 1, kRGBA = 2, kG = 11, kGA = 12, kScaling = 14;

// The four bytes of every pixel, row by row, without padding.
Bytes HostPixels(const Ref<Object>& picture) {
    const host::PictureStorage& storage = StorageOf(picture);
    Bytes bytes;
    for (int y = 0; y < storage.height; ++y) {
        const std::uint8_t* const row = storage.bytes + std::int64_t{y} * storage.rowBytes;
        bytes.insert(bytes.end(), row, row + std::int64_t{4} * storage.width);
    }
    return bytes;
}

// What an export of a model's rectangle holds.
Bytes ReferenceExport(const ModelPicture& model, const ops_test::Area& area, bool mask) {
    Bytes bytes;
    for (std::int64_t y = area.y; y < area.y + area.h; ++y)
        for (std::int64_t x = area.x; x < area.x + area.w; ++x) {
            std::uint8_t pixel[4] = {};
            if (model.Row(y)) {
                const std::uint8_t* const from = model.Pixel(x, y);
                const int offsets[] = {mask           ? model.alpha
                                       : model.isGray ? model.gray
                                                      : model.red,
                                       mask           ? model.alpha
                                       : model.isGray ? model.gray
                                                      : model.green,
                                       mask           ? model.alpha
                                       : model.isGray ? model.gray
                                                      : model.blue};
                for (int c = 0; c < 3; ++c) pixel[c + 1] = from[offsets[c]];
            }
            bytes.insert(bytes.end(), pixel, pixel + 4);
        }
    return bytes;
}

// --- Every format, view and rectangle ---------------------------------------------------------

class ExportEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(ExportEverywhere, GivesTheCutRectangle) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 100);
    Random& random = scene.random();
    for (int round = 0; round < 120; ++round) {
        scene.Clear();
        const Twin source = scene.Kind(round % Scene::kKinds, random.Between(1, 80), random.Between(1, 5), GetParam());
        const int x = RandomNumber(random), y = RandomNumber(random), w = RandomNumber(random),
                  h = RandomNumber(random);
        const bool mask = random.Below(2) == 0;
        const auto area = ops_test::Clip({x, y, w, h}, source.model.width, source.model.height);
        const bool made =
            area.w > 0 && area.h > 0 && (mask ? source.model.hasAlpha : source.model.isGray || source.model.isRGB);
        const auto picture = CallObject(source.live, mask ? "CopyMask" : "CopyPicture", x, y, w, h);
        ASSERT_EQ(picture != nullptr, made) << x << ", " << y << ", " << w << ", " << h;
        if (!made) continue;
        EXPECT_EQ(GetInt(picture, "Width"), area.w);
        EXPECT_EQ(GetInt(picture, "Height"), area.h);
        EXPECT_EQ(GetInt(picture, "Depth"), 32);
        ASSERT_TRUE(SameBytes(HostPixels(picture), ReferenceExport(source.model, area, mask)));
        ASSERT_TRUE(NothingIsLocked(picture));
        ASSERT_TRUE(scene.Same()) << "the source changed";
    }
}

// A row of a world of the model's pixels. Rows that can't be had are 0.
Bytes ReferenceWorldRow(const ModelPicture& model, int y, std::size_t rowBytes) {
    Bytes bytes(rowBytes);
    const bool wide = !model.isGray && !model.hasAlpha && rowBytes >= static_cast<std::size_t>(model.width) * 4;
    for (int x = 0; x < model.width && model.Row(y); ++x) {
        const std::uint8_t* const pixel = model.Pixel(x, y);
        const std::uint8_t first = model.hasAlpha ? pixel[model.alpha] : std::uint8_t{255};
        Bytes values = {pixel[model.red], pixel[model.green], pixel[model.blue]};
        if (model.isGray) values = {pixel[model.gray]};
        if (!model.isGray && (wide || model.hasAlpha)) values.insert(values.begin(), first);
        std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(values.size()) * x);
    }
    return bytes;
}

TEST_P(ExportEverywhere, GivesAWorldOfThePixels) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 200);
    Random& random = scene.random();
    for (int round = 0; round < 30; ++round) {
        scene.Clear();
        Twin source = scene.Kind(round % Scene::kKinds, random.Between(1, 40), random.Between(1, 4), GetParam());
        const auto world = CallObject(source.live, "CopyGWorld");
        const ModelPicture& model = source.model;
        ASSERT_EQ(world != nullptr, model.isGray || model.isRGB);
        if (!world) continue;
        EXPECT_EQ(GetInt(world, "Depth"), model.isGray ? 8 : model.hasAlpha ? 32 : 24);
        const std::int64_t rowBytes = GetInt(world, "RowBytes");
        for (int y = 0; y < model.height; ++y) {
            Bytes row;
            for (std::int64_t x = 0; x < rowBytes; ++x)
                row.push_back(static_cast<std::uint8_t>(Call(world, "Byte", y * rowBytes + x).ToInt64()));
            ASSERT_TRUE(SameBytes(row, ReferenceWorldRow(model, y, static_cast<std::size_t>(rowBytes)))) << round;
        }
        ASSERT_TRUE(scene.Same()) << "the source changed";
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ExportEverywhere, ::testing::Range(1, kFormatCount), CodeName);

// --- Single rules -----------------------------------------------------------------------------

class CopyPicture : public PluginTest {
  protected:
    Ref<Object> Buffer(int width, int height, int format, const Bytes& pixels = {}) {
        const auto buffer = New("PictureTQX", width, height, format);
        if (pixels.empty())
            FillRandom(buffer, 11);
        else
            WritePixels(buffer, pixels);
        return buffer;
    }
};

TEST_F(CopyPicture, WritesTheBytesOfAHostPixel) {
    EXPECT_EQ(HostPixels(CallObject(Buffer(1, 1, kG, {200}), "CopyPicture")), (Bytes{0, 200, 200, 200}));
    const auto rgba = Buffer(1, 1, kRGBA, {1, 2, 3, 4});
    EXPECT_EQ(HostPixels(CallObject(rgba, "CopyPicture")), (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(HostPixels(CallObject(rgba, "CopyMask")), (Bytes{0, 4, 4, 4}));
}

TEST_F(CopyPicture, CutsARectangleThatBeginsBeforeThePicture) {
    const auto buffer = Buffer(10, 10, kRGB);
    const auto picture = CallObject(buffer, "CopyPicture", -5, -5, 10, 10);
    EXPECT_EQ(GetInt(picture, "Width"), 5);
    EXPECT_EQ(GetInt(picture, "Height"), 5);
    EXPECT_EQ(HostPixels(picture), HostPixels(CallObject(buffer, "CopyPicture", 0, 0, 5, 5)));
}

TEST_F(CopyPicture, IsACopy) {
    const auto buffer = Buffer(2, 2, kRGB);
    const auto picture = CallObject(buffer, "CopyPicture");
    const Bytes before = HostPixels(picture);
    Call(buffer, "Close");
    EXPECT_EQ(HostPixels(picture), before);
}

TEST_F(CopyPicture, LeavesThePaddingOfRowsZeroInMemoryThatWasUsedBefore) {
    // Large enough that the block of the first is used again for the second.
    constexpr int kWidth = 1001, kHeight = 3000;
    const auto buffer = New("PictureTQX", kWidth, kHeight, kRGB);
    { std::fill_n(StorageOf(CallObject(buffer, "CopyPicture")).bytes, 4016 * kHeight, std::uint8_t{170}); }
    const Bytes bytes = StorageBytes(CallObject(buffer, "CopyPicture"));
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(CopyPicture, OfNothingIsNil) {
    EXPECT_EQ(CallObject(Buffer(4, 4, kRGB), "CopyPicture", 4, 0, 2, 2), nullptr);
    EXPECT_EQ(CallObject(New("PictureTQX", 0, 4, kRGB), "CopyPicture"), nullptr);
    EXPECT_EQ(CallObject(New("PictureTQX", 4, 4, 0), "CopyPicture"), nullptr) << "invalid";
    EXPECT_EQ(CallObject(New("PictureTQX", 4, 4, kScaling), "CopyPicture"), nullptr);
    const auto closed = Buffer(4, 4, kRGBA);
    Call(closed, "Close");
    for (const char* method : {"CopyPicture", "CopyMask", "CopyPictureWithMask", "CopyGWorld"})
        EXPECT_EQ(CallObject(closed, method), nullptr) << method;
}

TEST_F(CopyPicture, WithMaskIsPlainWithoutAlpha) {
    const auto buffer = Buffer(3, 2, kRGB);
    const auto picture = CallObject(buffer, "CopyPictureWithMask");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(MaskOf(picture), nullptr);
    EXPECT_EQ(CallObject(buffer, "CopyMask"), nullptr);
}

TEST_F(CopyPicture, WithMaskCarriesAlphaAsItIs) {
    for (const int format : {kRGBA, kGA}) {
        const auto buffer = Buffer(5, 3, format);
        const auto picture = CallObject(buffer, "CopyPictureWithMask");
        ASSERT_NE(MaskOf(picture), nullptr);
        EXPECT_TRUE(SameBytes(HostPixels(picture), HostPixels(CallObject(buffer, "CopyPicture"))));
        const Bytes mask = HostPixels(MaskOf(picture)), expected = HostPixels(CallObject(buffer, "CopyMask"));
        for (std::size_t i = 0; i < mask.size(); ++i)
            if (i % 4 != 0) {
                ASSERT_EQ(mask[i], expected[i]) << "byte " << i;
            }
    }
}

// Intended: the mask has the size of the call, the picture that of the cut.
TEST_F(CopyPicture, WithMaskTakesTheMasksSizeFromTheCall) {
    const auto picture = CallObject(Buffer(6, 6, kRGBA), "CopyPictureWithMask", -5, -4, 10, 9);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(GetInt(picture, "Width"), 5);
    EXPECT_EQ(GetInt(picture, "Height"), 5);
    EXPECT_EQ(GetInt(MaskOf(picture), "Width"), 10);
    EXPECT_EQ(GetInt(MaskOf(picture), "Height"), 9);
}

// The mask is as large as called, not as cut. Nobody asks the host for one of that size.
TEST_F(CopyPicture, WithAMaskOfTwoGigabytesIsNil) {
    const auto picture = New("PictureTQX", 40, 30, kRGBA);
    const std::int64_t before = CallsOf("pluginPictureGraphicsGetter");
    for (const auto& [width, height] : {std::pair{1, 937593372}, {937593372, 1}, {1 << 15, 1 << 14}})
        EXPECT_FALSE(CallObject(picture, "CopyPictureWithMask", 3, 11, width, height)) << width;
    EXPECT_EQ(CallsOf("pluginPictureGraphicsGetter"), before);
    EXPECT_TRUE(CallObject(picture, "CopyPictureWithMask", 3, 11, 50, 60));
}

TEST_F(CopyPicture, IsReadBackWithItsMask) {
    const auto buffer = Buffer(7, 5, kRGBA);
    const auto again = New("PictureTQX", 7, 5, kRGBA);
    Call(again, "DrawMaskedPictureRGB", CallObject(buffer, "CopyPictureWithMask"), false);
    EXPECT_TRUE(SameBytes(ReadPixels(again), ReadPixels(buffer)));
}

TEST_F(CopyPicture, ForDebuggingIsOffUntilAskedFor) {
    const auto buffer = Buffer(100, 50, kRGBA);
    EXPECT_EQ(GetObject(buffer, "DebugPicture"), nullptr);
    Set(buffer, "DebugPictureEnabled", Value(true));
    const auto picture = GetObject(buffer, "DebugPicture");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(GetInt(picture, "Width"), 100);
    EXPECT_EQ(GetInt(picture, "Height"), 50);
    EXPECT_NE(MaskOf(picture), nullptr);
}

TEST_F(CopyPicture, ForDebuggingIsAtMost512Wide) {
    const auto buffer = New("PictureTQX", 600, 700, kG);
    Set(buffer, "DebugPictureEnabled", Value(true));
    const auto picture = GetObject(buffer, "DebugPicture");
    EXPECT_EQ(GetInt(picture, "Width"), 512);
    EXPECT_EQ(GetInt(picture, "Height"), 512);
    EXPECT_EQ(MaskOf(picture), nullptr);
}

// --- Worlds -----------------------------------------------------------------------------------

class CopyGWorld : public CopyPicture {
  protected:
    int WorldByte(const Ref<Object>& world, int offset) {
        return static_cast<int>(Call(world, "Byte", static_cast<std::int64_t>(offset)).ToInt64());
    }
    Bytes WorldRow(const Ref<Object>& world, int y) {
        Bytes row;
        const int size = static_cast<int>(GetInt(world, "RowBytes"));
        for (int i = 0; i < size; ++i) row.push_back(static_cast<std::uint8_t>(WorldByte(world, y * size + i)));
        return row;
    }
};

TEST_F(CopyGWorld, OfGrayHasDepth8AndDropsAlpha) {
    const auto gray = CallObject(Buffer(3, 1, kG, {1, 2, 200}), "CopyGWorld");
    EXPECT_EQ(GetInt(gray, "Depth"), 8);
    EXPECT_EQ(WorldRow(gray, 0), (Bytes{1, 2, 200, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const auto withAlpha = CallObject(Buffer(2, 1, kGA, {1, 99, 2, 98}), "CopyGWorld");
    EXPECT_EQ(GetInt(withAlpha, "Depth"), 8);
    EXPECT_EQ(WorldByte(withAlpha, 1), 2);
}

TEST_F(CopyGWorld, OfColoursWithAlphaHasAlphaFirst) {
    const auto world = CallObject(Buffer(1, 1, kRGBA, {1, 2, 3, 4}), "CopyGWorld");
    EXPECT_EQ(GetInt(world, "Depth"), 32);
    EXPECT_EQ(WorldRow(world, 0), (Bytes{4, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

// Intended: a padded row of depth 24 that has room for four bytes a pixel holds four.
TEST_F(CopyGWorld, OfColoursHasFourBytesAPixelWhereTheRowHasRoom) {
    const auto roomy = CallObject(Buffer(2, 1, kRGB, {1, 2, 3, 4, 5, 6}), "CopyGWorld");
    EXPECT_EQ(GetInt(roomy, "Depth"), 24);
    EXPECT_EQ(GetInt(roomy, "RowBytes"), 16);
    EXPECT_EQ(WorldRow(roomy, 0), (Bytes{255, 1, 2, 3, 255, 4, 5, 6, 0, 0, 0, 0, 0, 0, 0, 0}));
    const auto tight =
        CallObject(Buffer(5, 1, kRGB, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}), "CopyGWorld");
    EXPECT_EQ(WorldRow(tight, 0), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0}));
}

TEST_F(CopyGWorld, OfAnotherLayoutOrOfNothingIsNil) {
    EXPECT_EQ(CallObject(New("PictureTQX", 4, 4, kScaling), "CopyGWorld"), nullptr);
    EXPECT_EQ(CallObject(New("PictureTQX", 0, 4, kRGB), "CopyGWorld"), nullptr);
    EXPECT_EQ(CallObject(New("PictureTQX", 4, 4, 0), "CopyGWorld"), nullptr);
}

TEST_F(CopyGWorld, OfRowsThatCannotBeHadIsBlack) {
    for (const int width : {2, 5}) {  // with room for four bytes a pixel, and without
        const auto clip = CallObject(Buffer(width, 3, kRGB), "ClipImage", 0, 1, width, 2);
        const auto world = CallObject(CallObject(clip, "Clone"), "CopyGWorld");
        EXPECT_EQ(WorldByte(world, 1), BlockAddress(CallObject(clip, "RawRow", 0))[width == 2 ? 0 : 1]);
        EXPECT_EQ(WorldRow(world, 1), Bytes(16)) << width;
    }
}

TEST_F(CopyGWorld, StaysWithoutItsPicture) {
    Ref<Object> world;
    { world = CallObject(Buffer(1, 1, kG, {77}), "CopyGWorld"); }
    EXPECT_EQ(WorldByte(world, 0), 77);
}

// --- Failures ---------------------------------------------------------------------------------

class ExportFailures : public CopyPicture {};

TEST_F(ExportFailures, OfAnyHostFunctionGiveNil) {
    struct Step {
        const char* method;
        const char* function;
        int call;
    };
    const Step steps[] = {
        {"CopyPicture", "REALBuildPictureFromGWorld", 1},
        {"CopyMask", "REALBuildPictureFromGWorld", 1},
        {"CopyPictureWithMask", "REALBuildPictureFromGWorld", 1},
        {"CopyPictureWithMask", "REALGetPictureMask", 1},
        {"CopyPictureWithMask", "pluginPictureGraphicsGetter", 1},
        {"CopyPictureWithMask", "REALLoadObjectMethod", 1},
        {"CopyGWorld", "PluginNewInstance", 1},
    };
    const auto buffer = Buffer(4, 3, kRGBA);
    const Bytes before = ReadPixels(buffer);
    for (const Step& step : steps) {
        const FailingHostFunction failing(step.function, step.call, 1);
        EXPECT_EQ(CallObject(buffer, step.method), nullptr) << step.method << ", " << step.function;
        EXPECT_GE(failing.calls(), step.call) << step.function << " is not on the path";
    }
    EXPECT_EQ(ReadPixels(buffer), before);
}

TEST_F(ExportFailures, OfTheMaskAloneGiveThePicture) {
    const auto buffer = Buffer(4, 3, kRGBA);
    const FailingHostFunction failing("REALBuildPictureFromGWorld", 2, 1);
    const auto picture = CallObject(buffer, "CopyPictureWithMask");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(MaskOf(picture), nullptr);
    EXPECT_TRUE(SameBytes(HostPixels(picture), HostPixels(CallObject(buffer, "CopyPicture"))));
}

TEST_F(ExportFailures, OfMemoryGiveNil) {
    const auto buffer = Buffer(64, 64, kRGBA);
    for (const char* method : {"CopyPicture", "CopyMask", "CopyPictureWithMask", "CopyGWorld"}) {
        const FailingAllocations failing(64 * 64);
        EXPECT_EQ(CallObject(buffer, method), nullptr) << method;
        EXPECT_GT(failing.failed(), 0) << method;
    }
}

// --- Yields -----------------------------------------------------------------------------------

class ExportYields : public CopyPicture {
  protected:
    FakeClock clock;

    Ref<Object> Yielding(int format) {
        const auto buffer = Buffer(4, 3, format);
        Set(buffer, "YieldTicks", Value(1));
        clock.AdvancePerReading(10);
        return buffer;
    }
};

TEST_F(ExportYields, ComeBeforeAndAfterTheWorldIsMadeAndAfterEveryRow) {
    const auto buffer = Yielding(kRGBA);
    const auto count = [&](const char* method) {
        const std::int64_t before = CallsOf("REALYieldToRB");
        CallObject(buffer, method);
        return CallsOf("REALYieldToRB") - before;
    };
    EXPECT_EQ(count("CopyPicture"), 5);
    EXPECT_EQ(count("CopyMask"), 5);
    EXPECT_EQ(count("CopyPictureWithMask"), 10);
    EXPECT_EQ(count("CopyGWorld"), 1);
}

// What was not copied when the buffer went stays black.
TEST_F(ExportYields, MayTakeTheBuffersStorage) {
    for (const bool rebuild : {false, true})
        for (int at = 0; at < 5; ++at) {
            const auto buffer = Yielding(kRGB);
            const Bytes whole = ReferenceExport(
                [&] {
                    ModelPicture model = NewModel(4, 3, kRGB);
                    const Bytes pixels = ReadPixels(buffer);
                    for (int y = 0; y < 3; ++y) std::copy_n(pixels.data() + y * 12, 12, model.Row(y));
                    return model;
                }(),
                {0, 0, 4, 3}, false);
            int yields = 0;
            const OnYield watch([&] {
                if (yields++ != at) return;
                if (rebuild)
                    Call(buffer, "Constructor", 1, 1, kRGB);
                else
                    Call(buffer, "Close");
            });
            const auto picture = CallObject(buffer, "CopyPicture");
            ASSERT_EQ(picture != nullptr, at > 0) << "at yield " << at;
            EXPECT_EQ(yields, at + 1);
            if (!picture) continue;
            Bytes expected = whole;
            std::fill(expected.begin() + std::min(at - 1, 3) * 16, expected.end(), std::uint8_t{0});
            EXPECT_TRUE(SameBytes(HostPixels(picture), expected)) << "at yield " << at;
        }
}

TEST_F(ExportYields, MayCloseTheBufferOfAWorldOrAMask) {
    for (const char* method : {"CopyGWorld", "CopyMask", "CopyPictureWithMask"}) {
        const auto buffer = Yielding(kRGBA);
        const OnYield watch([&] { Call(buffer, "Close"); });
        EXPECT_EQ(CallObject(buffer, method), nullptr) << method;
    }
}

TEST_F(ExportYields, MayCloseTheBufferBetweenPictureAndMask) {
    const auto buffer = Yielding(kRGBA);
    int yields = 0;
    const OnYield watch([&] {
        if (++yields == 5) Call(buffer, "Close");
    });
    const auto picture = CallObject(buffer, "CopyPictureWithMask");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(MaskOf(picture), nullptr);
}

// --- Files ------------------------------------------------------------------------------------

class ImageFileRoundTrip : public CopyPicture {
  protected:
    Ref<Object> Open(const std::string& path) {
        return Ref<Object>::Share(CallShared("Picture", "Open", host::NewFolderItem(path)).object());
    }
    void Save(const Ref<Object>& picture, const std::string& path) {
        Call(picture, "Save", host::NewFolderItem(path), 0);
        EXPECT_EQ(TakeThrown(), Thrown{});
    }
};

// A host mask is 255 less alpha, so what a script reads as alpha with InvertMask false goes out as
// it came in.
TEST_F(ImageFileRoundTrip, KeepsColoursAndAlphaThroughABuffer) {
    const std::string in = ScratchPath("in.png"), out = ScratchPath("out.png");
    Save(CallObject(Buffer(23, 11, kRGBA), "CopyPictureWithMask"), in);
    const auto source = Open(in);
    ASSERT_NE(MaskOf(source), nullptr);
    const auto buffer = New("PictureTQX", 23, 11, kRGBA);
    Call(buffer, "DrawMaskedPictureRGB", source);
    Save(CallObject(buffer, "CopyPictureWithMask"), out);
    const auto result = Open(out);
    EXPECT_TRUE(SameBytes(HostPixels(result), HostPixels(source)));
    EXPECT_TRUE(SameBytes(HostPixels(MaskOf(result)), HostPixels(MaskOf(source))));
}

TEST_F(ImageFileRoundTrip, KeepsWhatAFilterMade) {
    const std::string in = ScratchPath("in.png"), out = ScratchPath("out.png");
    Save(CallObject(Buffer(23, 11, kRGBA), "CopyPictureWithMask"), in);
    const auto buffer = New("PictureTQX", 23, 11, kRGBA);
    Call(buffer, "DrawMaskedPictureRGB", Open(in));
    const auto filtered = CallObject(buffer, "GammaFilter", nullptr, 2.2, 0.7);
    ASSERT_NE(ReadPixels(filtered), ReadPixels(buffer));
    Save(CallObject(filtered, "CopyPictureWithMask"), out);
    const auto again = New("PictureTQX", 23, 11, kRGBA);
    Call(again, "DrawMaskedPictureRGB", Open(out));
    EXPECT_TRUE(SameBytes(ReadPixels(again), ReadPixels(filtered)));
}

TEST_F(ImageFileRoundTrip, GivesTheFilesAlphaWhenTheMaskIsInverted) {
    const std::string path = ScratchPath("alpha.png");
    const auto source = Buffer(9, 4, kRGBA);
    Save(CallObject(source, "CopyPictureWithMask"), path);
    const auto transparency = New("PictureTQX", 9, 4, kRGBA), alpha = New("PictureTQX", 9, 4, kRGBA);
    Call(transparency, "DrawMaskedPictureRGB", Open(path), false);
    Call(alpha, "DrawMaskedPictureRGB", Open(path), true);
    const Bytes a = ReadPixels(transparency), b = ReadPixels(alpha);
    for (std::size_t i = 0; i < a.size(); ++i)
        if (i % 4 == 3) {
            ASSERT_EQ(a[i] + b[i], 255);
        } else {
            ASSERT_EQ(a[i], b[i]);
        }
}

}  // namespace
