// Every host function and world function on a draw's path failing in turn.
#include <functional>
#include <string>

#include "host/calls/HostFunctionSlot.h"
#include "tests/plugin/interop/HostModels.h"

namespace {

using namespace interop_test;

constexpr int kRGB = 1, kRGBA = 2, kG = 11;

struct Draw {
    const char* method;
    int format;
    bool masked;
    bool needsMask;
};

constexpr Draw kDraws[] = {
    {"DrawPictureRGB", kRGB, false, false},
    {"DrawPictureRedToGrayChannel", kG, false, false},
    {"DrawPictureGreenToGrayChannel", kG, false, false},
    {"DrawPictureBlueToGrayChannel", kG, false, false},
    {"DrawMaskedPictureRGB", kRGBA, true, false},
    {"DrawMaskedPictureApplyMaskRGB", kRGB, true, true},
};

class DrawFailures : public PluginTest, public ::testing::WithParamInterface<Draw> {
  protected:
    Random random{3};

    Ref<Object> MakePicture(int depth = 32) {
        const auto picture = RandomHostPicture(random, 5, 4, depth);
        if (GetParam().masked) Set(picture, "Mask", Value(RandomHostPicture(random, 5, 4)));
        return picture;
    }

    // The buffer's bytes after a draw into a new one.
    Bytes Drawn(const Ref<Object>& picture) {
        const auto buffer = New("PictureTQX", 5, 4, GetParam().format);
        Values arguments{Value(picture), Value(0), Value(0), Value(5), Value(4)};
        if (GetParam().masked) arguments.push_back(Value(false));
        CallWith(buffer, GetParam().method, arguments);
        return ReadPixels(buffer);
    }

    bool IsBlank(const Bytes& pixels) {
        return std::all_of(pixels.begin(), pixels.end(), [](std::uint8_t byte) { return byte == 0; });
    }
};

// Spoils a picture's world while it lives.
class SpoiledWorld {
  public:
    SpoiledWorld(const Ref<Object>& picture, const std::function<void(platform::PixMap&)>& spoil)
        : pixMap_(StorageOf(picture).world->pixMap), before_(pixMap_) {
        spoil(pixMap_);
    }
    ~SpoiledWorld() {
        EXPECT_EQ(pixMap_.lockCount, 0) << "the pixels are still locked";
        pixMap_ = before_;
    }
    SpoiledWorld(const SpoiledWorld&) = delete;
    SpoiledWorld& operator=(const SpoiledWorld&) = delete;

  private:
    platform::PixMap& pixMap_;
    platform::PixMap before_;
};

struct Spoiling {
    const char* name;
    void (*spoil)(platform::PixMap& pixMap);
};

constexpr Spoiling kSpoilings[] = {
    {"depth 16", [](platform::PixMap& pixMap) { pixMap.depth = 16; }},
    {"lock refused", [](platform::PixMap& pixMap) { pixMap.purged = true; }},
    {"null base", [](platform::PixMap& pixMap) { pixMap.baseAddress = nullptr; }},
};

// What the conversion of a picture that can't be read directly needs.
constexpr const char* kConversionFunctions[] = {"REALGetPropValueInt", "newPicture", "pluginPictureGraphicsGetter",
                                                "REALLoadObjectMethod"};

// The mask, where there is one, is left out of it: without a mask conversion gives the same pixels.
Ref<Object> WithoutMask(const Ref<Object>& picture, const Draw& draw) {
    if (!draw.needsMask) Set(picture, "Mask", Value(nullptr));
    return picture;
}

TEST_P(DrawFailures, APictureThatCannotBeReadDirectlyIsConverted) {
    if (GetParam().needsMask) return;  // the host would draw it through the mask
    const auto picture = WithoutMask(MakePicture(), GetParam());
    const Bytes expected = Drawn(picture);
    ASSERT_FALSE(IsBlank(expected));
    for (const Spoiling& spoiling : kSpoilings) {
        const SpoiledWorld spoiled(picture, spoiling.spoil);
        EXPECT_TRUE(SameBytes(Drawn(picture), expected)) << spoiling.name;
        EXPECT_EQ(host::PictureLockCount(picture.get()), 0) << spoiling.name;
    }
}

TEST_P(DrawFailures, NothingIsDrawnWhenTheConversionFailsAtAnyStep) {
    for (const Spoiling& spoiling : kSpoilings)
        for (const char* function : kConversionFunctions) {
            const auto picture = MakePicture();
            const SpoiledWorld spoiled(picture, spoiling.spoil);
            const FailingHostFunction failing(function);
            EXPECT_TRUE(IsBlank(Drawn(picture))) << spoiling.name << ", " << function;
            EXPECT_GT(failing.calls(), 0) << function << " is not on the path";
            EXPECT_EQ(host::PictureLockCount(picture.get()), 0) << spoiling.name << ", " << function;
        }
}

TEST_P(DrawFailures, NothingIsDrawnWhenNoPictureCanBeDescribed) {
    const auto picture = MakePicture();
    const FailingHostFunction failing("lockPictureDescription");
    EXPECT_TRUE(IsBlank(Drawn(picture)));
    EXPECT_GE(failing.calls(), 2) << "the converted picture is described too";
    EXPECT_TRUE(NothingIsLocked(picture));
}

TEST_P(DrawFailures, NothingIsDrawnWhenTheMaskCannotBeLocked) {
    if (!GetParam().masked) return;
    for (const Spoiling& spoiling : kSpoilings)
        for (const char* function : kConversionFunctions) {
            const auto picture = MakePicture();
            const SpoiledWorld spoiled(MaskOf(picture), spoiling.spoil);
            const FailingHostFunction failing(function);
            EXPECT_TRUE(IsBlank(Drawn(picture))) << spoiling.name << ", " << function;
            EXPECT_EQ(host::PictureLockCount(picture.get()), 0) << "the picture's lock is not undone";
            EXPECT_EQ(host::PictureLockCount(MaskOf(picture).get()), 0);
            EXPECT_EQ(StorageOf(picture).world->pixMap.lockCount, 0);
        }
}

TEST_P(DrawFailures, AMaskThatTheHostDoesNotGiveCountsAsNone) {
    if (!GetParam().masked) return;
    const auto picture = MakePicture();
    const FailingHostFunction failing("REALGetPictureMask");
    const Bytes drawn = Drawn(picture);
    EXPECT_EQ(failing.calls(), 1);
    EXPECT_EQ(IsBlank(drawn), GetParam().needsMask);
    if (!GetParam().needsMask) {
        EXPECT_EQ(drawn[3], 255) << "opaque";
    }
    EXPECT_TRUE(NothingIsLocked(picture));
}

// A description without a world, or with one that has no pixel map.
TEST_P(DrawFailures, NothingIsReadFromADescriptionWithoutAWorld) {
    using Slot = host::HostFunctionSlot<sdk::klockPictureDescription>;
    for (const std::int32_t kind : {sdk::kPictureKindNone, 1, sdk::kPictureKindWorld}) {
        const auto picture = MakePicture();
        const auto before = Slot::Replace([&](sdk::Object*, sdk::PictureDescription* description) {
            *description = {kind, nullptr, 5, 4};
        });
        const Bytes drawn = Drawn(picture);
        Slot::Replace(before);
        EXPECT_TRUE(IsBlank(drawn)) << "kind " << kind;
    }
}

// Each lock of a description has its unlock, on every path.
TEST_P(DrawFailures, EveryDescriptionIsUnlockedAsOftenAsLocked) {
    const auto balance = [] { return CallsOf("lockPictureDescription") - CallsOf("unlockPictureDescription"); };
    const std::int64_t before = balance();
    for (const int depth : {32, 24, 16, 8, 1}) {
        const auto picture = MakePicture(depth);
        Drawn(picture);
        const FailingHostFunction failing("newPicture");
        Drawn(picture);
        EXPECT_TRUE(NothingIsLocked(picture)) << "depth " << depth;
    }
    EXPECT_EQ(balance(), before);
}

INSTANTIATE_TEST_SUITE_P(Draws, DrawFailures, ::testing::ValuesIn(kDraws),
                         [](const auto& draw) { return std::string(draw.param.method); });

// --- The shorter forms ask for the size -------------------------------------------------------

class DrawSizes : public PluginTest {};

TEST_F(DrawSizes, ThatCannotBeReadCountAsNothing) {
    Random random(4);
    const auto picture = RandomHostPicture(random, 3, 3);
    const auto buffer = New("PictureTQX", 3, 3, kRGB);
    const FailingHostFunction failing("REALGetPropValueInt");
    Call(buffer, "DrawPictureRGB", picture);
    Call(buffer, "DrawPictureRGB", picture, 0, 0);
    EXPECT_EQ(failing.calls(), 4);
    EXPECT_EQ(ReadPixels(buffer), Bytes(27));
    EXPECT_TRUE(NothingIsLocked(picture));
}

}  // namespace
