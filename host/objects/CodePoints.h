// Text as code points: one at a time from the bytes of an encoding, and back.
#pragma once

#include <string>
#include <string_view>

#include "sdk/PluginInterface.h"

namespace host {

// Stands for what is no character.
inline constexpr char32_t kReplacement = 0xFFFD;

struct CodePoint {
    char32_t code;
    std::size_t length;  // bytes
    bool sound;          // else a unit that is no text by itself, and `code` is that unit
};

// What `rest` begins with, which must not be empty. Utf8, Utf16 and Utf32 (in this machine's byte
// order); bytes of any other encoding are a code point each.
CodePoint FirstCodePoint(std::string_view rest, sdk::Encoding encoding);

// Puts a code point behind some text: Utf16, Utf32, or else UTF-8. What is beyond all of them becomes
// U+FFFD; half a pair of surrogates stays what it is.
void AppendCodePoint(std::string& text, char32_t code, sdk::Encoding encoding);

}  // namespace host
