// What a script says reaches whoever runs it, by whatever member it is said.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/script/Script.h"
#include "host/script/Session.h"

namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

constexpr const char* kSpeech =
    "MsgBox \"box\"\nStdOut.Write \"a\"\nPrint \"b\"\nStdOut.WriteLine \"c\"\nStdOut.Write \"d\" + Chr(10) + \"e\"\n";

struct Listener {
    Texts lines, texts;
    script::RunOptions Options(bool takesTexts) {
        script::RunOptions options;
        options.print = [this](std::string_view line) { lines.emplace_back(line); };
        if (takesTexts) options.write = [this](std::string_view text) { texts.emplace_back(text); };
        options.complain = [](std::string_view text) { ADD_FAILURE() << text; };
        return options;
    }
};

TEST(Output, OfEveryKindComesAsLinesToWhoeverTakesLines) {
    Listener listener;
    EXPECT_EQ(script::RunScript({"speech.rbs", kSpeech}, listener.Options(false)), 0);
    EXPECT_THAT(listener.lines, ElementsAre("box", "ab", "c", "d", "e"));
}

TEST(Output, ComesAsItIsWrittenToWhoeverTakesTexts) {
    Listener listener;
    EXPECT_EQ(script::RunScript({"speech.rbs", kSpeech}, listener.Options(true)), 0);
    EXPECT_THAT(listener.lines, ElementsAre("b"));
    EXPECT_THAT(listener.texts, ElementsAre("box\n", "a", "c\n", "d\ne"));
}

TEST(Output, OfAPromptComesStepByStep) {
    Texts lines;
    script::Session session([&](std::string_view line) { lines.emplace_back(line); },
                            [](std::string_view text) { ADD_FAILURE() << text; });
    session.Run("StdOut.Write \"a\"\n");
    EXPECT_THAT(lines, ElementsAre("a"));
    session.Run("MsgBox \"b\"\n");
    EXPECT_THAT(lines, ElementsAre("a", "b"));
}

constexpr const char* kHandled =
    "Class Clock\nEvent Tick()\nSub Run()\nRaiseEvent Tick\nEnd Sub\nEnd Class\n"
    "Sub OnTick(sender As Timer)\nPrint \"tick\"\nEnd Sub\n"
    "Dim t As New Timer\nt.Period = 1\nt.Mode = 1\nAddHandler t.Action, AddressOf OnTick\n";

TEST(Sessions, KeepTheirHandlersWhenAnotherProgramEnds) {
    Texts lines;
    const auto print = [&](std::string_view line) { lines.emplace_back(line); };
    const auto complain = [](std::string_view text) { ADD_FAILURE() << text; };
    script::Session session(print, complain);
    session.Run(kHandled);
    Listener other;
    EXPECT_EQ(script::RunScript({"other.rbs", "Print 1\n"}, other.Options(false)), 0);
    session.Run("App.DoEvents 20\n");
    EXPECT_THAT(lines, ElementsAre("tick"));
}

}  // namespace
