// The table of messages: its page, and a script that ends with each.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <regex>
#include <set>

#include "host/calls/Border.h"
#include "host/calls/Declaration.h"
#include "host/messages/RunningMessages.h"
#include "host/reference/Messages.h"
#include "host/script/Script.h"
#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Interpose.h"
#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"
#include "tests/support/SmallDisk.h"

namespace {

// "path:2:7: Class: message" of a script that ends so; empty for any other end.
std::string EndOf(std::string_view text) {
    std::string told;
    script::RunOptions options;
    options.print = [](std::string_view) {};
    options.complain = [&](std::string_view message) { told += message; };
    script::RunScript({"script", std::string(text) + '\n'}, options);
    const std::string line = told.substr(0, told.find('\n'));
    const std::size_t at = line.find(": ");
    return at == std::string::npos ? told : line.substr(at + 2);
}

class Messages : public support::PluginTest {};

std::vector<host::RaisedMessage> AllRows() {
    std::vector<host::RaisedMessage> rows;
    for (const auto& chapter : host::RunningChapters())
        rows.insert(rows.end(), chapter.rows.begin(), chapter.rows.end());
    return rows;
}

// Whether a script's end is that of a row, and of no other one.
void ExpectRow(const host::RaisedMessage& row, const std::string& end) {
    const std::string begin = std::string(row.exception) + ": ";
    ASSERT_TRUE(end.starts_with(begin)) << row.message.text << "\n" << end;
    const std::string_view told = std::string_view(end).substr(begin.size());
    EXPECT_TRUE(host::Matches(row.message.text, told)) << row.message.text << "\n" << end;
    for (const host::RaisedMessage& other : AllRows()) {
        const bool less = other.message.text.size() < row.message.text.size();  // that says less of the same
        const bool same = less || other.message.text == row.message.text || other.exception != row.exception;
        EXPECT_TRUE(same || !host::Matches(other.message.text, told)) << other.message.text << "\n" << end;
    }
}

TEST_F(Messages, AreEachReachedByTheirScript) {
    for (const host::RaisedMessage& row : AllRows()) {
        if (row.example.empty()) continue;
        std::unique_ptr<support::FailingAllocations> starvation;
        if (row.message.text == host::kScriptRaises.memory.message.text)
            starvation = std::make_unique<support::FailingAllocations>(64 << 20);
        ExpectRow(row, EndOf(row.example));
    }
}

// --- Those that take more than a script -------------------------------------------------------------

// The exception that was raised, as a script's end tells of it.
std::string RaisedEnd() {
    const support::Thrown thrown = support::TakeThrown();
    return thrown.className + ": " + thrown.message;
}

std::string EndOnAFullDisk(const std::string& last) {
    const support::SmallDisk disk(0);
    return EndOf(
        "Dim f As FolderItem = TemporaryFolder.Child(\"tqx-messages-test\")\n"
        "Dim b As BinaryStream = BinaryStream.Create(f, True)\nf.Delete\nb.Write(\"bytes\")\n" +
        last);
}

// A module for the encoding can't be loaded where no file can be opened. In a child: the C library remembers.
std::string EndWithoutDescriptors(std::string_view text) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        const std::string end = EndOf(text);
        _exit(write(ends[1], end.data(), end.size()) > 0 ? 0 : 1);
    }
    close(ends[1]);
    char told[1000];
    const ssize_t length = read(ends[0], told, sizeof(told));
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return std::string(told, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

constexpr std::string_view kDrawText =
    "Dim p As New Picture(9, 9, 32)\np.Graphics.TextFont = \"Times\"\np.Graphics.Bold = True\n"
    "p.Graphics.DrawString(\"x\", 0, 9)";

std::string EndWithoutFonts() {
    const support::FailingCall failing(support::SystemCall::Access, 1, INT32_MAX, 2);
    return EndOf(kDrawText);
}

std::string EndWithADamagedFont() {
    const host::TemporaryDirectory folder;
    std::ofstream(folder.Path("DejaVuSerif-Bold.ttf")) << "no font";
    setenv("TQX_FONTS", folder.path().c_str(), 1);
    const std::string end = EndOf(kDrawText);
    unsetenv("TQX_FONTS");
    return end;
}

// A class with what carries rows, whose rows can't be had by the usual arguments; or whose row setter makes the
// block smaller.
class OddRows {
  public:
    OddRows(const char* row, bool assignable) : type_(Make(row, assignable)) {}
    ~OddRows() { host::Runtime::Get().RemoveClass(type_); }
    OddRows(const OddRows&) = delete;
    OddRows& operator=(const OddRows&) = delete;

  private:
    static host::Property Side(const char* name) {
        host::Property side;
        side.name = name;
        side.type = {host::Kind::Integer};
        side.read = [](host::Object*, std::span<host::Value>) { return host::Value(2); };
        return side;
    }

    static host::Value Shrink(host::Object*, std::span<host::Value> arguments) {
        host::Object* const block = arguments.back().object();
        host::SetProperty(*block->type->FindProperty("Size"), block, host::Value(0));
        return {};
    }

    static const host::Class& Make(const char* row, bool assignable) {
        auto type = std::make_unique<host::Class>("OddRows", nullptr);
        host::Method method;
        std::string problem;
        EXPECT_TRUE(host::ReadDeclaration(row, method.declaration, problem)) << problem;
        method.body = [](host::Object*, std::span<host::Value>) { return host::Value(nullptr); };
        if (assignable) method.assign = &Shrink;
        type->AddMethod(std::move(method));
        type->AddProperty(Side("Width"));
        type->AddProperty(Side("Height"));
        type->AddConstant({"ImageFormatRGB", host::Value(1), "ImageFormatRGB = 1"});
        return *host::Runtime::Get().AddClass(std::move(type));
    }

    const host::Class& type_;
};

std::string EndWithRowsOfAnotherKind() {
    const OddRows rows("RowInFormat(name as string) as memoryblock", false);
    return EndOf("GetFolderItem(\"x.png\").SaveFrom(New OddRows)");
}

std::string EndWithAShrunkBlock() {
    const OddRows rows("RowInFormat(index as integer, format as integer) as memoryblock", true);
    return EndOf(
        "Dim f As FolderItem = TemporaryFolder.Child(\"tqx-messages-test.png\")\n"
        "f.SaveFrom(New PictureTQX(2, 2, 1))\nTry\n  f.OpenInto(New OddRows)\nFinally\n  f.Delete\nEnd Try");
}

TEST_F(Messages, AreReachedWhereItTakesMoreThanAScript) {
    const auto raisedNil = [] {
        host::Runtime::Get().Raise(nullptr);
        return RaisedEnd();
    };
    const auto thrownNumber = [] {
        host::AtBorder([] { throw 5; });
        return RaisedEnd();
    };
    const auto noModule = [] { return EndWithoutDescriptors("Print ConvertEncoding(\"a\", Encodings.KOI8_R)"); };
    const auto fullDisk = [](const char* last) { return [=] { return EndOnAFullDisk(last); }; };
    const std::pair<host::RaisedMessage, std::function<std::string()>> ends[] = {
        {host::kScriptRaises.nothingRaised, raisedNil},
        {host::kScriptRaises.withoutReason, thrownNumber},
        {host::kPatternsRaise.noConverter, noModule},
        {host::kPicturesRaise.rowsUnfit, &EndWithRowsOfAnotherKind},
        {host::kPicturesRaise.rowShrunk, &EndWithAShrunkBlock},
        {host::kPicturesRaise.noFontFile, &EndWithoutFonts},
        {host::kPicturesRaise.noFont, &EndWithADamagedFont},
        {host::kFilesRaise.cannotWrite, fullDisk("b.Close")},
        {host::kFilesRaise.cannotPosition, fullDisk("b.Position = 4")},
        {host::kFilesRaise.cannotMeasure, fullDisk("Print b.Length")},
        {host::kFilesRaise.cannotResize, fullDisk("b.Length = 9")},
    };
    std::set<std::string_view> missing;
    for (const host::RaisedMessage& row : AllRows())
        if (row.example.empty()) missing.insert(row.message.text);
    for (const auto& [row, end] : ends) {
        ExpectRow(row, end());
        missing.erase(row.message.text);
    }
    EXPECT_THAT(missing, testing::IsEmpty());
}

// Whoever raises something takes a row; the runtime alone makes exceptions of other texts, which plug-ins and
// libraries gave.
TEST_F(Messages, AreNotRaisedPastTheTables) {
    static const std::regex past("(MakeException|Raise|Fail|Throw)\\([^;()]*\"");
    std::vector<std::string> files;
    for (const char* room : {"/host/framework", "/host/script"})
        for (const auto& entry : std::filesystem::recursive_directory_iterator(support::SourceFolder() + room)) {
            if (!entry.is_regular_file()) continue;
            std::ifstream file(entry.path());
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            if (std::regex_search(text, past)) files.push_back(entry.path().filename().string());
        }
    EXPECT_THAT(files, testing::IsEmpty());
}

TEST_F(Messages, MatchWithAnythingForAGap) {
    constexpr std::string_view text = "Row … of … can't be had.";
    EXPECT_TRUE(host::Matches(text, "Row 3 of 4 can't be had."));
    EXPECT_FALSE(host::Matches(text, "Row 3 of 4 can't be had. No"));
    EXPECT_FALSE(host::Matches(text, "The Row 3 of 4 can't be had."));
    EXPECT_FALSE(host::Matches(text, "Row 3 can't be had."));
}

TEST_F(Messages, StandOnThePageAsInTheTable) {
    std::ifstream file(support::SourceFolder() + "/docs/messages.md");
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::string made = host::MessagesPage();
    if (std::getenv("TQX_WRITE_MESSAGES")) std::ofstream(support::SourceFolder() + "/docs/messages.md") << made;
    EXPECT_EQ(page, made) << "TQX_WRITE_MESSAGES=1 writes the page";
}

}  // namespace
