// A key's text: a letter for the sort of value, then what it is worth.
#include "host/framework/ValueKey.h"

#include <cmath>

#include "host/framework/Characters.h"
#include "host/objects/CodePoints.h"

namespace host {

namespace {

template <class Plain>
std::string Tagged(char tag, const Plain& plain) {
    std::string key(1, tag);
    return key.append(reinterpret_cast<const char*>(&plain), sizeof plain);
}

// Whole numbers, also those that a double holds, share one form.
bool IsWholeKey(const Value& value, std::int64_t& whole) {
    if (value.IsWhole()) return whole = value.bits(), true;
    if (!IsRealKind(value.kind())) return false;
    const double number = value.real();
    constexpr double kEnd = 0x1p63;
    if (number != std::trunc(number) || number < -kEnd || number >= kEnd) return false;  // not-a-number too
    return whole = static_cast<std::int64_t>(number), true;
}

std::string KeyOfNumber(const Value& value) {
    std::int64_t whole = 0;
    if (IsWholeKey(value, whole)) return Tagged('i', whole);
    return std::isnan(value.real()) ? "n" : Tagged('d', value.real());
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string KeyOfString(const Value& value) {
    const sdk::Encoding encoding = EncodingOf(value.string());
    if (encoding == sdk::Encoding::None) return 'b' + std::string(value.text());
    const bool narrow = encoding == sdk::Encoding::Utf8 || encoding == sdk::Encoding::Ascii;
    std::string key = "t";
    key.reserve(1 + value.text().size());
    for (std::string_view rest = value.text(); !rest.empty();) {
        if (narrow && static_cast<signed char>(rest[0]) >= 0) {
            key += LowerAscii(rest[0]);
            rest.remove_prefix(1);
            continue;
        }
        const CodePoint next = FirstCodePoint(rest, encoding);
        if (next.sound)
            AppendCodePoint(key, LowerCharacter(next.code), sdk::Encoding::Utf8);
        else
            key.append(rest.substr(0, next.length));
        rest.remove_prefix(next.length);
    }
    return key;
}

}  // namespace

std::string KeyOf(const Value& value) {
    switch (value.kind()) {
        case Kind::String:
            return KeyOfString(value);
        case Kind::Object:
            return Tagged('o', value.object());
        case Kind::Array:
            return Tagged('a', value.array());
        case Kind::Boolean:
            return value.ToBoolean() ? "T" : "F";
        case Kind::Color:
            return Tagged('c', value.ToInt64());
        case Kind::None:
            return Tagged('o', static_cast<Object*>(nullptr));
        default:
            return KeyOfNumber(value);
    }
}

// Knuth's multiplicative hash (The Art of Computer Programming 3, 6.4), its high bits brought down: numbers that lie
// evenly apart don't fall upon each other.
std::size_t KeyPlaces::Mixed::operator()(std::int64_t number) const {
    const std::uint64_t product = static_cast<std::uint64_t>(number) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(product ^ product >> 32);
}

std::size_t KeyPlaces::Find(const Value& key) const {
    const auto placeIn = [](const auto& places, const auto& known) {
        const auto found = places.find(known);
        return found == places.end() ? kNone : found->second;
    };
    std::int64_t whole = 0;
    return IsWholeKey(key, whole) ? placeIn(wholes_, whole) : placeIn(others_, KeyOf(key));
}

void KeyPlaces::Set(const Value& key, std::size_t place) {
    std::int64_t whole = 0;
    (IsWholeKey(key, whole) ? wholes_[whole] : others_[KeyOf(key)]) = place;
}

void KeyPlaces::Erase(const Value& key) {
    std::int64_t whole = 0;
    if (IsWholeKey(key, whole))
        wholes_.erase(whole);
    else
        others_.erase(KeyOf(key));
}

void KeyPlaces::clear() {
    wholes_.clear();
    others_.clear();
}

}  // namespace host
