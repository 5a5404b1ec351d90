// Off-screen worlds made, locked and disposed.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include "platform/PixelMemory.h"
#include "platform/Worlds.h"
#include "tests/support/Interpose.h"

namespace platform {

namespace {

struct Disposer {
    void operator()(sdk::GWorld* world) const { DisposeGWorld(world); }
};
using World = std::unique_ptr<sdk::GWorld, Disposer>;

World Make(int depth, int width, int height, const ColorTable* colors = nullptr) {
    return World(NewGWorld(depth, width, height, colors));
}

int RowBytes(int depth, int width) { return GetPixRowBytes(GetGWorldPixMap(Make(depth, width, 1).get())); }

TEST(Worlds, HaveTheirDepthAndSize) {
    for (const int depth : {8, 24, 32}) {
        const World world = Make(depth, 5, 3);
        ASSERT_TRUE(world);
        EXPECT_EQ(world->width, 5);
        EXPECT_EQ(world->height, 3);
        EXPECT_EQ(GetPixDepth(GetGWorldPixMap(world.get())), depth);
    }
}

TEST(Worlds, AreRefusedForOtherDepths) {
    for (const int depth : {-32, 0, 1, 4, 16, 31, 33, 64}) EXPECT_FALSE(Make(depth, 4, 4)) << depth;
}

TEST(Worlds, AreRefusedWithoutPixels) {
    EXPECT_FALSE(Make(32, 0, 4));
    EXPECT_FALSE(Make(32, 4, 0));
    EXPECT_FALSE(Make(32, -4, 4));
    EXPECT_FALSE(Make(32, 4, std::numeric_limits<int>::min()));
}

TEST(Worlds, AreRefusedWhenARowIsTooLong) {
    EXPECT_FALSE(Make(32, std::numeric_limits<int>::max(), 1));
    EXPECT_FALSE(Make(32, 1 << 29, 1));
    EXPECT_FALSE(Make(8, std::numeric_limits<int>::max(), 1));  // the padding reaches 2^31
}

TEST(Worlds, AreRefusedWhenTheirPixelsReachTwoGigabytes) {
    EXPECT_FALSE(Make(32, 1 << 15, 1 << 14));
    EXPECT_FALSE(Make(8, 1, 1 << 27)) << "rows are sixteen bytes long";
    EXPECT_TRUE(Make(8, 1, (1 << 27) - 1));
}

TEST(Worlds, AreRefusedWhenMemoryIsShort) {
    EXPECT_FALSE(Make(8, (1 << 30), std::numeric_limits<int>::max()));
    const support::FailingAllocations failing(1 << 20);
    EXPECT_FALSE(Make(32, 1024, 1024));
    EXPECT_EQ(failing.failed(), 1);
    EXPECT_TRUE(Make(32, 8, 8));
}

TEST(Worlds, PadRowsToSixteenBytes) {
    EXPECT_EQ(RowBytes(32, 1), 16);
    EXPECT_EQ(RowBytes(32, 4), 16);
    EXPECT_EQ(RowBytes(32, 5), 32);
    EXPECT_EQ(RowBytes(24, 4), 16);
    EXPECT_EQ(RowBytes(24, 5), 16);
    EXPECT_EQ(RowBytes(24, 6), 32);
    EXPECT_EQ(RowBytes(8, 16), 16);
    EXPECT_EQ(RowBytes(8, 17), 32);
}

TEST(Worlds, BeginOnACacheLine) {
    const World world = Make(32, 7, 5);
    const std::uint8_t* const base = GetPixBaseAddr(GetGWorldPixMap(world.get()));
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(base) % 64, 0U);
}

TEST(Worlds, AreFreedByTheModuleThatMadeThem) {
    static int disposed = 0;
    sdk::GWorld foreign{{}, 1, 1, [](sdk::GWorld*) { ++disposed; }};
    DisposeGWorld(&foreign);
    EXPECT_EQ(disposed, 1);
    sdk::GWorld borrowed{};
    DisposeGWorld(&borrowed);  // nobody's to free
}

TEST(Worlds, CountLocks) {
    const World world = Make(32, 2, 2);
    PixMap* const pixMap = GetGWorldPixMap(world.get());
    EXPECT_EQ(pixMap->lockCount, 0);
    EXPECT_TRUE(LockPixels(pixMap));
    EXPECT_TRUE(LockPixels(pixMap));
    EXPECT_EQ(pixMap->lockCount, 2);
    UnlockPixels(pixMap);
    UnlockPixels(pixMap);
    EXPECT_EQ(pixMap->lockCount, 0);
}

TEST(Worlds, RefuseTheLockOfLostPixels) {
    const World world = Make(32, 2, 2);
    PixMap* const pixMap = GetGWorldPixMap(world.get());
    pixMap->purged = true;
    EXPECT_FALSE(LockPixels(pixMap));
    EXPECT_EQ(pixMap->lockCount, 0);
}

TEST(Worlds, HaveOnePixelMapForBothWaysOfAsking) {
    const World world = Make(24, 2, 2);
    EXPECT_NE(GetGWorldPixMap(world.get()), nullptr);
    EXPECT_EQ(GetGWorldPixMap(world.get()), GetPortPixMap(world.get()));
}

TEST(Worlds, TakeNullForNothing) {
    DisposeGWorld(nullptr);
    UnlockPixels(nullptr);
    EXPECT_EQ(GetGWorldPixMap(nullptr), nullptr);
    EXPECT_EQ(GetPortPixMap(nullptr), nullptr);
    EXPECT_FALSE(LockPixels(nullptr));
    EXPECT_EQ(GetPixDepth(nullptr), 0);
    EXPECT_EQ(GetPixRowBytes(nullptr), 0);
    EXPECT_EQ(GetPixBaseAddr(nullptr), nullptr);
}

TEST(ColorTables, HaveARampOfGraysUnderForty) {
    const ColorTable* const ramp = GetCTable(40);
    ASSERT_NE(ramp, nullptr);
    EXPECT_EQ(ramp->colors[0], 0x000000U);
    EXPECT_EQ(ramp->colors[200], 0xC8C8C8U);
    EXPECT_EQ(ramp->colors[255], 0xFFFFFFU);
    const World world = Make(8, 1, 1, ramp);
    EXPECT_EQ(GetGWorldPixMap(world.get())->colors, ramp);
    EXPECT_EQ(GetCTable(8), nullptr);
}

TEST(PixelMemory, BeginsWithZeroBytesOnACacheLine) {
    for (const std::int64_t size : {std::int64_t{1}, std::int64_t{63}, std::int64_t{64}, std::int64_t{5} << 20}) {
        std::uint8_t* const pixels = AllocatePixels(size);
        ASSERT_NE(pixels, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pixels) % 64, 0U);
        EXPECT_TRUE(std::all_of(pixels, pixels + size, [](std::uint8_t byte) { return byte == 0; }));
        FreePixels(pixels);
    }
}

TEST(PixelMemory, BeginsWithZeroBytesWhenALargeBlockIsUsedAgain) {
    constexpr std::int64_t kSize = 9 << 20;
    std::uint8_t* const first = AllocatePixels(kSize);
    ASSERT_NE(first, nullptr);
    std::fill_n(first, kSize, std::uint8_t{170});
    FreePixels(first);
    std::uint8_t* const second = AllocatePixels(kSize - 5);
    EXPECT_EQ(second, first) << "the spare was not used";
    EXPECT_TRUE(std::all_of(second, second + kSize - 5, [](std::uint8_t byte) { return byte == 0; }));
    std::uint8_t* const third = AllocatePixels(kSize);
    EXPECT_NE(third, second);
    FreePixels(third);
    FreePixels(second);
}

#ifdef MADV_POPULATE_WRITE
TEST(PixelMemory, ToFillIsThereAtOnce) {
    constexpr std::int64_t kSize = 3 << 20, kPage = 4096;
    std::uint8_t* const pixels = AllocatePixelsToFill(kSize);
    ASSERT_NE(pixels, nullptr);
    std::uint8_t* const first = pixels + (kPage - reinterpret_cast<std::intptr_t>(pixels) % kPage) % kPage;
    constexpr std::int64_t kWhole = kSize / kPage - 1;
    if (madvise(first, kPage, MADV_POPULATE_WRITE) != 0) GTEST_SKIP() << "this system brings in no pages";
    std::vector<unsigned char> present(kWhole);
    ASSERT_EQ(mincore(first, kWhole * kPage, present.data()), 0);
    EXPECT_EQ(std::count_if(present.begin(), present.end(), [](unsigned char page) { return (page & 1) == 0; }), 0);
    EXPECT_EQ(std::count(pixels, pixels + kSize, 0), kSize);
    FreePixels(pixels);
}
#endif

TEST(PixelMemory, KeepsNoSpareForAMuchSmallerBlock) {
    std::uint8_t* const large = AllocatePixels(40 << 20);
    ASSERT_NE(large, nullptr);
    FreePixels(large);
    std::uint8_t* const small = AllocatePixelsToFill(9 << 20);
    EXPECT_NE(small, large);
    FreePixels(small);
}

TEST(PixelMemory, UntouchedIsZeroAndNeverTheSpare) {
    constexpr std::int64_t kSize = 16 << 20;
    std::uint8_t* const spare = AllocatePixels(kSize);
    ASSERT_TRUE(spare);
    std::fill_n(spare, kSize, std::uint8_t{7});
    FreePixels(spare);
    std::uint8_t* const untouched = AllocatePixelsUntouched(kSize);
    ASSERT_TRUE(untouched);
    EXPECT_NE(untouched, spare);
    EXPECT_EQ(std::count(untouched, untouched + kSize, 0), kSize);
    FreePixels(untouched);
    std::uint8_t* const again = AllocatePixels(kSize);
    EXPECT_EQ(again, spare) << "still the one that was kept before";
    FreePixels(again);
    EXPECT_EQ(AllocatePixelsUntouched(-1), nullptr);
}

TEST(PixelMemory, OfNoBytesIsABlock) {
    std::uint8_t* const pixels = AllocatePixels(0);
    EXPECT_NE(pixels, nullptr);
    FreePixels(pixels);
    FreePixels(nullptr);
}

TEST(PixelMemory, IsRefusedWhenNegativeOrTooLarge) {
    EXPECT_EQ(AllocatePixels(-1), nullptr);
    EXPECT_EQ(AllocatePixels(std::numeric_limits<std::int64_t>::max()), nullptr);
}

}  // namespace

}  // namespace platform
