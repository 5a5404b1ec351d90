// Parts of parts that begin outside: they claim up to 2^31 - 1 rows and columns, of which their
// storage has a few or none. Whatever is done with them takes as long as with those few.
#include <algorithm>
#include <climits>

#include "tests/support/Formats.h"
#include "tests/support/PictureOperations.h"

namespace {

using namespace support;

constexpr int kWidth = 37, kHeight = 9;

// What a far part is of.
constexpr int kTop = 7;  // its first row

Ref<Object> Base(int format) {
    const auto base = New("PictureTQX", kWidth, kHeight, format);
    FillRandom(base, 3);
    return base;
}

// Rows 7 and 8 of the base, and then 2^31 - 3 that there are not.
Ref<Object> Tall(const Ref<Object>& base) {
    const auto upper = CallObject(base, "ClipImage", 0, 0, kWidth, kTop - 2);
    const auto below = CallObject(upper, "ClipImage", 0, kTop, kWidth, 1);
    return CallObject(below, "ClipImage", 0, 0, kWidth, INT_MAX);
}

Ref<Object> TallUpsideDown(const Ref<Object>& base) { return CallObject(Tall(base), "MirroredView"); }

// Columns that lie nowhere.
Ref<Object> Wide(const Ref<Object>& base) {
    const auto beside = CallObject(base, "ClipImage", kWidth + 10, 0, 1, kHeight);
    return CallObject(beside, "ClipImage", 0, 0, INT_MAX, kHeight);
}

// The same with offsets that are as large as numbers go.
Ref<Object> WideAndFar(const Ref<Object>& base) {
    return CallObject(Wide(base), "ClipImage", 2'000'000'000, 0, kWidth, kHeight);
}

// Rows without a byte, in a picture of its own, of which no memory holds fewer.
Ref<Object> TallAndEmpty(const Ref<Object>& base) { return New("PictureTQX", 0, INT_MAX, GetInt(base, "ImageFormat")); }

struct FarClip {
    const char* name;
    Ref<Object> (*of)(const Ref<Object>& base);
};

constexpr FarClip kFarClips[] = {{"Tall", &Tall},
                                 {"TallUpsideDown", &TallUpsideDown},
                                 {"Wide", &Wide},
                                 {"WideAndFar", &WideAndFar},
                                 {"TallAndEmpty", &TallAndEmpty}};

void PrintTo(const FarClip& clip, std::ostream* stream) { *stream << clip.name; }

// Members for which the test itself would make or look at every pixel that the picture claims.
bool IsWalkedByTheTest(const PictureOperation& operation) {
    constexpr std::string_view kMembers[] = {"CreatePictureTQX/3",
                                             "MirroredView/0",
                                             "RedChannel/0",
                                             "GreenChannel/0",
                                             "BlueChannel/0",
                                             "GrayChannel/0",
                                             "AlphaChannel/0",
                                             "RGBChannels/0",
                                             "ClipImage/0",
                                             "ClipImage/4",
                                             "RawRow/1",
                                             "Row/1",
                                             "Row/1=",
                                             "RowInFormat/2=",
                                             "RowInFormat/3=",
                                             "Scale/5",
                                             "ScaleFast/3",
                                             "DitherFilter/3",
                                             "RowStringInFormat/2=",
                                             "DataStringInFormat/1="};
    return std::find(std::begin(kMembers), std::end(kMembers), operation.member) != std::end(kMembers);
}

using Case = std::tuple<FarClip, PictureOperation>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    return std::string(std::get<0>(info.param).name) + "_" + OperationName(std::get<1>(info.param));
}

class FarClips : public PluginTest, public ::testing::WithParamInterface<Case> {};

TEST_P(FarClips, CostNothingInAnyRole) {
    const auto& [clip, operation] = GetParam();
    if (IsWalkedByTheTest(operation)) return;
    for (const int format : {1, 7, 11, 13}) {
        SCOPED_TRACE(format);
        const auto near = Base(format), base = Base(format), temp = New("PictureTQX", kWidth, kHeight, 14);
        const auto far = clip.of(base);
        for (const Pictures& pictures :
             {Pictures{far, near, near, temp}, Pictures{near, far, near, temp}, Pictures{near, near, far, temp},
              Pictures{far, far, far, temp}, Pictures{far, near, clip.of(near), temp}}) {
            Outcome outcome(pictures);
            operation.run(pictures, outcome);
            TakeThrown();  // rows that can't be had
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, FarClips,
                         ::testing::Combine(::testing::ValuesIn(kFarClips),
                                            ::testing::ValuesIn(PictureOperations().begin(),
                                                                PictureOperations().end())),
                         CaseName);

class FarClipsAlone : public PluginTest {};

TEST_F(FarClipsAlone, AreScaledAndDitheredAtOnce) {
    for (const FarClip& clip : kFarClips) {
        SCOPED_TRACE(clip.name);
        const auto near = Base(1), base = Base(1), temp = New("PictureTQX", kWidth, kHeight, 14);
        const auto far = clip.of(base), farTemp = clip.of(New("PictureTQX", kWidth, kHeight, 14));
        for (const auto& [self, source] : {std::pair{near, far}, {far, near}, {far, far}}) {
            EXPECT_EQ(CallBool(self, "ScaleFast", source, kWidth, kHeight), GetInt(self, "Width") > 0);
            for (const auto& intermediate : {Ref<Object>(), temp, farTemp})
                Call(self, "Scale", source, intermediate, 3, kWidth, kHeight);
            Call(source, "DitherFilter", self, 1, 2);
        }
    }
}

// What the few rows get is what they get in a part of just these.
TEST_F(FarClipsAlone, HaveTheRowsOfTheirStorage) {
    const struct {
        const char* name;
        void (*work)(const Ref<Object>& part, const Ref<Object>& other);
    } works[] = {
        {"invert", [](const auto& part, const auto&) { Call(part, "Invert"); }},
        {"fill", [](const auto& part, const auto&) { Call(part, "FillRect", 2, 0, 3, 2, 9); }},
        {"mirror", [](const auto& part, const auto&) { Call(part, "HMirror"); }},
        {"gamma", [](const auto& part, const auto& other) { CallObject(part, "GammaFilter", other, 2.2); }},
        {"gamma in place", [](const auto& part, const auto&) { CallObject(part, "GammaFilter", part, 2.2); }},
        {"dither", [](const auto& part, const auto& other) { CallObject(part, "DitherFilter", other, 1, 2); }},
        {"turn left", [](const auto& part, const auto& other) { CallObject(part, "Rotate90", other); }},
        {"copy", [](const auto& part, const auto& other) { Call(other, "CopyPixels", part); }},
        {"copy into", [](const auto& part, const auto& other) { Call(part, "CopyPixels", other); }},
        {"levels", [](const auto& part, const auto&) { Call(part, "AutoLevel"); }},
    };
    for (const auto& [name, work] : works) {
        SCOPED_TRACE(name);
        const auto farBase = Base(1), nearBase = Base(1);
        const auto farOther = New("PictureTQX", 40, 40, 1), nearOther = New("PictureTQX", 40, 40, 1);
        FillRandom(farOther, 4);
        FillRandom(nearOther, 4);
        work(Tall(farBase), farOther);
        work(CallObject(nearBase, "ClipImage", 0, kTop, kWidth, kHeight - kTop), nearOther);
        EXPECT_TRUE(SameBytes(PixelBytes(farBase), PixelBytes(nearBase), kWidth * 3));
        EXPECT_TRUE(SameBytes(PixelBytes(farOther), PixelBytes(nearOther), 40 * 3));
    }
}

// A blur's sums begin and end among rows that aren't there: they count nothing.
TEST_F(FarClipsAlone, AreBlurredWithRowsThatCountNothing) {
    const auto base = New("PictureTQX", 1, kHeight, 11);
    for (int y = 0; y < kHeight; ++y) *RowAddress(base, y) = 90;
    const auto upper = CallObject(base, "ClipImage", 0, 0, 1, kTop - 2);
    const auto tall = CallObject(CallObject(upper, "ClipImage", 0, kTop, 1, 1), "ClipImage", 0, 0, 1, INT_MAX);
    ASSERT_EQ(GetInt(tall, "Height"), INT_MAX);
    const auto upsideDown = CallObject(tall, "MirroredView");
    ASSERT_TRUE(CallObject(upsideDown, "BoxBlurFilter", upsideDown, 1.0));
    // Seen from below: the last row stands for the one beyond it, the first has none above.
    EXPECT_EQ(*RowAddress(base, kTop), 90);
    EXPECT_EQ(*RowAddress(base, kTop + 1), 60);
    ASSERT_TRUE(CallObject(tall, "BoxBlurFilter", tall, 1.0));
    EXPECT_EQ(*RowAddress(base, kTop), (90 + 90 + 60) / 3);
    EXPECT_EQ(*RowAddress(base, kTop + 1), (90 + 60) / 3);
}

}  // namespace
