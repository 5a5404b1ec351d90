// Patterns compiled through PCRE2, searched within bounds.
#include "host/framework/RegExPattern.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "host/framework/Support.h"

namespace host {

namespace {

constexpr std::uint32_t kMostSteps = 5'000'000;
constexpr std::uint32_t kMostKibibytes = 64 << 10;
constexpr std::size_t kLongestPattern = 1 << 16;

template <auto Free>
struct Freeing {
    void operator()(auto* held) const { Free(held); }
};

using CompileContext = std::unique_ptr<pcre2_compile_context, Freeing<&pcre2_compile_context_free>>;
using MatchContext = std::unique_ptr<pcre2_match_context, Freeing<&pcre2_match_context_free>>;

template <class Held>
Held* OrThrow(Held* held) {
    if (!held) throw std::bad_alloc();
    return held;
}

std::uint32_t NewlineOf(std::int32_t lineEndType) {
    constexpr std::uint32_t kNewlines[] = {PCRE2_NEWLINE_ANYCRLF, PCRE2_NEWLINE_LF, PCRE2_NEWLINE_CR,
                                           PCRE2_NEWLINE_CRLF, PCRE2_NEWLINE_LF};
    return kNewlines[lineEndType];
}

std::uint32_t CompileOptions(const RegExSettings& settings, bool asText) {
    std::uint32_t options = PCRE2_NEVER_BACKSLASH_C;
    if (asText) options |= PCRE2_UTF | PCRE2_UCP;
    if (!settings.caseSensitive) options |= PCRE2_CASELESS;
    if (settings.dotMatchAll) options |= PCRE2_DOTALL;
    if (!settings.greedy) options |= PCRE2_UNGREEDY;
    if (!settings.treatTargetAsOneLine) options |= PCRE2_MULTILINE;
    return options;
}

std::uint32_t SearchOptions(const RegExSettings& settings) {
    std::uint32_t options = 0;
    if (!settings.matchEmpty) options |= PCRE2_NOTEMPTY;
    if (!settings.stringBeginIsLineBegin) options |= PCRE2_NOTBOL;
    if (!settings.stringEndIsLineEnd) options |= PCRE2_NOTEOL;
    return options;
}

std::string ErrorText(int number) {
    PCRE2_UCHAR text[160] = {};
    pcre2_get_error_message(number, text, sizeof text);
    return reinterpret_cast<const char*>(text);
}

PCRE2_SPTR Units(std::string_view text) { return reinterpret_cast<PCRE2_SPTR>(text.data() ? text.data() : ""); }

bool IsUnsound(int result) { return result <= PCRE2_ERROR_UTF8_ERR1 && result >= PCRE2_ERROR_UTF8_ERR21; }

}  // namespace

struct RegExPattern::Code {
    pcre2_code* compiled;
    pcre2_match_data* match = nullptr;

    explicit Code(pcre2_code* made) : compiled(made) {}
    Code(const Code&) = delete;
    Code& operator=(const Code&) = delete;
    ~Code() {
        pcre2_match_data_free(match);
        pcre2_code_free(compiled);
    }
};

RegExPattern::RegExPattern(std::string_view pattern, const RegExSettings& settings, bool asText)
    : searchOptions_(SearchOptions(settings)) {
    const CompileContext context(OrThrow(pcre2_compile_context_create(nullptr)));
    pcre2_set_newline(context.get(), NewlineOf(settings.lineEndType));
    pcre2_set_max_pattern_length(context.get(), kLongestPattern);
    int error = 0;
    PCRE2_SIZE place = 0;
    pcre2_code* const compiled =
        pcre2_compile(Units(pattern), pattern.size(), CompileOptions(settings, asText), &error, &place, context.get());
    if (!compiled) Fail(kPatternsRaise.pattern(place, ErrorText(error)), error);
    code_ = std::make_shared<Code>(compiled);
    code_->match = OrThrow(pcre2_match_data_create_from_pattern(compiled, nullptr));
}

RegExSpans RegExPattern::Find(std::string_view text, std::size_t from, bool isSound, bool& foundUnsound) const {
    const MatchContext context(OrThrow(pcre2_match_context_create(nullptr)));
    pcre2_set_match_limit(context.get(), kMostSteps);
    pcre2_set_heap_limit(context.get(), kMostKibibytes);
    const std::uint32_t options = searchOptions_ | (isSound ? PCRE2_NO_UTF_CHECK : 0);
    const int count =
        pcre2_match(code_->compiled, Units(text), text.size(), from, options, code_->match, context.get());
    if (count == PCRE2_ERROR_NOMATCH) return {};
    foundUnsound = IsUnsound(count);
    if (foundUnsound) return {};
    if (count < 0) Fail(kPatternsRaise.givenUp(ErrorText(count)), count);
    const PCRE2_SIZE* const offsets = pcre2_get_ovector_pointer(code_->match);
    RegExSpans spans(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < spans.size(); ++i)
        if (offsets[2 * i] != PCRE2_UNSET)
            spans[i] = {static_cast<std::int64_t>(offsets[2 * i]), static_cast<std::int64_t>(offsets[2 * i + 1])};
    return spans;
}

std::string ExpandReplacement(std::string_view replacement, std::string_view text, const RegExSpans& spans) {
    std::string result;
    const auto part = [&](std::size_t first, std::size_t end) { AppendText(result, text.substr(first, end - first)); };
    const auto group = [&](std::size_t number) {
        if (number >= spans.size() || spans[number].first < 0) return;
        part(static_cast<std::size_t>(spans[number].first), static_cast<std::size_t>(spans[number].end));
    };
    for (std::size_t at = 0; at < replacement.size(); ++at) {
        const char c = replacement[at];
        if ((c != '\\' && c != '$') || at + 1 == replacement.size()) {
            AppendText(result, replacement.substr(at, 1));
            continue;
        }
        const char next = replacement[++at];
        if (next >= '0' && next <= '9')
            group(static_cast<std::size_t>(next - '0'));
        else if (next == '&')
            group(0);
        else if (c == '$' && next == '`')
            part(0, static_cast<std::size_t>(spans[0].first));
        else if (c == '$' && next == '\'')
            part(static_cast<std::size_t>(spans[0].end), text.size());
        else if (c == '\\' && next == 'n')
            result += '\n';
        else if (c == '\\' && next == 'r')
            result += '\r';
        else if (c == '\\' && next == 't')
            result += '\t';
        else
            result += next;
    }
    return result;
}

}  // namespace host
