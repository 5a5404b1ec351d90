// How a table of preconditions is read, and what its expressions mean.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "host/calls/Runtime.h"
#include "host/script/ExplainTable.h"

namespace {

using namespace script::explain;
using host::Value;

Scope Numbers(std::initializer_list<std::pair<const char*, double>> numbers) {
    Scope scope;
    for (const auto& [name, number] : numbers) scope.names[name] = {Value(number), name};
    return scope;
}

std::string TextOf(const std::string& expression, const Scope& scope = {}) {
    return Sentence::Parse("{" + expression + "}").Fill(scope);
}

bool Holds(const std::string& condition, const Scope& scope = {}) { return Expression::Parse(condition).Holds(scope); }

TEST(ExplainExpressions, FollowTheLanguagesPrecedence) {
    EXPECT_EQ(TextOf("1 + 2 * 3 - 4"), "3");
    EXPECT_EQ(TextOf("(1 + 2) * -3"), "-9");
    EXPECT_EQ(TextOf("-7 \\ 2"), "-3");
    EXPECT_TRUE(Holds("1 < 2 And 3 >= 3 Or 1 = 2"));
    EXPECT_TRUE(Holds("Not (1 > 2) And 1 <> 2"));
    EXPECT_TRUE(Holds("1 = 2 Or 2 <= 2"));
    EXPECT_FALSE(Holds("True And False"));
}

TEST(ExplainExpressions, CountWithoutWrapping) {
    const Scope scope = Numbers({{"w", 2147483647}, {"h", 2147483647}});
    EXPECT_TRUE(Holds("w * h * 16 > 2147483648", scope));
    EXPECT_EQ(TextOf("w + 1", scope), "2147483648");
}

TEST(ExplainExpressions, HaveNoValueWhereANameIsMissing) {
    const Scope scope = Numbers({{"x", 3}});
    EXPECT_FALSE(Holds("y > 1", scope));
    EXPECT_FALSE(Holds("Not (y > 1)", scope));
    EXPECT_TRUE(Holds("x > 1 Or y > 1", scope));
    EXPECT_TRUE(Holds("y > 1 Or x > 1", scope));
    EXPECT_TRUE(Holds("Not (x < 1 And y > 1)", scope));
    EXPECT_FALSE(Holds("x > 1 And y > 1", scope));
    EXPECT_TRUE(Holds("Default(y, 7) = 7", scope));
    EXPECT_TRUE(Holds("If(x = 3, x, y) = 3", scope));
    EXPECT_EQ(TextOf("y", scope), "?");
    EXPECT_EQ(TextOf("1 \\ 0"), "?");
}

TEST(ExplainExpressions, KnowNilAndItsMembers) {
    Scope scope;
    scope.names["p"] = {Value(nullptr), "p"};
    EXPECT_TRUE(Holds("p Is Nil", scope));
    EXPECT_FALSE(Holds("p.Width > 1", scope));
    EXPECT_FALSE(Holds("p.Width Is Nil", scope));
    scope.names["m"] = {Value(host::NewObject(host::Runtime::Get().ClassNamed("MemoryBlock"))), "the block"};
    EXPECT_FALSE(Holds("m Is Nil", scope));
    EXPECT_TRUE(Holds("m.Size = 0", scope));
    EXPECT_FALSE(Holds("m.NoSuchProperty = 0", scope));
    EXPECT_EQ(TextOf("m", scope), "the block");
}

TEST(ExplainExpressions, CallFunctions) {
    const Scope scope = Numbers({{"x", 3}, {"n", std::nan("")}});
    EXPECT_EQ(TextOf("Min(x, 2) + Max(x, 5) + Abs(-1)", scope), "8");
    EXPECT_TRUE(Holds("IsFinite(x) And Not IsFinite(n)", scope));
    EXPECT_EQ(TextOf("Name(x)", scope), "x");
    EXPECT_EQ(TextOf("Min(x)", scope), "?");
    EXPECT_EQ(TextOf("NoSuchFunction(x)", scope), "?");
}

TEST(ExplainExpressions, RefuseWhatIsNoExpression) {
    for (const char* text : {"", "1 +", "(1", "1 2", "a.", "a Is", "f(1", "f(1 2)", "+", "#"})
        EXPECT_THROW(Expression::Parse(text), ExpressionError) << text;
    EXPECT_THROW(Expression::Parse(std::string(5000, '(')), ExpressionError);
    EXPECT_THROW(Sentence::Parse("an open {brace"), ExpressionError);
}

constexpr const char* kTable = R"(
' A comment.
let twice(x) = 2 * x

reasons small(n)
  n < 1 : {Name(n)} {n} is below 1

class Thing
members Grow, Shrink
  use small(width)
  use small(height)
  let area = twice(width) * height
  area > 100 : twice {width} × {height} is {area}
  area > 50 ~ a large one
  area = 36 :~ both
  done if width = 5
  height = 7 : height is 7
  otherwise : nobody knows
members Grow =, Grow(depth)
  closes
  refuses if depth = 1 : broke
)";

std::vector<std::string> Told(const Table& table, const Scope& scope, bool refused) {
    std::vector<std::string> told;
    for (const auto& broken : table.Broken(*table.Find("Thing", "Grow", false), scope, refused))
        told.push_back(broken.sentence);
    return told;
}

TEST(ExplainTable, TellsTheRowsThatApply) {
    using testing::ElementsAre;
    const Table table(kTable);
    EXPECT_THAT(Told(table, Numbers({{"width", 0}, {"height", -2}}), true),
                ElementsAre("width 0 is below 1", "height -2 is below 1"));
    EXPECT_THAT(Told(table, Numbers({{"width", 6}, {"height", 9}}), true), ElementsAre("twice 6 × 9 is 108"));
    EXPECT_THAT(Told(table, Numbers({{"width", 6}, {"height", 9}}), false), ElementsAre("a large one"));
    EXPECT_THAT(Told(table, Numbers({{"width", 6}, {"height", 3}}), true), ElementsAre("both"));
    EXPECT_THAT(Told(table, Numbers({{"width", 6}, {"height", 3}}), false), ElementsAre("both"));
    EXPECT_THAT(Told(table, Numbers({{"width", 1}, {"height", 7}}), true), ElementsAre("height is 7"));
    EXPECT_THAT(Told(table, Numbers({{"width", 5}, {"height", 7}}), true), testing::IsEmpty());
    EXPECT_THAT(Told(table, Numbers({{"width", 1}, {"height", 1}}), true), ElementsAre("nobody knows"));
    EXPECT_THAT(Told(table, Numbers({{"width", 1}, {"height", 1}}), false), testing::IsEmpty());
    EXPECT_EQ(table.Reasons().size(), 6u);
}

TEST(ExplainTable, FindsAMembersRowsByItsParametersFirst) {
    const Table table(kTable);
    host::Declaration method;
    method.name = "grow";
    const Section* const plain = table.Find("Thing", method, false);
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain, table.Find("thing", "Shrink", false));
    EXPECT_FALSE(plain->closes);
    method.parameters.resize(1);
    method.parameters[0].name = "Depth";
    const Section* const deep = table.Find("Thing", method, false);
    ASSERT_TRUE(deep);
    EXPECT_TRUE(deep->closes);
    EXPECT_EQ(deep->refusalText, "broke");
    EXPECT_EQ(deep, table.Find("Thing", "Grow", true));
    EXPECT_EQ(table.Find("Thing", "Shrink", true), nullptr);
    EXPECT_EQ(table.Find("Other", "Grow", false), nullptr);
}

TEST(ExplainTable, EndsFunctionsThatCallThemselves) {
    const Table table("let f(x) = f(x + 1)\nclass A\nmembers B\n  f(1) = 1 : never\n  otherwise : ended\n");
    const auto broken = table.Broken(*table.Find("A", "B", false), {}, true);
    ASSERT_EQ(broken.size(), 1u);
    EXPECT_EQ(broken[0].sentence, "ended");
}

std::string ProblemOf(const std::string& text) {
    try {
        const Table table(text);
    } catch (const ExpressionError& error) {
        return error.what();
    }
    return "none";
}

TEST(ExplainTable, NamesTheLineThatCannotBeRead) {
    EXPECT_EQ(ProblemOf("class A\nmembers B\n  x < 1\n"), "3: needs a : before what is to be said");
    EXPECT_EQ(ProblemOf("\n\nuse nobody(x)\n"), "3: knows no reasons nobody");
    EXPECT_EQ(ProblemOf("reasons a(p)\nclass A\nmembers B\n  use a(1, 2)\n"),
              "4: gives a too many or too few arguments");
    EXPECT_EQ(ProblemOf("reasons a(p)\n  use a(p)\n"), "2: knows no reasons a");
    EXPECT_EQ(ProblemOf("class A\nx = 1 : one\n"), "2: stands below no members");
    EXPECT_EQ(ProblemOf("class A\nmembers B\n  x = : one\n"), "3: can't read \"\" here");
    EXPECT_EQ(ProblemOf("class A\nmembers B, b\n"), "2: b stands here twice");
    EXPECT_EQ(ProblemOf("reasons a(p\n"), "1: needs a ) at the end of \"a(p\"");
}

}  // namespace
