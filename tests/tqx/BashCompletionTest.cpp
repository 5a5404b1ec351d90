// What bash offers behind words typed, against what the command says of itself.
#include <gtest/gtest.h>

#include "tests/support/Places.h"
#include "tests/tqx/Help.h"
#include "tests/tqx/Shell.h"

namespace {

// Bash is told the words as its line editor would tell them: the last one is being typed.
Words OfferedByBash(const std::string& typed) {
    const std::string script = support::SourceFolder() + "/tqx/completions/tqx.bash";
    return LinesPrintedBy("bash -c " +
                          Quoted("source \"$1\"; shift; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _tqx; "
                                 "printf \"%s\\n\" \"${COMPREPLY[@]}\"") +
                          " bash " + Quoted(script) + " " + Quoted(support::CommandFile()) + " " + typed);
}

TEST(BashCompletion, OffersEveryCommandAndOptionAndNoOthers) {
    EXPECT_EQ(OfferedByBash("''"), CommandsInHelp());
    EXPECT_EQ(OfferedByBash("--plugin x ''"), CommandsInHelp());
    EXPECT_EQ(OfferedByBash("--"), LongOnes(OptionsInHelp("")));
    for (const std::string& command : CommandsInHelp()) {
        Words offered = OfferedByBash(command + " -");
        offered.insert("-h");
        EXPECT_EQ(offered, OptionsInHelp(command)) << command;
    }
}

TEST(BashCompletion, OffersWhatFitsAnOption) {
    EXPECT_EQ(OfferedByBash("check --only ''"), ChecksThatThereAre());
    EXPECT_EQ(OfferedByBash("check --except re"), (Words{"records", "references", "repetition", "re-entry"}));
    EXPECT_EQ(OfferedByBash("run " + support::SourceFolder() + "/exam"), Words{support::SourceFolder() + "/examples"});
    EXPECT_EQ(OfferedByBash("fuzz --seed ''"), Words{""});
}

}  // namespace
