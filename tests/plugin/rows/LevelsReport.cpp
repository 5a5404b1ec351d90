// Says last, after all results, at which levels the tests of row functions ran: on a machine or in
// a build that lacks one its tests are skipped, which must not pass for a success.
#include <cstdio>

#include "tests/plugin/rows/Levels.h"

namespace {

class LevelsReport : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest&) override {
        std::printf("Levels:");
        for (const rows::CpuLevel level : rows::kCpuLevels)
            if (rows_test::HasLevel(level))
                std::printf(" %s ran.", rows::NameOf(level));
            else
                std::printf(" %s DID NOT RUN: %s.", rows::NameOf(level), rows_test::WhyMissing(level));
        std::printf("\n");
    }
};

const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LevelsReport);
    return true;
}();

}  // namespace
