// The prompt, fed by a pipe: without editing, else as on a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Command.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string Typed(const std::string& lines) { return RunCommandFed(lines, {"repl"}).out; }

TEST(Repl, TellsTheValueOfALineThatIsAnExpression) {
    EXPECT_EQ(Typed("1 + 1\n"), "2\n");
    EXPECT_EQ(Typed("\"a\" + \"b\"\n"), "\"ab\"\n");
    EXPECT_EQ(Typed("Nil\n"), "nil\n");
    EXPECT_EQ(Typed("Sqrt(16)\n"), "4\n");
}

TEST(Repl, KeepsVariablesRoutinesAndClasses) {
    EXPECT_EQ(Typed("Dim x As Integer = 5\nx = x + 2\nx\n"), "7\n");
    EXPECT_EQ(Typed("Function Half(n As Double) As Double\nReturn n / 2\nEnd Function\nHalf(3)\n"), "1.5\n");
    EXPECT_EQ(Typed("Class Dog\nDim Name As String = \"rex\"\nShared Property Count As Integer = 4\nEnd Class\n"
                    "Dim d As New Dog\nd.Name\nDog.Count\n"),
              "\"rex\"\n4\n");
    EXPECT_EQ(Typed("Dim total As Integer\nSub Add(n As Integer)\ntotal = total + n\nEnd Sub\nAdd 3\nAdd(4)\ntotal\n"),
              "7\n");
}

TEST(Repl, RunsABlockWhenItIsWhole) {
    EXPECT_EQ(Typed("For i As Integer = 1 To 2\nIf i = 2 Then\nPrint i\nEnd If\nNext\n"), "2\n");
    EXPECT_EQ(Typed("If 1 = _\n1 Then Print \"one\"\n"), "one\n");
    EXPECT_EQ(Typed("Print \"For Sub\" ' If Then\n"), "For Sub\n");
}

TEST(Repl, ANameDeclaredAgainMeansTheNewOne) {
    EXPECT_EQ(Typed("Dim x As Integer = 5\nDim x As String = \"text\"\nx\n"), "\"text\"\n");
    EXPECT_EQ(Typed("Function F() As Integer\nReturn 1\nEnd Function\nFunction F() As Integer\nReturn 2\nEnd Function\n"
                    "F\n"),
              "2\n");
}

TEST(Repl, ObjectsGoWhenTheyShould) {
    const std::string tracked = "Class Tracked\nSub Destructor()\nPrint \"released\"\nEnd Sub\nEnd Class\n";
    EXPECT_EQ(Typed(tracked + "Dim t As New Tracked\nt = Nil\nPrint \"next\"\n"), "released\nnext\n");
    EXPECT_EQ(Typed(tracked + "Dim t As New Tracked\nPrint \"last\"\n"), "last\nreleased\n");
    EXPECT_EQ(Typed(tracked + "New Tracked\nPrint \"next\"\n"), "Tracked\nreleased\nnext\n");
}

TEST(Repl, DescribesAPictureByItsSize) {
    EXPECT_EQ(Typed("New PictureTQX(30, 20, PictureTQX.ImageFormatRGB)\nNew Picture(4, 3, 32)\n"),
              "PictureTQX, 30 × 20\nPicture, 4 × 3\n");
}

TEST(Repl, GoesOnAfterMistakesAndExceptions) {
    const Outcome outcome = RunCommandFed(
        "Dim x As Integer = nothing\nx\nClass A\nDim b As Nowhere\nEnd Class\nDim x As Integer = 2\n"
        "Raise New IOException(\"oops\")\nClass A\nEnd Class\nx\n",
        {"repl"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "2\n");
    EXPECT_THAT(outcome.err, HasSubstr("nothing here is called nothing"));
    EXPECT_THAT(outcome.err, HasSubstr("nothing here is called x"));
    EXPECT_THAT(outcome.err, HasSubstr("there is no type Nowhere"));
    EXPECT_THAT(outcome.err, HasSubstr("IOException: oops\n    Raise New IOException(\"oops\")\n    ^\n"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("there is a class A already")));
}

TEST(Repl, EndsWithWhatQuitIsGiven) {
    const Outcome outcome = RunCommandFed("Quit(3)\nPrint \"no\"\n", {"repl"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.out, "");
}

}  // namespace
