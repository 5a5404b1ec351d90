// The line that a long script shows on a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/script/ScriptOf.h"
#include "tests/support/Command.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class StatusLine : public testing::Test {
  protected:
    void SetUp() override {
        if (!HasTerminals()) GTEST_SKIP() << "this machine has no pseudo-terminals";
    }
};

const std::string kErase = "\r\033[K";

// Blurs for some seconds, so that there is nearly always a call at work, and then prints.
std::string BlursFor(double seconds) {
    return "Dim p As New PictureTQX(1500, 1000, PictureTQX.ImageFormatRGB)\n"
           "Dim start As Double = Microseconds\n"
           "Do\n  Dim q As PictureTQX = p.BoxBlurFilter(Nil, 5.0)\nLoop Until Microseconds - start > " +
           std::to_string(seconds * 1e6) + "\nPrint \"done\"\n";
}

TEST_F(StatusLine, ShowsTheMemberAtWorkAfterASecondAndIsGoneAtTheEnd) {
    const ScriptOf script(BlursFor(2.5));
    const Outcome outcome = RunCommandOnTerminal({"run", script.path()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "done\n");
    EXPECT_THAT(outcome.err, testing::StartsWith(kErase));
    EXPECT_THAT(outcome.err, HasSubstr("PictureTQX.BoxBlurFilter, 1500 \u00d7 1000, "));
    EXPECT_THAT(outcome.err, testing::ContainsRegex(", [1-9][0-9]*[.][0-9] s"));
    EXPECT_THAT(outcome.err, Not(HasSubstr(", 0.")));
    EXPECT_THAT(outcome.err, testing::EndsWith(kErase));
    EXPECT_THAT(outcome.err, Not(HasSubstr("\n")));
}

TEST_F(StatusLine, NamesTheScriptWhileNoMemberIsAtWork) {
    const ScriptOf script("Dim start As Double = Microseconds\nWhile Microseconds - start < 1500000\nWend\n");
    const Outcome outcome = RunCommandOnTerminal({"run", script.path()});
    EXPECT_THAT(outcome.err, testing::AnyOf(HasSubstr("the script, "), HasSubstr("Microseconds, ")));
    EXPECT_THAT(outcome.err, testing::EndsWith(kErase));
}

TEST_F(StatusLine, IsOutOfTheWayOfMessages) {
    const ScriptOf script(
        "Dim start As Double = Microseconds\nWhile Microseconds - start < 1500000\nWend\n"
        "Raise New IOException\n");
    const Outcome outcome = RunCommandOnTerminal({"run", script.path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr(kErase + script.path() + ":4:1: IOException"));
    const std::size_t message = outcome.err.find(script.path());
    EXPECT_EQ(outcome.err.find(", 1.", message), std::string::npos) << outcome.err;
}

TEST_F(StatusLine, IsNeverSeenInAQuickScriptNorInAPipe) {
    const ScriptOf quick(BlursFor(0.05));
    EXPECT_EQ(RunCommandOnTerminal({"run", quick.path()}).err, "");
    const ScriptOf slow(BlursFor(1.5));
    EXPECT_EQ(RunCommand({"run", slow.path()}).err, "");
}

}  // namespace
