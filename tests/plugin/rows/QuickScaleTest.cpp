// The quick sums of scaling at every level against the plain ones, bit for bit.
#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "plugin/rows/QuickScale.h"
#include "plugin/rows/ScaleOpen.h"
#include "plugin/rows/ScaleScattered.h"
#include "plugin/rows/Taps.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using rows::kPiece;
using rows::kQuickLanes;
using rows::QuickRow;
using rows::QuickTaps;

float Between(Random& random, float low, float high) {
    return low + (high - low) * static_cast<float>(random.Next() & 0xFFFF) / 65536;
}

std::vector<float> Numbers(Random& random, std::size_t count, float low, float high) {
    std::vector<float> numbers(count);
    for (float& number : numbers) number = Between(random, low, high);
    return numbers;
}

std::vector<std::uint32_t> BitsOf(const std::vector<float>& numbers, std::size_t count) {
    std::vector<std::uint32_t> bits;
    for (std::size_t i = 0; i < count; ++i) bits.push_back(std::bit_cast<std::uint32_t>(numbers[i]));
    return bits;
}

AT_EACH_LEVEL(QuickScale);

TEST_P(QuickScale, PutsBytesIntoLanesFromEveryLength) {
    Random random(1);
    constexpr std::int64_t kStride = 128;
    const Bytes band = random.NextBytes(kStride * kQuickLanes);
    for (std::int64_t count = 0; count <= 70; ++count) {
        const std::size_t values = static_cast<std::size_t>(count) * kQuickLanes;
        std::vector<float> plain(values + 16 * kQuickLanes), wide = plain;
        rows::kQuickBytesToLanes.plain(band.data(), kStride, count, plain.data());
        rows::kQuickBytesToLanes.At(GetParam())(band.data(), kStride, count, wide.data());
        ASSERT_EQ(BitsOf(wide, values), BitsOf(plain, values)) << count;
    }
}

void ExpectSumsAcross(rows::CpuLevel level, int values, const std::vector<QuickTaps>& columns,
                      const std::vector<float>& lanes) {
    std::vector<float> plain(columns.size() * static_cast<std::size_t>(values) * kQuickLanes), wide = plain;
    const auto count = static_cast<std::int64_t>(columns.size());
    rows::kQuickSumAcross.plain(values, columns.data(), count, lanes.data(), 3, plain.data());
    rows::kQuickSumAcross.At(level)(values, columns.data(), count, lanes.data(), 3, wide.data());
    ASSERT_EQ(BitsOf(wide, wide.size()), BitsOf(plain, plain.size())) << values << ", " << columns[0].count;
}

// Columns with the same weights, with weights of their own, and with other numbers of them in between.
TEST_P(QuickScale, SumsColumnsOfEveryNumberOfValuesAndTaps) {
    Random random(2);
    for (int values = 1; values <= 4; ++values)
        for (int taps = 0; taps <= 26; ++taps) {
            const std::vector<float> lanes =
                Numbers(random, static_cast<std::size_t>(50 * values) * kQuickLanes, -128, 127);
            const std::vector<float> weights = Numbers(random, 46, -0.4F, 0.7F);
            std::vector<QuickTaps> shared, own, mixed;
            for (int i = 0; i < 14; ++i) {
                shared.push_back({weights.data(), 3 + i, taps});
                own.push_back({weights.data() + i, 3 + i * 3 / 2, taps});
                mixed.push_back({weights.data() + i / 5, 3 + i, taps + (i % 6 == 5)});
            }
            for (const auto& columns : {shared, own, mixed}) ExpectSumsAcross(GetParam(), values, columns, lanes);
        }
}

TEST_P(QuickScale, TurnsLanesIntoRows) {
    Random random(3);
    constexpr std::int64_t kStride = 48;
    for (std::int64_t count = 0; count <= 33; ++count) {
        const std::vector<float> sums = Numbers(random, 40 * kQuickLanes, -128, 127);
        std::vector<float> plain(kStride * kQuickLanes), wide = plain;
        rows::kQuickLanesToRows.plain(sums.data(), count, plain.data(), kStride);
        rows::kQuickLanesToRows.At(GetParam())(sums.data(), count, wide.data(), kStride);
        ASSERT_EQ(BitsOf(wide, wide.size()), BitsOf(plain, plain.size())) << count;
    }
}

TEST_P(QuickScale, TellsDecidedBytesFromUndecidedOnes) {
    Random random(4), places(5);
    constexpr std::int64_t kValues = 3 * kPiece;
    for (int taps = 0; taps <= 9; ++taps)
        for (const float doubt : {0.0F, 0.001F, 0.3F, 600.0F}) {
            std::vector<std::vector<float>> rows;
            std::vector<const float*> row;
            for (int k = 0; k < taps; ++k) row.push_back(rows.emplace_back(Numbers(random, kValues, -128, 127)).data());
            const std::vector<float> weights = Numbers(random, 9, -1, 2);
            Bytes plainBytes(kValues), wideBytes(kValues);
            std::vector<std::uint64_t> plainBits(3), wideBits(3);
            std::uint64_t whole[3];
            for (std::uint64_t& bits : whole) bits = places.Next() ^ places.Next() << 32;
            QuickRow output{row.data(),        weights.data(),  taps,
                            128 - doubt,       128 + doubt,     taps % 2 == 0 ? nullptr : whole,
                            plainBytes.data(), plainBits.data()};
            rows::kQuickSumDown.plain(&output, 1, 0, kValues);
            output.bytes = wideBytes.data();
            output.undecided = wideBits.data();
            rows::kQuickSumDown.At(GetParam())(&output, 1, kPiece, kValues);
            rows::kQuickSumDown.At(GetParam())(&output, 1, 0, kPiece);
            ASSERT_EQ(wideBytes, plainBytes) << taps;
            ASSERT_EQ(wideBits, plainBits) << taps;
            if (doubt == 600) {
                ASSERT_EQ(plainBits[0], output.whole ? ~whole[0] : ~std::uint64_t{0});
            }
        }
}

// Words with every number of bits.
TEST_P(QuickScale, ListsOpenSamplesAndPiecesOfMany) {
    Random random(6);
    constexpr int kWords = 200;
    std::vector<std::uint64_t> undecided(kWords);
    for (int i = 0; i < kWords; ++i)
        for (int bits = i % 65; std::popcount(undecided[i]) < bits;)
            undecided[i] |= std::uint64_t{1} << random.Next() % 64;
    for (const int few : {0, 1, 3, 4, 5, 6, 17, 56, 64}) {
        std::vector<std::int32_t> samples, pieces, madeSamples(kWords * kPiece + rows::kOpenAtOnce), madePieces(kWords);
        for (int i = 0; i < kWords; ++i) {
            if (std::popcount(undecided[i]) > few) pieces.push_back(i);
            for (int bit = 0; bit < kPiece && std::popcount(undecided[i]) <= few; ++bit)
                if ((undecided[i] >> bit & 1) != 0) samples.push_back(i * kPiece + bit);
        }
        rows::OpenSamples open{madeSamples.data(), 0, madePieces.data(), 0};
        rows::kListOpen.At(GetParam())(undecided.data(), kWords, few, &open);
        madeSamples.resize(static_cast<std::size_t>(open.sampleCount));
        madePieces.resize(static_cast<std::size_t>(open.pieceCount));
        ASSERT_EQ(madeSamples, samples) << few;
        ASSERT_EQ(madePieces, pieces) << few;
    }
}

// Lists with different numbers of weights, some of which add up to very little.
struct ScatteredLists {
    std::vector<std::vector<double>> weights;
    std::vector<rows::Taps> lists;

    ScatteredLists(Random& random, int count, int most) {
        for (int i = 0; i < count; ++i) {
            std::vector<double>& list = weights.emplace_back(1 + random.Next() % static_cast<std::uint64_t>(most));
            double total = 0;
            for (double& weight : list) total += weight = (static_cast<double>(random.Next() & 0xFFFF) - 9000) / 48000;
            lists.push_back({list.data(), i, static_cast<std::int32_t>(list.size()), total, 0});
        }
    }
};

// In noise and, where the byte hangs on the last bits of every step, in one colour.
void ExpectScatteredSums(const rows::Forms<rows::SumScatteredFunction>& forms, rows::CpuLevel level) {
    Random random(5);
    for (int values = 1; values <= 4; ++values)
        for (int most = 1; most <= 34; most += 3) {
            const ScatteredLists columns(random, 50, most), down(random, 40, most);
            const std::size_t width = static_cast<std::size_t>((50 + most) * values) + 15;
            for (std::size_t count = 0; count < 140; count += 1 + count / 20) {
                std::vector<Bytes> rows;
                std::vector<const std::uint8_t*> row;
                for (int i = 0; i < most; ++i) {
                    rows.push_back(count % 2 == 0 ? random.NextBytes(width) : Bytes(width, 201));
                    row.push_back(rows.back().data());
                }
                const rows::ScatteredRow scattered{columns.lists.data(), down.lists[count % 40], row.data(), values};
                std::vector<std::int32_t> places(count);
                for (std::int32_t& place : places)
                    place = static_cast<std::int32_t>(random.Next() % static_cast<std::uint64_t>(50 * values));
                Bytes plain(static_cast<std::size_t>(50 * values), 77), wide = plain;
                const auto samples = static_cast<std::int64_t>(count);
                forms.plain(scattered, places.data(), samples, plain.data());
                forms.At(level)(scattered, places.data(), samples, wide.data());
                ASSERT_EQ(wide, plain) << values << ", " << most << ", " << count;
            }
        }
}

TEST_P(QuickScale, SumsScatteredSamplesInTheOrderOfTheDefinition) {
    ExpectScatteredSums(rows::kSumScattered, GetParam());
    ExpectScatteredSums(rows::kSumScatteredLong, GetParam());
}

}  // namespace
