// What observers of a script are told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/script/Machine.h"
#include "host/script/Script.h"

namespace {

struct Lines : script::MemberObserver {
    std::vector<std::string> seen;
    void Printed(std::string_view line, script::Position at) override {
        seen.push_back(std::to_string(at.line) + ": " + std::string(line));
    }
};

TEST(Observers, SeeWhatIsPrintedAndWhere) {
    Lines lines;
    std::string printed;
    script::RunOptions options;
    options.print = [&printed](std::string_view line) { printed += line; };
    options.observers.push_back(&lines);
    const int code = script::RunScript({"observed.rbs",
                                        "Sub Tell(what As String)\n"
                                        "  Print what\n"
                                        "End Sub\n"
                                        "For i As Integer = 1 To 2\n"
                                        "  Print Str(i)\n"
                                        "Next\n"
                                        "Tell(\"last\")\n"},
                                       options);
    EXPECT_EQ(code, 0);
    EXPECT_THAT(lines.seen, testing::ElementsAre("5: 1", "5: 2", "2: last"));
    EXPECT_EQ(printed, "12last");
}

}  // namespace
