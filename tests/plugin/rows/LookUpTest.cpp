// Looked-up rows at every level against the plain ones.
#include <gtest/gtest.h>

#include "plugin/rows/LookUp.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using rows::ChannelSet;
using rows::PixelLayout;
using support::SameBytes;

struct Case {
    ChannelSet set;
    PixelLayout from, to;
};

const Case kCases[] = {
    {ChannelSet::Gray, {1, {0}}, {1, {0}}},
    {ChannelSet::Gray, {3, {1}}, {3, {1}}},
    {ChannelSet::Gray, {4, {3}}, {4, {3}}},
    {ChannelSet::Gray, {2, {7}}, {2, {7}}},
    {ChannelSet::GrayAlpha, {2, {1, 0}}, {2, {1, 0}}},
    {ChannelSet::Rgb, {3, {0, 1, 2}}, {3, {0, 1, 2}}},
    {ChannelSet::Rgb, {3, {5, 4, 3}}, {3, {5, 4, 3}}},
    {ChannelSet::Rgb, {4, {1, 2, 3}}, {4, {1, 2, 3}}},
    {ChannelSet::RgbAlpha, {4, {0, 1, 2, 3}}, {4, {0, 1, 2, 3}}},
    {ChannelSet::RgbAlpha, {4, {9, 10, 11, 8}}, {4, {9, 10, 11, 8}}},
    {ChannelSet::Rgb, {3, {0, 0, 0}}, {3, {0, 0, 0}}},
    {ChannelSet::Rgb, {3, {0, 1, 2}}, {4, {2, 1, 0}}},
    {ChannelSet::RgbAlpha, {4, {0, 1, 2, 3}}, {2, {0, 0, 0, 1}}},
    {ChannelSet::RgbAlpha, {4, {0, 1, 2, 3}}, {3, {6, 7, 8, 0}}},
};

rows::Table RandomTable(Random& random) {
    rows::Table table;
    for (auto& entry : table.entry) entry = static_cast<std::uint8_t>(random.Next());
    return table;
}

void MapPlainly(const Case& one, const rows::Tables& tables, const std::uint8_t* source, std::uint8_t* destination,
                int width) {
    for (int x = 0; x < width; ++x) {
        std::uint8_t value[4];
        for (int c = 0; c < ChannelCount(one.set); ++c) value[c] = source[x * one.from.pixelSize + one.from.offset[c]];
        for (int c = 0; c < ChannelCount(one.set); ++c)
            if (tables.channel[c])
                destination[x * one.to.pixelSize + one.to.offset[c]] = tables.channel[c]->entry[value[c]];
    }
}

// Tables for each channel: all different, all the same, or some missing.
std::vector<rows::Tables> Choices(const rows::Table* table) {
    return {{{table, table + 1, table + 2, table + 3}},
            {{table, table, table, table}},
            {{table, table, table, nullptr}},
            {{table, nullptr, table, table + 1}},
            {{nullptr, nullptr, nullptr, nullptr}}};
}

AT_EACH_LEVEL(LookUp);

TEST_P(LookUp, MapsTheSameAtEveryLevelAndWidth) {
    Random random(1);
    rows::Table tables[4];
    for (auto& table : tables) table = RandomTable(random);
    const Bytes source = random.NextBytes(1000), before = random.NextBytes(1000);
    for (const Case& one : kCases)
        for (const rows::Tables& chosen : Choices(tables)) {
            const rows::LookUpPlan plan = rows::PlanLookUp(one.set, chosen, one.from, one.to);
            for (int width = -1; width <= 200; ++width) {
                Bytes expected = before;
                MapPlainly(one, chosen, source.data(), expected.data(), width);
                Bytes actual = before;
                rows::LookUpRow(plan, source.data(), actual.data(), width);
                ASSERT_TRUE(SameBytes(actual, expected)) << width;
            }
        }
}

TEST_P(LookUp, MapsOverlappingRowsInOrder) {
    Random random(2);
    rows::Table tables[4];
    for (auto& table : tables) table = RandomTable(random);
    const Bytes before = random.NextBytes(1200);
    for (const Case& one : kCases)
        for (const int shift : {-70, -5, -1, 0, 1, 3, 4, 64})
            for (const int width : {1, 20, 150}) {
                const rows::Tables chosen = Choices(tables)[0];
                const rows::LookUpPlan plan = rows::PlanLookUp(one.set, chosen, one.from, one.to);
                Bytes expected = before;
                MapPlainly(one, chosen, expected.data() + 100, expected.data() + 100 + shift, width);
                Bytes actual = before;
                rows::LookUpRow(plan, actual.data() + 100, actual.data() + 100 + shift, width);
                ASSERT_TRUE(SameBytes(actual, expected)) << shift << ", " << width;
            }
}

}  // namespace
