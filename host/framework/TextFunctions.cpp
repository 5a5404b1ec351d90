// Positions count characters from 1 (the functions ending in B count bytes); lengths below 0 count
// as 0, positions below 1 as 1, and what lies past the end is empty. Parts of a string keep its
// encoding.
#include "host/framework/TextFunctions.h"

#include <md5.h>

#include <algorithm>
#include <cctype>
#include <charconv>

#include "host/framework/Characters.h"
#include "host/framework/NumberText.h"
#include "host/framework/QuickForms.h"
#include "host/framework/Support.h"

namespace host {

namespace {

sdk::Encoding EncodingOfText(sdk::String* text) { return EncodingOf(FromPlugin(text)); }

// A part of a string; all of it is the string itself.
sdk::String* Part(sdk::String* text, std::size_t from, std::size_t to) {
    const std::string_view bytes = Bytes(text);
    if (from == 0 && to == bytes.size()) return Ref<String>::Share(FromPlugin(text)).Detach();
    return GiveString(bytes.substr(from, to - from), EncodingOfText(text));
}

// --- Length ---------------------------------------------------------------------------------

// A count as the language's integer; no string is longer.
std::int32_t Count(std::int64_t count) { return static_cast<std::int32_t>(std::min<std::int64_t>(count, INT32_MAX)); }

std::int32_t Len(sdk::String* text) { return Count(CharacterCount(FromPlugin(text))); }
std::int32_t LenB(sdk::String* text) { return Count(static_cast<std::int64_t>(Bytes(text).size())); }

// --- Parts ----------------------------------------------------------------------------------

// Positions from 1; in 64 bits, so that no sum of the script's numbers wraps.
sdk::String* PartOfCharacters(sdk::String* text, std::int64_t start, std::int64_t length) {
    const std::int64_t before = std::max<std::int64_t>(start, 1) - 1;
    const std::size_t from = BytesOfCharacters(FromPlugin(text), before);
    return Part(text, from, BytesOfCharacters(FromPlugin(text), before + std::max<std::int64_t>(length, 0)));
}

sdk::String* PartOfBytes(sdk::String* text, std::int64_t start, std::int64_t length) {
    const std::size_t size = Bytes(text).size();
    const std::size_t from = BytesOfCharacters(Bytes(text), sdk::Encoding::None, start - 1);
    const std::size_t count = std::min(size - from, static_cast<std::size_t>(std::max<std::int64_t>(length, 0)));
    return Part(text, from, from + count);
}

sdk::String* Left(sdk::String* text, std::int32_t length) { return PartOfCharacters(text, 1, length); }

sdk::String* LeftB(sdk::String* text, std::int32_t length) { return PartOfBytes(text, 1, length); }

sdk::String* Right(sdk::String* text, std::int32_t length) {
    const std::int64_t left = CharacterCount(FromPlugin(text)) - std::max<std::int64_t>(length, 0);
    return Part(text, BytesOfCharacters(FromPlugin(text), left), Bytes(text).size());
}

sdk::String* RightB(sdk::String* text, std::int32_t length) {
    const auto size = static_cast<std::int64_t>(Bytes(text).size());
    return PartOfBytes(text, std::max<std::int64_t>(size - std::max(length, 0), 0) + 1, INT32_MAX);
}

sdk::String* Mid(sdk::String* text, std::int32_t start, std::int32_t length) {
    return PartOfCharacters(text, start, length);
}

sdk::String* MidB(sdk::String* text, std::int32_t start, std::int32_t length) {
    return PartOfBytes(text, start, length);
}

sdk::String* MidToEnd(sdk::String* text, std::int32_t start) { return Mid(text, start, INT32_MAX); }
sdk::String* MidToEndB(sdk::String* text, std::int32_t start) { return MidB(text, start, INT32_MAX); }

// --- Blanks ---------------------------------------------------------------------------------

bool IsBlank(char32_t c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == 0x3000; }

// Bytes of the blanks that a text begins with.
std::size_t LeadingBlanks(std::string_view text, sdk::Encoding encoding) {
    std::size_t at = 0;
    while (at < text.size() && IsBlank(FirstCharacter(text.substr(at), encoding)))
        at += CharacterLength(text.substr(at), encoding);
    return at;
}

// Where the blanks at a text's end begin.
std::size_t TrailingBlanks(std::string_view text, sdk::Encoding encoding) {
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size();) {
        const bool blank = IsBlank(FirstCharacter(text.substr(at), encoding));
        at += CharacterLength(text.substr(at), encoding);
        if (!blank) end = at;
    }
    return end;
}

sdk::String* LTrim(sdk::String* text) {
    return Part(text, LeadingBlanks(Bytes(text), EncodingOfText(text)), Bytes(text).size());
}

sdk::String* RTrim(sdk::String* text) { return Part(text, 0, TrailingBlanks(Bytes(text), EncodingOfText(text))); }

sdk::String* Trim(sdk::String* text) {
    const std::size_t end = TrailingBlanks(Bytes(text), EncodingOfText(text));
    return Part(text, std::min(LeadingBlanks(Bytes(text), EncodingOfText(text)), end), end);
}

// --- Case -----------------------------------------------------------------------------------

// A single byte changes only as ASCII does: others are no text, or no text that is sound.
sdk::String* Mapped(sdk::String* text, char32_t (*map)(char32_t)) {
    const sdk::Encoding encoding = EncodingOfText(text);
    std::string result;
    for (std::string_view rest = Bytes(text); !rest.empty();) {
        const std::size_t length = CharacterLength(rest, encoding);
        const char32_t before = FirstCharacter(rest, encoding), after = map(before);
        if (before == after || (length == 1 && before > 127))
            result += rest.substr(0, length);
        else
            result += CharacterText(after, encoding);
        rest.remove_prefix(length);
    }
    return GiveString(result, encoding);
}

sdk::String* Uppercase(sdk::String* text) { return Mapped(text, &UpperCharacter); }
sdk::String* Lowercase(sdk::String* text) { return Mapped(text, &LowerCharacter); }

// --- Characters and their codes -------------------------------------------------------------

sdk::String* Chr(std::int32_t code) {
    if (code < 0 || code > 0x10ffff) Fail(kDataRaises.character(code));
    return GiveString(CharacterText(static_cast<char32_t>(code), sdk::Encoding::Utf8));
}

// The low byte counts.
sdk::String* ChrB(std::int32_t code) {
    return GiveString(std::string(1, static_cast<char>(code)), sdk::Encoding::None);
}

// 0 for an empty string.
std::int32_t Asc(sdk::String* text) {
    return text && !Bytes(text).empty() ? static_cast<std::int32_t>(FirstCharacter(Bytes(text), EncodingOfText(text)))
                                        : 0;
}

std::int32_t AscB(sdk::String* text) { return Bytes(text).empty() ? 0 : static_cast<std::uint8_t>(Bytes(text)[0]); }

// --- Bytes as digits --------------------------------------------------------------------------

constexpr char kDigits[] = "0123456789ABCDEF";

sdk::String* EncodeHex(sdk::String* text, bool spaces) {
    std::string digits;
    for (const char c : Bytes(text)) {
        if (spaces && !digits.empty()) digits += ' ';
        digits += kDigits[static_cast<std::uint8_t>(c) >> 4];
        digits += kDigits[c & 15];
    }
    return GiveString(digits, sdk::Encoding::Ascii);
}

// Characters that are no digits are skipped; a last digit without its second counts for nothing.
sdk::String* DecodeHex(sdk::String* text) {
    std::string bytes;
    int high = -1;
    for (const char c : Bytes(text)) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) continue;
        const int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
        if (high >= 0) bytes += static_cast<char>(high << 4 | digit);
        high = high < 0 ? digit : -1;
    }
    return GiveString(bytes, sdk::Encoding::None);
}

sdk::String* DigestOf(sdk::String* text) {
    const std::string_view bytes = Bytes(text);
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::uint8_t digest[MD5_DIGEST_LENGTH];
    MD5Final(digest, &context);
    return GiveString({reinterpret_cast<const char*>(digest), sizeof(digest)}, sdk::Encoding::None);
}

// --- Numbers --------------------------------------------------------------------------------

sdk::String* StrOfDouble(double value) { return GiveString(NumberText(value)); }
sdk::String* StrOfSingle(float value) { return GiveString(NumberText(value)); }
sdk::String* StrOfInteger(std::int64_t value) { return GiveString(std::to_string(value)); }
sdk::String* StrOfWide(std::uint64_t value) { return GiveString(std::to_string(value)); }
sdk::String* StrOfBoolean(bool value) { return GiveString(value ? "True" : "False"); }
sdk::String* StrOfText(sdk::String* value) { return Part(value, 0, Bytes(value).size()); }

sdk::String* StrOfColor(sdk::Color value) {
    std::string text = "&c";
    for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[static_cast<std::uint32_t>(value) >> shift & 15];
    return GiveString(text);
}

sdk::String* StrByFormat(double value, sdk::String* pattern) { return GiveString(FormatNumber(value, Bytes(pattern))); }

double Val(sdk::String* text) {
    const Ref<String> utf8 = ConvertEncoding(Ref<String>::Share(FromPlugin(text)), sdk::Encoding::Utf8);
    return NumberIn(Bytes(utf8));
}

// The digits of a number's bits, 2^shift to a digit, without leading zeros.
sdk::String* InBase(std::uint64_t value, int shift) {
    std::string digits;
    do digits.insert(digits.begin(), kDigits[value & ((1u << shift) - 1)]);
    while (value >>= shift);
    return GiveString(digits);
}

template <class Integer, int Shift>
sdk::String* BitsOf(Integer value) {
    return InBase(static_cast<std::make_unsigned_t<Integer>>(value), Shift);
}

// --- Forms for scripts ----------------------------------------------------------------------

std::int32_t WholeIn(const Value& value) { return static_cast<std::int32_t>(value.bits()); }

// Where a text is that the result is written over, nothing else of it is needed any more.
void QuickMid(Object*, const Value* const* arguments, Value& result) {
    String* const text = arguments[0]->string();
    const std::int64_t before = std::max<std::int64_t>(WholeIn(*arguments[1]), 1) - 1;
    PutText(result, CharactersBehind(text, before, WholeIn(*arguments[2])), EncodingOf(text));
}

void QuickMidB(Object*, const Value* const* arguments, Value& result) {
    String* const text = arguments[0]->string();
    const std::string_view bytes = Bytes(text);
    const auto from = static_cast<std::size_t>(std::max<std::int64_t>(WholeIn(*arguments[1]), 1) - 1);
    const auto length = static_cast<std::size_t>(std::max(WholeIn(*arguments[2]), 0));
    PutText(result, bytes.substr(std::min(from, bytes.size()), length), EncodingOf(text));
}

void QuickLeft(Object*, const Value* const* arguments, Value& result) {
    String* const text = arguments[0]->string();
    PutText(result, Bytes(text).substr(0, BytesOfCharacters(text, WholeIn(*arguments[1]))), EncodingOf(text));
}

void QuickLen(Object*, const Value* const* arguments, Value& result) {
    result.bits() = Count(CharacterCount(arguments[0]->string()));
}

void QuickLenB(Object*, const Value* const* arguments, Value& result) {
    result.bits() = static_cast<std::int64_t>(arguments[0]->text().size());
}

void QuickAsc(Object*, const Value* const* arguments, Value& result) { result.bits() = Asc(arguments[0]->string()); }

void QuickAscB(Object*, const Value* const* arguments, Value& result) { result.bits() = AscB(arguments[0]->string()); }

void QuickChr(Object*, const Value* const* arguments, Value& result) {
    const std::int32_t code = WholeIn(*arguments[0]);
    const char letter = static_cast<char>(code);
    if (code > 0 && code < 0x80)
        PutText(result, {&letter, 1}, sdk::Encoding::Utf8);
    else
        result = Value(Ref<String>::Adopt(FromPlugin(Chr(code))));
}

void QuickStr(Object*, const Value* const* arguments, Value& result) {
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof(digits), arguments[0]->bits());
    PutText(result, {digits, static_cast<std::size_t>(end - digits)}, sdk::Encoding::Utf8);
}

void AddQuickForms() {
    AddQuickForm(Guarded<&Mid>, &QuickMid);
    AddQuickForm(Guarded<&MidB>, &QuickMidB);
    AddQuickForm(Guarded<&Left>, &QuickLeft);
    AddQuickForm(Guarded<&Len>, &QuickLen);
    AddQuickForm(Guarded<&LenB>, &QuickLenB);
    AddQuickForm(Guarded<&Asc>, &QuickAsc);
    AddQuickForm(Guarded<&AscB>, &QuickAscB);
    AddQuickForm(Guarded<&Chr>, &QuickChr);
    AddQuickForm(Guarded<&StrOfInteger>, &QuickStr);
}

}  // namespace

void RegisterTextFunctions(Runtime& runtime) {
    AddQuickForms();
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"Len(text as string) as integer", Guarded<&Len>>(sdk::kMemberPortable),
        sdk::SharedMethod<"LenB(text as string) as integer", Guarded<&LenB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Left(text as string, length as integer) as string", Guarded<&Left>>(sdk::kMemberPortable),
        sdk::SharedMethod<"LeftB(text as string, length as integer) as string", Guarded<&LeftB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Right(text as string, length as integer) as string", Guarded<&Right>>(sdk::kMemberPortable),
        sdk::SharedMethod<"RightB(text as string, length as integer) as string", Guarded<&RightB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"Mid(text as string, start as integer) as string", Guarded<&MidToEnd>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Mid(text as string, start as integer, length as integer) as string", Guarded<&Mid>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"MidB(text as string, start as integer) as string", Guarded<&MidToEndB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"MidB(text as string, start as integer, length as integer) as string", Guarded<&MidB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"Trim(text as string) as string", Guarded<&Trim>>(sdk::kMemberPortable),
        sdk::SharedMethod<"LTrim(text as string) as string", Guarded<&LTrim>>(sdk::kMemberPortable),
        sdk::SharedMethod<"RTrim(text as string) as string", Guarded<&RTrim>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Uppercase(text as string) as string", Guarded<&Uppercase>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Lowercase(text as string) as string", Guarded<&Lowercase>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Chr(code as integer) as string", Guarded<&Chr>>(sdk::kMemberPortable),
        sdk::SharedMethod<"ChrB(code as integer) as string", Guarded<&ChrB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Asc(text as string) as integer", Guarded<&Asc>>(sdk::kMemberPortable),
        sdk::SharedMethod<"AscB(text as string) as integer", Guarded<&AscB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"EncodeHex(bytes as string, spaces as boolean = False) as string", Guarded<&EncodeHex>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"DecodeHex(digits as string) as string", Guarded<&DecodeHex>>(sdk::kMemberPortable),
        sdk::SharedMethod<"MD5(bytes as string) as string", Guarded<&DigestOf>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as int64) as string", Guarded<&StrOfInteger>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as uint64) as string", Guarded<&StrOfWide>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as double) as string", Guarded<&StrOfDouble>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as single) as string", Guarded<&StrOfSingle>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as boolean) as string", Guarded<&StrOfBoolean>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as color) as string", Guarded<&StrOfColor>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as string) as string", Guarded<&StrOfText>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Str(value as double, pattern as string) as string", Guarded<&StrByFormat>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"Format(value as double, pattern as string) as string", Guarded<&StrByFormat>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"Val(text as string) as double", Guarded<&Val>>(sdk::kMemberPortable),
        sdk::SharedMethod<"CDbl(text as string) as double", Guarded<&Val>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Hex(value as integer) as string", Guarded<&BitsOf<std::int32_t, 4>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Hex(value as int64) as string", Guarded<&BitsOf<std::int64_t, 4>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Oct(value as integer) as string", Guarded<&BitsOf<std::int32_t, 3>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Oct(value as int64) as string", Guarded<&BitsOf<std::int64_t, 3>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Bin(value as integer) as string", Guarded<&BitsOf<std::int32_t, 1>>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Bin(value as int64) as string", Guarded<&BitsOf<std::int64_t, 1>>>(sdk::kMemberPortable),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
