// What people write who know another language or slip on a key: constructs that this language does
// not have, and its own words mistyped. Each is told where it stands, and the parser goes on as if
// it had been right, so that one slip gives one message.
#include <algorithm>
#include <array>

#include "host/objects/NearestName.h"
#include "host/objects/Type.h"
#include "host/script/Parser.h"

namespace script {

namespace {

struct Construct {
    std::string_view word;
    bool block = false;  // goes to "End word"
};

// Begin a line and are followed by a name.
constexpr Construct kForeignConstructs[] = {
    {"Structure", true},
    {"Namespace", true},
    {"Using", true},
    {"With", true},
    {"Declare"},
    {"Soft"},
    {"GoSub"},
    {"Let"},
    {"Imports"},
    {"Option"},
    {"On"},
    {"Begin", true},
};

// A word of the language, and words of which its line has one.
struct Keyword {
    std::string_view word;
    std::array<std::string_view, 3> companions;
};
constexpr Keyword kKeywords[] = {
    {"For", {"to", "downto", "in"}},
    {"If", {"then"}},
    {"ElseIf", {"then"}},
    {"Select", {"case"}},
    {"Dim", {"as"}},
    {"Var", {"as"}},
    {"Static", {"as"}},
    {"Const", {"as"}},
    {"Function", {"as"}},
    {"Catch", {"as"}},
    {"Property", {"as"}},
    {"Event", {"as"}},
};

// What ends or divides a block, and what opens it.
constexpr std::pair<std::string_view, std::string_view> kOpeners[] = {
    {"next", "For"},  {"wend", "While"},  {"loop", "Do"},   {"else", "If"},
    {"elseif", "If"}, {"case", "Select"}, {"catch", "Try"}, {"finally", "Try"},
};

constexpr std::string_view kEndedWords[] = {"If",  "Sub",   "Function", "Class", "Select",
                                            "Try", "While", "Event",    "Module"};

// One slip, two in a long word.
bool IsSlipOf(std::string_view written, std::string_view word) {
    if (written.size() > word.size() + 2 || word.size() > written.size() + 2) return false;
    const std::size_t slips = host::EditDistance(host::LowerName(written), host::LowerName(word));
    return slips > 0 && slips <= (word.size() >= 6 ? 2 : 1);
}

// What "EndIf" and the like end; empty for any other word.
std::string_view EndedWord(const Token& token) {
    if (token.kind != TokenKind::Identifier || !host::SameName(token.text.substr(0, 3), "End")) return {};
    for (const std::string_view word : kEndedWords)
        if (host::SameName(std::string_view(token.text).substr(3), word)) return word;
    return {};
}

host::Said Mistyped(std::string_view written, std::string_view word) { return kParserSays.mistyped(written, word); }

}  // namespace

void Parser::CollectRoutineNames() {
    for (std::size_t i = 1; i < tokens_.size(); ++i) {
        const bool head = tokens_[i - 1].Is("sub") || tokens_[i - 1].Is("function");
        if (tokens_[i].kind != TokenKind::Identifier) continue;
        if (head) routineNames_.insert(host::LowerName(tokens_[i].text));
        const bool first = i < 2 || tokens_[i - 2].kind == TokenKind::NewLine || tokens_[i - 2].Is("global") ||
                           tokens_[i - 2].Is("public");
        if (first && tokens_[i - 1].Is("module")) moduleNames_.insert(host::LowerName(tokens_[i].text));
    }
}

// Whether the script has a Sub or Function of this name.
bool Parser::DeclaresRoutine(std::string_view name) const { return routineNames_.contains(host::LowerName(name)); }

// Looking through the script again for one more error is not worth it once there are enough.
bool Parser::HasToldEnough() const { return diagnostics_.List().size() >= kMostDiagnostics; }

// To the line "End word" that ends what begins here; nowhere if there is none.
void Parser::SkipForeignBlock(std::string_view word) {
    int open = 0;
    if (HasToldEnough()) return;
    for (std::size_t i = at_; i + 1 < tokens_.size(); ++i) {
        const bool first = i == 0 || tokens_[i - 1].kind == TokenKind::NewLine;
        if (!first) continue;
        if (tokens_[i].Is(word) && tokens_[i + 1].kind == TokenKind::Identifier) ++open;
        if (!tokens_[i].Is("end") || !tokens_[i + 1].Is(word)) continue;
        if (--open > 0) continue;
        at_ = i;
        return;
    }
}

void Parser::RefuseForeign() {
    const auto* row = std::find_if(std::begin(kForeignConstructs), std::end(kForeignConstructs),
                                   [&](const Construct& construct) { return AtWord(construct.word); });
    if (row == std::end(kForeignConstructs)) return;
    const bool begins = Peek(1).kind == TokenKind::Identifier && !AtWord("as", 1);
    if (!begins || DeclaresRoutine(row->word)) return;
    const Position at = Here();
    if (row->block) SkipForeignBlock(row->word);
    FailAt(at, kParserSays.foreignWord(row->word));
}

bool Parser::LineHasWord(std::string_view word) const {
    for (std::size_t ahead = 1; !AtLineEnd(ahead); ++ahead)
        if (AtWord(word, ahead)) return true;
    return false;
}

// "Fro i = 1 To 3": what follows shows which word was meant. It then is that word.
void Parser::CorrectKeyword() {
    if (!AtName() || Peek(1).kind != TokenKind::Identifier || AtWord("as", 1)) return;
    for (const Keyword& keyword : kKeywords) {
        if (!IsSlipOf(Peek().text, keyword.word)) continue;
        const bool fits = std::any_of(keyword.companions.begin(), keyword.companions.end(),
                                      [&](std::string_view word) { return !word.empty() && LineHasWord(word); });
        if (!fits) continue;
        diagnostics_.Add(Here(), Mistyped(Peek().text, keyword.word));
        tokens_[at_].text = keyword.word;
        return;
    }
}

// "EndIf" on a line of its own is told and read as "End If".
void Parser::SplitEnds() {
    std::vector<Token> split;
    split.reserve(tokens_.size());
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
        Token& token = tokens_[i];
        const bool alone = (i == 0 || tokens_[i - 1].kind == TokenKind::NewLine) && i + 1 < tokens_.size() &&
                           (tokens_[i + 1].kind == TokenKind::NewLine || tokens_[i + 1].kind == TokenKind::End);
        const std::string_view word = alone ? EndedWord(token) : std::string_view();
        if (!word.empty() && !DeclaresRoutine(token.text)) {
            diagnostics_.Add({token.line, token.column}, kParserSays.twoWords(word));
            split.push_back(token);
            split.back().text = "End";
            token.text = word;
        }
        split.push_back(std::move(token));
    }
    tokens_ = std::move(split);
}

// Tells of a mistyped `word` at the start of a line, from `first` to here; false if there is none.
bool Parser::ReportMistyped(std::string_view word, std::int32_t first) {
    if (HasToldEnough()) return false;
    for (std::size_t i = at_; i-- > 0 && tokens_[i].line >= first;) {
        const bool starts = i == 0 || tokens_[i - 1].kind == TokenKind::NewLine;
        const bool name = tokens_[i].kind == TokenKind::Identifier && !IsReserved(tokens_[i].text);
        if (!starts || !name || !IsSlipOf(tokens_[i].text, word) || DeclaresRoutine(tokens_[i].text)) continue;
        diagnostics_.Add({tokens_[i].line, tokens_[i].column}, Mistyped(tokens_[i].text, word));
        return true;
    }
    return false;
}

// An End, Next or the like that ends nothing.
void Parser::FailWithoutBeginning() {
    std::string opener = AtWord("end") && Peek(1).kind == TokenKind::Identifier ? Peek(1).text : std::string();
    for (const auto& [ender, opens] : kOpeners)
        if (AtWord(ender)) opener = opens;
    if (!opener.empty() && ReportMistyped(opener, 1)) throw ParseFailure();
    const std::string shown = AtWord("end") && !opener.empty() ? Found() + ' ' + opener : Found();
    if (AtExceptionBlock()) Fail(kParserSays.exceptionBlockPlace());
    Fail(kParserSays.noBeginning(shown, opener.empty() ? "" : "; there is no " + opener + " to end"));
}

}  // namespace script
