// Counting and cutting by characters, with marks in long texts.
#include "host/framework/Characters.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <memory>

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

namespace {

// How many bytes of ASCII a text begins with.
std::size_t AsciiPrefix(std::string_view text) {
    std::size_t at = 0;
    for (std::uint64_t eight; at + sizeof(eight) <= text.size(); at += sizeof(eight)) {
        std::memcpy(&eight, text.data() + at, sizeof(eight));
        if (eight & 0x8080808080808080u) break;
    }
    while (at < text.size() && static_cast<signed char>(text[at]) >= 0) ++at;
    return at;
}

}  // namespace

std::int64_t CharacterCount(std::string_view text, sdk::Encoding encoding) {
    if (HasOneByteCharacters(encoding)) return static_cast<std::int64_t>(text.size());
    const std::size_t ascii = encoding == sdk::Encoding::Utf8 ? AsciiPrefix(text) : 0;
    text.remove_prefix(ascii);
    auto count = static_cast<std::int64_t>(ascii);
    for (; !text.empty(); ++count) text.remove_prefix(CharacterLength(text, encoding));
    return count;
}

std::size_t BytesOfCharacters(std::string_view text, sdk::Encoding encoding, std::int64_t count) {
    if (count <= 0) return 0;
    if (HasOneByteCharacters(encoding)) return std::min(text.size(), static_cast<std::size_t>(count));
    std::string_view rest = text;
    if (encoding == sdk::Encoding::Utf8) {
        const std::size_t ascii = AsciiPrefix(text.substr(0, static_cast<std::size_t>(count)));
        rest.remove_prefix(ascii);
        count -= static_cast<std::int64_t>(ascii);
    }
    for (; !rest.empty() && count > 0; --count) rest.remove_prefix(CharacterLength(rest, encoding));
    return text.size() - rest.size();
}

namespace {

// Shorter texts are read through faster than marks are made for them.
constexpr std::size_t kLeastMarked = 128;
constexpr std::int64_t kMarkEvery = 64;

TextMarks* MakeMarks(std::string_view text, sdk::Encoding encoding) {
    auto marks = std::make_unique<TextMarks>();
    for (std::size_t at = 0; at < text.size(); ++marks->count) {
        if (marks->count % kMarkEvery == 0) marks->starts.push_back(static_cast<std::uint32_t>(at));
        at += CharacterLength(text.substr(at), encoding);
    }
    if (static_cast<std::size_t>(marks->count) == text.size()) marks->starts = {};
    return marks.release();
}

// Null where it is quicker, or right at once, without.
const TextMarks* MarksOf(String* string) {
    if (!string || HasOneByteCharacters(string->encoding) || Bytes(string).size() < kLeastMarked) return nullptr;
    if (!string->marks) string->marks = MakeMarks(Bytes(string), string->encoding);
    return string->marks;
}

}  // namespace

std::int64_t CharacterCount(String* string) {
    const TextMarks* marks = MarksOf(string);
    return marks ? marks->count : CharacterCount(Bytes(string), EncodingOf(string));
}

std::size_t BytesOfCharacters(String* string, std::int64_t count) {
    const std::string_view text = Bytes(string);
    const TextMarks* marks = MarksOf(string);
    if (!marks) return BytesOfCharacters(text, EncodingOf(string), count);
    if (count <= 0) return 0;
    if (count >= marks->count) return text.size();
    if (marks->starts.empty()) return static_cast<std::size_t>(count);
    const std::size_t start = marks->starts[static_cast<std::size_t>(count / kMarkEvery)];
    return start + BytesOfCharacters(text.substr(start), string->encoding, count % kMarkEvery);
}

std::string_view CharactersBehind(String* string, std::int64_t before, std::int64_t count) {
    std::string_view text = Bytes(string);
    const std::size_t from = BytesOfCharacters(string, before);
    if (string && string->marks)
        return text.substr(from, BytesOfCharacters(string, before + std::max<std::int64_t>(count, 0)) - from);
    text.remove_prefix(from);
    return text.substr(0, BytesOfCharacters(text, EncodingOf(string), count));
}

bool IsAscii(std::string_view text) { return AsciiPrefix(text) == text.size(); }

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
