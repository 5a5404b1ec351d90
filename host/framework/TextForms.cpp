// Other forms of texts: the first letters of words in capitals, values as texts, ends of lines; and
// the order of texts.
#include <utf8proc.h>

#include "host/framework/Characters.h"
#include "host/framework/NumberText.h"
#include "host/framework/Support.h"
#include "host/framework/TextFunctions.h"
#include "host/objects/CodePoints.h"

namespace host {

namespace {

sdk::Encoding EncodingOfText(sdk::String* text) { return EncodingOf(FromPlugin(text)); }

// --- Titlecase ------------------------------------------------------------------------------

// Whether a word goes on behind the character: letters, marks, digits, apostrophes.
bool IsInWord(char32_t c) {
    constexpr char32_t kApostrophe = 0x2019;
    if (c == '\'' || c == kApostrophe) return true;
    const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(c));
    return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
}

char32_t TitleCharacter(char32_t c) {
    constexpr char32_t kSharpS = 0xdf;
    return c == kSharpS ? c : static_cast<char32_t>(utf8proc_totitle(static_cast<utf8proc_int32_t>(c)));
}

sdk::String* Titlecase(sdk::String* text) {
    const sdk::Encoding encoding = EncodingOfText(text);
    std::string result;
    bool inWord = false;
    for (std::string_view rest = Bytes(text); !rest.empty();) {
        const CodePoint next = FirstCodePoint(rest, encoding);
        const bool sound = next.sound && (next.length > 1 || next.code < 128);
        const char32_t mapped = inWord ? LowerCharacter(next.code) : TitleCharacter(next.code);
        AppendText(result,
                   sound && mapped != next.code ? CharacterText(mapped, encoding) : rest.substr(0, next.length));
        inWord = sound && IsInWord(next.code);
        rest.remove_prefix(next.length);
    }
    return GiveString(result, encoding);
}

// --- StrComp --------------------------------------------------------------------------------

enum CompareMode : std::int32_t { kByBytes = 0, kByText = 1 };

template <class Text>
std::int32_t OrderOf(const Text& a, const Text& b) {
    return a < b ? -1 : a > b;
}

// -1, 0 or 1.
std::int32_t StrComp(sdk::String* a, sdk::String* b, std::int32_t mode) {
    if (mode == kByBytes) return OrderOf(Bytes(a), Bytes(b));
    if (mode != kByText) Fail(kDataRaises.textOrder(mode));
    return OrderOf(Fold(Bytes(a), EncodingOfText(a)).characters, Fold(Bytes(b), EncodingOfText(b)).characters);
}

// --- Values as texts --------------------------------------------------------------------------

sdk::String* TextOfDouble(double value) { return GiveString(NumberText(value)); }
sdk::String* TextOfSingle(float value) { return GiveString(NumberText(value)); }
sdk::String* TextOfWhole(std::int64_t value) { return GiveString(std::to_string(value)); }
sdk::String* TextOfBoolean(bool value) { return GiveString(value ? "True" : "False"); }
sdk::String* TextItself(sdk::String* value) { return Ref<String>::Share(FromPlugin(value)).Detach(); }

std::int64_t CLong(sdk::String* text) {
    const Ref<String> utf8 = ConvertEncoding(Ref<String>::Share(FromPlugin(text)), sdk::Encoding::Utf8);
    return TruncateToInt64(NumberIn(Bytes(utf8)));
}

// --- Ends of lines ----------------------------------------------------------------------------

sdk::ClassDefinition endOfLine{.name = "EndOfLine"};

sdk::String* LineFeed() { return GiveString("\n"); }
sdk::String* CarriageReturn() { return GiveString("\r"); }
sdk::String* Both() { return GiveString("\r\n"); }

// Every end of a line, whichever it is, by another.
sdk::String* ReplaceLineEndings(sdk::String* text, sdk::String* ending) {
    const std::string_view bytes = Bytes(text);
    std::string result;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const bool pair = bytes.substr(at, 2) == "\r\n";
        const bool ends = bytes[at] == '\r' || bytes[at] == '\n';
        AppendText(result, ends ? Bytes(ending) : bytes.substr(at, 1));
        at += pair;
    }
    return GiveString(result, EncodingOfText(text));
}

void RegisterEndOfLine(Runtime& runtime) {
    static const sdk::MethodRecord sharedMethods[] = {
        sdk::SharedMethod<"UNIX as string", Guarded<&LineFeed>>(sdk::kMemberPortable),
        sdk::SharedMethod<"OSX as string", Guarded<&LineFeed>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Macintosh as string", Guarded<&CarriageReturn>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Windows as string", Guarded<&Both>>(sdk::kMemberPortable),
    };
    SetSharedMethods(endOfLine, sharedMethods);
    RegisterOrAbort(runtime, endOfLine);
}

}  // namespace

void RegisterTextFormFunctions(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"Titlecase(text as string) as string", Guarded<&Titlecase>>(kFlags),
        sdk::SharedMethod<"StrComp(first as string, second as string, mode as integer) as integer", Guarded<&StrComp>>(
            kFlags),
        sdk::SharedMethod<"CStr(value as int64) as string", Guarded<&TextOfWhole>>(kFlags),
        sdk::SharedMethod<"CStr(value as double) as string", Guarded<&TextOfDouble>>(kFlags),
        sdk::SharedMethod<"CStr(value as single) as string", Guarded<&TextOfSingle>>(kFlags),
        sdk::SharedMethod<"CStr(value as boolean) as string", Guarded<&TextOfBoolean>>(kFlags),
        sdk::SharedMethod<"CStr(value as string) as string", Guarded<&TextItself>>(kFlags),
        sdk::SharedMethod<"CLong(text as string) as int64", Guarded<&CLong>>(kFlags),
        sdk::SharedMethod<"EndOfLine as string", Guarded<&LineFeed>>(kFlags),
        sdk::SharedMethod<"ReplaceLineEndings(text as string, ending as string) as string",
                          Guarded<&ReplaceLineEndings>>(kFlags),
    };
    RegisterEndOfLine(runtime);
    runtime.RegisterFunctions(functions);
}

}  // namespace host
