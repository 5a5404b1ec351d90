// The table of preconditions beside the plug-in, against what the plug-in does.
//
// The scripts in tests/scripts/explain break them one by one and say so on the line itself:
//
//   ok = p.Scale(s, Nil, 9, 3, 3)   ' explains: Scale gave False: mode 9 is none of the seven kernels, 1 to 7
//
// Whatever has no such comment must do its work, with no precondition broken.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "host/calls/PluginLoader.h"
#include "host/script/Explain.h"
#include "host/script/Script.h"
#include "tests/host/script/Judge.h"
#include "tests/support/Interpose.h"
#include "tests/support/Places.h"

namespace {

using namespace support;
using script::MemberUse;
namespace fs = std::filesystem;

std::vector<fs::path> ExplainScripts() {
    std::vector<fs::path> scripts;
    for (const auto& entry : fs::directory_iterator(SourceFolder() + "/tests/scripts/explain"))
        scripts.push_back(entry.path());
    std::sort(scripts.begin(), scripts.end());
    return scripts;
}

// What a script says about itself: "line: what is explained there".
std::vector<std::string> MarksOf(const std::string& text) {
    constexpr std::string_view kMark = "' explains: ";
    std::vector<std::string> marks;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
        if (const std::size_t at = line.find(kMark); at != std::string::npos)
            marks.push_back(std::to_string(number) + ": " + line.substr(at + kMark.size()));
    return marks;
}

// "path:3:7: text" as "3: text".
std::string WithoutPlace(std::string_view message, const std::string& path) {
    message.remove_prefix(path.size() + 1);
    const std::string line(message.substr(0, message.find(':')));
    message.remove_prefix(message.find(": "));
    return line + std::string(message.substr(0, message.size() - 1));
}

const host::Class& PictureClass() { return host::Runtime::Get().ClassNamed("PictureTQX"); }

// The overload of so many parameters.
const host::Method& MethodNamed(std::string_view name, std::size_t parameters) {
    for (const host::Method* const method : PictureClass().FindMethods(name))
        if (method->declaration.parameters.size() == parameters) return *method;
    ADD_FAILURE() << "there is no " << name << " of " << parameters;
    std::abort();
}

class Preconditions : public PluginTest {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        table_ = PluginTable();
        ASSERT_TRUE(table_);
    }

    void TearDown() override {
        table_.reset();  // it holds strings of the host
        PluginTest::TearDown();
    }

    // Runs a script; gives what was explained, and adds the rows that were told to `reached_`.
    std::vector<std::string> Run(const fs::path& path) {
        std::ifstream file(path);
        const script::Source source{path.string(), std::string(std::istreambuf_iterator<char>(file), {})};
        marks_ = MarksOf(source.text);
        std::vector<std::string> explained;
        std::set<const host::Class*> classes;
        for (const host::Plugin* plugin : host::LoadedPlugins())
            classes.insert(plugin->classes.begin(), plugin->classes.end());
        script::Explainer explainer(
            source.path, classes, [&](std::string_view text) { explained.push_back(WithoutPlace(text, source.path)); });
        Judge judge(*table_, [&](const MemberUse& use, const Verdict& verdict) { Check(use, verdict); });
        script::RunOptions options;
        options.print = [](std::string_view line) { ADD_FAILURE() << line; };
        options.complain = [](std::string_view text) { ADD_FAILURE() << text; };
        options.observers = {&explainer, &judge};
        EXPECT_EQ(script::RunScript(source, options), 0);
        return explained;
    }

    void Check(const MemberUse& use, const Verdict& verdict) {
        const std::string place = use.Name() + " in line " + std::to_string(use.at.line);
        const std::string number = std::to_string(use.at.line) + ": " + use.Name() + ' ';
        const bool marked = std::any_of(marks_.begin(), marks_.end(),
                                        [&](const std::string& mark) { return mark.starts_with(number); });
        for (const auto& broken : verdict.refuted) ADD_FAILURE() << place << " does not refuse: " << broken.sentence;
        for (const auto& broken : verdict.told) reached_.insert(broken.row->line);
        if (!marked) {
            EXPECT_TRUE(verdict.told.empty()) << place << " is explained";
            // Filling with what is there already changes nothing; a property may well be Nil or 0.
            const bool gave = use.method && use.method->declaration.result.kind != host::Kind::None && !use.assigned;
            EXPECT_FALSE(verdict.refused && gave) << place << " refuses";
            return;
        }
        EXPECT_EQ(verdict.told.size(), 1u) << place << " breaks more than one, also: " << verdict.told.back().sentence;
        const bool skips = verdict.told.size() == 1 && verdict.told[0].row->skips;
        EXPECT_TRUE(verdict.refused || skips) << place << " does its work";
    }

    std::unique_ptr<script::explain::Table> table_;
    std::vector<std::string> marks_;
    std::set<int> reached_;  // lines of the table
};

TEST_F(Preconditions, StandInTheTableForEveryMember) {
    std::vector<std::string> missing;
    for (const char* const name : {"PictureTQX", "PictureFactoryTQX"}) {
        const host::Class& type = host::Runtime::Get().ClassNamed(name);
        const auto want = [&](const void* section, const std::string& member) {
            if (!section) missing.push_back(std::string(name) + "." + member);
        };
        for (const auto* methods : {&type.methods(), &type.sharedMethods()})
            for (const host::Method& method : *methods) {
                want(table_->Find(name, method.declaration, false), method.declaration.name);
                if (method.assignable())
                    want(table_->Find(name, method.declaration, true), method.declaration.name + " =");
            }
        for (const host::Property& property : type.properties()) {
            want(table_->Find(name, property.name, false), property.name);
            if (property.writable()) want(table_->Find(name, property.name, true), property.name + " =");
        }
        for (const host::Event& event : type.events())
            want(table_->Find(name, event.declaration.name, false), event.declaration.name);
    }
    EXPECT_THAT(missing, testing::IsEmpty());
}

TEST_F(Preconditions, AreToldWhereTheyAreBrokenAndNowhereElse) {
    for (const fs::path& path : ExplainScripts()) {
        SCOPED_TRACE(path.filename());
        const std::vector<std::string> explained = Run(path);
        EXPECT_THAT(explained, testing::ElementsAreArray(marks_));
    }
}

// Memory and the host at their end.
TEST_F(Preconditions, TellOfShortMemoryAndAHostThatFails) {
    constexpr std::size_t kLarge = 1 << 20;
    const auto rgba = New("PictureTQX", 1000, 1000, 2);
    Set(rgba, "DebugPictureEnabled", true);
    std::vector<std::string> told;
    Judge judge(*table_, [&](const MemberUse& use, const Verdict& verdict) {
        EXPECT_TRUE(verdict.refused) << use.Name();
        ASSERT_EQ(verdict.told.size(), 1u) << use.Name();
        reached_.insert(verdict.told[0].row->line);
        told.push_back(use.Name() + ": " + verdict.told[0].sentence);
    });
    {
        const FailingAllocations none(kLarge);
        const Ref<Object> fresh = host::NewObject(PictureClass());
        judge.Call(MethodNamed("Constructor", 3), fresh, {Value(1000), Value(1000), Value(1)});
        judge.Call(MethodNamed("Clone", 0), rgba, {});
        judge.Call(MethodNamed("DataStringInFormat", 1), rgba, {Value(2)});
    }
    const auto wide = New("PictureTQX", 1000000, 1, 2), reference = New("PictureTQX", 1000000, 1, 2);
    {
        const FailingAllocations none(kLarge);
        judge.Call(MethodNamed("UnsharpFilter", 3), wide, {Value(reference), Value(1.0), Value(0)});
    }
    {
        const FailingHostFunction none("PluginNewInstance");
        judge.Call(MethodNamed("CreatePictureTQX", 3), rgba, {Value(2), Value(3), Value(1)});
        judge.Call(MethodNamed("ClipImage", 0), rgba, {});
        judge.Call(MethodNamed("CopyGWorld", 0), rgba, {});
    }
    {
        const FailingHostFunction none("REALBuildPictureFromGWorld");
        judge.Call(MethodNamed("CopyPicture", 0), rgba, {});
        judge.Call(MethodNamed("CopyMask", 0), rgba, {});
        judge.Call(MethodNamed("CopyPictureWithMask", 0), rgba, {});
        judge.Get(*PictureClass().FindProperty("DebugPicture"), rgba);
    }
    EXPECT_THAT(
        told,
        testing::ElementsAre(
            "Constructor: there is no memory for 1000 × 1000 pixels", "Clone: there is no memory for 4032000 bytes",
            "DataStringInFormat: there is no memory for the bytes", "UnsharpFilter: there is no memory for two rows",
            "CreatePictureTQX: there is no memory for 2 × 3 pixels", "ClipImage: there is no memory for another object",
            "CopyGWorld: there is no memory for a world of that size",
            "CopyPicture: there is no memory for a host picture of that size",
            "CopyMask: there is no memory for a host picture of that size",
            "CopyPictureWithMask: there is no memory for a host picture of that size, or for its mask",
            "DebugPicture: there is no memory for a host picture of that size"));
    for (const fs::path& path : ExplainScripts()) Run(path);
    std::vector<std::string> unreached;
    for (const script::explain::Row* const row : table_->Reasons())
        if (!reached_.contains(row->line)) unreached.push_back("line " + std::to_string(row->line));
    EXPECT_THAT(unreached, testing::IsEmpty()) << "rows of the table that nothing here breaks";
}

}  // namespace
