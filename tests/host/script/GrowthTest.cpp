// What scripts do step by step takes time for each step alone: eight times as many steps take about eight
// times as much of the processor, where idioms that go through all before take sixty-four times.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "host/script/Script.h"

namespace {

// Processor time of a script with a number of steps, the least of some runs.
double TimeOf(const std::string& idiom, int steps) {
    const std::string text = "Const Steps = " + std::to_string(steps) + '\n' + idiom;
    script::RunOptions options;
    options.complain = [](std::string_view told) { ADD_FAILURE() << told; };
    double least = 1e9;
    for (int run = 0; run < 3; ++run) {
        const std::clock_t begin = std::clock();
        EXPECT_EQ(script::RunScript({"growth.rbs", text}, options), 0);
        least = std::min(least, static_cast<double>(std::clock() - begin));
    }
    return least;
}

struct Idiom {
    const char* name;
    const char* script;
};

constexpr const char* kLongText =
    "Dim s As String\nFor i As Integer = 1 To Steps\n  s = s + \"ab,\"\nNext\nDim n As Integer\n";

const Idiom kIdioms[] = {
    {"ATextThatGrows", "Dim s As String\nFor i As Integer = 1 To Steps * 4\n  s = s + \"abcdef\"\nNext\n"},
    {"ATextInAPropertyThatGrows",
     "Class C\n  Dim s As String\nEnd Class\nDim c As New C\nFor i As Integer = 1 To Steps * 4\n"
     "  c.s = c.s + \"abcdef\"\nNext\n"},
    {"AnArrayThatGrows", "Dim a() As Integer\nFor i As Integer = 1 To Steps * 4\n  a.Append i\nNext\n"},
    {"AQueue",
     "Dim a() As Integer\nFor i As Integer = 1 To Steps\n  a.Append i\nNext\nFor i As Integer = 1 To Steps\n"
     "  a.Remove 0\nNext\n"},
    {"AnArrayFilledFromTheFront", "Dim a() As Integer\nFor i As Integer = 1 To Steps\n  a.Insert 0, i\nNext\n"},
    {"ADictionaryThatGrows", "Dim d As New Dictionary\nFor i As Integer = 1 To Steps\n  d.Value(i) = i\nNext\n"},
    {"ADictionaryOfNumbersThatLieApart",
     "Dim d As New Dictionary\nFor i As Integer = 1 To Steps\n  d.Value(i * 8209) = i\nNext\n"},
    {"ADictionaryOfTexts",
     "Dim d As New Dictionary\nFor i As Integer = 1 To Steps\n  d.Value(\"Key \" + Str(i)) = i\nNext\n"},
    {"ADictionaryThatEmpties",
     "Dim d As New Dictionary\nFor i As Integer = 1 To Steps\n  d.Value(i) = i\nNext\nFor i As Integer = 1 To Steps\n"
     "  d.Remove d.Key(0)\nNext\n"},
};

const Idiom kIdiomsOfLongTexts[] = {
    {"Characters", "For i As Integer = 1 To Steps * 3\n  n = n + Asc(Mid(s, i, 1))\nNext\n"},
    {"CharactersBeyondAscii", "s = s + \"ü\"\nFor i As Integer = 1 To Steps * 3\n  n = n + Asc(Mid(s, i, 1))\nNext\n"},
    {"Parts", "For Each part As String In Split(s, \",\")\n  n = n + Len(part)\nNext\n"},
    {"Replacements", "n = Len(ReplaceAll(s, \",\", \"; \"))\n"},
    {"NearMatches",
     "Dim wanted As String = Left(s, Len(s) \\ 2) + \"x\"\nFor i As Integer = 1 To 9\n  n = n + InStr(s, "
     "wanted)\nNext\n"},
    {"Joins", "n = Len(Join(Split(s, \",\"), \";\"))\n"},
};

void ExpectSteady(const Idiom& idiom, const std::string& before) {
    constexpr int kSteps = 5'000, kTimes = 8;
    const double few = TimeOf(before + idiom.script, kSteps), many = TimeOf(before + idiom.script, kSteps * kTimes);
    EXPECT_LT(many, 30 * std::max(few, 1000.0)) << idiom.name << ": " << few << " and " << many;
}

TEST(Growth, TakesTimeForEachStepAlone) {
    for (const Idiom& idiom : kIdioms) ExpectSteady(idiom, "");
}

TEST(Growth, OfLongTextsTakesTimeForEachPartAlone) {
    for (const Idiom& idiom : kIdiomsOfLongTexts) ExpectSteady(idiom, kLongText);
}

}  // namespace
