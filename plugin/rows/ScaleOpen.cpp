// Bits listed almost without branches: how many there are in a word can't be foreseen, and a wrong guess costs as much
// as ten places.
#include "plugin/rows/ScaleOpen.h"

#include <bit>

#include "plugin/rows/LoopForms.h"
#include "plugin/rows/Taps.h"

namespace rows {

namespace {

// The place of the lowest bit, and any place where there is none: asking would be a branch.
ROWS_INLINE std::int32_t LowestOf(std::uint64_t word) { return std::countr_zero(word | std::uint64_t{1} << 63); }

struct ListOpen {
    ROWS_INLINE static void Run(const std::uint64_t* undecided, std::int64_t count, int few, OpenSamples* open) {
        for (std::int64_t piece = 0; piece < count; ++piece) {
            std::uint64_t word = undecided[piece];
            const int bits = std::popcount(word);
            if (bits > few) {
                open->pieces[open->pieceCount++] = static_cast<std::int32_t>(piece);
                continue;
            }
            const auto first = static_cast<std::int32_t>(piece * kPiece);
            std::int32_t* const samples = open->samples + open->sampleCount;
            for (int i = 0; i < kOpenAtOnce; ++i, word &= word - 1) samples[i] = first + LowestOf(word);
            for (int i = kOpenAtOnce; i < bits; ++i, word &= word - 1) samples[i] = first + LowestOf(word);
            open->sampleCount += bits;
        }
    }
};

}  // namespace

const Forms<ListOpenFunction> kListOpen = LoopForms<ListOpen>::kTable;

}  // namespace rows
