// Strings as characters of their encoding.
//
// A character is a code point of UTF-8, UTF-16 or UTF-32 text, and a byte of ASCII text and of
// strings without an encoding. Bytes that are no sound text count as one character each.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/objects/String.h"
#include "sdk/PluginInterface.h"

namespace host {

// Bytes of the character that `rest` begins with, which must not be empty.
std::size_t CharacterLength(std::string_view rest, sdk::Encoding encoding);

std::int64_t CharacterCount(std::string_view text, sdk::Encoding encoding);

// Bytes of the first `count` characters; all bytes where there are fewer, 0 for less than none.
std::size_t BytesOfCharacters(std::string_view text, sdk::Encoding encoding, std::int64_t count);

// The same for a string, which remembers where its characters begin once it was asked: asking for
// one after the other takes time for each alone.
std::int64_t CharacterCount(String* string);
std::size_t BytesOfCharacters(String* string, std::int64_t count);

// The bytes of `count` characters behind the first `before`; fewer where there are fewer, none for less than none.
std::string_view CharactersBehind(String* string, std::int64_t before, std::int64_t count);

// Whether all bytes are ASCII.
bool IsAscii(std::string_view text);

// The code point that `rest` begins with; a byte that is no sound text stands for itself.
char32_t FirstCharacter(std::string_view rest, sdk::Encoding encoding);

// One character as text; U+FFFD for what is no code point, and for one that the encoding lacks.
std::string CharacterText(char32_t character, sdk::Encoding encoding);

char32_t UpperCharacter(char32_t character);
char32_t LowerCharacter(char32_t character);

// A text's characters in lower case, with where each begins, to look for one text in another
// without regard to case. Strings without an encoding keep their bytes.
struct FoldedText {
    std::u32string characters;
    std::vector<std::size_t> starts;  // one more than characters: the last is the text's length
};

FoldedText Fold(std::string_view text, sdk::Encoding encoding);

}  // namespace host
