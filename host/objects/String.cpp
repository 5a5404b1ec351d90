// Strings made, joined, converted, and grown in place while nobody else holds them.
#include "host/objects/String.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "host/objects/CodePoints.h"
#include "host/objects/GuardedMemory.h"

namespace host {

namespace {

std::int64_t liveStrings = 0;

// Units of 2 or 4 bytes with their bytes the other way round.
std::string Swapped(std::string_view bytes, std::size_t unit) {
    std::string swapped(bytes);
    for (std::size_t at = 0; at + unit <= swapped.size(); at += unit)
        std::reverse(swapped.begin() + static_cast<std::ptrdiff_t>(at),
                     swapped.begin() + static_cast<std::ptrdiff_t>(at + unit));
    return swapped;
}

// Code points of sound text only. A byte-order mark of wide units is obeyed and dropped; what is
// left of a unit at the end is one character that is none.
std::u32string Decode(std::string_view bytes, sdk::Encoding encoding) {
    const bool wide = encoding == sdk::Encoding::Utf16 || encoding == sdk::Encoding::Utf32;
    const std::size_t unit = encoding == sdk::Encoding::Utf32 ? 4 : wide ? 2 : 1;
    const sdk::Encoding form = wide ? encoding : sdk::Encoding::Utf8;
    std::string mark;
    AppendCodePoint(mark, 0xFEFF, form);
    std::string turned;
    if (wide && bytes.starts_with(Swapped(mark, unit))) bytes = turned = Swapped(bytes, unit);
    if (wide && bytes.starts_with(mark)) bytes.remove_prefix(unit);
    std::u32string text;
    while (!bytes.empty()) {
        const CodePoint next = FirstCodePoint(bytes, form);
        text.push_back(next.sound ? next.code : kReplacement);
        bytes.remove_prefix(bytes.size() < unit ? bytes.size() : next.length);
    }
    return text;
}

std::string Encode(const std::u32string& text, sdk::Encoding encoding) {
    std::string bytes;
    for (const char32_t c : text) {
        if (encoding == sdk::Encoding::Ascii)
            bytes += c < 0x80 ? static_cast<char>(c) : '?';
        else
            AppendCodePoint(bytes, c, encoding);
    }
    return bytes;
}

// Room for `spare` bytes more is a wish.
void* AllocateString(std::size_t length, std::size_t spare) {
    if (length > kMostStringBytes) throw std::bad_alloc();
    void* memory = spare > 0 ? AllocateGuardedAsIs(sizeof(String) + length + spare) : nullptr;
    if (!memory) memory = AllocateGuardedAsIs(sizeof(String) + length);
    if (!memory) throw std::bad_alloc();
    return memory;
}

// Its bytes are still to be written, to `bytes`.
Ref<String> Blank(std::size_t length, std::size_t spare, sdk::Encoding encoding, char*& bytes) {
    auto* string = new (AllocateString(length, spare)) String{};
    bytes = reinterpret_cast<char*>(string + 1);
    string->data = reinterpret_cast<std::uint8_t*>(string + 1);
    string->length = static_cast<std::int64_t>(length);
    string->references = 1;
    string->encoding = encoding;
    ++liveStrings;
    return Ref<String>::Adopt(string);
}

Ref<String> Join(std::string_view first, std::string_view second, sdk::Encoding encoding, std::size_t spare) {
    const std::size_t length = first.size() + second.size();
    if (length == 0) return nullptr;
    char* bytes = nullptr;
    Ref<String> string = Blank(length, spare, encoding, bytes);
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), bytes));
    return string;
}

// More references than plug-ins could give up that they don't have: what is watched is never freed.
constexpr std::int32_t kForGood = 1 << 30;

// What plug-ins have made of it must not become every script's.
bool IsStill(const String& string, char character) {
    return string.encoding == sdk::Encoding::Utf8 && Bytes(&string) == std::string_view(&character, 1);
}

}  // namespace

Ref<String> MakeString(std::string_view bytes, sdk::Encoding encoding) {
    char* to = nullptr;
    Ref<String> string = MakeBlankString(bytes.size(), encoding, to);
    if (string) std::memcpy(to, bytes.data(), bytes.size());
    return string;
}

Ref<String> MakeBlankString(std::size_t length, sdk::Encoding encoding, char*& bytes) {
    return length == 0 ? nullptr : Blank(length, 0, encoding, bytes);
}

Ref<String> SharedCharacter(char character) {
    static auto& known = *new std::array<Ref<String>, 128>;  // to the process's end, as plug-ins may hold them
    Ref<String>& shared = known[static_cast<unsigned char>(character)];
    if (!shared || !IsStill(*shared, character)) {
        Ref<String> made = MakeString({&character, 1});
        WatchGuarded(made.get());
        made->references += kForGood;
        --liveStrings;
        shared = std::move(made);
    }
    return shared;
}

Ref<String> JoinStrings(std::string_view first, std::string_view second, sdk::Encoding encoding) {
    return Join(first, second, encoding, 0);
}

namespace {

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void DropMarks(String& string) { delete std::exchange(string.marks, nullptr); }

// Text that is ASCII and stays so keeps its count.
void CountAppended(String& string, std::string_view more) {
    if (!string.marks) return;
    if (string.marks->starts.empty() && IsAscii(more))
        string.marks->count += static_cast<std::int64_t>(more.size());
    else
        DropMarks(string);
}

}  // namespace

Ref<String> JoinWithRoom(std::string_view first, std::string_view second, sdk::Encoding encoding) {
    const std::size_t length = std::min(first.size() + second.size(), kMostStringBytes);
    return Join(first, second, encoding, std::min(length, kMostStringBytes - length));
}

bool AppendInPlace(String& string, std::string_view more) {
    const auto length = static_cast<std::size_t>(string.length);
    if (GuardedSize(&string) - sizeof(String) - length < more.size()) return false;
    std::copy(more.begin(), more.end(), const_cast<std::uint8_t*>(string.data) + length);
    string.length += static_cast<std::int64_t>(more.size());
    CountAppended(string, more);
    return true;
}

void SetEncoding(String& string, sdk::Encoding encoding) {
    DropMarks(string);
    string.encoding = encoding;
}

void AppendText(std::string& text, std::string_view more) {
    if (more.size() > kMostStringBytes - std::min(kMostStringBytes, text.size())) throw std::bad_alloc();
    text += more;
}

void FreeString(String* string) noexcept {
    --liveStrings;
    delete string->marks;
    FreeGuarded(string);
}

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
