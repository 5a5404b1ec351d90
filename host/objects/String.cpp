#include "host/objects/String.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "host/objects/GuardedMemory.h"

namespace host {

namespace {

std::int64_t liveStrings = 0;

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCharacter = 0x10FFFF;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c < 0xE000; }

// One character of UTF-8, and past it; a bad byte is one replacement character.
char32_t ReadUtf8(std::string_view bytes, std::size_t& at) {
    const auto* from = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data() + at);
    utf8proc_int32_t c = 0;
    const auto length = utf8proc_iterate(from, static_cast<utf8proc_ssize_t>(bytes.size() - at), &c);
    at += length > 0 ? static_cast<std::size_t>(length) : 1;
    return length > 0 ? static_cast<char32_t>(c) : kReplacement;
}

// Code units of 2 or 4 bytes, with a byte-order mark obeyed and dropped.
template <class Unit>
std::u32string ReadUnits(std::string_view bytes) {
    std::u32string units;
    bool swapped = false;
    for (std::size_t at = 0; at + sizeof(Unit) <= bytes.size(); at += sizeof(Unit)) {
        Unit unit;
        std::memcpy(&unit, bytes.data() + at, sizeof(Unit));
        const Unit other = sizeof(Unit) == 2 ? static_cast<Unit>(__builtin_bswap16(static_cast<std::uint16_t>(unit)))
                                             : static_cast<Unit>(__builtin_bswap32(static_cast<std::uint32_t>(unit)));
        if (at == 0 && other == 0xFEFF) swapped = true;
        const Unit value = swapped ? other : unit;
        if (at > 0 || value != 0xFEFF) units.push_back(value);
    }
    if (bytes.size() % sizeof(Unit) != 0) units.push_back(kReplacement);
    return units;
}

std::u32string JoinSurrogates(const std::u32string& units) {
    std::u32string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t c = units[i];
        const bool pair =
            c >= 0xD800 && c < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
        if (pair)
            text.push_back(0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00));
        else
            text.push_back(c);
    }
    return text;
}

std::u32string Decode(std::string_view bytes, sdk::Encoding encoding) {
    std::u32string text;
    if (encoding == sdk::Encoding::Utf16)
        text = JoinSurrogates(ReadUnits<std::uint16_t>(bytes));
    else if (encoding == sdk::Encoding::Utf32)
        text = ReadUnits<std::uint32_t>(bytes);
    else
        for (std::size_t at = 0; at < bytes.size();) text.push_back(ReadUtf8(bytes, at));
    for (char32_t& c : text)
        if (c > kLastCharacter || IsSurrogate(c)) c = kReplacement;
    return text;
}

void WriteUtf8(std::string& bytes, char32_t c) {
    utf8proc_uint8_t units[4];
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(c), units);
    bytes.append(reinterpret_cast<const char*>(units), static_cast<std::size_t>(length));
}

template <class Unit>
void WriteUnit(std::string& bytes, char32_t value) {
    const auto unit = static_cast<Unit>(value);
    bytes.append(reinterpret_cast<const char*>(&unit), sizeof(Unit));
}

void WriteUtf16(std::string& bytes, char32_t c) {
    if (c >= 0x10000) {
        WriteUnit<std::uint16_t>(bytes, 0xD800 + ((c - 0x10000) >> 10));
        c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    WriteUnit<std::uint16_t>(bytes, c);
}

std::string Encode(const std::u32string& text, sdk::Encoding encoding) {
    std::string bytes;
    for (const char32_t c : text) {
        if (encoding == sdk::Encoding::Utf16)
            WriteUtf16(bytes, c);
        else if (encoding == sdk::Encoding::Utf32)
            WriteUnit<std::uint32_t>(bytes, c);
        else if (encoding == sdk::Encoding::Ascii)
            bytes += c < 0x80 ? static_cast<char>(c) : '?';
        else
            WriteUtf8(bytes, c);
    }
    return bytes;
}

}  // namespace

Ref<String> MakeString(std::string_view bytes, sdk::Encoding encoding) { return JoinStrings(bytes, {}, encoding); }

Ref<String> JoinStrings(std::string_view first, std::string_view second, sdk::Encoding encoding) {
    const std::size_t length = first.size() + second.size();
    if (length == 0) return nullptr;
    void* memory = length <= kMostStringBytes ? AllocateGuarded(sizeof(String) + length) : nullptr;
    if (!memory) throw std::bad_alloc();
    auto* string = new (memory) String{};
    auto* data = reinterpret_cast<std::uint8_t*>(string + 1);
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), data));
    string->data = data;
    string->length = static_cast<std::int64_t>(length);
    string->references = 1;
    string->encoding = encoding;
    ++liveStrings;
    return Ref<String>::Adopt(string);
}

void AppendText(std::string& text, std::string_view more) {
    if (more.size() > kMostStringBytes - std::min(kMostStringBytes, text.size())) throw std::bad_alloc();
    text += more;
}

void Retain(String* string) {
    if (string) ++string->references;
}

void Release(String* string) noexcept {
    if (!string || --string->references > 0) return;
    --liveStrings;
    FreeGuarded(string);
}

std::string_view Bytes(const sdk::String* string) {
    if (!string) return {};
    return {reinterpret_cast<const char*>(string->data), static_cast<std::size_t>(string->length)};
}

sdk::Encoding EncodingOf(const String* string) { return string ? string->encoding : sdk::Encoding::Utf8; }

Ref<String> ConvertEncoding(const Ref<String>& string, sdk::Encoding encoding) {
    if (!string) return nullptr;
    const sdk::Encoding own = string->encoding;
    if (own == encoding) return string;
    if (own == sdk::Encoding::None || encoding == sdk::Encoding::None) return MakeString(Bytes(string), encoding);
    return MakeString(Encode(Decode(Bytes(string), own), encoding), encoding);
}

std::string SoundUtf8(std::string_view bytes) {
    return Encode(Decode(bytes, sdk::Encoding::Utf8), sdk::Encoding::Utf8);
}

std::int64_t LiveStringCount() { return liveStrings; }

}  // namespace host
