// Searches and replacements by regular expressions. Texts are searched as UTF-8, strings of bytes
// and texts that are not sound byte by byte.
#include "host/framework/RegEx.h"

#include <algorithm>
#include <optional>

#include "host/framework/Support.h"

namespace host {

namespace {

// A pattern as it was compiled last.
struct Compiled {
    std::string source;
    RegExSettings settings;
    bool asText;
    RegExPattern pattern;
};

struct Search {
    Ref<String> pattern, replacement;
    Ref<Object> options;
    std::optional<Compiled> compiled;
    Ref<String> text;          // what was searched last
    std::size_t position = 0;  // where the next search in it begins, in bytes
    bool isSound = false;      // the text was searched as UTF-8
    bool asBytes = false;      // it can't be
};

struct RegExData {
    Search* search;
};

sdk::ClassDefinition definition{.name = "RegEx", .instanceDataSize = sizeof(RegExData)};
sdk::ClassDefinition regExException{.name = "RegExException", .superclass = "RuntimeException"};
sdk::ClassDefinition patternException{.name = "RegExSearchPatternException", .superclass = "RegExException"};

void Destroy(sdk::Object* object) { delete DataOf<RegExData>(object, definition).search; }

Search& SearchOf(sdk::Object* object) {
    Search*& search = DataOf<RegExData>(object, definition).search;
    if (!search) search = new Search;
    return *search;
}

// --- Searching ------------------------------------------------------------------------------

const RegExPattern& PatternFor(Search& search, bool asText) {
    const RegExSettings settings = SettingsOf(search.options.get());
    const std::string_view source = Bytes(search.pattern);
    std::optional<Compiled>& compiled = search.compiled;
    if (!compiled || compiled->source != source || compiled->settings != settings || compiled->asText != asText)
        compiled = Compiled{std::string(source), settings, asText, RegExPattern(source, settings, asText)};
    return compiled->pattern;
}

// A new text to search, as UTF-8 whatever it was.
void SetText(Search& search, sdk::String* text) {
    Ref<String> given = Ref<String>::Share(FromPlugin(text));
    const sdk::Encoding encoding = EncodingOf(given.get());
    const bool bytes = encoding == sdk::Encoding::None;
    search.text = bytes || encoding == sdk::Encoding::Ascii ? given : ConvertEncoding(given, sdk::Encoding::Utf8);
    search.asBytes = bytes || EncodingOf(search.pattern.get()) == sdk::Encoding::None;
    search.isSound = false;
}

// Forward to where a character begins.
std::size_t AtCharacter(const Search& search, std::size_t at) {
    const std::string_view bytes = Bytes(search.text);
    while (!search.asBytes && at < bytes.size() && (bytes[at] & 0xC0) == 0x80) ++at;
    return at;
}

void SetPosition(Search& search, std::int64_t position) {
    const std::size_t size = Bytes(search.text).size();
    search.position = static_cast<std::size_t>(std::clamp<std::int64_t>(position, 0, static_cast<std::int64_t>(size)));
    search.position = AtCharacter(search, search.position);
}

// The next match, and the position behind it; a match of nothing moves on by a character.
RegExSpans FindNext(Search& search) {
    const std::string_view text = Bytes(search.text);
    if (search.position > text.size()) return {};
    bool unsound = false;
    RegExSpans spans = PatternFor(search, !search.asBytes).Find(text, search.position, search.isSound, unsound);
    search.asBytes = search.asBytes || unsound;
    search.isSound = !search.asBytes;
    if (unsound) spans = PatternFor(search, false).Find(text, search.position, false, unsound);
    search.position = text.size() + 1;
    if (spans.empty()) return spans;
    const auto end = static_cast<std::size_t>(spans[0].end);
    search.position = spans[0].first == spans[0].end ? AtCharacter(search, end + 1) : end;
    return spans;
}

// Goes on in the text searched last; nil when nothing is found.
sdk::Object* SearchOn(sdk::Object* object) {
    Search& search = SearchOf(object);
    RegExSpans spans = FindNext(search);
    return spans.empty() ? nullptr : NewRegExMatch(search.text, std::move(spans), search.replacement).Detach();
}

sdk::Object* SearchFrom(sdk::Object* object, sdk::String* text, std::int32_t position) {
    SetText(SearchOf(object), text);
    SetPosition(SearchOf(object), position);
    return SearchOn(object);
}

sdk::Object* SearchText(sdk::Object* object, sdk::String* text) { return SearchFrom(object, text, 0); }

// --- Replacing ------------------------------------------------------------------------------

// The text searched last with the next match replaced, or all that follow.
sdk::String* ReplaceOn(sdk::Object* object) {
    Search& search = SearchOf(object);
    const bool all = SettingsOf(search.options.get()).replaceAllMatches;
    const std::string_view text = Bytes(search.text);
    std::string result;
    std::size_t copied = 0;
    do {
        const RegExSpans spans = FindNext(search);
        if (spans.empty()) break;
        const auto first = std::max(static_cast<std::size_t>(spans[0].first), copied);
        AppendText(result, text.substr(copied, first - copied));
        AppendText(result, ExpandReplacement(Bytes(search.replacement), text, spans));
        copied = static_cast<std::size_t>(spans[0].end);
    } while (all);
    AppendText(result, text.substr(copied));
    return GiveString(result, EncodingOf(search.text.get()));
}

sdk::String* ReplaceFrom(sdk::Object* object, sdk::String* text, std::int32_t position) {
    SetText(SearchOf(object), text);
    SetPosition(SearchOf(object), position);
    return ReplaceOn(object);
}

sdk::String* ReplaceText(sdk::Object* object, sdk::String* text) { return ReplaceFrom(object, text, 0); }

// --- Properties -----------------------------------------------------------------------------

template <Ref<String> Search::*Text>
sdk::String* Get(sdk::Object* object) {
    return Ref<String>(SearchOf(object).*Text).Detach();
}

// Patterns and replacements are UTF-8 unless they are bytes.
template <Ref<String> Search::*Text>
void Set(sdk::Object* object, sdk::String* text) {
    Ref<String> given = Ref<String>::Share(FromPlugin(text));
    const bool bytes = EncodingOf(given.get()) == sdk::Encoding::None;
    SearchOf(object).*Text = bytes ? given : ConvertEncoding(given, sdk::Encoding::Utf8);
}

sdk::Object* Options(sdk::Object* object) {
    Ref<Object>& options = SearchOf(object).options;
    if (!options) options = NewRegExOptions();
    return Ref<Object>(options).Detach();
}

void SetOptions(sdk::Object* object, sdk::Object* options) {
    SearchOf(object).options = Ref<Object>::Share(FromPlugin(options));
}

std::int32_t Position(sdk::Object* object) {
    return static_cast<std::int32_t>(std::min(SearchOf(object).position, Bytes(SearchOf(object).text).size()));
}

void SetStartPosition(sdk::Object* object, std::int32_t position) { SetPosition(SearchOf(object), position); }

}  // namespace

void RegisterRegEx(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Search as RegExMatch", Guarded<&SearchOn>>(kFlags),
        sdk::Method<"Search(text as string) as RegExMatch", Guarded<&SearchText>>(kFlags),
        sdk::Method<"Search(text as string, position as integer) as RegExMatch", Guarded<&SearchFrom>>(kFlags),
        sdk::Method<"Replace as string", Guarded<&ReplaceOn>>(kFlags),
        sdk::Method<"Replace(text as string) as string", Guarded<&ReplaceText>>(kFlags),
        sdk::Method<"Replace(text as string, position as integer) as string", Guarded<&ReplaceFrom>>(kFlags),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadWrite<"String", &Get<&Search::pattern>, &Set<&Search::pattern>>("SearchPattern"),
        ReadWrite<"String", &Get<&Search::replacement>, &Set<&Search::replacement>>("ReplacementPattern"),
        ReadWrite<"RegExOptions", &Options, &SetOptions>("Options"),
        ReadWrite<"Integer", &Position, &SetStartPosition>("SearchStartPosition"),
    };
    RegisterRegExOptions(runtime);
    RegisterRegExMatch(runtime);
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
    RegisterOrAbort(runtime, regExException);
    RegisterOrAbort(runtime, patternException);
}

}  // namespace host
