// Conversions through the C library's iconv.
#include "host/framework/CharacterSets.h"

#include <iconv.h>

#include <cerrno>

#include "host/framework/Support.h"
#include "host/objects/CodePoints.h"

namespace host {

namespace {

class Converter {
  public:
    Converter(const char* to, const char* from) : converter_(iconv_open(to, from)) {
        if (converter_ == kNone) Fail(kPatternsRaise.noConverter(to));
    }
    ~Converter() { iconv_close(converter_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Takes off `text` what it converts; stops in front of what can't be converted.
    void Convert(std::string_view& text, std::string& result) {
        char* from = const_cast<char*>(text.data());
        std::size_t left = text.size(), status;
        do {
            char part[4096];
            char* to = part;
            std::size_t room = sizeof part;
            status = iconv(converter_, &from, &left, &to, &room);
            AppendText(result, {part, sizeof part - room});
        } while (status == kFailed && errno == E2BIG);
        text = text.substr(text.size() - left);
    }

    // What a stateful encoding needs at the end.
    void Finish(std::string& result) {
        char part[64];
        char* to = part;
        std::size_t room = sizeof part;
        iconv(converter_, nullptr, nullptr, &to, &room);
        AppendText(result, {part, sizeof part - room});
    }

  private:
    static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);
    static constexpr auto kFailed = static_cast<std::size_t>(-1);

    iconv_t converter_;
};

}  // namespace

std::string EncodeAs(const char* encoding, std::string_view text) {
    Converter converter(encoding, "UTF-8");
    std::string result;
    while (!text.empty()) {
        converter.Convert(text, result);
        if (text.empty()) break;
        std::string_view mark = "?";
        text.remove_prefix(FirstCodePoint(text, sdk::Encoding::Utf8).length);
        converter.Convert(mark, result);
    }
    converter.Finish(result);
    return result;
}

std::string DecodeFrom(const char* encoding, std::string_view bytes) {
    Converter converter("UTF-8", encoding);
    std::string result;
    while (!bytes.empty()) {
        converter.Convert(bytes, result);
        if (bytes.empty()) break;
        AppendCodePoint(result, kReplacement, sdk::Encoding::Utf8);
        bytes.remove_prefix(1);
    }
    return result;
}

}  // namespace host
