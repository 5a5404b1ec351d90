// Errors and warnings, and how many of them are told.
#include <gmock/gmock.h>

#include "host/script/Diagnostics.h"

namespace {

using script::Diagnostics;
using testing::HasSubstr;
using testing::Not;

const script::Source kSource{"s.rbs", "one\ntwo\n"};

Diagnostics Full() {
    Diagnostics diagnostics(kSource);
    for (std::size_t i = 0; i < script::kMostDiagnostics; ++i)
        diagnostics.Add({static_cast<int>(i) + 1, 1}, host::Said::Again("wrong"));
    return diagnostics;
}

TEST(Diagnostics, CountWhatIsTooMuchOnceAPlace) {
    Diagnostics diagnostics = Full();
    diagnostics.Add({100, 1}, host::Said::Again("first"));
    diagnostics.Add({100, 1}, host::Said::Again("again"));
    diagnostics.Add({1, 1}, host::Said::Again("again"));
    EXPECT_THAT(diagnostics.Text(), HasSubstr("… and 1 more error\n"));
    diagnostics.Add({101, 1}, host::Said::Again("second"));
    EXPECT_THAT(diagnostics.Text(), HasSubstr("… and 2 more errors\n"));
}

TEST(Diagnostics, CountWarningsApart) {
    Diagnostics diagnostics = Full();
    diagnostics.Warn({1, 1}, host::Said::Again("odd"));
    EXPECT_THAT(diagnostics.Text(), HasSubstr("s.rbs:1:1: warning: odd\n    one\n    ^\n"));
    EXPECT_THAT(diagnostics.Text(), Not(HasSubstr("more")));
}

TEST(Diagnostics, OfWarningsAloneAreNoErrors) {
    Diagnostics diagnostics(kSource);
    EXPECT_FALSE(diagnostics.HasErrors());
    diagnostics.Warn({2, 2}, host::Said::Again("odd"));
    EXPECT_FALSE(diagnostics.HasErrors());
    EXPECT_EQ(diagnostics.Text(), "s.rbs:2:2: warning: odd\n    two\n     ^\n");
    diagnostics.Add({2, 2}, host::Said::Again("wrong"));
    EXPECT_TRUE(diagnostics.HasErrors());
}

}  // namespace
