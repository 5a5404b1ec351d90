// A row of values against a plain vector.
#include <gtest/gtest.h>

#include <random>

#include "host/objects/Values.h"

namespace {

using host::Value;
using host::Values;

std::vector<std::int64_t> NumbersIn(const Values& values) {
    std::vector<std::int64_t> numbers;
    for (const Value& value : values) numbers.push_back(value.ToInt64());
    return numbers;
}

// Beside a vector, which moves everything.
TEST(Values, InsertAndEraseAnywhere) {
    std::mt19937 random(1);
    Values values;
    std::vector<std::int64_t> expected;
    for (std::int32_t i = 0; i < 20'000; ++i) {
        const bool grows = random() % 5 < (i % 4000 < 2000 ? 3u : 2u);
        const std::size_t places = expected.size() + (grows ? 1 : 0);
        if (places == 0) continue;
        const std::size_t at = random() % 3 == 0 ? 0 : random() % places;
        const auto place = expected.begin() + static_cast<std::ptrdiff_t>(at);
        if (grows) {
            values.Insert(at, Value(i));
            expected.insert(place, i);
        } else {
            values.Erase(at);
            expected.erase(place);
        }
        ASSERT_EQ(values.size(), expected.size());
        if (i % 500 == 0) {
            ASSERT_EQ(NumbersIn(values), expected);
        }
    }
    EXPECT_EQ(NumbersIn(values), expected);
}

TEST(Values, GiveUpWhatIsErased) {
    const std::int64_t before = host::LiveStringCount();
    Values values;
    for (int i = 0; i < 100; ++i) values.push_back(Value("text"));
    for (int i = 0; i < 60; ++i) values.Erase(0);
    for (int i = 0; i < 20; ++i) values.Erase(values.size() - 1);
    EXPECT_EQ(host::LiveStringCount(), before + 20);
    for (int i = 0; i < 10; ++i) values.Insert(0, Value("more"));
    values.resize(5, Value());
    EXPECT_EQ(host::LiveStringCount(), before + 5);
    values.assign(3, Value(7));
    EXPECT_EQ(NumbersIn(values), (std::vector<std::int64_t>{7, 7, 7}));
    EXPECT_EQ(host::LiveStringCount(), before);
}

}  // namespace
