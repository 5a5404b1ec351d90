// The page of messages, made of the tables.
#include "host/reference/Messages.h"

#include "host/messages/CheckMessages.h"
#include "host/messages/CheckerMessages.h"
#include "host/messages/CommandMessages.h"
#include "host/messages/ImageMessages.h"
#include "host/messages/LexerMessages.h"
#include "host/messages/LoadMessages.h"
#include "host/messages/ParserMessages.h"

namespace host {

namespace {

template <class Row = Message, class... Tables>
std::vector<Row> Joined(const Tables&... tables) {
    std::vector<Row> rows;
    const auto add = [&](const auto& table) {
        for (const Row& row : RowsOf<Row>(table)) rows.push_back(row);
    };
    (add(tables), ...);
    return rows;
}

std::string BeginOf(std::string_view title) {
    return "\n### " + std::string(title) + "\n\n| Message | Means | What to do |\n|---|---|---|\n";
}

// The declarations that follow some messages stand on lines of their own there.
std::string RowOf(std::string_view text, const Message& row) {
    constexpr std::string_view kNextLine = "\n    ";
    std::string line(text);
    if (const std::size_t at = line.find(kNextLine); at != std::string::npos) line.replace(at, kNextLine.size(), " ");
    return "| `" + line + "` | " + std::string(row.meaning) + " | " + std::string(row.remedy) + " |\n";
}

}  // namespace

std::vector<Chapter<Message>> MessageChapters() {
    using namespace script;
    return {
        {"Signs of a script", Joined(kLexerSays)},
        {"Lines and blocks of a script", Joined(kConditionSays, kParserSays)},
        {"Declarations", Joined(kDeclarationSays)},
        {"Names", Joined(kNameSays)},
        {"Types and values", Joined(kTypeSays)},
        {"Calls", Joined(kCallSays)},
        {"Statements", Joined(kStatementSays)},
        {"A script as a whole", Joined(kSourceSays)},
        {"Image files", Joined(kImageFileSays, kImageReadSays, kImageWriteSays)},
        {"Plug-ins", Joined(kLoadSays, kClassSays)},
        {"The command", Joined(tqx::kCommandSays)},
        {"Checks of a plug-in", Joined(kCheckSays)},
    };
}

std::vector<Chapter<RaisedMessage>> RunningChapters() {
    return {
        {"The script itself", Joined<RaisedMessage>(kScriptRaises)},
        {"Memory blocks, texts and timers", Joined<RaisedMessage>(kDataRaises)},
        {"Dictionaries, collections, chance, dates, the environment", Joined<RaisedMessage>(kContainersRaise)},
        {"Regular expressions and encodings", Joined<RaisedMessage>(kPatternsRaise)},
        {"Pictures", Joined<RaisedMessage>(kPicturesRaise)},
        {"Files and folders", Joined<RaisedMessage>(kFilesRaise)},
    };
}

std::string MessagesPage() {
    std::string page =
        "# Messages\n\n"
        "What the host says, what it means and what to do. `…` stands for names, numbers and reasons. Why a member of\n"
        "the plug-in gave `Nil` or did nothing, `tqx run --explain` says.\n\n"
        "## But for running scripts\n\n"
        "Of a script as `file:line:column: message`, with the line and a mark below it; `warning:` stands before what\n"
        "keeps no script from running. Of other files as `file: message`.\n";
    for (const auto& chapter : MessageChapters()) {
        page += BeginOf(chapter.title);
        for (const Message& row : chapter.rows) page += RowOf(row.text, row);
    }
    page +=
        "\n## While a script runs\n\n"
        "What ends a script that nobody catches it in, as `file:line:column: Class: message`. What is wrong with an "
        "image\n"
        "file stands above: it is an `IOException` where the system refused, else an `UnsupportedFormatException`, and "
        "the\n"
        "file's name comes first. A plug-in may raise more.\n";
    for (const auto& chapter : RunningChapters()) {
        page += BeginOf(chapter.title);
        for (const RaisedMessage& row : chapter.rows)
            page += RowOf(std::string(row.exception) + ": " + std::string(row.message.text), row.message);
    }
    return page;
}

}  // namespace host
