// Programs at and beyond the sizes that the machine has numbers for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "host/script/Script.h"
#include "tests/support/Interpose.h"

namespace {

using testing::HasSubstr;

struct Ran {
    int exitCode = 0;
    std::string out, err;
};

// From the line "short" on, nothing of a megabyte or more is to be had.
Ran RunText(std::string text) {
    Ran ran;
    std::optional<support::FailingAllocations> failing;
    script::RunOptions options;
    options.print = [&](std::string_view line) {
        if (line == "short")
            failing.emplace(1 << 20);
        else
            ran.out.append(line).append("\n");
    };
    options.complain = [&ran](std::string_view line) { ran.err.append(line); };
    ran.exitCode = script::RunScript({"limits.rbs", std::move(text)}, options);
    return ran;
}

std::string Repeated(int count, const std::function<std::string(int)>& line) {
    std::string text;
    for (int i = 0; i < count; ++i) text += line(i);
    return text;
}

std::string Fields(const std::string& prefix, int count) {
    return Repeated(count, [&](int i) { return "Property " + prefix + std::to_string(i) + " As Integer\n"; });
}

TEST(Limits, AClassOfManyPropertiesKeepsThemApart) {
    const Ran ran = RunText("Class Big\n" + Fields("P", 65'000) +
                            "End Class\nDim b As New Big\nb.P0 = 7\nb.P64999 = 5\nPrint b.P0\nPrint b.P64999\n");
    EXPECT_EQ(ran.out, "7\n5\n") << ran.err;
}

TEST(Limits, AClassOfTooManyPropertiesIsRefused) {
    const Ran ran = RunText("Dim b As New Big\nClass Big\n" + Fields("P", 65'536) + "End Class\n");
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr("limits.rbs:2:7: Big has too many properties"));
}

TEST(Limits, AHundredThousandFieldsAndTenThousandBlocksAreRefused) {
    const Ran fields = RunText("Class Big\n" + Fields("P", 100'000) + "End Class\nDim b As New Big\n");
    EXPECT_THAT(fields.err, HasSubstr("limits.rbs:1:7: Big has too many properties"));
    const Ran blocks = RunText("Dim n As Integer\n" + Repeated(10'000, [](int) { return "If n = 0 Then\n"; }) +
                               "n = 1\n" + Repeated(10'000, [](int) { return "End If\n"; }) + "Print n\n");
    EXPECT_EQ(blocks.exitCode, 1);
    EXPECT_THAT(blocks.err, HasSubstr("blocks are nested too deeply; move the inner ones to a Sub"));
}

TEST(Limits, DeclarationsInsideEachOtherAreRefusedBeforeTheyAreTooDeep) {
    const auto nested = [](const std::string& word) {
        return RunText(Repeated(10'000, [&](int) { return word + " Inner\n"; }) +
                       Repeated(10'000, [&](int) { return "End " + word + '\n'; }));
    };
    EXPECT_THAT(nested("Class").err, HasSubstr("limits.rbs:101:1: declarations are nested too deeply"));
    EXPECT_EQ(nested("Module").exitCode, 1);
}

TEST(Limits, InheritedPropertiesCount) {
    const std::string base = "Class Base\n" + Fields("P", 40'000) + "End Class\n";
    const Ran ran = RunText(base + "Class Below Inherits Base\n" + Fields("Q", 40'000) + "End Class\n");
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr(":40003:7: Below has too many properties"));
}

TEST(Limits, ARoutineOfTooManyVariablesIsRefused) {
    const std::string variables = Repeated(66'000, [](int i) { return "Dim v" + std::to_string(i) + " As Integer\n"; });
    const Ran local = RunText("Sub S()\n" + variables + "End Sub\n");
    EXPECT_EQ(local.exitCode, 1);
    EXPECT_THAT(local.err, HasSubstr("limits.rbs:1:5: S has too many values for one routine"));
    const Ran global = RunText(variables);
    EXPECT_EQ(global.exitCode, 1);
    EXPECT_THAT(global.err, HasSubstr("the program has too many values"));
}

// More instructions, texts and calls than 16 bits count, and jumps over all of them.
TEST(Limits, ARoutineMayBeLong) {
    const std::string lines = Repeated(70'000, [](int i) { return "s = Mid(\"" + std::to_string(i) + "\", 1)\n"; });
    const Ran ran =
        RunText("Dim s As String\nFor i As Integer = 1 To 2\nIf i = 1 Then Continue\n" + lines +
                "Next\nPrint s\nTry\n" + lines + "Raise New RuntimeException\nCatch\nPrint \"caught\"\nEnd Try\n");
    EXPECT_EQ(ran.out, "69999\ncaught\n") << ran.err;
}

TEST(Limits, ACallMayTakeManyArguments) {
    const std::string arguments = Repeated(1'000, [](int i) { return (i ? ", " : "") + std::to_string(i); });
    const Ran ran = RunText(
        "Function Last(ParamArray v() As Integer) As Integer\nReturn v(Ubound(v))\nEnd Function\n"
        "Print Last(" +
        arguments + ")\n");
    EXPECT_EQ(ran.out, "999\n") << ran.err;
}

// --- Memory

std::string Caught(const std::string& statements) {
    return "Try\n" + statements +
           "Print \"nothing\"\nCatch e As OutOfMemoryException\nPrint \"short of memory\"\nEnd Try\n";
}

TEST(ShortMemory, IsAnExceptionAndNeverAnEmptyText) {
    const std::string grow =
        "Print \"short\"\nDim s As String = \"0123456789\"\n" + Caught("While True\ns = s + s\nWend\n");
    EXPECT_EQ(RunText(grow + "Print LenB(s) > 500000\n").out, "short of memory\nTrue\n");
}

TEST(ShortMemory, IsTheSameExceptionForEverythingThatGrows) {
    EXPECT_EQ(RunText("Print \"short\"\n" + Caught("Dim m As New MemoryBlock(2000000)\n")).out, "short of memory\n");
    EXPECT_EQ(RunText("Print \"short\"\n" + Caught("Dim p As New Picture(1000, 1000, 32)\n")).out, "short of memory\n");
    EXPECT_EQ(
        RunText("Print \"short\"\nDim s As String = \"0123456789abcdef\"\nWhile LenB(s) < 400000\ns = s + s\nWend\n" +
                Caught("s = ReplaceAll(s, \"a\", \"xyz\")\ns = ReplaceAll(s, \"b\", s)\n"))
            .out,
        "short of memory\n");
}

TEST(ShortMemory, IsTheSameExceptionForArraysThatGrow) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer's operator new has memory whatever malloc says";
#endif
    EXPECT_EQ(RunText("Print \"short\"\nDim a() As Integer\n" + Caught("While True\na.Append 1\nWend\n") +
                      "Print a.Ubound > 10000\n")
                  .out,
              "short of memory\nTrue\n");
    EXPECT_EQ(RunText("Print \"short\"\n" + Caught("Dim a(1000000) As String\n")).out, "short of memory\n");
}

TEST(ShortMemory, IsTheSameExceptionForSizesThatNothingHas) {
    EXPECT_EQ(RunText(Caught("Dim a(2000000000) As Integer\n")).out, "short of memory\n");
    EXPECT_EQ(RunText("Dim a() As Integer\n" + Caught("ReDim a(2000000000)\n")).out, "short of memory\n");
    EXPECT_EQ(RunText(Caught("Dim p As New Picture(40000, 40000, 32)\n")).out, "short of memory\n");
}

TEST(ShortMemory, ThatNobodyCaughtEndsTheScriptWithItsName) {
    const Ran ran = RunText("Dim a(2000000000) As Integer\n");
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr("limits.rbs:1:5: OutOfMemoryException: "));
}

}  // namespace
