// The command as a person uses it: words, output, exit codes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/host/script/ScriptOf.h"
#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Command, HelpNamesEveryCommand) {
    const Outcome outcome = RunCommand({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const char* word : {"run", "members", "check", "--plugin", "--version"})
        EXPECT_THAT(outcome.out, HasSubstr(word));
    EXPECT_THAT(RunCommand({"run", "--help"}).out, HasSubstr("--explain"));
    EXPECT_THAT(RunCommand({"members", "--help"}).out, HasSubstr("--json"));
}

TEST(Command, RefusesWhatItDoesNotKnow) {
    EXPECT_NE(RunCommand({"bogus"}).exitCode, 0);
    EXPECT_NE(RunCommand({}).exitCode, 0);
    EXPECT_NE(RunCommand({"run"}).exitCode, 0);
}

TEST(Command, NamesTheScriptThatCannotBeRead) {
    const Outcome outcome = RunCommand({"run", "/nowhere/at-all.rbs"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("/nowhere/at-all.rbs"));
}

TEST(Command, TellsThatAScriptIsUtf16) {
    std::string utf16;
    for (const char c : std::string("Print 1\n")) utf16 += {c, '\0'};
    for (const std::string& text : {utf16, "\xFF\xFE" + utf16, "\xFE\xFF" + ('\0' + utf16)}) {
        const ScriptOf script(text);
        EXPECT_EQ(RunCommand({"run", script.path()}).err,
                  script.path() + ": the script can't be read: it is UTF-16 text; save it as UTF-8\n");
    }
}

TEST(Command, NamesThePluginThatCannotBeLoaded) {
    const ScriptOf script("Print 1\n");
    const Outcome outcome = RunCommand({"--plugin", "/nowhere/plugin.so", "run", script.path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("/nowhere/plugin.so"));
    EXPECT_EQ(outcome.out, "");
}

std::vector<std::string> CheckOf(const std::string& plugin, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--plugin", support::TestPluginFolder() + "/" + plugin + ".so", "check"});
    return more;
}

TEST(Command, CheckPraisesASoundPlugin) {
    const Outcome outcome = RunCommand(CheckOf("Faulty0", {"--seed", "5"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
    EXPECT_THAT(outcome.out, testing::StartsWith("seed 5\npass     loading "));
    EXPECT_THAT(outcome.out, testing::EndsWith(" 0 warn, 0 timeout, 0 fail, 0 crash\n"));
}

TEST(Command, CheckFailsWithTheScriptThatShowsAFault) {
    const Outcome outcome = RunCommand(CheckOf("Faulty1", {"--only", "calls"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, HasSubstr("crash    calls"));
    EXPECT_THAT(outcome.out, HasSubstr("            Dim result As Faulty = p.Link(nil)\n"));
    const Outcome json = RunCommand(CheckOf("Faulty1", {"--only", "calls", "--json"}));
    EXPECT_EQ(json.exitCode, 1);
    EXPECT_THAT(json.out, testing::StartsWith("{\n  \"plugin\": "));
    EXPECT_THAT(json.out, HasSubstr("\"status\": \"crash\""));
}

TEST(Command, CheckThatCannotRunExitsWith2) {
    const Outcome missing = RunCommand({"--plugin", "/nowhere/plugin.so", "check"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_EQ(missing.err, "tqx: There is no plug-in at /nowhere/plugin.so.\n");
    EXPECT_EQ(RunCommand(CheckOf("Faulty0", {"--only", "moonlight"})).exitCode, 2);
    EXPECT_EQ(RunCommand(CheckOf("Faulty0", {"--except", "calls"})).exitCode, 2) << "a reason is missing";
    EXPECT_EQ(RunCommand(CheckOf("Faulty0", {"--only", "records", "--junit", "/nowhere/at/all.xml"})).exitCode, 2);
    EXPECT_EQ(RunCommand(CheckOf("NoEntry")).exitCode, 1) << "it is there, and no plug-in";
}

TEST(Command, CheckListsItsChecks) {
    const Outcome outcome = RunCommand({"check", "--list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\nguard-bytes: Nothing is written beside memory of the host.\n"));
}

// What the plug-in writes beside a picture's own bytes is so by definition, and no more than this.
TEST(Command, CheckTellsWhichMembersWriteBesideAPicturesBytes) {
    EXPECT_THAT(
        RunCommand({"check", "--only", "stray-writes"}).out,
        HasSubstr("warn     stray-writes      bytes of pixels that are no channel of the picture are written by "
                  "ClearRect, DrawMaskedPictureRGB; bytes beside the picture's columns are written by "
                  "ClearRect, FillRect\n"));
}

std::vector<std::string> FuzzOf(const std::string& plugin, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--plugin", support::TestPluginFolder() + "/" + plugin + ".so", "fuzz"});
    return more;
}

TEST(Command, FuzzFindsNothingInASoundPlugin) {
    const Outcome outcome = RunCommand(FuzzOf("Sample", {"--programs", "20", "--seed", "9"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
    EXPECT_THAT(outcome.out, testing::StartsWith("seed 9\n20 programs, "));
    EXPECT_THAT(outcome.out, testing::EndsWith(", 0 findings\n"));
}

TEST(Command, FuzzReachesEveryMember) {
    const Outcome outcome = RunCommand({"fuzz", "--programs", "400", "--seed", "1"});
    EXPECT_THAT(outcome.out, testing::ContainsRegex("400 programs, [0-9]+ calls of all [0-9]+ members, "));
}

// Of forty statements and more, what is left is what the crash takes.
TEST(Command, FuzzShowsTheShortestProgramThatCrashes) {
    const Outcome outcome = RunCommand(FuzzOf("Faulty1", {"--programs", "100"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, testing::HasSubstr(" of seed 1: "));
    const auto lines = LinesOf(outcome.out);
    const auto statements = std::count(lines.begin(), lines.end(), "Try");
    EXPECT_LE(statements, 4) << outcome.out;  // the timer's and the event's among them
    EXPECT_THAT(outcome.out, testing::ContainsRegex("\\.Link\\("));
}

TEST(Command, FuzzDrawsTheSameProgramForTheSameNumbers) {
    const auto program = [](const char* seed, const char* number) {
        return RunCommand({"fuzz", "--print", "--seed", seed, "--first", number}).out;
    };
    const std::string first = program("1", "5");
    EXPECT_THAT(first, HasSubstr("Dim thePictureTQX0 As PictureTQX\n"));
    EXPECT_NE(first, program("1", "6"));
    EXPECT_NE(first, program("2", "5"));
}

TEST(Command, FuzzWithoutAPluginExitsWith2) {
    EXPECT_EQ(RunCommand({"--plugin", "/nowhere/plugin.so", "fuzz"}).exitCode, 2);
    EXPECT_EQ(RunCommand({"fuzz", "--programs", "0"}).exitCode, 2);
}

TEST(Command, MembersListsEverythingWithin80Columns) {
    const Outcome outcome = RunCommand({"members"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("GammaFilter(dest As PictureTQX, gamma As Double) As PictureTQX\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  Row(index As Integer) As MemoryBlock [assignable]\n"));
    EXPECT_THAT(outcome.out, HasSubstr("Width As Integer"));
    EXPECT_THAT(outcome.out, HasSubstr("ImageFormatRGB"));
    EXPECT_THAT(outcome.out, HasSubstr("NewPictureTQX("));
    for (const std::string& line : LinesOf(outcome.out)) EXPECT_LE(line.size(), 80u) << line;
}

TEST(Command, MembersShowsTheOverloadsOfOneMember) {
    const Outcome outcome = RunCommand({"members", "picturetqx.clearrect"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("  ClearRect\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  ClearRect(x As Integer"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("FillRect")));
    EXPECT_EQ(RunCommand({"members", "PictureTQX.Nothing"}).exitCode, 1);
    EXPECT_EQ(RunCommand({"members", "Nothing"}).exitCode, 1);
}

TEST(Command, MembersExplainsTheFrameworkToo) {
    const std::string all = RunCommand({"members"}).out;
    for (const char* name : {"  Picture ", " Mid ", "One of them: tqx members NAME\n"})
        EXPECT_THAT(all, HasSubstr(name));
    EXPECT_THAT(RunCommand({"members", "mid"}).out, HasSubstr("  Mid(text As String, start As Integer) As String\n"));
    EXPECT_THAT(RunCommand({"members", "timer"}).out, HasSubstr("Runs its event Action"));
    EXPECT_THAT(RunCommand({"members", "ForeColor"}).out, testing::StartsWith("Graphics\n"));
    const Outcome unknown = RunCommand({"members", "Midd"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.err, HasSubstr("The nearest: Mid,"));
}

TEST(Command, MembersAsJsonHasEveryField) {
    const Outcome outcome = RunCommand({"members", "PictureTQX.DrawMaskedPictureRGB", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr(R"("name": "InvertMask")"));
    EXPECT_THAT(outcome.out, HasSubstr(R"("default": false)"));
    EXPECT_THAT(outcome.out, HasSubstr(R"("flags": 0)"));
}

TEST(Command, ObjectsLeftAtTheEndAreAnErrorOnlyWhenAskedFor) {
    const ScriptOf script(
        "Class Maker Inherits PictureFactoryTQX\n  Property Other As Maker\nEnd Class\n"
        "PictureFactoryTQX.SetFactory(New Maker)\n"
        "Dim m As New Maker\nm.Other = m\n");
    const Outcome quiet = RunCommand({"run", script.path()});
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.err, "");
    const Outcome told = RunCommand({"run", "--leaks", script.path()});
    EXPECT_EQ(told.exitCode, 1);
    EXPECT_EQ(told.err, script.path() + ": objects that held each other at the end: 1 × Maker\n" + script.path() +
                            ": objects are still alive at the end: 1 × Maker\n");
}

TEST(Command, ArgumentsThatLookLikeOptionsReachTheScript) {
    const ScriptOf script("Print 1\n");
    const Outcome outcome = RunCommand({"run", script.path(), "--json", "-x", "plain"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "1\n");
}

TEST(Command, RefusesPicturesOfTooManyPixels) {
    const std::string file = (std::filesystem::temp_directory_path() / ("tqx-" + std::to_string(getpid()))).string();
    const ScriptOf script("Dim f As FolderItem = GetFolderItem(\"" + file +
                          ".png\")\nf.SaveAsPicture(New Picture(20, 10, 32))\nDim p As Picture = f.OpenAsPicture\n"
                          "Print p.Width\n");
    EXPECT_EQ(RunCommand({"run", "--max-pixels", "200", script.path()}).out, "20\n");
    const Outcome outcome = RunCommand({"run", "--max-pixels", "199", script.path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("--max-pixels"));
    EXPECT_EQ(RunCommand({"run", "--max-pixels", "0", "--no-orientation", script.path()}).out, "20\n");
    EXPECT_NE(RunCommand({"run", "--max-pixels", "-1", script.path()}).exitCode, 0);
    std::filesystem::remove(file + ".png");
}

// The first Ctrl-C is enough, also for a picture's scratch file.
TEST(Command, InterruptTakesScratchFilesAway) {
    const auto scratch = std::filesystem::temp_directory_path() / ("tqx-scratch-" + std::to_string(getpid()));
    const ScriptOf script("Dim p As New PictureTQX(64, 64, 1, 4096, GetFolderItem(\"" + scratch.string() +
                          "\"))\nPrint p.IsMapping\nWhile True\nWend\n");
    bool there = false;
    const Outcome outcome = RunCommand({"run", script.path()}, [&](int process, const Outcome&) {
        there |= std::filesystem::exists(scratch);
        kill(process, SIGINT);
    });
    EXPECT_EQ(outcome.out, "True\n") << outcome.err;
    EXPECT_TRUE(there);
    EXPECT_FALSE(std::filesystem::exists(scratch));
}

// A chain of objects each of which makes the next one when it goes.
TEST(Command, InterruptEndsDestructorsWithoutEnd) {
    const ScriptOf script(
        "Class Tracked\n  Sub Destructor()\n    Dim t As New Tracked\n  End Sub\nEnd Class\n"
        "Dim t As New Tracked\nPrint \"started\"\nt = Nil\nWhile True\nWend\n");
    bool sent = false;
    const Outcome outcome = RunCommand({"run", script.path()}, [&](int process, const Outcome&) {
        if (!sent) kill(process, SIGINT);
        sent = true;
    });
    EXPECT_TRUE(outcome.ended);
    EXPECT_EQ(outcome.exitCode, 130) << outcome.err;
    EXPECT_EQ(outcome.out, "started\n");
}

TEST(Command, InterruptEndsAnEndlessLoopInOrder) {
    const ScriptOf script(
        "Class Tracked\n  Sub Destructor()\n    Print \"released\"\n  End Sub\nEnd Class\n"
        "Dim t As New Tracked\nPrint \"started\"\nTry\n  While True\n  Wend\nFinally\n  Print \"no\"\nEnd Try\n");
    bool sent = false;
    const Outcome outcome = RunCommand({"run", script.path()}, [&](int process, const Outcome& so_far) {
        if (!sent && so_far.out.find("started") != std::string::npos) kill(process, SIGINT);
        sent = true;
    });
    EXPECT_TRUE(outcome.ended);
    EXPECT_EQ(outcome.exitCode, 130) << outcome.err;
    EXPECT_EQ(outcome.out, "started\nreleased\n");
}

// What it says of each member: tests/scripts/explain.
TEST(Command, ExplainsCallsThatGaveNothing) {
    const ScriptOf script(
        "Dim p As New PictureTQX(4, 4, 99)\n"
        "Dim a As New PictureTQX(4, 4, PictureTQX.ImageFormatRGB)\n"
        "a.Close\n"
        "Dim c As PictureTQX = a.Clone\n");
    const Outcome outcome = RunCommand({"run", "--explain", script.path()});
    const std::string name = script.path();
    EXPECT_EQ(outcome.err, name +
                               ":1:14: Constructor made a picture that is not valid: ImageFormat 99 is none of the "
                               "formats 1 to 21\n" +
                               name + ":4:25: Clone gave Nil: the PictureTQX was closed in line 3\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(RunCommand({"run", script.path()}).err, "");
}

// What a script hears of a call that gives False, from a plug-in with this table beside it.
std::string ExplainedBy(const char* table) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / ("tqx-explain-test-" + std::to_string(getpid()));
    fs::create_directories(folder);
    fs::copy_file(fs::path(support::TestPluginFolder()) / "Sample.so", folder / "Sample.so");
    if (table) std::ofstream(folder / "Sample.explain") << table;
    const ScriptOf script("Dim s As New Sample\nDim ok As Boolean = s.Tell(7)\n");
    std::string text = RunCommand({"--plugin", folder / "Sample.so", "run", "--explain", script.path()}).err;
    fs::remove_all(folder);
    for (const std::string& path : {script.path(), (folder / "").string()})
        for (std::size_t at; (at = text.find(path)) != std::string::npos;) text.erase(at, path.size());
    return text;
}

TEST(Command, ExplainsAnyPluginByTheTableBesideIt) {
    EXPECT_EQ(ExplainedBy(nullptr), ":2:23: Tell gave False: no reason for it is known\n");
    EXPECT_EQ(ExplainedBy("class Sample\nmembers Tell\n  code > 5 : nobody hears {code}\n"),
              ":2:23: Tell gave False: nobody hears 7\n");
    EXPECT_EQ(ExplainedBy("class Sample\nmembers Tell\n  code >\n"),
              "Sample.explain:3: needs a : before what is to be said\n"
              ":2:23: Tell gave False: no reason for it is known\n");
}

// Trys in the body and in the Finally of one another, with a Return through all of them.
TEST(Command, FinallyMayBeNestedDeeply) {
    constexpr int kDeep = 45;
    std::string text = "Dim count As Integer\nFunction F() As Integer\n";
    for (int i = 0; i < kDeep; ++i) text += "Try\n";
    text += "Return 7\n";
    for (int i = 0; i < kDeep; ++i)
        text += "Finally\ncount = count + 1\nTry\nFinally\ncount = count + 100\nEnd Try\nEnd Try\n";
    text += "End Function\nPrint F\nPrint count\n";
    for (int i = 0; i < 2 * kDeep; ++i) text += "Try\nFinally\n";
    text += "Print \"innermost\"\n";
    for (int i = 0; i < 2 * kDeep; ++i) text += "End Try\n";
    const ScriptOf script(text);
    const Outcome outcome = RunCommand({"run", script.path()});
    EXPECT_EQ(outcome.out, "7\n4545\ninnermost\n") << outcome.err;
}

}  // namespace
