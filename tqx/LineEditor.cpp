// Lines through libedit, or read as they are.
#include "tqx/LineEditor.h"

#include <histedit.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>

#include "platform/Sanitizer.h"
#include "tqx/Output.h"

#ifdef TQX_ADDRESS_SANITIZER
// The editing library never frees its copies of the functions' names.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:wcsdup"; }
#endif

namespace tqx {

namespace {

constexpr int kHistoryLines = 1000;

// Where the lines of earlier sessions are kept; empty without a home.
std::string HistoryFile() {
    const char* const home = std::getenv("HOME");
    return home && *home ? std::string(home) + "/.tqx_history" : "";
}

// The beginning that all words share.
std::string SharedStart(const std::vector<std::string>& words) {
    std::string start = words.front();
    for (const std::string& word : words)
        start.erase(std::mismatch(start.begin(), start.end(), word.begin(), word.end()).first, start.end());
    return start;
}

std::size_t LengthOfLastWord(std::string_view line) {
    const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    return static_cast<std::size_t>(std::find_if_not(line.rbegin(), line.rend(), isWord) - line.rbegin());
}

}  // namespace

struct LineEditor::Terminal {
    explicit Terminal(Complete completer);
    ~Terminal();

    static Terminal& Of(EditLine* line);
    static unsigned char OnTab(EditLine* line, int);
    static unsigned char OnCancel(EditLine* line, int);
    static char* Prompt(EditLine* line) { return const_cast<char*>(Of(line).prompt); }
    void Remember(const char* line);

    Complete complete;
    const char* prompt = "";
    bool cancelled = false;
    EditLine* edit = nullptr;
    History* past = nullptr;
    HistEvent event{};
};

LineEditor::Terminal& LineEditor::Terminal::Of(EditLine* line) {
    void* terminal = nullptr;
    el_get(line, EL_CLIENTDATA, &terminal);
    return *static_cast<Terminal*>(terminal);
}

LineEditor::Terminal::Terminal(Complete completer) : complete(std::move(completer)) {
    std::setlocale(LC_CTYPE, "");
    edit = el_init("tqx", stdin, stdout, stderr);
    past = history_init();
    if (!edit || !past) throw std::bad_alloc();
    history(past, &event, H_SETSIZE, kHistoryLines);
    history(past, &event, H_SETUNIQUE, 1);
    if (const std::string file = HistoryFile(); !file.empty()) history(past, &event, H_LOAD, file.c_str());
    el_set(edit, EL_CLIENTDATA, this);
    el_set(edit, EL_PROMPT, &Prompt);
    el_set(edit, EL_EDITOR, "emacs");
    el_set(edit, EL_SIGNAL, 1);  // signals that end the process find the terminal as it was
    el_set(edit, EL_HIST, &history, past);
    el_set(edit, EL_ADDFN, "complete", "Completes a name", &OnTab);
    el_set(edit, EL_ADDFN, "cancel", "Drops what was typed", &OnCancel);
    el_set(edit, EL_BIND, "^I", "complete", nullptr);
    el_set(edit, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_set(edit, EL_SETTY, "-d", "-isig", nullptr);  // Ctrl-C is a key
    el_set(edit, EL_BIND, "^C", "cancel", nullptr);
}

LineEditor::Terminal::~Terminal() {
    if (const std::string file = HistoryFile(); !file.empty()) history(past, &event, H_SAVE, file.c_str());
    history_end(past);
    el_end(edit);
}

void LineEditor::Terminal::Remember(const char* line) { history(past, &event, H_ENTER, line); }

// One name is put in, of several what they share; then they are shown.
unsigned char LineEditor::Terminal::OnTab(EditLine* line, int) {
    const LineInfo* const info = el_line(line);
    const std::string_view before(info->buffer, static_cast<std::size_t>(info->cursor - info->buffer));
    const std::vector<std::string> names = Of(line).complete(before);
    const std::size_t typed = LengthOfLastWord(before);
    if (names.empty() || (typed == 0 && !before.ends_with('.'))) return CC_REFRESH_BEEP;
    const std::string start = SharedStart(names);
    if (names.size() == 1 || start.size() > typed) {
        el_deletestr(line, static_cast<int>(typed));
        return el_insertstr(line, start.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    std::string list = "\n";
    for (const std::string& name : names) list += name + "  ";
    WriteLine(list);
    std::fflush(stdout);
    return CC_REDISPLAY;
}

unsigned char LineEditor::Terminal::OnCancel(EditLine* line, int) {
    Of(line).cancelled = true;
    return CC_NEWLINE;
}

LineEditor::LineEditor(Complete complete) {
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) terminal_ = std::make_unique<Terminal>(std::move(complete));
}

LineEditor::~LineEditor() = default;

LineEditor::Outcome LineEditor::Read(const char* prompt, std::string& line) {
    if (!terminal_) return std::getline(std::cin, line) ? Outcome::Line : Outcome::End;
    terminal_->prompt = prompt;
    terminal_->cancelled = false;
    int length = 0;
    const char* const typed = el_gets(terminal_->edit, &length);
    const bool ended = !terminal_->cancelled && (!typed || length <= 0);
    if (ended || terminal_->cancelled) WriteLine("");  // behind what was typed
    if (ended) return Outcome::End;
    if (terminal_->cancelled) return Outcome::Cancelled;
    line.assign(typed, static_cast<std::size_t>(length));
    if (line.find_first_not_of(" \t\n") != std::string::npos) terminal_->Remember(typed);
    if (line.ends_with('\n')) line.pop_back();
    return Outcome::Line;
}

}  // namespace tqx
