// What the framework says of itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/calls/Runtime.h"
#include "host/reference/Descriptions.h"
#include "host/reference/Reference.h"

namespace host {

namespace {

using testing::HasSubstr;

std::string FunctionPage(const std::string& name, bool json = false) {
    std::string text;
    EXPECT_TRUE(DescribeFunction(name, {name, json}, text)) << name;
    return text;
}

TEST(Descriptions, OfAFunctionStandAboveItsDeclarations) {
    EXPECT_EQ(FunctionPage("mid"),
              "Mid\n===\nCharacters from the middle of a text; the first is 1.\n\nDeclarations\n"
              "  Mid(text As String, start As Integer) As String\n"
              "  Mid(text As String, start As Integer, length As Integer) As String\n\nExample\n"
              "  Print Mid(\"picture\", 3, 2)  ' ct\n  Print Mid(\"picture\", 5)  ' ure\n");
    EXPECT_THAT(FunctionPage("Mid", true), HasSubstr("\"name\": \"start\""));
}

TEST(Descriptions, KnowWhatTheLanguageItselfHas) {
    EXPECT_THAT(FunctionPage("print"), HasSubstr("Print(value)\n"));
    EXPECT_THAT(FunctionPage("Ubound"), HasSubstr("-1 if it is empty."));
    std::string text = "as it was";
    EXPECT_FALSE(DescribeFunction("Nothing", {}, text));
    EXPECT_EQ(text, "as it was");
}

TEST(Descriptions, OfAClassStandAboveItsMembers) {
    const Class* const type = Runtime::Get().FindClass("Timer");
    std::string text;
    ASSERT_TRUE(DescribeClasses({&type, 1}, {"Timer"}, text));
    EXPECT_THAT(text, testing::StartsWith("Timer\n=====\nRuns its event Action"));
}

}  // namespace

}  // namespace host
