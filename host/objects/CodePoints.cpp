// Decoders and encoders of UTF-8, UTF-16 and UTF-32.
#include "host/objects/CodePoints.h"

#include <utf8proc.h>

#include <cstring>

namespace host {

namespace {

constexpr char32_t kLastCodePoint = 0x10FFFF;

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }
bool IsCodePoint(char32_t c) { return c <= kLastCodePoint && !IsHighSurrogate(c) && !IsLowSurrogate(c); }

template <class Unit>
Unit UnitAt(std::string_view text, std::size_t at) {
    Unit unit;
    std::memcpy(&unit, text.data() + at, sizeof unit);
    return unit;
}

CodePoint ByteOf(std::string_view rest, bool sound) { return {static_cast<unsigned char>(rest[0]), 1, sound}; }

CodePoint FirstOfUtf8(std::string_view rest) {
    if (static_cast<unsigned char>(rest[0]) < 0x80) return ByteOf(rest, true);
    utf8proc_int32_t code = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(rest.data()),
                                         static_cast<utf8proc_ssize_t>(rest.size()), &code);
    if (length < 1) return ByteOf(rest, false);
    return {static_cast<char32_t>(code), static_cast<std::size_t>(length), true};
}

CodePoint FirstOfUtf16(std::string_view rest) {
    if (rest.size() < 2) return ByteOf(rest, false);
    const char32_t first = UnitAt<char16_t>(rest, 0);
    if (!IsHighSurrogate(first) || rest.size() < 4) return {first, 2, IsCodePoint(first)};
    const char32_t second = UnitAt<char16_t>(rest, 2);
    if (!IsLowSurrogate(second)) return {first, 2, false};
    return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 4, true};
}

CodePoint FirstOfUtf32(std::string_view rest) {
    if (rest.size() < 4) return ByteOf(rest, false);
    const char32_t code = UnitAt<char32_t>(rest, 0);
    return {code, 4, IsCodePoint(code)};
}

template <class Unit>
void AppendUnit(std::string& text, char32_t value) {
    const auto unit = static_cast<Unit>(value);
    text.append(reinterpret_cast<const char*>(&unit), sizeof unit);
}

}  // namespace

CodePoint FirstCodePoint(std::string_view rest, sdk::Encoding encoding) {
    switch (encoding) {
        case sdk::Encoding::Utf8:
            return FirstOfUtf8(rest);
        case sdk::Encoding::Utf16:
            return FirstOfUtf16(rest);
        case sdk::Encoding::Utf32:
            return FirstOfUtf32(rest);
        default:
            return ByteOf(rest, true);
    }
}

void AppendCodePoint(std::string& text, char32_t code, sdk::Encoding encoding) {
    if (code > kLastCodePoint) code = kReplacement;
    if (encoding == sdk::Encoding::Utf32) return AppendUnit<char32_t>(text, code);
    if (encoding == sdk::Encoding::Utf16) {
        const bool pair = code >= 0x10000;
        if (pair) AppendUnit<char16_t>(text, 0xD800 + ((code - 0x10000) >> 10));
        return AppendUnit<char16_t>(text, pair ? 0xDC00 + (code & 0x3FF) : code);
    }
    utf8proc_uint8_t units[4];
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(code), units);
    text.append(reinterpret_cast<const char*>(units), static_cast<std::size_t>(length));
}

}  // namespace host
