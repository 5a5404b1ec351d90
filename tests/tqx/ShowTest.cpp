// Pictures in the terminal, as far as a pipe shows them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

using testing::HasSubstr;

TEST(Show, OutsideATerminalOnlyDescribes) {
    const std::string photo = support::SourceFolder() + "/examples/photos/seeds.jpg";
    const Outcome outcome = RunCommand({"show", photo, photo});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, photo + ", 240 × 135\n" + photo + ", 240 × 135\n");
}

TEST(Show, NamesWhatIsNoPictureAndGoesOn) {
    const std::string photo = support::SourceFolder() + "/examples/photos/seeds.jpg";
    const std::string text = support::SourceFolder() + "/README.md";
    const Outcome outcome = RunCommand({"show", text, photo});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tqx: " + text + ": "));
    EXPECT_EQ(outcome.out, photo + ", 240 × 135\n");
}

}  // namespace
