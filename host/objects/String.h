// Host strings: counted, immutable bytes with an encoding. The empty string is nil.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/objects/Ref.h"
#include "sdk/PluginInterface.h"

namespace host {

// Where characters of a long text begin, so that the nth is found without reading all before it.
struct TextMarks {
    std::int64_t count = 0;             // of characters
    std::vector<std::uint32_t> starts;  // byte of every 64th; empty: every character is one byte
};

struct String : sdk::String {
    std::int32_t references;
    sdk::Encoding encoding;
    TextMarks* marks;  // owned; null until somebody counts (framework/Characters.h)
};

inline String* FromPlugin(sdk::String* string) { return static_cast<String*>(string); }

// Most bytes of a string: its length is an Integer.
inline constexpr std::size_t kMostStringBytes = INT32_MAX;

// A string of a copy of the bytes; nil for no bytes. Throws std::bad_alloc when memory is short or
// the bytes are more than a string can have.
Ref<String> MakeString(std::string_view bytes, sdk::Encoding encoding = sdk::Encoding::Utf8);

// A string of so many bytes, which the caller writes to `bytes` before anybody reads it; nil for
// none. Throws as MakeString.
Ref<String> MakeBlankString(std::size_t length, sdk::Encoding encoding, char*& bytes);

// The text of one ASCII character (not 0), in UTF-8. All who ask share it, and it is not counted among the
// live ones: for scripts, which look at texts character by character. Throws as MakeString.
Ref<String> SharedCharacter(char character);

// Two texts one after the other; as MakeString.
Ref<String> JoinStrings(std::string_view first, std::string_view second, sdk::Encoding encoding);

// For a text that grows: joined with room for as much again where memory allows, so that more can
// be added in its own memory, in time for what is added only. Throws as MakeString.
Ref<String> JoinWithRoom(std::string_view first, std::string_view second, sdk::Encoding encoding);

// Adds bytes to a string, which nobody else may hold, in its own memory. False when that has no
// room for them.
bool AppendInPlace(String& string, std::string_view more);

// The bytes stay, what they mean changes.
void SetEncoding(String& string, sdk::Encoding encoding);

// Adds to a text that is to become a string. Throws std::bad_alloc as soon as it is too long for
// one, so that it takes no more memory than a string could.
void AppendText(std::string& text, std::string_view more);

// Nil is allowed and ignored.
inline void Retain(String* string) {
    if (string) ++string->references;
}
void FreeString(String* string) noexcept;  // whose last reference went
inline void Release(String* string) noexcept {
    if (string && --string->references <= 0) FreeString(string);
}

// The bytes, good for the string's life. Empty for nil.
inline std::string_view Bytes(const sdk::String* string) {
    if (!string) return {};
    return {reinterpret_cast<const char*>(string->data), static_cast<std::size_t>(string->length)};
}
inline std::string_view Bytes(const Ref<String>& string) { return Bytes(string.get()); }

// Utf8 for nil.
inline sdk::Encoding EncodingOf(const String* string) { return string ? string->encoding : sdk::Encoding::Utf8; }

// The text in another encoding. Bytes without an encoding are taken as they stand; what can't be
// read becomes U+FFFD and what ASCII can't write becomes '?'. UTF-16 and UTF-32 are in the
// machine's byte order, or in that of a leading byte-order mark, which is dropped.
Ref<String> ConvertEncoding(const Ref<String>& string, sdk::Encoding encoding);

// The bytes as UTF-8 that is sound: each bad byte becomes U+FFFD.
std::string SoundUtf8(std::string_view bytes);

std::int64_t LiveStringCount();

}  // namespace host
