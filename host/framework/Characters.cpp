#include "host/framework/Characters.h"

#include <utf8proc.h>

#include <algorithm>

#include "host/objects/CodePoints.h"

namespace host {

namespace {

// Stands for the single bytes that are no characters; beyond all code points.
constexpr char32_t kFirstByte = 0x110000;

bool HasOneByteCharacters(sdk::Encoding encoding) {
    return encoding == sdk::Encoding::Ascii || encoding == sdk::Encoding::None;
}

}  // namespace

std::size_t CharacterLength(std::string_view rest, sdk::Encoding encoding) {
    return FirstCodePoint(rest, encoding).length;
}

char32_t FirstCharacter(std::string_view rest, sdk::Encoding encoding) { return FirstCodePoint(rest, encoding).code; }

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
    if (HasOneByteCharacters(encoding)) return std::string(1, static_cast<char>(character));
    std::string text;
    AppendCodePoint(text, character, encoding);
    return text;
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
        const CodePoint character = FirstCodePoint(text.substr(at), encoding);
        folded.starts.push_back(at);
        const bool isByte = encoding == sdk::Encoding::None || (character.length == 1 && character.code > 127);
        folded.characters.push_back(isByte ? kFirstByte + character.code : LowerCharacter(character.code));
        at += character.length;
    }
    folded.starts.push_back(at);
    return folded;
}

}  // namespace host
