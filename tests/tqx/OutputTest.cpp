// Output that can't be written is an error, and never lands in another file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/host/script/ScriptOf.h"
#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

using testing::HasSubstr;

const std::vector<std::vector<std::string>> kTalkative = {{"--help"}, {"--version"}, {"members"}, {"run", "--help"}};

TEST(Output, LostToAFullDeviceIsAnError) {
    for (const auto& words : kTalkative) {
        const Outcome outcome = RunCommandInto("/dev/full", words);
        EXPECT_EQ(outcome.exitCode, 1) << words[0];
        EXPECT_EQ(outcome.err, "tqx: standard output can't be written: No space left on device\n") << words[0];
    }
}

TEST(Output, LostToAClosedStreamIsAnError) {
    for (const auto& words : kTalkative) {
        const Outcome outcome = RunCommandInto("", words);
        EXPECT_EQ(outcome.exitCode, 1) << words[0];
        EXPECT_THAT(outcome.err, HasSubstr("tqx: standard output can't be written: ")) << words[0];
    }
}

TEST(Output, OfACheckIsLostWithAnError) {
    const Outcome outcome =
        RunCommandInto("/dev/full", {"--plugin", support::TestPluginFolder() + "/Faulty0.so", "check"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("standard output can't be written"));
}

TEST(Output, AScriptThatLosesItEndsAtOnce) {
    const ScriptOf script("While True\nPrint \"more\"\nWend\n");
    const Outcome outcome = RunCommandInto("/dev/full", {"run", script.path()});
    EXPECT_TRUE(outcome.ended);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "tqx: standard output can't be written: No space left on device\n");
}

TEST(Output, AScriptThatPrintsNothingNeedsNone) {
    const ScriptOf script("Dim i As Integer = 1\n");
    const Outcome outcome = RunCommandInto("", {"run", script.path()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
}

// The first file that is opened gets the number of a stream that is closed.
TEST(Output, OfAClosedStreamDoesNotReachTheScriptsFiles) {
    const auto file = std::filesystem::temp_directory_path() / ("tqx-file-" + std::to_string(getpid()));
    std::ofstream(file) << "kept";
    const ScriptOf script("Dim f As BinaryStream = BinaryStream.Open(GetFolderItem(\"" + file.string() +
                          "\"), True)\nPrint \"lost\"\n");
    EXPECT_EQ(RunCommandInto("", {"run", script.path()}).exitCode, 1);
    std::string text;
    std::getline(std::ifstream(file), text);
    EXPECT_EQ(text, "kept");
    std::filesystem::remove(file);
}

// As when the output goes to `head`.
TEST(Output, AReaderThatHadEnoughEndsTheScriptQuietly) {
    const ScriptOf script("While True\nPrint \"more\"\nWend\n");
    const Outcome outcome = RunCommandWithoutReader({"run", script.path()});
    EXPECT_TRUE(outcome.ended);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "");
}

}  // namespace
