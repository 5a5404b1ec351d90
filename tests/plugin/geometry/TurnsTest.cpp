// Turns into destinations of every kind.
#include <limits>

#include "tests/plugin/geometry/ReferenceTurns.h"
#include "tests/support/Interpose.h"
#include "tests/support/Scene.h"

namespace {

using namespace support;
using namespace geometry_test;

constexpr int kRGB = 1, kRGBA = 2, kRGBX = 3, kG = 11, kGA = 12, kScaling = 14;
constexpr const char* kTurns[] = {"Rotate180", "Rotate90", "Rotate90slow", "Rotate270", "Rotate270slow"};

// A turn by its name. Rows by default; the blocked turns take a block size.
void ReferenceTurn(const std::string& name, const ModelPicture& source, const ModelPicture& dest,
                   std::int64_t block = std::numeric_limits<int>::max()) {
    if (name == "Rotate180")
        ReferenceRotate180(source, dest);
    else
        ReferenceQuarter(source, dest, name.starts_with("Rotate90"), block);
}

bool IsQuarter(const std::string& name) { return name != "Rotate180"; }

class TurnsEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(TurnsEverywhere, MakeAPictureOfTheTurnedSize) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int kind = 0; kind < Scene::kKinds; ++kind)
        for (const std::string name : kTurns)
            for (int round = 0; round < 2; ++round) {
                scene.Clear();
                const bool large = random.Below(6) == 0;  // several tiles
                const Twin twin = scene.Kind(kind, random.Between(1, large ? 140 : 20),
                                             random.Between(1, large ? 80 : 20), GetParam());
                const bool quarter = IsQuarter(name);
                const int width = quarter ? twin.model.height : twin.model.width;
                const int height = quarter ? twin.model.width : twin.model.height;
                const ModelPicture expected = NewModel(width, height, twin.model.format);
                ReferenceTurn(name, twin.model, expected);
                ASSERT_TRUE(SamePicture(CallObject(twin.live, name, nullptr), expected)) << name << " of kind " << kind;
                ASSERT_TRUE(scene.Same()) << name << " of kind " << kind;
            }
}

TEST_P(TurnsEverywhere, WriteIntoAnyDestination) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 40);
    Random& random = scene.random();
    for (int format = 1; format < kFormatCount; ++format)
        for (const std::string name : kTurns) {
            scene.Clear();
            const Twin source =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, 30), random.Between(1, 20), GetParam());
            const Twin dest =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, 30), random.Between(1, 30), format);
            const auto result = CallObject(source.live, name, dest.live);
            EXPECT_EQ(result, dest.live);
            ReferenceTurn(name, source.model, dest.model);
            ASSERT_TRUE(scene.Same()) << name << " to " << kFormats[format].name;
        }
}

// Views of one picture, or the picture itself, as source and destination. In memory the blocks of
// the blocked turns are as large as the storage has rows, less two.
TEST_P(TurnsEverywhere, ReadPixelsWhenTheirTurnComesWithinOnePicture) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 80);
    Random& random = scene.random();
    for (int round = 0; round < 12; ++round)
        for (const std::string name : kTurns) {
            scene.Clear();
            const Twin root = scene.Memory(random.Between(2, 20), random.Between(2, 20), GetParam());
            const auto view = [&] {
                switch (random.Below(4)) {
                    case 0:
                        return scene.View(root, "MirroredView");
                    case 1:
                        return scene.View(root, "ClipImage", 1, 1, 30, 30);
                    default:
                        return root;
                }
            };
            const Twin source = view(), dest = view();
            const bool blocked = name == "Rotate90" || name == "Rotate270";
            const std::int64_t rows = root.model.storage->rows;
            CallObject(source.live, name, dest.live);
            if (blocked)
                ReferenceTurn(name, source.model, dest.model, std::max<std::int64_t>(rows - 2, 1));
            else
                ReferenceTurn(name, source.model, dest.model);
            ASSERT_TRUE(scene.Same()) << name << ", round " << round;
        }
}

TEST_P(TurnsEverywhere, FourQuarterTurnsAreTheIdentity) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 120);
    for (const char* const name : {"Rotate90", "Rotate90slow", "Rotate270", "Rotate270slow"})
        for (const auto& [width, height] : {std::pair(1, 1), {1, 70}, {70, 1}, {65, 130}}) {
            auto first = New("PictureTQX", width, height, GetParam());
            FillRandom(first, 5);
            auto picture = first;
            for (int i = 0; i < 4; ++i) picture = CallObject(picture, name);
            for (int y = 0; y < height && !kFormats[GetParam()].isRGB; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(ByteAt(picture, x, y, kFormats[GetParam()].gray),
                              ByteAt(first, x, y, kFormats[GetParam()].gray));
            if (kFormats[GetParam()].pixelSize == (kFormats[GetParam()].hasAlpha ? 4 : 3) &&
                kFormats[GetParam()].isRGB) {
                ASSERT_EQ(ReadPixels(picture), ReadPixels(first));
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Formats, TurnsEverywhere, ::testing::ValuesIn([] {
                             std::vector<int> codes;
                             for (const Format& format : ChannelFormats()) codes.push_back(format.code);
                             return codes;
                         }()),
                         CodeName);

class Turns : public PluginTest {
  protected:
    Bytes Turned(const char* name, int width, int height, const Bytes& pixels) {
        auto picture = New("PictureTQX", width, height, kG);
        WritePixels(picture, pixels);
        return ReadPixels(CallObject(picture, name, nullptr));
    }
};

TEST_F(Turns, BringTheTopRightCornerToTheTopLeft) {
    const Bytes pixels = {1, 2, 3, 4, 5, 6};  // 3 x 2
    for (const char* const name : {"Rotate90", "Rotate90slow"})
        EXPECT_EQ(Turned(name, 3, 2, pixels), (Bytes{3, 6, 2, 5, 1, 4}));
    for (const char* const name : {"Rotate270", "Rotate270slow"})
        EXPECT_EQ(Turned(name, 3, 2, pixels), (Bytes{4, 1, 5, 2, 6, 3}));
    EXPECT_EQ(Turned("Rotate180", 3, 1, {1, 2, 3}), (Bytes{3, 2, 1}));  // the middle row as well
}

TEST_F(Turns, TwoMirrorsAreAHalfTurn) {
    Scene scene(1);
    const Twin twin = scene.Memory(37, 12, kRGBA);
    const auto turned = CallObject(twin.live, "Rotate180", nullptr);
    Call(twin.live, "HMirror");
    Call(twin.live, "VMirror");
    EXPECT_EQ(ReadPixels(turned), ReadPixels(twin.live));
}

TEST_F(Turns, WriteADestinationByItsOwnOffsets) {
    auto source = New("PictureTQX", 1, 1, kRGB);
    WritePixels(source, {1, 2, 3});
    for (const char* const name : kTurns) {
        auto dest = New("PictureTQX", 1, 1, 9);  // alpha, blue, green, red
        WritePixels(dest, {70, 71, 72, 73});
        CallObject(source, name, dest);
        EXPECT_EQ(ReadPixels(dest), (Bytes{70, 3, 2, 1})) << name;
        auto gray = New("PictureTQX", 1, 1, kGA);  // whose red, green and blue are all byte 0
        WritePixels(gray, {70, 71});
        CallObject(source, name, gray);
        EXPECT_EQ(ReadPixels(gray), (Bytes{3, 71})) << name;
    }
}

TEST_F(Turns, KeepTheDestinationsFillerByte) {
    auto source = New("PictureTQX", 1, 1, kRGBX);
    WritePixels(source, {1, 2, 3, 99});
    for (const char* const name : kTurns) {
        auto dest = New("PictureTQX", 1, 1, kRGBX);
        WritePixels(dest, {0, 0, 0, 7});
        CallObject(source, name, dest);
        EXPECT_EQ(ReadPixels(dest), (Bytes{1, 2, 3, 7})) << name;
    }
}

TEST_F(Turns, AreTheSameForEveryWindowSize) {
    Scene scene(2);
    const Twin source = scene.Memory(150, 90, kRGB);
    for (const char* const name : {"Rotate90", "Rotate270"}) {
        const Bytes expected = ReadPixels(CallObject(source.live, std::string(name) + "slow"));
        for (const int blockSize : {0, 1, 20000000, std::numeric_limits<int>::max(), -1}) {
            auto dest = New("PictureTQX", 90, 150, kRGB);
            Set(source.live, "MappingBlockSize", Value(blockSize));
            Set(dest, "MappingBlockSize", Value(1));
            EXPECT_EQ(ReadPixels(CallObject(source.live, name, dest)), expected) << name << ", " << blockSize;
        }
    }
}

// Windows of 4096 rows of a page: source and destination are each higher than one.
TEST_F(Turns, MapEachWindowOfAMappedPictureOnce) {
    Scene scene(3);
    const Twin tall = scene.Mapped(3, 4200, kG, ScratchPath("tall"));
    const Twin mirrored = scene.View(tall, "MirroredView");
    const ModelPicture wide = NewModel(4200, 3, kG);
    for (const std::string name : {"Rotate90", "Rotate270slow"}) {
        for (const Twin& source : {tall, mirrored}) {
            ResetFileMappings();
            const auto turned = CallObject(source.live, name);
            EXPECT_LE(CountedFileMappings().made, 3);
            ReferenceTurn(name, source.model, wide);
            ASSERT_TRUE(SamePicture(turned, wide)) << name;
        }
        const Twin flat = scene.Memory(4200, 3, kG);
        for (const Twin& dest : {tall, mirrored}) {
            ResetFileMappings();
            CallObject(flat.live, name, dest.live);
            EXPECT_LE(CountedFileMappings().made, 3);
            ReferenceTurn(name, flat.model, dest.model);
            ASSERT_TRUE(scene.Same()) << name;
        }
    }
}

TEST_F(Turns, KeepThePixelOrderWithinOneMappedFile) {
    Scene scene(4);
    const Twin root = scene.Mapped(9, 8, kRGB, ScratchPath("pixels"));
    const Twin views[] = {root, scene.View(root, "MirroredView"), scene.View(root, "ClipImage", 1, 1, 7, 6)};
    for (const std::string name : kTurns)
        for (const Twin& source : views)
            for (const Twin& dest : views) {
                CallObject(source.live, name, dest.live);
                const bool blocked = name == "Rotate90" || name == "Rotate270";
                // The window holds the file's 8 rows and is at least 5 rows high.
                if (blocked)
                    ReferenceTurn(name, source.model, dest.model, 6);
                else
                    ReferenceTurn(name, source.model, dest.model);
                ASSERT_TRUE(scene.Same()) << name;
            }
}

TEST_F(Turns, GiveNilForUnusablePictures) {
    auto closed = New("PictureTQX", 2, 2, kRGB);
    Call(closed, "Close");
    auto picture = New("PictureTQX", 2, 2, kRGB);
    for (const char* const name : kTurns) {
        EXPECT_FALSE(CallObject(closed, name, picture)) << name;
        EXPECT_FALSE(CallObject(picture, name, closed)) << name;
        EXPECT_FALSE(CallObject(New("PictureTQX", 2, 2, 0), name, picture)) << name;
        EXPECT_FALSE(CallObject(New("PictureTQX", 3, 0, kRGB), name, picture)) << name;
        EXPECT_EQ(CallObject(New("PictureTQX", 0, 3, kRGB), name, picture), picture) << name;
    }
}

TEST_F(Turns, GiveTheUntouchedDestinationForALayoutWithoutChannels) {
    Scene scene(5);
    const Twin floats = scene.Memory(3, 2, kScaling), dest = scene.Memory(4, 4, kRGBA);
    for (const char* const name : kTurns) EXPECT_EQ(CallObject(floats.live, name, dest.live), dest.live);
    EXPECT_TRUE(scene.Same());
}

TEST_F(Turns, YieldOnceForEachPicture) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    auto source = New("PictureTQX", 3, 3, kRGB), dest = New("PictureTQX", 3, 3, kRGB);
    Set(source, "YieldTicks", Value(1));
    Set(dest, "YieldTicks", Value(1));
    for (const char* const name : kTurns) {
        const auto before = CallsOf("REALYieldToRB");
        CallObject(source, name, dest);
        EXPECT_EQ(CallsOf("REALYieldToRB") - before, 2) << name;
    }
}

TEST_F(Turns, SurviveAYieldThatTakesEitherPicture) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    for (const char* const name : kTurns)
        for (const int at : {1, 2})
            for (const bool ofSource : {false, true}) {
                auto source = New("PictureTQX", 40, 30, kRGB), dest = New("PictureTQX", 40, 40, kRGB);
                Set(source, "YieldTicks", Value(1));
                Set(dest, "YieldTicks", Value(1));
                int yields = 0;
                const OnYield interrupt([&] {
                    if (++yields == at) Call(ofSource ? source : dest, "Constructor", 1, 1, kG);
                });
                CallObject(source, name, dest);
                EXPECT_TRUE(ReadPixels(ofSource ? source : dest) == Bytes{0});
            }
}

}  // namespace
