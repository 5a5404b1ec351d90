// The class RegExMatch: what a search found, with its parts and its replacement.
#include "host/framework/RegEx.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct Match {
    Ref<String> text;
    RegExSpans spans;
    Ref<String> replacement;
};

struct MatchData {
    Match* match;  // null in an instance that a script made by itself
};

sdk::ClassDefinition definition{.name = "RegExMatch", .instanceDataSize = sizeof(MatchData)};

void Destroy(sdk::Object* object) { delete DataOf<MatchData>(object, definition).match; }

const Match& MatchOf(sdk::Object* object) {
    const Match* match = DataOf<MatchData>(object, definition).match;
    if (!match) Fail(kPatternsRaise.noSearch());
    return *match;
}

std::int32_t Count(sdk::Object* object) { return static_cast<std::int32_t>(MatchOf(object).spans.size()); }

const RegExSpan& SpanOf(sdk::Object* object, std::int32_t index) {
    if (index < 0 || index >= Count(object)) Fail(kPatternsRaise.expression(index, Count(object)));
    return MatchOf(object).spans[static_cast<std::size_t>(index)];
}

// 0 is the whole match; empty for a part that matched nothing.
sdk::String* ExpressionText(sdk::Object* object, std::int32_t index) {
    const RegExSpan& span = SpanOf(object, index);
    if (span.first < 0) return nullptr;
    const Ref<String>& text = MatchOf(object).text;
    const std::string_view bytes = Bytes(text);
    return GiveString(
        bytes.substr(static_cast<std::size_t>(span.first), static_cast<std::size_t>(span.end - span.first)),
        EncodingOf(text.get()));
}

// Bytes from the beginning of the text; -1 for a part that matched nothing.
std::int32_t ExpressionStart(sdk::Object* object, std::int32_t index) {
    return static_cast<std::int32_t>(SpanOf(object, index).first);
}

sdk::String* ReplaceBy(sdk::Object* object, sdk::String* replacement) {
    const Match& match = MatchOf(object);
    return GiveString(ExpandReplacement(Bytes(replacement), Bytes(match.text), match.spans),
                      EncodingOf(match.text.get()));
}

sdk::String* Replace(sdk::Object* object) { return ReplaceBy(object, MatchOf(object).replacement.get()); }

}  // namespace

Ref<Object> NewRegExMatch(const Ref<String>& text, RegExSpans spans, const Ref<String>& replacement) {
    auto match = std::make_unique<Match>(Match{text, std::move(spans), replacement});
    Ref<Object> object = NewInstanceOf(definition);
    DataOf<MatchData>(object.get(), definition).match = match.release();
    return object;
}

void RegisterRegExMatch(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"SubExpressionString(index as integer) as string", Guarded<&ExpressionText>>(kFlags),
        sdk::Method<"SubExpressionStartB(index as integer) as integer", Guarded<&ExpressionStart>>(kFlags),
        sdk::Method<"Replace as string", Guarded<&Replace>>(kFlags),
        sdk::Method<"Replace(replacement as string) as string", Guarded<&ReplaceBy>>(kFlags),
    };
    static const sdk::PropertyRecord properties[] = {ReadOnly<"Integer", &Count>("SubExpressionCount")};
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
