// The prompt on a terminal: what a person types and sees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Command.h"

namespace {

using testing::HasSubstr;

class Prompt : public testing::Test {
  protected:
    void SetUp() override {
        if (!HasTerminals()) GTEST_SKIP() << "this machine has no pseudo-terminals";
    }
};

constexpr const char* kCtrlC = "\003";
constexpr const char* kCtrlD = "\004";

TEST_F(Prompt, IsThereWithoutAnyWord) {
    const Outcome outcome = TypeToCommand({}, {"1 + 1\n", kCtrlD});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\r\n2\r\n"));
}

TEST_F(Prompt, CompletesNamesAndMembers) {
    EXPECT_THAT(TypeToCommand({"repl"}, {"Microsec\t > 0\n", kCtrlD}).out, HasSubstr("\r\nTrue\r\n"));
    EXPECT_THAT(TypeToCommand({"repl"}, {"Dim p As New PictureTQX(3, 4, 1)\n", "p.Heig\t\n", kCtrlD}).out,
                HasSubstr("\r\n4\r\n"));
    EXPECT_THAT(TypeToCommand({"repl"}, {"PictureTQX.ImageFormatRGB\t", kCtrlC, kCtrlD}).out,
                HasSubstr("ImageFormatRGB  ImageFormatRGBA  "));
}

TEST_F(Prompt, BringsLinesBack) {
    EXPECT_THAT(TypeToCommand({"repl"}, {"Print 6 * 7\n", "\033[A\n", kCtrlD}).out,
                testing::ContainsRegex("\n42\r\n.*\n42\r\n"));
}

TEST_F(Prompt, CtrlCDropsALineAndABlock) {
    const std::string out = TypeToCommand({"repl"}, {"Print 1", kCtrlC, "While True\n", kCtrlC, "5\n", kCtrlD}).out;
    EXPECT_THAT(out, HasSubstr("\r\n5\r\n"));
    EXPECT_THAT(out, Not(HasSubstr("\r\n1\r\n")));
}

TEST_F(Prompt, CtrlCEndsWhatRunsAndNothingElse) {
    const Outcome outcome =
        TypeToCommand({"repl"}, {"Dim x As Integer = 8\n", "While True\n", "Wend\n", kCtrlC, "x\n", kCtrlD});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("interrupted\r\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\r\n8\r\n"));
}

TEST_F(Prompt, ShowsAPictureInTheTerminalsColours) {
    const Outcome outcome = TypeToCommand({"repl"}, {"Dim p As New PictureTQX(8, 4, PictureTQX.ImageFormatRGB)\n",
                                                     "p.FillRectRGB(&cFF0000)\n", "p\n", kCtrlD});
    EXPECT_THAT(outcome.out, HasSubstr("PictureTQX, 8 × 4\r\n"));
    EXPECT_THAT(outcome.out, HasSubstr("255;0;0"));
}

}  // namespace
