// What tests of row functions share: every instruction set of this machine, and bytes.
//
//   AT_EACH_LEVEL(Engrave);
//   TEST_P(Engrave, …) { … }  // once a level, whose name ends the test's
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "plugin/rows/CpuLevel.h"
#include "tests/support/Formats.h"

namespace rows_test {

using support::Bytes;
using support::Random;

// Uses a level while it lives.
class AtLevel {
  public:
    explicit AtLevel(rows::CpuLevel level) : before_(rows::ForceCpuLevel(level)) {}
    ~AtLevel() { rows::ForceCpuLevel(before_); }
    AtLevel(const AtLevel&) = delete;
    AtLevel& operator=(const AtLevel&) = delete;

  private:
    rows::CpuLevel before_;
};

inline bool HasLevel(rows::CpuLevel level) {
    const AtLevel at(level);
    return rows::ActiveCpuLevel() == level;
}

// The levels that this build has on this machine, the plain one first.
inline std::vector<rows::CpuLevel> Levels() {
    std::vector<rows::CpuLevel> levels;
    for (const rows::CpuLevel level : rows::kCpuLevels)
        if (HasLevel(level)) levels.push_back(level);
    return levels;
}

// Why a level can't run here.
inline const char* WhyMissing(rows::CpuLevel level) {
    if (level > rows::BuiltCpuLevel()) return "the build has no code for it";
    if (level > rows::ProcessorCpuLevel()) return "this processor doesn't have it";
    return "TQX_CPU_LEVEL rules it out";
}

class EachLevel : public ::testing::TestWithParam<rows::CpuLevel> {
  protected:
    void SetUp() override {
        if (!HasLevel(GetParam())) GTEST_SKIP() << WhyMissing(GetParam());
        rows::ForceCpuLevel(GetParam());
    }
    void TearDown() override { rows::ForceCpuLevel(before_); }

  private:
    rows::CpuLevel before_ = rows::ActiveCpuLevel();
};

inline std::string LevelName(const ::testing::TestParamInfo<rows::CpuLevel>& info) { return rows::NameOf(info.param); }

#define AT_EACH_LEVEL(suite)                      \
    class suite : public rows_test::EachLevel {}; \
    INSTANTIATE_TEST_SUITE_P(Level, suite, ::testing::ValuesIn(rows::kCpuLevels), rows_test::LevelName)

}  // namespace rows_test
