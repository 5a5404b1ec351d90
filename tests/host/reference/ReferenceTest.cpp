// The written reference of a plug-in's classes.
#include <gmock/gmock.h>

#include <sstream>

#include "host/reference/Reference.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Reference : public SampleTest {
  protected:
    std::string Ask(const std::string& what, bool json = false, int columns = 80) {
        std::string text;
        found_ = host::DescribeClasses(host::LoadPlugin(PluginPath()).classes, {what, json, columns}, text);
        return text;
    }

    bool found_ = false;
};

TEST_F(Reference, ListsAClassInGroups) {
    const std::string text = Ask("sample");
    EXPECT_TRUE(found_);
    EXPECT_THAT(text,
                StartsWith("Sample\n======\n2 constructors, 42 methods, 1 shared method, 11 properties, 3 events,\n"
                           "2 constants.\n\nConstructors\n  New Sample\n"
                           "  New Sample(count As Integer, label As String)\n\nMethods\n"));
    EXPECT_THAT(text, HasSubstr("\nShared methods\n  Sample.Thrice(x As Integer) As Integer\n"));
    EXPECT_THAT(text, HasSubstr("  DoubleCount As Integer [read-only]\n"));
    EXPECT_THAT(text, HasSubstr("  Count As Integer\n"));
    EXPECT_THAT(text, HasSubstr("  SlotAt(index As Integer) As Int64 [assignable]\n"));
    EXPECT_THAT(text, HasSubstr("\nEvents\n  Asked(number As Integer, text As String) As Sample\n"));
    EXPECT_THAT(text, HasSubstr("\nConstants Sample...\n  SampleSmall = 7            SampleLarge = -2147483633\n"));
    EXPECT_THAT(text, Not(HasSubstr("DerivedSample")));
}

TEST_F(Reference, BreaksLinesAtTheWidth) {
    for (const int columns : {60, 80, 120}) {
        std::istringstream lines(Ask("", false, columns));
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), static_cast<std::size_t>(columns)) << line;
    }
    EXPECT_THAT(Ask("Sample.Sum6"),
                HasSubstr("  Sum6(a As Integer, b As Integer, c As Integer, d As Integer, e As Integer,\n"
                          "      f As Integer) As Int64\n"));
}

TEST_F(Reference, ListsAllClasses) {
    const std::string text = Ask("");
    EXPECT_THAT(text, AllOf(HasSubstr("Sample\n======\n"),
                            HasSubstr("\nDerivedSample\n=============\nInherits Sample. 1 property.\n")));
}

TEST_F(Reference, ListsAMembersOverloads) {
    EXPECT_EQ(Ask("sample.pick"),
              "Sample\n======\n"
              "  Pick(value As Integer) As Integer\n  Pick(value As Double) As Integer\n"
              "  Pick(value As String) As Integer\n  Pick(value As Integer, second As Boolean = True) As Integer\n");
    EXPECT_EQ(Ask("pick"), Ask("Sample.Pick"));
    EXPECT_EQ(Ask("Extra"), "DerivedSample\n=============\n  Extra As Integer\n");
    EXPECT_EQ(Ask("asked"), "Sample\n======\n  Event Asked(number As Integer, text As String) As Sample\n");
}

TEST_F(Reference, OffersNearNames) {
    EXPECT_EQ(Ask("Sampel"), "There is no member \"Sampel\". The nearest: Sample.\n");
    EXPECT_FALSE(found_);
    EXPECT_EQ(Ask("Sample.Pik"), "There is no member \"Pik\". The nearest: Pick.\n");
    EXPECT_EQ(Ask("Sampler.Pick"), "There is no class \"Sampler\". The nearest: Sample.\n");
    EXPECT_EQ(Ask("Quite.Different"), "There is no class \"Quite\".\n");
    EXPECT_THAT(host::NearNames("filter", {"BlurFilter", "Row", "Filler"}), ElementsAre("BlurFilter", "Filler"));
}

TEST_F(Reference, GivesProgramsEverything) {
    const std::string text = Ask("DerivedSample", true);
    EXPECT_EQ(text, R"({
  "classes": [
    {
      "name": "DerivedSample",
      "superclass": "Sample",
      "version": 9,
      "flags": 0,
      "instanceDataSize": 4,
      "methods": [],
      "sharedMethods": [],
      "properties": [
        {
          "name": "Extra",
          "type": "Integer",
          "read": "field",
          "write": "field",
          "flags": 6
        }
      ],
      "events": [],
      "constants": []
    }
  ]
}
)");
    EXPECT_THAT(Ask("Pick", true),
                AllOf(HasSubstr(R"("declaration": "Pick(value As Integer, second As Boolean = True) As Integer")"),
                      HasSubstr("\"default\": true"), Not(HasSubstr("Measure"))));
}

}  // namespace
