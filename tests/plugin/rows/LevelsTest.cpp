// Whether levels are what they say: named, forced, and different code.
#include <gtest/gtest.h>

#include <set>

#include "plugin/rows/BoxBlur.h"
#include "plugin/rows/Convolve.h"
#include "plugin/rows/Dither.h"
#include "plugin/rows/Engrave.h"
#include "plugin/rows/Fill.h"
#include "plugin/rows/FractionalBlur.h"
#include "plugin/rows/Gray.h"
#include "plugin/rows/HostPixels.h"
#include "plugin/rows/LookUp.h"
#include "plugin/rows/Luminance.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/Nearest.h"
#include "plugin/rows/Neon.h"
#include "plugin/rows/OilHistogram.h"
#include "plugin/rows/PickSteps.h"
#include "plugin/rows/ScaleAcross.h"
#include "plugin/rows/ScaleDown.h"
#include "plugin/rows/ScaleScattered.h"
#include "plugin/rows/Skew.h"
#include "plugin/rows/Streaming.h"
#include "plugin/rows/Transpose.h"
#include "plugin/rows/Unsharp.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using rows::CpuLevel;

TEST(CpuLevels, HaveNamesThatLeadBackToThem) {
    for (const CpuLevel level : rows::kCpuLevels) EXPECT_EQ(rows::CpuLevelNamed(rows::NameOf(level)), level);
    EXPECT_EQ(rows::CpuLevelNamed("avx2"), CpuLevel::Avx2);
    for (const char* name : {"", "AVX2", "avx", "avx512 "}) EXPECT_EQ(rows::CpuLevelNamed(name), std::nullopt) << name;
}

TEST(CpuLevels, CannotBeForcedAboveWhatThereIs) {
    const AtLevel at(CpuLevel::Avx512);
    EXPECT_LE(rows::ActiveCpuLevel(), rows::ProcessorCpuLevel());
    EXPECT_LE(rows::ActiveCpuLevel(), rows::BuiltCpuLevel());
}

// What `formOf` gives at each level.
template <class FormOf>
void ExpectOwnCode(const char* function, const FormOf& formOf) {
    std::set<decltype(formOf())> forms;
    for (const CpuLevel level : Levels()) {
        const AtLevel at(level);
        EXPECT_TRUE(forms.insert(formOf()).second) << function << " at " << rows::NameOf(level);
    }
}

template <class Function>
void ExpectOwnCode(const char* function, const rows::Forms<Function>& forms) {
    ExpectOwnCode(function, [&] { return forms.Chosen(); });
}

constexpr rows::PixelLayout kRgb{3, {0, 1, 2}}, kRgba{4, {0, 1, 2, 3}};
const rows::Table kTable{};

TEST(CpuLevels, AreDifferentCodeInEveryTable) {
    ExpectOwnCode("engrave", rows::kEngraveRow);
    ExpectOwnCode("neon", rows::kNeonRow);
    ExpectOwnCode("luminance", rows::kCountLuminance);
    ExpectOwnCode("pick pixels", rows::kPickPixels);
    ExpectOwnCode("pick steps", rows::kPickSteps);
    ExpectOwnCode("slide counts", rows::kSlideCounts);
    ExpectOwnCode("slide sums", rows::kSlideSums);
    ExpectOwnCode("fullest bin", rows::kFullestBin);
    ExpectOwnCode("bytes to lanes", rows::kBytesToLanes);
    ExpectOwnCode("sum across", rows::kSumAcross);
    ExpectOwnCode("lanes to rows", rows::kLanesToRows);
    ExpectOwnCode("sum down", rows::kSumDown);
    ExpectOwnCode("sum scattered", rows::kSumScattered);
    ExpectOwnCode("sum scattered long", rows::kSumScatteredLong);
    ExpectOwnCode("skew columns", rows::kSkewColumns);
    ExpectOwnCode("stream tile", rows::kStreamTile);
    ExpectOwnCode("stream copy", rows::kStreamCopy);
    for (const int size : {1, 2, 3, 4}) ExpectOwnCode("transpose", rows::TransposeFormsFor(size));
}

TEST(CpuLevels, AreDifferentCodeInEveryPlan) {
    for (const int size : {3, 201, 1001, 9001}) {
        ExpectOwnCode("window", [&] { return rows::PlanRowBlur(size / 2).stretch; });
        ExpectOwnCode("slide", [&] { return rows::PlanColumnBlur<std::int32_t>(size).slide; });
        ExpectOwnCode("add", [&] { return rows::PlanColumnBlur<std::int32_t>(size).add; });
    }
    ExpectOwnCode("slide words", [] { return rows::PlanColumnBlur<std::uint16_t>(7).slide; });
    ExpectOwnCode("add words", [] { return rows::PlanColumnBlur<std::uint16_t>(7).add; });
    for (const int weight : {1, 200, 70000})
        ExpectOwnCode("convolve", [&] { return rows::PlanConvolution({{weight}}).inside; });
    ExpectOwnCode("dither", [] { return rows::PlanDither({}).form; });
    ExpectOwnCode("fill", [] { return rows::InvertPattern(kRgb, 3).form; });
    ExpectOwnCode("fractional blur", [] { return rows::PlanThreeTaps({0.3, 1 / 1.6}, 0).byDoubles; });
    ExpectOwnCode("fractional blur in whole numbers", [] { return rows::PlanThreeTaps({0.3, 1 / 1.6}, 0).byWholes; });
    ExpectOwnCode("fractional blur in words", [] { return rows::PlanThreeTaps({0.5, 0.5}, 1 << 30).byWholes; });
    ExpectOwnCode("gray", [] { return rows::PlanGray(kRgb).form; });
    ExpectOwnCode("masked draw", [] { return rows::PlanMaskedDraw(kRgba, false).form; });
    ExpectOwnCode("masked blend", [] { return rows::PlanMaskedBlend(kRgb, false).form; });
    ExpectOwnCode("look up", [] {
        return rows::PlanLookUp(rows::ChannelSet::Gray, {{&kTable}}, {1, {0}}, {1, {0}}).form;
    });
    ExpectOwnCode("mirror",
                  [] { return rows::PlanMoves(rows::MovesBetween(rows::ChannelSet::RgbAlpha, kRgba, kRgba)).mirror; });
    ExpectOwnCode("move", [] { return rows::PlanMoves(rows::MovesBetween(rows::ChannelSet::Rgb, kRgb, kRgba)).form; });
    const std::uint8_t background[4] = {};
    ExpectOwnCode("skew", [&] { return rows::PlanSkew(3, kRgb, kRgb, background).shear; });
    ExpectOwnCode("unsharp by steps", [] { return rows::PlanUnsharp({2, 1}, 0).bySteps; });
    ExpectOwnCode("unsharp by the rule", [] { return rows::PlanUnsharp({2, 1}, 0).byRule; });
}

}  // namespace
