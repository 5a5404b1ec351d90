// Reads a file up to the largest script, and tells why it could not.
#include "host/script/ReadSource.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/messages/ParserMessages.h"

namespace script {

namespace {

constexpr std::size_t kLargestScript = 64 << 20;

// Reads up to a little more than the largest script, which devices may never reach. False with
// errno set.
bool ReadText(int descriptor, std::string& text) {
    constexpr std::size_t kPiece = 64 << 10;
    while (text.size() <= kLargestScript) {
        const std::size_t before = text.size();
        text.resize(before + kPiece);
        const ssize_t count = read(descriptor, text.data() + before, kPiece);
        text.resize(before + (count > 0 ? static_cast<std::size_t>(count) : 0));
        if (count == 0) return true;
        if (count < 0 && errno != EINTR) return false;
    }
    return true;
}

bool ReadFile(const std::string& path, std::string& text) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool read = ReadText(descriptor, text);
    const int error = errno;
    close(descriptor);
    errno = error;
    return read;
}

// By its byte-order mark, or by the zero bytes of its first ASCII characters.
bool IsUtf16(std::string_view text) {
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) return true;
    return text.size() >= 4 && ((text[0] == 0 && text[2] == 0) || (text[1] == 0 && text[3] == 0));
}

std::string TextOf(const Source& source, const host::Said& message) {
    return source.path + ": " + message.text() + '\n';
}

}  // namespace

std::optional<Source> ReadSource(const std::string& path, const std::function<void(std::string_view)>& complain) {
    const bool fromInput = path == "-";
    Source source{fromInput ? "<stdin>" : path, ""};
    if (!(fromInput ? ReadText(STDIN_FILENO, source.text) : ReadFile(path, source.text))) {
        complain(TextOf(source, kSourceSays.unreadable(std::strerror(errno))));
        return {};
    }
    if (source.text.size() > kLargestScript) {
        complain(TextOf(source, kSourceSays.tooLarge()));
        return {};
    }
    if (IsUtf16(source.text)) {
        complain(TextOf(source, kSourceSays.utf16()));
        return {};
    }
    return source;
}

}  // namespace script
