// Plug-ins that load, and the reasons why others don't.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "host/calls/PluginLoader.h"
#include "tests/host/calls/SampleTest.h"
#include "tests/support/Places.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

std::string ErrorOf(const std::string& path) {
    try {
        host::LoadPlugin(path);
    } catch (const host::LoadError& error) {
        return error.what();
    }
    return "";
}

TEST(PluginLoader, SaysThatAFileIsMissing) {
    EXPECT_EQ(ErrorOf("/nowhere/Plugin.so"), "There is no plug-in at /nowhere/Plugin.so.");
}

TEST(PluginLoader, SaysThatAPathIsAFolder) { EXPECT_EQ(ErrorOf("/tmp"), "/tmp is a folder, not a plug-in."); }

TEST(PluginLoader, GivesTheReasonWhenAFileIsNoLibrary) {
    const std::string path = (std::filesystem::temp_directory_path() / "tqx-not-a-library.so").string();
    std::ofstream(path) << "just text\n";
    EXPECT_THAT(ErrorOf(path), AllOf(HasSubstr(path + " can't be loaded as a plug-in: "), HasSubstr("file too short")));
    std::filesystem::remove(path);
}

TEST(PluginLoader, NamesTheFunctionThatALibraryLacks) {
    EXPECT_THAT(ErrorOf(TestPluginPath("Unresolved")), HasSubstr("FunctionThatNobodyHas"));
}

TEST(PluginLoader, SaysThatALibraryHasNoEntryPoint) {
    const std::string path = TestPluginPath("NoEntry");
    EXPECT_THAT(ErrorOf(path), HasSubstr(path + " is no plug-in: it has no entry point REALPluginMain"));
}

TEST(PluginLoader, SaysThatAPluginHasNoClass) {
    EXPECT_THAT(ErrorOf(TestPluginPath("NoClass")), HasSubstr("is a plug-in without any class"));
}

TEST(PluginLoader, NamesEveryFaultOfAClass) {
    const std::string error = ErrorOf(TestPluginPath("Malformed"));
    EXPECT_THAT(error, HasSubstr("class \"Malformed\" is refused: "));
    EXPECT_THAT(error, HasSubstr("method \"Broken(x as)\", column 12: a type was expected, not \")\""));
    EXPECT_THAT(error, HasSubstr("method Functionless has no function"));
    EXPECT_THAT(error, HasSubstr("property Far: its field at byte 4000 lies outside the instance data of 16 bytes"));
    EXPECT_THAT(error, HasSubstr("property Straddling: its field at byte 12 lies outside"));
    EXPECT_THAT(error, HasSubstr("property Closed: it can be neither read nor written"));
    EXPECT_THAT(error, HasSubstr("constant \"Nameless = \", column 12: a literal was expected, not the end"));
    EXPECT_THAT(error, HasSubstr("it states 2 events but has no table of them"));
    EXPECT_EQ(host::Runtime::Get().FindClass("Malformed"), nullptr);
}

TEST(PluginLoader, LoadsAFileOnce) {
    const host::Plugin& plugin = host::LoadPlugin(TestPluginPath("Sample"));
    EXPECT_EQ(&host::LoadPlugin(support::TestPluginFolder() + "/../" +
                                std::filesystem::path(support::TestPluginFolder()).filename().string() + "/Sample.so"),
              &plugin);
    ASSERT_EQ(plugin.classes.size(), 2U);
    EXPECT_EQ(plugin.classes[0]->name(), "Sample");
    EXPECT_EQ(plugin.classes[1]->name(), "DerivedSample");
    EXPECT_EQ(plugin.classes[1]->superclass(), plugin.classes[0]);
}

}  // namespace
