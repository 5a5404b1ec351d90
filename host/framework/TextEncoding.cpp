// Encodings as objects, each made once, and conversions between them.
#include "host/framework/TextEncoding.h"

#include <array>
#include <utility>
#include <vector>

#include "host/framework/CharacterSets.h"
#include "host/framework/Characters.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct Row {
    const char* name;  // in the net, and for the C library
    std::int32_t code;
    sdk::Encoding own = sdk::Encoding::None;  // of strings that have it themselves
};

constexpr std::array kRows{
    Row{"US-ASCII", 0x0600, sdk::Encoding::Ascii},
    Row{"UTF-8", 0x08000100, sdk::Encoding::Utf8},
    Row{"UTF-16", 0x0100, sdk::Encoding::Utf16},
    Row{"UTF-16BE", 0x10000100},
    Row{"UTF-16LE", 0x14000100},
    Row{"UTF-32", 0x0C000100, sdk::Encoding::Utf32},
    Row{"UTF-32BE", 0x18000100},
    Row{"UTF-32LE", 0x1C000100},
    Row{"ISO-8859-1", 0x0201},
    Row{"ISO-8859-2", 0x0202},
    Row{"ISO-8859-3", 0x0203},
    Row{"ISO-8859-4", 0x0204},
    Row{"ISO-8859-5", 0x0205},
    Row{"ISO-8859-6", 0x0206},
    Row{"ISO-8859-7", 0x0207},
    Row{"ISO-8859-8", 0x0208},
    Row{"ISO-8859-9", 0x0209},
    Row{"ISO-8859-15", 0x020F},
    Row{"macintosh", 0x0000},
    Row{"windows-1252", 0x0500},
    Row{"windows-1250", 0x0501},
    Row{"windows-1251", 0x0502},
    Row{"windows-1253", 0x0503},
    Row{"windows-1254", 0x0504},
    Row{"windows-1255", 0x0505},
    Row{"windows-1256", 0x0506},
    Row{"windows-1257", 0x0507},
    Row{"IBM437", 0x0400},
    Row{"IBM850", 0x0410},
    Row{"KOI8-R", 0x0A02},
    Row{"Shift_JIS", 0x0A01},
    Row{"EUC-JP", 0x0920},
    Row{"EUC-KR", 0x0940},
    Row{"Big5", 0x0A03},
    Row{"GB18030", 0x0632},
};

struct EncodingData {
    const Row* row;  // null in an instance that a script made by itself
};

sdk::ClassDefinition encodingClass{.name = "TextEncoding", .instanceDataSize = sizeof(EncodingData)};
sdk::ClassDefinition encodingsClass{.name = "Encodings"};

// One object a row, so that two of the same are one; they live as long as the process.
std::vector<Ref<Object>>& Objects() {
    static auto* const objects = new std::vector<Ref<Object>>;
    return *objects;
}

sdk::Object* Give(std::size_t index) { return Ref<Object>(Objects()[index]).Detach(); }

// Nil where there is none.
template <class Fits>
sdk::Object* GiveFirst(const Fits& fits) {
    for (std::size_t i = 0; i < kRows.size(); ++i)
        if (fits(kRows[i])) return Give(i);
    return nullptr;
}

const Row& RowOf(sdk::Object* encoding) {
    if (!encoding) Fail(kPatternsRaise.noEncoding());
    const Row* row = DataOf<EncodingData>(encoding, encodingClass).row;
    if (!row) Fail(kPatternsRaise.foreignEncoding());
    return *row;
}

// --- Functions ------------------------------------------------------------------------------

// Nil for bytes.
sdk::Object* EncodingOfString(sdk::String* text) {
    const sdk::Encoding encoding = EncodingOf(FromPlugin(text));
    if (encoding == sdk::Encoding::None) return nullptr;
    return GiveFirst([encoding](const Row& row) { return row.own == encoding; });
}

// Bytes stay what they are; they are text from then on if the encoding is one that strings have.
sdk::String* Convert(sdk::String* text, sdk::Object* encoding) {
    const Row& row = RowOf(encoding);
    const Ref<String> given = Ref<String>::Share(FromPlugin(text));
    if (row.own != sdk::Encoding::None) return ConvertEncoding(given, row.own).Detach();
    if (EncodingOf(given.get()) == sdk::Encoding::None) return Ref<String>(given).Detach();
    const std::string sound = SoundUtf8(Bytes(ConvertEncoding(given, sdk::Encoding::Utf8)));
    return GiveString(EncodeAs(row.name, sound), sdk::Encoding::None);
}

sdk::String* Define(sdk::String* text, sdk::Object* encoding) {
    return DefineAs(Ref<String>::Share(FromPlugin(text)), encoding).Detach();
}

// Nil for an unknown name.
sdk::Object* ByInternetName(sdk::String* name) {
    return GiveFirst([name](const Row& row) { return SameName(row.name, Bytes(name)); });
}

// --- TextEncoding ---------------------------------------------------------------------------

sdk::String* InternetName(sdk::Object* encoding) { return GiveString(RowOf(encoding).name); }
std::int32_t Code(sdk::Object* encoding) { return RowOf(encoding).code; }

// A character of the encoding by its number in it.
sdk::String* Chr(sdk::Object* encoding, std::int32_t code) {
    const Row& row = RowOf(encoding);
    if (code < 0 || code > 0x10ffff) Fail(kDataRaises.character(code));
    if (row.own != sdk::Encoding::None) return GiveString(CharacterText(static_cast<char32_t>(code), row.own), row.own);
    std::string bytes;
    for (int shift = 16; shift >= 0; shift -= 8)
        if (code >> shift > 0 || shift == 0) bytes += static_cast<char>(code >> shift);
    return GiveString(DecodeFrom(row.name, bytes));
}

bool Equals(sdk::Object* encoding, sdk::Object* other) { return other && &RowOf(encoding) == &RowOf(other); }

// --- Encodings ------------------------------------------------------------------------------

std::int32_t Count() { return static_cast<std::int32_t>(kRows.size()); }

// Counted from 0.
sdk::Object* Item(std::int32_t index) {
    if (index < 0 || index >= Count()) Fail(kPatternsRaise.encodingNumber(index, Count()));
    return Give(static_cast<std::size_t>(index));
}

constexpr std::size_t PlaceOf(std::string_view name) {
    for (std::size_t i = 0; i < kRows.size(); ++i)
        if (kRows[i].name == name) return i;
    return kRows.size();
}

template <std::size_t Index>
sdk::Object* Get() {
    static_assert(Index < kRows.size());
    return Give(Index);
}

template <sdk::Text Declaration, sdk::Text Name>
sdk::MethodRecord Named() {
    return sdk::SharedMethod<Declaration, Guarded<&Get<PlaceOf(Name.View())>>>(sdk::kMemberPortable);
}

void RegisterEncodings(Runtime& runtime) {
    static const sdk::MethodRecord sharedMethods[] = {
        Named<"ASCII as TextEncoding", "US-ASCII">(),
        Named<"UTF8 as TextEncoding", "UTF-8">(),
        Named<"UTF16 as TextEncoding", "UTF-16">(),
        Named<"UTF16BE as TextEncoding", "UTF-16BE">(),
        Named<"UTF16LE as TextEncoding", "UTF-16LE">(),
        Named<"UTF32 as TextEncoding", "UTF-32">(),
        Named<"UTF32BE as TextEncoding", "UTF-32BE">(),
        Named<"UTF32LE as TextEncoding", "UTF-32LE">(),
        Named<"SystemDefault as TextEncoding", "UTF-8">(),
        Named<"ISOLatin1 as TextEncoding", "ISO-8859-1">(),
        Named<"ISOLatin2 as TextEncoding", "ISO-8859-2">(),
        Named<"ISOLatin3 as TextEncoding", "ISO-8859-3">(),
        Named<"ISOLatin4 as TextEncoding", "ISO-8859-4">(),
        Named<"ISOLatinCyrillic as TextEncoding", "ISO-8859-5">(),
        Named<"ISOLatinArabic as TextEncoding", "ISO-8859-6">(),
        Named<"ISOLatinGreek as TextEncoding", "ISO-8859-7">(),
        Named<"ISOLatinHebrew as TextEncoding", "ISO-8859-8">(),
        Named<"ISOLatin5 as TextEncoding", "ISO-8859-9">(),
        Named<"ISOLatin9 as TextEncoding", "ISO-8859-15">(),
        Named<"MacRoman as TextEncoding", "macintosh">(),
        Named<"WindowsLatin1 as TextEncoding", "windows-1252">(),
        Named<"WindowsANSI as TextEncoding", "windows-1252">(),
        Named<"WindowsLatin2 as TextEncoding", "windows-1250">(),
        Named<"WindowsCyrillic as TextEncoding", "windows-1251">(),
        Named<"WindowsGreek as TextEncoding", "windows-1253">(),
        Named<"WindowsLatin5 as TextEncoding", "windows-1254">(),
        Named<"WindowsHebrew as TextEncoding", "windows-1255">(),
        Named<"WindowsArabic as TextEncoding", "windows-1256">(),
        Named<"WindowsBalticRim as TextEncoding", "windows-1257">(),
        Named<"DOSLatinUS as TextEncoding", "IBM437">(),
        Named<"DOSLatin1 as TextEncoding", "IBM850">(),
        Named<"KOI8_R as TextEncoding", "KOI8-R">(),
        Named<"ShiftJIS as TextEncoding", "Shift_JIS">(),
        Named<"EUC_JP as TextEncoding", "EUC-JP">(),
        Named<"EUC_KR as TextEncoding", "EUC-KR">(),
        Named<"Big5 as TextEncoding", "Big5">(),
        Named<"GB18030 as TextEncoding", "GB18030">(),
        sdk::SharedMethod<"Count as integer", Guarded<&Count>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Item(index as integer) as TextEncoding", Guarded<&Item>>(sdk::kMemberPortable),
    };
    SetSharedMethods(encodingsClass, sharedMethods);
    RegisterOrAbort(runtime, encodingsClass);
}

void RegisterEncodingClass(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Chr(code as integer) as string", Guarded<&Chr>>(sdk::kMemberPortable),
        sdk::Method<"Equals(other as TextEncoding) as boolean", Guarded<&Equals>>(sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"String", &InternetName>("InternetName"),
        ReadOnly<"Integer", &Code>("Code"),
    };
    SetMethods(encodingClass, methods);
    SetProperties(encodingClass, properties);
    RegisterOrAbort(runtime, encodingClass);
    for (const Row& row : kRows) {
        Ref<Object> object = NewInstanceOf(encodingClass);
        DataOf<EncodingData>(object.get(), encodingClass).row = &row;
        Objects().push_back(std::move(object));
    }
}

}  // namespace

Ref<String> DefineAs(const Ref<String>& bytes, sdk::Object* encoding) {
    if (!encoding) return MakeString(Bytes(bytes), sdk::Encoding::None);
    const Row& row = RowOf(encoding);
    if (row.own != sdk::Encoding::None) return MakeString(Bytes(bytes), row.own);
    return MakeString(DecodeFrom(row.name, Bytes(bytes)));
}

void RegisterTextEncodings(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"Encoding(text as string) as TextEncoding", Guarded<&EncodingOfString>>(sdk::kMemberPortable),
        sdk::SharedMethod<"ConvertEncoding(text as string, encoding as TextEncoding) as string", Guarded<&Convert>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"DefineEncoding(text as string, encoding as TextEncoding) as string", Guarded<&Define>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"GetInternetTextEncoding(name as string) as TextEncoding", Guarded<&ByInternetName>>(
            sdk::kMemberPortable),
    };
    RegisterEncodingClass(runtime);
    RegisterEncodings(runtime);
    runtime.RegisterFunctions(functions);
}

}  // namespace host
