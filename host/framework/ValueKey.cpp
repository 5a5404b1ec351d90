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
std::string KeyOfNumber(const Value& value) {
    if (value.IsWhole()) return Tagged('i', value.ToInt64());
    const double number = value.ToDouble();
    if (std::isnan(number)) return "n";
    constexpr double kEnd = 0x1p63;
    const bool whole = number == std::trunc(number) && number >= -kEnd && number < kEnd;
    return whole ? Tagged('i', static_cast<std::int64_t>(number)) : Tagged('d', number);
}

std::string KeyOfString(const Value& value) {
    const sdk::Encoding encoding = EncodingOf(value.string());
    if (encoding == sdk::Encoding::None) return 'b' + std::string(value.text());
    std::string key = "t";
    for (std::string_view rest = value.text(); !rest.empty();) {
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

}  // namespace host
