// Writing JSON, indented by two blanks a level.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Builds one JSON text. Within an object each value is preceded by its Key; commas, line ends and
// indentation come by themselves.
class JsonWriter {
  public:
    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    JsonWriter& Key(std::string_view name);

    JsonWriter& Text(std::string_view value);  // UTF-8; bytes that are none become U+FFFD
    JsonWriter& Number(std::int64_t value);
    JsonWriter& Number(double value);  // null when not finite
    JsonWriter& Boolean(bool value);
    JsonWriter& Null();

    const std::string& text() const { return text_; }

  private:
    JsonWriter& Begin(char bracket);
    JsonWriter& End(char bracket);
    void Separate();
    void NewLine();
    void Quote(std::string_view value);

    std::string text_;
    std::vector<bool> filled_;  // per open bracket: something is in it
    bool afterKey_ = false;
};

}  // namespace host
