// Which overload a call means, and what conversions give.
#include <gmock/gmock.h>

#include "host/calls/Declaration.h"
#include "host/calls/Overload.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using namespace support;
using host::Choice;
using host::ChooseOverload;
using ::testing::HasSubstr;

// Methods by their declarations alone.
class Candidates {
  public:
    explicit Candidates(std::initializer_list<const char*> declarations) {
        for (const char* text : declarations) {
            host::Method& method = methods_.emplace_back();
            std::string problem;
            EXPECT_TRUE(host::ReadDeclaration(text, method.declaration, problem)) << problem;
        }
        for (host::Method& method : methods_) pointers_.push_back(&method);
    }

    Choice Choose(const Values& arguments) const { return ChooseOverload(pointers_, arguments); }

    // Which one is chosen, from 0; -1 for none.
    int Index(const Values& arguments) const {
        const Choice choice = Choose(arguments);
        for (std::size_t i = 0; i < methods_.size(); ++i)
            if (choice.method == &methods_[i]) return static_cast<int>(i);
        return -1;
    }

    host::Method& operator[](std::size_t index) { return methods_[index]; }

    std::vector<const host::Method*> pointers_;

  private:
    std::deque<host::Method> methods_;
};

class Overloads : public SampleTest {};

TEST_F(Overloads, AreChosenByNumberOfArguments) {
    const Candidates fill{"Fill(value as integer)", "Fill(x as integer, y as integer, value as integer)"};
    EXPECT_EQ(fill.Index({Value(1)}), 0);
    EXPECT_EQ(fill.Index({Value(1), Value(2), Value(3)}), 1);
    EXPECT_EQ(fill.Index({}), -1);
    EXPECT_EQ(fill.Index({Value(1), Value(2)}), -1);
}

TEST_F(Overloads, AreChosenByTypes) {
    const Candidates pick{"P(a as integer)", "P(a as double)", "P(a as string)", "P(a as color)", "P(a as Sample)"};
    EXPECT_EQ(pick.Index({Value(1)}), 0);
    EXPECT_EQ(pick.Index({Value(1.0)}), 1);
    EXPECT_EQ(pick.Index({Value("x")}), 2);
    EXPECT_EQ(pick.Index({Value(sdk::Color{1})}), 3);
    EXPECT_EQ(pick.Index({Value(New("Sample"))}), 4);
    EXPECT_EQ(pick.Index({Value(nullptr)}), 4);
    EXPECT_EQ(pick.Index({Value(true)}), -1);
}

TEST_F(Overloads, PreferTheNearestNumber) {
    const Candidates wide{"P(a as int64)", "P(a as double)"};
    EXPECT_EQ(wide.Index({Value(1)}), 0);
    EXPECT_EQ(wide.Index({Value(1.0F)}), 1);
    EXPECT_EQ(wide.Index({Value(std::uint8_t{1})}), 0);
    const Candidates lossy{"P(a as integer)", "P(a as string)"};
    EXPECT_EQ(lossy.Index({Value(1.5)}), 0);
}

TEST_F(Overloads, KeepNumbersWhole) {
    const Candidates reals{"P(a as single)", "P(a as double)"};
    EXPECT_EQ(reals.Index({Value(16777217)}), 1);
    EXPECT_EQ(reals.Index({Value(std::int64_t{16777217})}), 1);
    EXPECT_EQ(reals.Index({Value(16777217U)}), 1);
    EXPECT_EQ(reals.Index({Value(1.0F)}), 0);
    const Candidates wholes{"P(a as uint8)", "P(a as integer)", "P(a as int64)"};
    EXPECT_EQ(wholes.Index({Value(1.5)}), 2) << "the widest loses least";
    EXPECT_EQ(wholes.Index({Value(1U)}), 2);
}

TEST(Kinds, HoldWhatTheirBitsSay) {
    using host::HoldsAll;
    using host::Kind;
    EXPECT_TRUE(HoldsAll(Kind::Double, Kind::UInt32));
    EXPECT_TRUE(HoldsAll(Kind::Single, Kind::UInt8));
    EXPECT_FALSE(HoldsAll(Kind::Double, Kind::Int64));
    EXPECT_FALSE(HoldsAll(Kind::Single, Kind::Integer));
    EXPECT_FALSE(HoldsAll(Kind::UInt32, Kind::Integer));
    EXPECT_FALSE(HoldsAll(Kind::Int64, Kind::Single));
    EXPECT_EQ(host::LowestOf(Kind::Int64), INT64_MIN);
    EXPECT_EQ(host::HighestOf(Kind::Int64), INT64_MAX);
    EXPECT_EQ(host::LowestOf(Kind::Integer), INT32_MIN);
    EXPECT_EQ(host::HighestOf(Kind::UInt32), UINT32_MAX);
    EXPECT_EQ(host::LowestOf(Kind::UInt8), 0);
    EXPECT_EQ(host::HighestOf(Kind::UInt8), 255);
}

TEST_F(Overloads, PreferTheNearestClass) {
    const Candidates classes{"P(a as variant)", "P(a as Sample)", "P(a as DerivedSample)"};
    EXPECT_EQ(classes.Index({Value(New("DerivedSample"))}), 2);
    EXPECT_EQ(classes.Index({Value(New("Sample"))}), 1);
    EXPECT_EQ(classes.Index({Value(1)}), 0);
    EXPECT_EQ(classes.Index({Value(New("RuntimeException"))}), 0);
}

TEST_F(Overloads, PreferFewerDefaults) {
    const Candidates rotate{"R(dest as Sample = nil) as Sample", "R()"};
    EXPECT_EQ(rotate.Index({}), 1);
    EXPECT_EQ(rotate.Index({Value(nullptr)}), 0);
}

TEST_F(Overloads, FillInDefaults) {
    const Candidates draw{"D(a as integer, b as boolean = true, c as double = 2)"};
    const Choice choice = draw.Choose({Value(1.5)});
    ASSERT_EQ(choice.arguments.size(), 3U);
    EXPECT_EQ(choice.arguments[0].kind(), host::Kind::Integer);
    EXPECT_EQ(choice.arguments[0].ToInt64(), 1);
    EXPECT_TRUE(choice.arguments[1].ToBoolean());
    EXPECT_EQ(choice.arguments[2].ToDouble(), 2.0);
}

TEST_F(Overloads, GatherParamArrays) {
    const Candidates max{"Max(a as double, ParamArray rest as double)"};
    const Choice choice = max.Choose({Value(1), Value(2), Value(3.5)});
    ASSERT_EQ(choice.arguments.size(), 2U);
    EXPECT_EQ(host::UpperBound(choice.arguments[1].array()), 1);
    EXPECT_EQ(choice.arguments[1].array()->values[0].kind(), host::Kind::Double);
    EXPECT_EQ(host::UpperBound(max.Choose({Value(1)}).arguments[1].array()), -1);
    auto reals = host::MakeArray(host::TypeNamed("Double"), 3);
    const host::Array* given = reals.get();
    EXPECT_EQ(max.Choose({Value(1), Value(std::move(reals))}).arguments[1].array(), given) << "it is one already";
}

TEST_F(Overloads, TakeArraysOfTheSameElementsOnly) {
    const Candidates sum{"S(a() as integer)"};
    EXPECT_EQ(sum.Index({Value(host::MakeIntegerArray({1}))}), 0);
    EXPECT_EQ(sum.Index({Value(host::MakeArray(host::TypeNamed("Double")))}), -1);
    EXPECT_EQ(sum.Index({Value(nullptr)}), 0);
    EXPECT_EQ(sum.Index({Value(1)}), -1);
}

TEST_F(Overloads, ExplainWhyNoneFits) {
    const Candidates pick{"P(a as integer)", "P(b as string, c as double = 1.5)"};
    const Choice choice = pick.Choose({Value(nullptr), Value(true)});
    EXPECT_EQ(choice.method, nullptr);
    EXPECT_EQ(choice.problem,
              "no method takes (nil, Boolean); there is P(a As Integer), P(b As String, c As Double = 1.5)");
    EXPECT_EQ(Candidates{}.Choose({}).problem, "no method takes (); there is none");
}

TEST_F(Overloads, RefuseWhatFitsSeveral) {
    const Candidates pick{"P(a as Sample, b as integer)", "P(a as integer, b as Sample)", "P(a as Sample, b as Sample)",
                          "P(a as string, b as string)"};
    EXPECT_EQ(pick.Index({Value(nullptr), Value(1)}), 0);
    const Candidates nils{"P(a as Sample)", "P(a as DerivedSample)"};
    EXPECT_THAT(nils.Choose({Value(nullptr)}).problem, HasSubstr("more than one method takes (nil)"));
}

TEST_F(Overloads, OfAssignmentsTakeTheValueToo) {
    Candidates row{"Row(index as integer) as Sample", "Row(index as integer, other as integer) as Sample"};
    row[0].assign = [](Object*, std::span<Value>) { return Value(); };
    const Value sample(New("Sample"));
    const Value text("x");
    const Values one{Value(1)};
    const Values two{Value(1), Value(2)};
    const Choice choice = ChooseOverload(row.pointers_, one, &sample);
    EXPECT_EQ(choice.method, &row[0]);
    EXPECT_EQ(choice.arguments.size(), 2U);
    EXPECT_EQ(ChooseOverload(row.pointers_, one, &text).method, nullptr);
    EXPECT_EQ(ChooseOverload(row.pointers_, two, &sample).method, nullptr) << "not assignable";
}

TEST_F(Overloads, UseConversionsOfTheHostLast) {
    host::Runtime::Get().AddConversion({host::TypeNamed("Sample"), host::TypeNamed("Color"),
                                        [](const Value&) { return Value(sdk::Color{0x123456}); }});
    const Candidates tint{"T(a as color)"};
    const Choice choice = tint.Choose({Value(New("DerivedSample"))});
    ASSERT_NE(choice.method, nullptr);
    EXPECT_EQ(choice.arguments[0].ToInt64(), 0x123456);
    EXPECT_EQ(tint.Index({Value(1)}), -1);
    EXPECT_EQ((Candidates{"T(a as color)", "T(a as Sample)"}.Index({Value(New("DerivedSample"))})), 1);
}

TEST_F(Overloads, ChooseAmongAPluginsMethods) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "Pick", 1).ToInt64(), 1);
    EXPECT_EQ(Call(sample, "Pick", 1.0).ToInt64(), 2);
    EXPECT_EQ(Call(sample, "Pick", "one").ToInt64(), 3);
    EXPECT_EQ(Call(sample, "Pick", 1, false).ToInt64(), 4);
    EXPECT_EQ(Call(sample, "Pick", 1, true).ToInt64(), 5);
}

}  // namespace
