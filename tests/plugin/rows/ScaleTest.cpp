// The wide forms of scaling against the plain ones, bit for bit, with data that a wide form could
// get wrong: quotients that are whole numbers, a unit beside them, or half-way between singles.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "plugin/rows/ScaleAcross.h"
#include "plugin/rows/ScaleDown.h"
#include "plugin/rows/ScaleSlots.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using rows::DownRow;
using rows::kLanes;
using rows::kPiece;
using rows::Taps;

double UnitOf(Random& random) { return static_cast<double>(random.Next() >> 11) * 0x1p-53; }

// Weights of one list with their sum.
struct Weights {
    std::vector<double> weights;
    double total = 0;

    void Add(double weight) {
        weights.push_back(weight);
        total += weight;
    }
};

// Kinds of lists: ordinary ones, with lobes below 0, alike, and with a power of two for a total.
Weights WeightsOf(Random& random, int count, int kind) {
    Weights list;
    for (int k = 0; k < count; ++k) {
        if (kind == 0) list.Add(UnitOf(random));
        if (kind == 1) list.Add(k % 3 == 1 ? -0.2 * UnitOf(random) : UnitOf(random));
        if (kind == 2) list.Add(1.0 / 3);
        if (kind == 3) list.Add(k == 0 ? 1.0 - 0.125 * (count - 1) : 0.125);
    }
    return list;
}

Taps TapsOf(const Weights& list, int first, bool mayMultiply) {
    const bool serves = mayMultiply && list.total > 0.25;
    return {list.weights.data(), first, static_cast<std::int32_t>(list.weights.size()), list.total,
            serves ? 1 / list.total : 0};
}

template <class T>
::testing::AssertionResult SameBits(const std::vector<T>& a, const std::vector<T>& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0)
            return ::testing::AssertionFailure() << "at " << i << ": " << +a[i] << " and " << +b[i];
    return ::testing::AssertionSuccess();
}

AT_EACH_LEVEL(ScaleRows);

TEST_P(ScaleRows, BytesToLanesIsTheSameAtEveryLevel) {
    Random random(1);
    for (int count = 0; count <= 70; ++count) {
        const int stride = count + 15 + random.Below(5);
        const Bytes band = random.NextBytes(static_cast<std::size_t>(stride) * kLanes);
        std::vector<double> plain;
        for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
            std::vector<double> lanes(static_cast<std::size_t>(count + 15) * kLanes, -1);
            rows::kBytesToLanes.At(level)(band.data(), stride, count, lanes.data());
            lanes.resize(static_cast<std::size_t>(count) * kLanes);
            if (level == rows::CpuLevel::Plain)
                plain = lanes;
            else
                ASSERT_TRUE(SameBits(lanes, plain)) << count;
        }
        for (int v = 0; v < count; ++v)
            for (int r = 0; r < kLanes; ++r) ASSERT_EQ(plain[v * kLanes + r], band[r * stride + v]);
    }
}

TEST_P(ScaleRows, SumAcrossIsTheSameAtEveryLevel) {
    Random random(2);
    for (int round = 0; round < 300; ++round) {
        const int values = random.Between(1, 4), columns = random.Between(1, 12), kind = random.Below(4);
        const int sourceColumns = 40, firstColumn = 5;
        std::vector<double> lanes(static_cast<std::size_t>(sourceColumns * values * kLanes));
        const bool flat = random.Below(4) == 0;
        const int level0 = random.Below(256);
        for (double& value : lanes) value = flat ? level0 : random.Below(256);
        std::vector<Weights> lists;
        std::vector<Taps> taps;
        for (int x = 0; x < columns; ++x) lists.push_back(WeightsOf(random, random.Below(20), kind));
        for (int x = 0; x < columns; ++x)
            taps.push_back(TapsOf(lists[x], firstColumn + random.Below(20), random.Below(4) != 0));
        std::vector<float> plain;
        for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
            std::vector<float> sums(static_cast<std::size_t>(columns * values * kLanes));
            rows::kSumAcross.At(level)(values, taps.data(), columns, lanes.data(), firstColumn, sums.data());
            if (level == rows::CpuLevel::Plain)
                plain = sums;
            else
                ASSERT_TRUE(SameBits(sums, plain)) << "kind " << kind << " values " << values;
        }
    }
}

// One weight, and values that make quotients half-way between singles or a few units beside: values
// of a band are bytes, but nothing in the sums depends on it.
TEST_P(ScaleRows, SumAcrossRoundsTiesTheSameAtEveryLevel) {
    Random random(3);
    for (int round = 0; round < 400; ++round) {
        Weights list;
        list.Add(round % 2 == 0 ? 1.0 : 0.3 + UnitOf(random));
        const Taps taps = TapsOf(list, 0, true);
        std::vector<double> lanes(kLanes);
        for (double& value : lanes) {
            const float single = static_cast<float>(UnitOf(random) * 250);
            double tie = (static_cast<double>(single) + std::nextafterf(single, 300)) / 2;
            for (int step = random.Between(-6, 6); step != 0; step += step < 0 ? 1 : -1)
                tie = std::nextafter(tie, step < 0 ? 0 : 300);
            value = tie;
        }
        std::vector<float> plain;
        for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
            std::vector<float> sums(kLanes);
            rows::kSumAcross.At(level)(1, &taps, 1, lanes.data(), 0, sums.data());
            if (level == rows::CpuLevel::Plain)
                plain = sums;
            else
                ASSERT_TRUE(SameBits(sums, plain)) << round;
        }
    }
}

TEST_P(ScaleRows, LanesToRowsIsTheSameAtEveryLevel) {
    Random random(4);
    for (int count = 0; count <= 40; ++count) {
        const int whole = (count + 7) / 8 * 8, stride = whole + random.Below(9);
        std::vector<float> sums(static_cast<std::size_t>(whole * kLanes));
        for (float& value : sums) value = static_cast<float>(UnitOf(random) * 255);
        std::vector<double> plain;
        for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
            std::vector<double> rows(static_cast<std::size_t>(stride * kLanes), -1);
            rows::kLanesToRows.At(level)(sums.data(), count, rows.data(), stride);
            if (level == rows::CpuLevel::Plain)
                plain = rows;
            else
                ASSERT_TRUE(SameBits(rows, plain)) << count;
        }
        for (int v = 0; v < count; ++v)
            for (int r = 0; r < kLanes; ++r) ASSERT_EQ(plain[r * stride + v], sums[v * kLanes + r]);
    }
}

// Rows of values of which some make whole numbers, some lie a unit or so beside one.
std::vector<double> ValuesOf(Random& random, int count) {
    std::vector<double> values;
    const int kind = random.Below(4), flat = random.Below(256);
    for (int i = 0; i < count; ++i) {
        double value = UnitOf(random) * 255;
        if (kind == 1) value = flat;
        if (kind == 2) value = random.Below(256);
        if (kind == 3) value = random.Below(2) == 0 ? flat : std::nextafterf(static_cast<float>(flat), 0.0F);
        values.push_back(value);
    }
    return values;
}

TEST_P(ScaleRows, SumDownIsTheSameAtEveryLevel) {
    Random random(5);
    for (int round = 0; round < 400; ++round) {
        const int count = random.Below(12), values = kPiece * random.Between(1, 3), outputs = random.Between(1, 4);
        std::vector<std::vector<double>> rows;
        std::vector<const double*> addresses;
        // Equal rows make quotients that differ from a whole number by rounding alone.
        const std::vector<double> one = ValuesOf(random, values);
        const bool equal = random.Below(2) == 0;
        for (int k = 0; k < 12; ++k) rows.push_back(equal ? one : ValuesOf(random, values));
        for (const auto& row : rows) addresses.push_back(row.data());
        std::vector<Weights> lists;
        for (int i = 0; i < outputs; ++i) lists.push_back(WeightsOf(random, count, random.Below(4)));
        const bool mayMultiply = random.Below(4) != 0;
        Bytes plain;
        for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
            Bytes bytes(static_cast<std::size_t>(values * outputs));
            std::vector<double> carried(static_cast<std::size_t>(values));
            for (int i = 0; i < outputs; ++i) {
                const Taps taps = TapsOf(lists[i], 0, mayMultiply);
                const int part = count / 2;
                DownRow row{addresses.data(),
                            taps.weights,
                            part,
                            true,
                            false,
                            taps.total,
                            taps.reciprocal,
                            carried.data(),
                            bytes.data() + i * values};
                if (i % 2 == 0) {
                    row.count = count;
                    row.ends = true;
                    rows::kSumDown.At(level)(&row, 1, values);
                    continue;
                }
                rows::kSumDown.At(level)(&row, 1, values);
                row = {addresses.data() + part,
                       taps.weights + part,
                       count - part,
                       false,
                       true,
                       taps.total,
                       taps.reciprocal,
                       carried.data(),
                       bytes.data() + i * values};
                rows::kSumDown.At(level)(&row, 1, values);
            }
            if (level == rows::CpuLevel::Plain)
                plain = bytes;
            else
                ASSERT_EQ(bytes, plain) << "round " << round;
        }
    }
}

// A sum of one row is weight × value, so that any quotient near a whole number can be made.
TEST_P(ScaleRows, SumDownTruncatesTheSameAtEveryLevelBesideEveryWholeNumber) {
    Random random(6);
    for (int round = 0; round < 200; ++round) {
        Weights list;
        list.Add(round % 4 == 0 ? 1.0 : 0.3 + UnitOf(random));
        const Taps taps = TapsOf(list, 0, true);
        for (int base = 0; base < 256; base += kPiece) {
            std::vector<double> values;
            for (int i = 0; i < kPiece; ++i) {
                double value = base + i;
                for (int step = random.Between(-3, 3); step != 0; step += step < 0 ? 1 : -1)
                    value = std::nextafter(value, step < 0 ? 0 : 300);
                values.push_back(value);
            }
            const double* const address = values.data();
            Bytes plain;
            for (const rows::CpuLevel level : {rows::CpuLevel::Plain, GetParam()}) {
                Bytes bytes(kPiece);
                const DownRow row{&address,   taps.weights,    1,       true,        true,
                                  taps.total, taps.reciprocal, nullptr, bytes.data()};
                rows::kSumDown.At(level)(&row, 1, kPiece);
                if (level == rows::CpuLevel::Plain)
                    plain = bytes;
                else
                    ASSERT_EQ(bytes, plain) << "round " << round << " base " << base;
            }
        }
    }
}

TEST_P(ScaleRows, BytesOfSumsClampAndTruncate) {
    const double sums[] = {-1, 0, 0.999, 1, 254.9999, 255, 256, 1e300, -1e300, std::nan("")};
    std::uint8_t bytes[10];
    rows::BytesOfSums(sums, 1, 10, bytes);
    EXPECT_EQ(Bytes(bytes, bytes + 10), (Bytes{0, 0, 0, 1, 254, 255, 255, 255, 0, 0}));
    rows::BytesOfSums(sums, 0, 10, bytes);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[1], 0);  // 0 / 0
    EXPECT_EQ(bytes[3], 255);
}

TEST_P(ScaleRows, SlotsHoldTheValuesAndTheRestStaysOrIsCleared) {
    for (const bool clears : {false, true}) {
        const rows::SlotLayout layout{2, {1, 3}, clears};
        const double values[] = {10, 20, 30, 40};
        float slots[9] = {1, 1, 1, 1, 1, 1, 1, 1, 7};
        rows::ValuesToSlots(layout, values, 2, reinterpret_cast<std::uint8_t*>(slots));
        const float rest = clears ? 0 : 1;
        EXPECT_EQ(std::vector<float>(slots, slots + 9),
                  (std::vector<float>{rest, 10, rest, 20, rest, 30, rest, 40, 7}));
        double back[4];
        rows::SlotsToValues(layout, reinterpret_cast<const std::uint8_t*>(slots), 2, back);
        EXPECT_EQ(std::vector<double>(back, back + 4), std::vector<double>(values, values + 4));
    }
}

// The plain sum over a band against the sum of one pixel.
TEST_P(ScaleRows, BandsGiveWhatSinglePixelsGive) {
    Random random(7);
    for (const auto& [bytes, luma] : {std::pair{1, false}, {2, false}, {3, false}, {4, false}, {3, true}, {4, true}}) {
        const rows::Samples samples{{bytes, {0, 1, 2, 3}}, bytes, luma};
        const int width = 30, stride = width * bytes + 15, values = samples.Values();
        const Bytes band = random.NextBytes(static_cast<std::size_t>(stride) * kLanes);
        const Weights list = WeightsOf(random, 11, 1);
        const Taps taps = TapsOf(list, 6, true);
        std::vector<double> lanes(static_cast<std::size_t>(stride * kLanes));
        rows::kBytesToLanes.Chosen()(band.data(), stride, width * bytes, lanes.data());
        if (luma) rows::LumaOfLanes(bytes, width, lanes.data());
        std::vector<float> sums(static_cast<std::size_t>(values * kLanes));
        rows::kSumAcross.Chosen()(values, &taps, 1, lanes.data(), 0, sums.data());
        for (int r = 0; r < kLanes; ++r) {
            double pixel[4];
            rows::SumAcrossPixel(samples, taps, band.data() + r * stride, pixel);
            for (int c = 0; c < values; ++c) ASSERT_EQ(sums[c * kLanes + r], pixel[c]);
        }
    }
}

}  // namespace
