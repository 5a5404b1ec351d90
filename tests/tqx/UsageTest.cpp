// What the command makes of its words.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/host/script/ScriptOf.h"
#include "tests/support/Command.h"

namespace {

using testing::HasSubstr;

constexpr const char* kPrintArguments = "For Each word As String In App.Arguments\nPrint word\nNext\n";

void ExpectRefused(const std::vector<std::string>& words, const std::string& why) {
    const Outcome outcome = RunCommand(words);
    EXPECT_EQ(outcome.exitCode, 2) << why;
    EXPECT_THAT(outcome.err, HasSubstr(why));
    EXPECT_EQ(outcome.out, "");
}

TEST(Usage, WrongWordsAreNamedAndExitWith2) {
    ExpectRefused({"bogus"}, "tqx: there is no command bogus\nTry tqx --help.\n");
    ExpectRefused({"--bogus", "members"}, "there is no option --bogus");
    ExpectRefused({}, "a command is missing");
    ExpectRefused({"run"}, "tqx run: a script is missing\nTry tqx run --help.\n");
    ExpectRefused({"run", "--explain"}, "a script is missing");
    ExpectRefused({"members", "Picture", "Timer"}, "Timer");
    ExpectRefused({"members", "--bogus"}, "--bogus");
    ExpectRefused({"check", "bogus"}, "bogus");
}

TEST(Usage, ANumberOfPixelsIsDigits) {
    const ScriptOf script("Print 1\n");
    ExpectRefused({"run", "--max-pixels", "-1", script.path()}, "\"-1\" is not a number of pixels");
    ExpectRefused({"run", "--max-pixels=many", script.path()}, "\"many\" is not a number of pixels");
    ExpectRefused({"run", "--max-pixels"}, "--max-pixels");
}

TEST(Usage, WhateverFollowsTheScriptReachesItUntouched) {
    const ScriptOf script(kPrintArguments);
    const Outcome outcome = RunCommand({"run", script.path(), "--explain", "--", "-h", "a b", "", "--max-pixels"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "--explain\n--\n-h\na b\n\n--max-pixels\n");
}

TEST(Usage, TwoDashesEndTheOptionsBeforeTheScript) {
    const ScriptOf script(kPrintArguments);
    EXPECT_EQ(RunCommand({"run", "--", script.path(), "a"}).out, "a\n");
    EXPECT_EQ(RunCommand({"run", "--max-pixels", "9", "--", script.path(), "--"}).out, "--\n");
}

TEST(Usage, AnUnknownOptionBeforeTheScriptIsRefusedByItsName) {
    const ScriptOf script("Print 1\n");
    ExpectRefused({"run", "--foo", script.path(), "a"}, "tqx run: there is no option --foo");
    ExpectRefused({"run", "--foo=3", script.path(), "a"}, "tqx run: there is no option --foo");
}

TEST(Usage, AFolderIsNoScript) {
    const Outcome outcome = RunCommand({"run", std::filesystem::temp_directory_path().string()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr(": the script can't be read: Is a directory\n"));
}

TEST(Usage, AScriptThatCannotBeReadIsNamedWithTheReason) {
    EXPECT_EQ(RunCommand({"run", "/nowhere/at-all.rbs"}).err,
              "/nowhere/at-all.rbs: the script can't be read: No such file or directory\n");
    const Outcome endless = RunCommand({"run", "/dev/zero"});
    EXPECT_EQ(endless.exitCode, 1);
    EXPECT_EQ(endless.err, "/dev/zero: this is too large for a script\n");
}

TEST(Usage, AScriptMayComeFromStandardInput) {
    const std::string script = std::string("Print \"from input\"\n") + kPrintArguments;
    EXPECT_EQ(RunCommandFed(script, {"run", "-", "a"}).out, "from input\na\n");
    EXPECT_EQ(RunCommandFed(script, {"run", "/dev/stdin", "a"}).out, "from input\na\n");
    EXPECT_THAT(RunCommandFed("Print nothing\n", {"run", "-"}).err, testing::StartsWith("<stdin>:1:7: "));
}

TEST(Usage, AScriptMayStandAmongTheWords) {
    const std::string script = std::string("Print \"from words\"\n") + kPrintArguments;
    EXPECT_EQ(RunCommand({"run", "-e", script, "a", "-e"}).out, "from words\na\n-e\n");
    EXPECT_EQ(RunCommand({"run", "-e", script, "--", "--", "a"}).out, "from words\n--\na\n");
    EXPECT_THAT(RunCommand({"run", "-e", "Print nothing"}).err, testing::StartsWith("<code>:1:7: "));
    ExpectRefused({"run", "-e"}, "-e");
}

TEST(Usage, ScriptsAreCheckedWithoutRunningThem) {
    const ScriptOf sound("Print 1\n");
    const Outcome outcome = RunCommand({"check-syntax", sound.path(), "/nowhere/at-all.rbs"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "/nowhere/at-all.rbs: the script can't be read: No such file or directory\n");
    EXPECT_EQ(RunCommand({"check-syntax", sound.path(), sound.path()}).exitCode, 0);
    EXPECT_EQ(RunCommand({"run", "--check", sound.path()}).out, "");
    const Outcome wrong = RunCommandFed("Print 1\nPrint nothing\n", {"check-syntax", "-"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_THAT(wrong.err, testing::StartsWith("<stdin>:2:7: "));
    EXPECT_EQ(RunCommandFed("Print nothing\n", {"run", "--check", "-"}).exitCode, 1);
    ExpectRefused({"check-syntax"}, "SCRIPT is required");
}

TEST(Usage, AScriptMayComeThroughANamedPipe) {
    const auto pipe = std::filesystem::temp_directory_path() / ("tqx-pipe-" + std::to_string(getpid()));
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(pipe) << "Print 1 + 1\n"; });
    EXPECT_EQ(RunCommand({"run", pipe.string()}).out, "2\n");
    writer.join();
    std::filesystem::remove(pipe);
}

}  // namespace
