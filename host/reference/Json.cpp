#include "host/reference/Json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "host/objects/String.h"

namespace host {

void JsonWriter::NewLine() {
    text_ += '\n';
    text_.append(2 * filled_.size(), ' ');
}

// Puts what belongs between the last value and the next one.
void JsonWriter::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (filled_.empty()) return;
    if (filled_.back()) text_ += ',';
    filled_.back() = true;
    NewLine();
}

JsonWriter& JsonWriter::Begin(char bracket) {
    Separate();
    text_ += bracket;
    filled_.push_back(false);
    return *this;
}

JsonWriter& JsonWriter::End(char bracket) {
    const bool filled = filled_.back();
    filled_.pop_back();
    if (filled) NewLine();
    text_ += bracket;
    return *this;
}

JsonWriter& JsonWriter::BeginObject() { return Begin('{'); }
JsonWriter& JsonWriter::EndObject() { return End('}'); }
JsonWriter& JsonWriter::BeginArray() { return Begin('['); }
JsonWriter& JsonWriter::EndArray() { return End(']'); }

JsonWriter& JsonWriter::Key(std::string_view name) {
    Text(name);
    text_ += ": ";
    afterKey_ = true;
    return *this;
}

void JsonWriter::Quote(std::string_view value) {
    text_ += '"';
    for (const char c : value) {
        char escape[8];
        if (c == '"' || c == '\\')
            (text_ += '\\') += c;
        else if (c == '\n')
            text_ += "\\n";
        else if (c == '\t')
            text_ += "\\t";
        else if (static_cast<unsigned char>(c) < 0x20) {
            std::snprintf(escape, sizeof(escape), "\\u%04X", static_cast<unsigned>(c));
            text_ += escape;
        } else {
            text_ += c;
        }
    }
    text_ += '"';
}

JsonWriter& JsonWriter::Text(std::string_view value) {
    Separate();
    Quote(SoundUtf8(value));
    return *this;
}

JsonWriter& JsonWriter::Number(std::int64_t value) {
    Separate();
    text_ += std::to_string(value);
    return *this;
}

JsonWriter& JsonWriter::Number(double value) {
    if (!std::isfinite(value)) return Null();
    Separate();
    char digits[40];
    text_.append(digits, std::to_chars(digits, digits + sizeof(digits), value).ptr);
    return *this;
}

JsonWriter& JsonWriter::Boolean(bool value) {
    Separate();
    text_ += value ? "true" : "false";
    return *this;
}

JsonWriter& JsonWriter::Null() {
    Separate();
    text_ += "null";
    return *this;
}

}  // namespace host
