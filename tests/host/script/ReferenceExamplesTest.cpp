// The examples of the framework's reference run and print what stands behind their lines.
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "host/reference/Descriptions.h"
#include "host/script/Script.h"
#include "tests/support/PluginFixture.h"

namespace {

// What stands behind the lines of an example that print.
std::string ExpectedOf(const std::string& example) {
    std::istringstream lines(example);
    std::string expected;
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t mark = line.find("  ' "); mark != std::string::npos)
            expected += line.substr(mark + 4) + '\n';
    return expected;
}

class ReferenceExamples : public support::PluginTest {
  protected:
    // Some read standard input, which may be a terminal.
    void SetUp() override {
        PluginTest::SetUp();
        ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);
    }
};

TEST_F(ReferenceExamples, PrintWhatTheySay) {
    for (const std::string_view name : host::DescribedNames()) {
        const std::string& example = host::FindDescription(name)->example;
        std::string printed, complaints;
        script::RunOptions options;
        options.print = [&](std::string_view line) { printed.append(line).append("\n"); };
        options.complain = [&](std::string_view text) { complaints += text; };
        EXPECT_EQ(script::RunScript({"example", example}, options), 0) << name << '\n' << complaints;
        EXPECT_EQ(printed, ExpectedOf(example)) << name;
        EXPECT_FALSE(printed.empty()) << name;
    }
}

}  // namespace
