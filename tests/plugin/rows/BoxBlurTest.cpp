// Box sums at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/rows/BoxBlur.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

AT_EACH_LEVEL(BoxBlur);

// Sums around every multiple of the size, where rounding would show first.
TEST_P(BoxBlur, MeansAreThoseOfIntegerDivision) {
    for (const int size : {1, 3, 5, 7, 41, 201, 257, 2001, 8189, 8191, 8193, 8195, 16385, 131071, 1000001, 8421503}) {
        std::vector<std::int32_t> sums;
        for (std::int64_t quotient = 0; quotient <= 255; ++quotient)
            for (const std::int64_t rest : {0, 1, size / 2, size - 1})
                if (rest < size && quotient * size + rest <= std::int64_t{255} * size)
                    sums.push_back(static_cast<std::int32_t>(quotient * size + rest));
        const auto count = static_cast<std::int32_t>(sums.size());
        const Bytes none(sums.size());
        auto left = sums;
        Bytes result(sums.size());
        rows::SlideRow(rows::PlanColumnBlur<std::int32_t>(size), left.data(), none.data(), none.data(), count,
                       result.data());
        for (std::size_t i = 0; i < sums.size(); ++i) ASSERT_EQ(result[i], sums[i] / size) << sums[i] << " / " << size;
        ASSERT_EQ(left, sums);
    }
}

// All sums of all sizes whose sums have 16 bits.
TEST_P(BoxBlur, MeansOfWordsAreThoseOfIntegerDivision) {
    EXPECT_FALSE(rows::FitsWords(1));
    EXPECT_FALSE(rows::FitsWords(203));
    for (int size = 3; size <= 201; size += 2) {
        ASSERT_TRUE(rows::FitsWords(size));
        std::vector<std::uint16_t> sums(static_cast<std::size_t>(255 * size + 1));
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<std::uint16_t>(i);
        const auto before = sums;
        const Bytes none(sums.size());
        Bytes result(sums.size());
        rows::SlideRow(rows::PlanColumnBlur<std::uint16_t>(size), sums.data(), none.data(), none.data(),
                       static_cast<std::int32_t>(sums.size()), result.data());
        for (std::size_t i = 0; i < sums.size(); ++i)
            ASSERT_EQ(result[i], i / static_cast<std::size_t>(size)) << i << " / " << size;
        ASSERT_EQ(sums, before);
    }
}

// Sums of `Sum`s go on from row to row.
template <class Sum>
void ExpectSlidingSums(int size) {
    Random random(1);
    const rows::ColumnBlur<Sum> blur = rows::PlanColumnBlur<Sum>(size);
    const Bytes leaving = random.NextBytes(200), entering = random.NextBytes(200);
    for (int count = 0; count <= 150; ++count) {
        std::vector<Sum> sums(200), expected(200);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] = expected[i] = static_cast<Sum>((3 + static_cast<int>(i) % 9) * size);
        rows::AddRow(blur, leaving.data(), 3, count, sums.data());
        Bytes result(200, 1), mean(200, 1);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            expected[i] = static_cast<Sum>(expected[i] + 3 * leaving[i]);
            mean[i] = static_cast<std::uint8_t>(expected[i] / size);
            expected[i] = static_cast<Sum>(expected[i] + entering[i] - leaving[i]);
        }
        rows::SlideRow(blur, sums.data(), leaving.data(), entering.data(), count, result.data());
        ASSERT_EQ(sums, expected);
        ASSERT_TRUE(SameBytes(result, mean));
    }
}

TEST_P(BoxBlur, SumsSlideTheSameAtEveryLevelAndWidth) {
    ExpectSlidingSums<std::int32_t>(9);
    ExpectSlidingSums<std::int32_t>(9001);
    ExpectSlidingSums<std::uint16_t>(9);
    ExpectSlidingSums<std::uint16_t>(201);
}

TEST_P(BoxBlur, WindowsSlideTheSameAtEveryLevelAndWidth) {
    Random random(2);
    const Bytes row = random.NextBytes(4000);
    for (int channels = 1; channels <= 4; ++channels)
        for (const int width : {1, 2, 3, 4, 5, 6, 7, 15, 16, 17, 31, 33, 64, 100, 150, 700})
            for (const int radius : {0, 1, 2, 5, 16, 40, 99, 100, 101, 130, 300, 699, 5000, 4210751}) {
                Bytes expected(4000, 7);
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < channels; ++c) {
                        const auto at = [&](std::int64_t i) { return row[static_cast<std::size_t>(i * channels + c)]; };
                        std::int64_t sum = 0;
                        const std::int64_t from = std::max(x - radius, 0), to = std::min(x + radius, width - 1);
                        for (std::int64_t i = from; i <= to; ++i) sum += at(i);
                        sum += (from - (x - radius)) * at(0) + (x + radius - to) * at(width - 1);
                        expected[static_cast<std::size_t>(x * channels + c)] =
                            static_cast<std::uint8_t>(sum / (2 * radius + 1));
                    }
                Bytes result(4000, 7);
                rows::BlurRow(rows::PlanRowBlur(radius), row.data(), channels, width, result.data());
                ASSERT_TRUE(SameBytes(result, expected)) << channels << ", " << width << ", " << radius;
            }
}

}  // namespace
