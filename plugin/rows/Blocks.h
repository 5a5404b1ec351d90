// Walking a run of neighbours some at a time.
//
// A picture may be almost 2^31 pixels wide, and then the place after its last block is no 32-bit
// number any more. Loops by blocks go through here, where it is counted in 64 bits.
#pragma once

#include <algorithm>
#include <cstdint>

namespace rows {

// Neighbouring pixels, rows or columns: first .. End() - 1.
struct Block {
    std::int32_t first;
    std::int32_t count;

    constexpr std::int32_t End() const { return first + count; }
    constexpr bool operator==(const Block&) const = default;
};

// The block of `step` neighbours (1 or more) from `first` on, or of the fewer that are left before
// `end`, which is not below `first`.
constexpr Block BlockAt(std::int64_t first, std::int32_t end, std::int32_t step) {
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(std::min<std::int64_t>(step, end - first))};
}

// All blocks from `first` to `end` in turn, for a loop over a range; none where end is not above
// first.
class Blocks {
  public:
    constexpr Blocks(std::int32_t first, std::int32_t end, std::int32_t step) : first_(first), end_(end), step_(step) {}
    constexpr Blocks(std::int32_t end, std::int32_t step) : Blocks(0, end, step) {}

    struct End {};

    class Iterator {
      public:
        constexpr explicit Iterator(const Blocks& blocks)
            : at_(blocks.first_), end_(blocks.end_), step_(blocks.step_) {}
        constexpr Block operator*() const { return BlockAt(at_, end_, step_); }
        constexpr Iterator& operator++() {
            at_ += step_;
            return *this;
        }
        constexpr bool operator!=(End) const { return at_ < end_; }

      private:
        std::int64_t at_;
        std::int32_t end_;
        std::int32_t step_;
    };

    constexpr Iterator begin() const { return Iterator(*this); }
    constexpr End end() const { return {}; }

  private:
    std::int32_t first_;
    std::int32_t end_;
    std::int32_t step_;
};

}  // namespace rows
