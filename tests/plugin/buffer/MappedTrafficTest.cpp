// How often operations map windows: each walk over a picture maps each of its windows once.
#include <algorithm>
#include <functional>
#include <vector>

#include "tests/plugin/buffer/MappedStage.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;
using namespace mapped;

constexpr int kHeight = 79;

// Sixteen rows a window, of which two are above the row that was asked for.
constexpr int kBytesPerRow = kLeastWindow / 16;
constexpr int kNewRowsAWindow = 14;

// Windows that a walk from top to bottom maps at most, of the largest picture.
constexpr int kWalk = (kHeight * 5 / 4) / kNewRowsAWindow + 2;

// From bottom to top a window serves but three rows: it begins two rows above the requested one.
constexpr int kUpwardWalk = (kHeight * 5 / 4) / 3 + 2;

constexpr Setting kSettings[] = {
    {"Given", 1, 37, kHeight, kAll, Destination::Given, View::Clip, kBytesPerRow},
    {"Factory", 7, 37, kHeight, kAll, Destination::Factory, View::Clip, kBytesPerRow},
    {"GrayWithAlpha", 12, 37, kHeight, kAll, Destination::Given, View::Clip, kBytesPerRow},
    {"InPlace", 1, 37, kHeight, kAll, Destination::Self, View::Clip, kBytesPerRow},
    {"Mirrored", 1, 37, kHeight, kAll, Destination::Given, View::MirroredClip, kBytesPerRow},
};

// Walks of the source, of the destination, and the test's own to read the result.
constexpr int kUsualWalks = 3;

// The stage fills what its factory makes, and the test reads it.
constexpr int kWalksOfAFactory = 2;

// The members that walk over pictures more often.
constexpr struct {
    const char* member;
    int walks;
} kWalks[] = {
    {"CopyPixels/7", 4},               // two copies
    {"CopyPixels/5", 4},               // two copies
    {"ScaleFast/3", 6},                // two calls, one result read
    {"Scale/5", 84},                   // fourteen calls of two passes, each result read
    {"Rotate/6", 44},                  // four angles of self and three made, filled, written, read; two turns
    {"DitherFilter/3", 40},            // ten matrices, each result read
    {"BoxBlurFilter/2", 4},            // rows enter and leave the sums a third of a window apart
    {"BoxBlurFilter/3", 12},           // three times
    {"BoxBlurFractionalFilter/2", 4},  // rows around
};

int WalksOf(const Setting& setting, const PictureOperation& operation) {
    const int more = setting.destination == Destination::Factory ? kWalksOfAFactory : 0;
    for (const auto& [member, walks] : kWalks)
        if (std::string_view(member) == operation.member) return walks + more;
    return kUsualWalks + more;
}

// Quarter turns work by blocks, and in place pixel by pixel.
bool IsQuarterTurn(const PictureOperation& operation) {
    const std::string_view member = operation.member;
    return member.starts_with("Rotate90") || member.starts_with("Rotate270");
}

std::int64_t MappingsMade(const Setting& setting, const PictureOperation& operation, const std::string& folder) {
    Stage stage(setting, false, folder);
    Outcome outcome(stage.pictures);
    ResetFileMappings();
    operation.run(stage.pictures, outcome);
    return CountedFileMappings().made;
}

using Case = std::tuple<Setting, PictureOperation>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    return std::string(std::get<0>(info.param).name) + "_" + OperationName(std::get<1>(info.param));
}

class MappedTraffic : public PluginTest, public ::testing::WithParamInterface<Case> {};

class MappedQuarterTurns : public PluginTest, public ::testing::WithParamInterface<const char*> {};

class MappedTurnsInPlace : public PluginTest {};

class MappedWalks : public PluginTest {};

class MappedRotation : public PluginTest {};

TEST_P(MappedTraffic, IsAFewWalksOverThePictures) {
    const auto& [setting, operation] = GetParam();
    if (IsQuarterTurn(operation)) return;
    const ScratchFolder folder;
    const bool upward = setting.view == View::MirroredClip || std::string_view(operation.member) == "MirroredView/0";
    EXPECT_LE(MappingsMade(setting, operation, folder.path()),
              WalksOf(setting, operation) * (upward ? kUpwardWalk : kWalk));
}

// Each window once, as long as the pictures are no larger than a block that is turned in memory.
TEST_P(MappedQuarterTurns, WalkOverEachPictureOnce) {
    constexpr Setting kSetting{"", 1, kHeight, kHeight, kAll, Destination::Given, View::Clip, kBytesPerRow};
    const ScratchFolder folder;
    const Stage stage(kSetting, false, folder.path());
    ResetFileMappings();
    ASSERT_TRUE(CallObject(stage.pictures.self, GetParam(), stage.pictures.destination));
    EXPECT_LE(CountedFileMappings().made, 2 * kWalk);
}

// Windows that a walk from the top maps of a picture of so many rows, and one more because the
// rows of a clip begin within its root's window.
int WindowsOf(int rows) { return std::max(0, (rows - 16 + kNewRowsAWindow - 1) / kNewRowsAWindow) + 2; }

// A rotation reads and writes the picture of each of its passes once, but for the pass down the
// columns: it goes through both of its pictures once for each strip of 512 columns, of which a
// strip needs a window at a time. What is made is mapped once more, by root and by clip.
TEST_F(MappedRotation, WalksOnceAPassAndOnceAStrip) {
    constexpr int kGray = 11, kWidth = 1100, kStrips = 3, kMade = 2;
    const ScratchFolder folder;
    std::vector<int> heights;
    const auto newMapped = [&](int width, int height) {
        heights.push_back(height);
        const auto root = NewMapped(folder.path() + "/" + std::to_string(heights.size()), kBytesPerRow, height, kGray);
        return CallObject(root, "ClipImage", 0, 0, width, height);
    };
    for (const double angle : {10.0, 350.0, 190.0}) {
        heights.clear();
        const auto picture = newMapped(kWidth, kHeight);
        FillRandom(picture, 7);
        Set(picture, "Factory",
            Value(NewFactory([&](int width, int height, int) { return newMapped(width, height); })));
        ResetFileMappings();
        const auto rotated = CallObject(picture, "Rotate", angle, 0, 0, 0, 0, 128);
        ASSERT_TRUE(rotated);
        const std::size_t turned = angle == 190.0 ? 1 : 0;  // by half a turn first
        ASSERT_EQ(heights.size(), 4 + turned);
        const int across = WindowsOf(heights[turned + 1]), down = WindowsOf(heights[turned + 2]);
        const int before = turned == 0 ? WindowsOf(kHeight) : 3 * WindowsOf(kHeight) + kMade;
        EXPECT_LE(CountedFileMappings().made, before + (1 + kStrips) * across + kMade + (kStrips + 1) * down + kMade +
                                                  WindowsOf(heights[turned + 3]) + kMade);
        EXPECT_GT(CountedFileMappings().made, kStrips * WindowsOf(heights[turned + 2])) << "there are several strips";
        const auto memory = New("PictureTQX", kWidth, kHeight, kGray);
        Call(memory, "CopyPixels", picture);
        const auto expected = CallObject(memory, "Rotate", angle, 0, 0, 0, 0, 128);
        EXPECT_TRUE(SameBytes(PixelBytes(rotated), PixelBytes(expected), static_cast<int>(GetInt(expected, "Width"))));
    }
}

// The order of the rows stays; the window is put over them before.
TEST_F(MappedWalks, OfMirroredViewsNeedNoMoreWindowsThanOthers) {
    constexpr int kGray = 11, kWidth = 20;
    const std::pair<const char*, std::function<void(const Ref<Object>&, const Ref<Object>&)>> works[] = {
        {"fill", [](const auto& view, const auto&) { Call(view, "FillRect", 3); }},
        {"invert a part", [](const auto& view, const auto&) { Call(view, "Invert", 2, 5, 9, 70); }},
        {"mirror", [](const auto& view, const auto&) { Call(view, "HMirror"); }},
        {"gamma", [](const auto& view, const auto& other) { CallObject(view, "GammaFilter", other, 2.2); }},
        {"gamma in place", [](const auto& view, const auto&) { CallObject(view, "GammaFilter", view, 2.2); }},
        {"copy", [](const auto& view, const auto& other) { Call(view, "CopyPixels", other); }},
        {"copy a part",
         [](const auto& view, const auto& other) { Call(view, "CopyPixels", other, 1, 2, 9, 70, 0, 6); }},
    };
    for (const auto& [name, work] : works) {
        SCOPED_TRACE(name);
        const ScratchFolder folder;
        const auto first = NewMapped(folder.path() + "/first", kBytesPerRow, kHeight, kGray);
        const auto second = NewMapped(folder.path() + "/second", kBytesPerRow, kHeight, kGray);
        const auto clip = CallObject(first, "ClipImage", 0, 0, kWidth, kHeight);
        const auto other = CallObject(second, "ClipImage", 0, 0, kWidth, kHeight);
        const auto view = CallObject(clip, "MirroredView");
        FillRandom(clip, 1);
        FillRandom(other, 2);
        const auto memory = New("PictureTQX", kWidth, kHeight, kGray),
                   memoryOther = New("PictureTQX", kWidth, kHeight, kGray);
        Call(memory, "CopyPixels", clip);
        Call(memoryOther, "CopyPixels", other);
        work(CallObject(memory, "MirroredView"), memoryOther);
        ResetFileMappings();
        work(view, CallObject(other, "ClipImage"));
        EXPECT_LE(CountedFileMappings().made, 2 * WindowsOf(kHeight));
        EXPECT_TRUE(SameBytes(PixelBytes(clip), PixelBytes(memory), kWidth));
        EXPECT_TRUE(SameBytes(PixelBytes(other), PixelBytes(memoryOther), kWidth));
    }
}

TEST_F(MappedWalks, OfACopyWithinAPictureKeepToTwoWindows) {
    constexpr int kGray = 11, kWidth = 20, kRows = 40;
    for (const char* viewed : {"ClipImage", "MirroredView"})
        for (const int to : {0, 1, 39})
            for (const int from : {0, 1, 39}) {
                const ScratchFolder folder;
                const auto root = NewMapped(folder.path() + "/picture", kBytesPerRow, kHeight, kGray);
                const auto clip = CallObject(root, "ClipImage", 0, 0, kWidth, kHeight);
                const auto view = CallObject(clip, viewed);
                FillRandom(clip, 1);
                const auto memory = New("PictureTQX", kWidth, kHeight, kGray);
                Call(memory, "CopyPixels", clip);
                const auto memoryView = CallObject(memory, viewed);
                Call(memoryView, "CopyPixels", memoryView, 3, to, 12, kRows, 1, from);
                ResetFileMappings();
                Call(view, "CopyPixels", view, 3, to, 12, kRows, 1, from);
                EXPECT_LE(CountedFileMappings().made, 2 * WindowsOf(kRows));
                EXPECT_TRUE(SameBytes(PixelBytes(clip), PixelBytes(memory), kWidth)) << viewed << to << from;
            }
}

// Onto itself by blocks as high as a window: what is read and what is written lie in windows of
// their own. The order of the pixels shows.
TEST_F(MappedTurnsInPlace, MapEachBlockAFewTimes) {
    constexpr int kGray = 11, kBlock = kNewRowsAWindow;
    for (const bool left : {true, false}) {
        const ScratchFolder folder;
        const auto root = NewMapped(folder.path() + "/picture", kBytesPerRow, kHeight, kGray);
        const auto picture = CallObject(root, "ClipImage", 0, 0, kHeight, kHeight);
        FillRandom(picture, 3);
        Bytes expected = PixelBytes(picture);
        const auto at = [&](int x, int y) -> std::uint8_t& {
            return expected[static_cast<std::size_t>(y) * kHeight + static_cast<std::size_t>(x)];
        };
        for (int top = 0; top < kHeight; top += kBlock)
            for (int first = 0; first < kHeight; first += kBlock)
                for (int y = top; y < std::min(top + kBlock, kHeight); ++y)
                    for (int x = first; x < std::min(first + kBlock, kHeight); ++x)
                        (left ? at(y, kHeight - 1 - x) : at(kHeight - 1 - y, x)) = at(x, y);
        ResetFileMappings();
        EXPECT_EQ(CallObject(picture, left ? "Rotate90" : "Rotate270", picture), picture);
        const int blocks = (kHeight + kBlock - 1) / kBlock;
        EXPECT_LE(CountedFileMappings().made, 4 * blocks * blocks);
        EXPECT_EQ(CountedFileMappings().live, 2) << "the picture's and its view's";
        EXPECT_TRUE(SameBytes(PixelBytes(picture), expected, kHeight));
    }
}

// Larger in both directions than a block, and than a window.
TEST_P(MappedQuarterTurns, GiveTheSameBytesAsInMemoryWhateverTheSize) {
    constexpr int kGray = 11, kColumns = 2100, kRows = 4300;
    const ScratchFolder folder;
    const auto memory = New("PictureTQX", kColumns, kRows, kGray);
    FillRandom(memory, 8);
    const auto source = NewMapped(folder.path() + "/source", kColumns, kRows, kGray);
    const auto destination = NewMapped(folder.path() + "/destination", kRows, kColumns, kGray);
    Call(source, "CopyPixels", memory);
    ResetFileMappings();
    ASSERT_TRUE(CallObject(source, GetParam(), destination));
    EXPECT_LE(CountedFileMappings().made, 24) << "four blocks, up to three windows of each picture";
    const auto expected = CallObject(memory, GetParam(), nullptr);
    EXPECT_TRUE(SameBytes(PixelBytes(destination), PixelBytes(expected), kRows));
}

// So many bytes that they are written past the cache, in pieces that begin and end within its lines.
TEST_P(MappedQuarterTurns, GiveTheSameBytesAsInMemoryPastTheCache) {
    constexpr int kRGB = 1, kColumns = 3301, kRows = 3607;
    const ScratchFolder folder;
    const auto memory = New("PictureTQX", kColumns, kRows, kRGB);
    FillRandom(memory, 9);
    const auto source = NewMapped(folder.path() + "/source", kColumns, kRows, kRGB);
    const auto destination = NewMapped(folder.path() + "/destination", kRows, kColumns, kRGB);
    Call(source, "CopyPixels", memory);
    ASSERT_TRUE(CallObject(source, GetParam(), destination));
    const auto expected = CallObject(memory, GetParam(), nullptr);
    EXPECT_TRUE(SameBytes(PixelBytes(destination), PixelBytes(expected), kRows * 3));
}

INSTANTIATE_TEST_SUITE_P(Every, MappedQuarterTurns,
                         ::testing::Values("Rotate90", "Rotate270", "Rotate90slow", "Rotate270slow"));

INSTANTIATE_TEST_SUITE_P(Every, MappedTraffic,
                         ::testing::Combine(::testing::ValuesIn(kSettings),
                                            ::testing::ValuesIn(PictureOperations().begin(),
                                                                PictureOperations().end())),
                         CaseName);

}  // namespace
