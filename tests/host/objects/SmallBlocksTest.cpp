// Blocks are whole and nobody else's, however often they went back and came again.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "host/objects/SmallBlocks.h"

namespace host {
namespace {

constexpr std::size_t kLargest = 300;

std::size_t SizeOf(std::size_t i) { return i * 7 % (kLargest + 1); }

bool IsAll(const void* block, std::size_t size, int byte) {
    const auto* bytes = static_cast<const unsigned char*>(block);
    for (std::size_t i = 0; i < size; ++i)
        if (bytes[i] != byte) return false;
    return true;
}

// More than are kept of any size; each full of a number of its own.
std::vector<void*> TakeMany() {
    std::vector<void*> blocks(40 * kLargest);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        blocks[i] = TakeBlock(SizeOf(i));
        std::memset(blocks[i], static_cast<int>(i % 251), SizeOf(i));
    }
    return blocks;
}

void GiveAll(const std::vector<void*>& blocks) {
    for (std::size_t i = 0; i < blocks.size(); ++i) GiveBlock(blocks[i], SizeOf(i));
}

TEST(SmallBlocks, AreEachForOneOnly) {
    for (int round = 0; round < 3; ++round) {
        const std::vector<void*> blocks = TakeMany();
        for (std::size_t i = 0; i < blocks.size(); ++i)
            ASSERT_TRUE(IsAll(blocks[i], SizeOf(i), static_cast<int>(i % 251))) << i;
        GiveAll(blocks);
    }
}

TEST(SmallBlocks, AreAlignedForEverything) {
    const std::vector<void*> blocks = TakeMany();
    for (void* block : blocks) EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    GiveAll(blocks);
}

TEST(SmallBlocks, OfZerosAreWhateverWasThereBefore) {
    GiveAll(TakeMany());
    for (std::size_t size = 0; size <= kLargest; ++size) {
        void* block = TakeZeroBlock(size);
        EXPECT_TRUE(IsAll(block, size, 0)) << size;
        GiveBlock(block, size);
    }
}

}  // namespace
}  // namespace host
