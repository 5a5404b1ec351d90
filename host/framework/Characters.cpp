#include "host/framework/Characters.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace host {

namespace {

constexpr char32_t kReplacement = 0xfffd;

// Stands for the single bytes that are no characters; beyond all code points.
constexpr char32_t kFirstByte = 0x110000;

template <class Unit>
Unit UnitAt(std::string_view text, std::size_t at) {
    Unit unit;
    std::memcpy(&unit, text.data() + at, sizeof unit);
    return unit;
}

struct Character {
    char32_t code;
    std::size_t length;  // bytes
};

Character ByteOf(std::string_view rest) { return {static_cast<unsigned char>(rest[0]), 1}; }

Character FirstOfUtf8(std::string_view rest) {
    if (static_cast<unsigned char>(rest[0]) < 0x80) return ByteOf(rest);
    utf8proc_int32_t code = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(rest.data()),
                                         static_cast<utf8proc_ssize_t>(rest.size()), &code);
    if (length < 1) return ByteOf(rest);
    return {static_cast<char32_t>(code), static_cast<std::size_t>(length)};
}

// Half a pair of surrogates, or an odd byte at the end, stands for itself.
Character FirstOfUtf16(std::string_view rest) {
    if (rest.size() < 2) return ByteOf(rest);
    const auto first = UnitAt<char16_t>(rest, 0);
    if (first < 0xd800 || first > 0xdbff || rest.size() < 4) return {first, 2};
    const auto second = UnitAt<char16_t>(rest, 2);
    if (second < 0xdc00 || second > 0xdfff) return {first, 2};
    return {0x10000 + ((first - 0xd800u) << 10) + (second - 0xdc00u), 4};
}

Character First(std::string_view rest, sdk::Encoding encoding) {
    switch (encoding) {
        case sdk::Encoding::Utf8:
            return FirstOfUtf8(rest);
        case sdk::Encoding::Utf16:
            return FirstOfUtf16(rest);
        case sdk::Encoding::Utf32:
            return rest.size() < 4 ? ByteOf(rest) : Character{UnitAt<char32_t>(rest, 0), 4};
        default:
            return ByteOf(rest);
    }
}

bool HasOneByteCharacters(sdk::Encoding encoding) {
    return encoding == sdk::Encoding::Ascii || encoding == sdk::Encoding::None;
}

template <class Unit>
std::string UnitsAsBytes(std::initializer_list<Unit> units) {
    return {reinterpret_cast<const char*>(units.begin()), units.size() * sizeof(Unit)};
}

}  // namespace

std::size_t CharacterLength(std::string_view rest, sdk::Encoding encoding) { return First(rest, encoding).length; }

char32_t FirstCharacter(std::string_view rest, sdk::Encoding encoding) { return First(rest, encoding).code; }

std::int64_t CharacterCount(std::string_view text, sdk::Encoding encoding) {
    if (HasOneByteCharacters(encoding)) return static_cast<std::int64_t>(text.size());
    std::int64_t count = 0;
    for (; !text.empty(); ++count) text.remove_prefix(CharacterLength(text, encoding));
    return count;
}

std::size_t BytesOfCharacters(std::string_view text, sdk::Encoding encoding, std::int64_t count) {
    if (count <= 0) return 0;
    if (HasOneByteCharacters(encoding)) return std::min(text.size(), static_cast<std::size_t>(count));
    std::string_view rest = text;
    for (; !rest.empty() && count > 0; --count) rest.remove_prefix(CharacterLength(rest, encoding));
    return text.size() - rest.size();
}

std::string CharacterText(char32_t character, sdk::Encoding encoding) {
    if (character > 0x10ffff) character = kReplacement;
    switch (encoding) {
        case sdk::Encoding::Utf16:
            if (character < 0x10000) return UnitsAsBytes({static_cast<char16_t>(character)});
            return UnitsAsBytes({static_cast<char16_t>(0xd800 + ((character - 0x10000) >> 10)),
                                 static_cast<char16_t>(0xdc00 + (character & 0x3ff))});
        case sdk::Encoding::Utf32:
            return UnitsAsBytes({character});
        case sdk::Encoding::Utf8: {
            utf8proc_uint8_t bytes[4];
            const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(character), bytes);
            return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
        }
        default:
            return std::string(1, static_cast<char>(character));
    }
}

char32_t UpperCharacter(char32_t character) {
    constexpr char32_t kSharpS = 0xdf;  // its capital is no common letter
    if (character == kSharpS) return character;
    return static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(character)));
}

char32_t LowerCharacter(char32_t character) {
    return static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(character)));
}

FoldedText Fold(std::string_view text, sdk::Encoding encoding) {
    FoldedText folded;
    folded.characters.reserve(text.size());
    folded.starts.reserve(text.size() + 1);
    std::size_t at = 0;
    while (at < text.size()) {
        const Character character = First(text.substr(at), encoding);
        folded.starts.push_back(at);
        const bool isByte = encoding == sdk::Encoding::None || (character.length == 1 && character.code > 127);
        folded.characters.push_back(isByte ? kFirstByte + character.code : LowerCharacter(character.code));
        at += character.length;
    }
    folded.starts.push_back(at);
    return folded;
}

}  // namespace host
