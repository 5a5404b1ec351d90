// Every row of the command's table, and of those of plug-ins that aren't taken, is reached by words.
#include <gmock/gmock.h>

#include <set>

#include "host/messages/CommandMessages.h"
#include "host/messages/LoadMessages.h"
#include "host/messages/ParserMessages.h"
#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

// Whether a line of what the command told has a row's text in it.
bool Has(const std::string& told, std::string_view text) {
    const std::string anywhere = "…" + std::string(text) + "…";
    for (const std::string& line : LinesOf(told))
        if (host::Matches(anywhere, line)) return true;
    return false;
}

struct Reached {
    host::Message row;
    std::vector<std::string> words;
};

std::string TestPlugin(const std::string& name) { return support::TestPluginFolder() + "/" + name + ".so"; }

TEST(CommandMessages, AreReachedByWords) {
    using tqx::kCommandSays;
    const std::vector<Reached> all = {
        {kCommandSays.noCommand, {"rnu", "x"}},
        {kCommandSays.noOption, {"run", "--nothing", "x"}},
        {kCommandSays.scriptMissing, {"run"}},
        {kCommandSays.noCheck, {"check", "--only", "nothing"}},
        {kCommandSays.noReason, {"check", "--except", "calls"}},
        {kCommandSays.noPixelCount, {"run", "--max-pixels", "many", "x"}},
        {kCommandSays.report, {"check", "--only", "loading", "--junit", "/none/at/all.xml"}},
        {kCommandSays.commandMissing, {"--plugin", "x"}},
        {host::kLoadSays.none, {"--plugin", "/none/at/all.so", "run", "-e", "Print 1"}},
        {host::kLoadSays.folder, {"--plugin", "/", "run", "-e", "Print 1"}},
        {host::kLoadSays.cannotLoad, {"--plugin", "/proc/version", "run", "-e", "Print 1"}},
        {host::kLoadSays.noEntry, {"--plugin", TestPlugin("NoEntry"), "run", "-e", "Print 1"}},
        {host::kLoadSays.refused, {"--plugin", TestPlugin("Malformed"), "run", "-e", "Print 1"}},
        {host::kLoadSays.noClass, {"--plugin", TestPlugin("NoClass"), "run", "-e", "Print 1"}},
        {script::kSourceSays.unreadable, {"run", "/none/at/all.rbs"}},
        {script::kSourceSays.tooLarge, {"run", "/dev/zero"}},
    };
    std::set<std::string_view> missing;
    for (const host::Message& row : host::RowsOf(kCommandSays)) missing.insert(row.text);
    for (const host::Message& row : host::RowsOf(host::kLoadSays)) missing.insert(row.text);
    missing.erase(host::kLoadSays.notLoaded.text);  // CheckTest asks for it
    for (const Reached& one : all) {
        const std::string told = RunCommand(one.words).err;
        EXPECT_TRUE(Has(told, one.row.text)) << one.row.text << "\n" << told;
        missing.erase(one.row.text);
    }
    const std::string told = RunCommandInto("/dev/full", {"run", "-e", "Print 1"}).err;
    EXPECT_TRUE(Has(told, kCommandSays.output.text)) << told;
    missing.erase(kCommandSays.output.text);
    EXPECT_THAT(missing, testing::IsEmpty());
}

}  // namespace
