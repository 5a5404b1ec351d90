// A walk over a PNG file's chunks for the orientation, and for the file's end.
#include "host/images/PngChunks.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "host/images/Orientation.h"

namespace host::codec {

namespace {

constexpr std::int64_t kSignatureBytes = 8;

// Of data that may hold an orientation, as stored and unpacked.
constexpr std::size_t kMostBytes = 1 << 20;

using Bytes = std::vector<std::uint8_t>;

std::uint32_t Big(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

std::string_view TextOf(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// Takes what stands before the next zero, and the zero.
std::string_view TakeWord(std::string_view& text) {
    const std::string_view word = text.substr(0, text.find('\0'));
    text.remove_prefix(std::min(text.size(), word.size() + 1));
    return word;
}

// Empty where it can't be unpacked.
Bytes Inflate(std::string_view packed) {
    for (std::size_t room = 4 * packed.size() + 64; room <= 2 * kMostBytes; room *= 2) {
        Bytes bytes(room);
        uLongf length = room;
        const int result = uncompress(bytes.data(), &length, reinterpret_cast<const Bytef*>(packed.data()),
                                      static_cast<uLong>(packed.size()));
        if (result == Z_MEM_ERROR) throw std::bad_alloc();
        bytes.resize(result == Z_OK ? length : 0);
        if (result != Z_BUF_ERROR) return bytes;
    }
    return {};
}

int HexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const char lower = static_cast<char>(digit | 32);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The bytes of a profile that was made a text: a line's end, its name, its length, and then hex
// digits in lines.
Bytes RawProfile(std::string_view text) {
    for (int line = 0; line < 3; ++line) text.remove_prefix(std::min(text.size(), text.find('\n') + 1));
    Bytes bytes;
    int high = -1;
    for (const char character : text) {
        const int digit = HexDigit(character);
        if (digit < 0) continue;
        if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
        high = high < 0 ? digit : -1;
    }
    return bytes;
}

// What the file says of its orientation, by how it says it.
class Clues {
  public:
    void TakeExif(const Bytes& data) {
        if (const auto orientation = ExifOrientation(data.data(), data.size())) exif_ = orientation;
    }

    void TakeText(std::string_view keyword, std::string_view text) {
        if (keyword == "XML:com.adobe.xmp") TakeXmp(text);
        if (keyword == "Orientation" || keyword == "exif:Orientation") {
            if (const auto orientation = OrientationDigit(text)) text_ = orientation;
        }
        if (!keyword.starts_with(kRawProfile)) return;
        const Bytes profile = RawProfile(text);
        TakeExif(profile);
        TakeXmp(TextOf(profile));
    }

    static bool IsOfInterest(std::string_view keyword) {
        return keyword == "XML:com.adobe.xmp" || keyword == "Orientation" || keyword == "exif:Orientation" ||
               keyword.starts_with(kRawProfile);
    }

    std::int32_t Orientation() const { return exif_.value_or(xmp_.value_or(text_.value_or(1))); }

  private:
    static constexpr std::string_view kRawProfile = "Raw profile type ";

    void TakeXmp(std::string_view text) {
        if (const auto orientation = XmpOrientation(text)) xmp_ = orientation;
    }

    std::optional<std::int32_t> exif_, xmp_, text_;
};

void TakePackedText(Clues& clues, std::string_view keyword, std::string_view packed) {
    if (Clues::IsOfInterest(keyword)) clues.TakeText(keyword, TextOf(Inflate(packed)));
}

// A text: the word that says what it is, and in the newer kind whether it is packed, how, its
// language and the word in that language.
void TakeChunk(Clues& clues, std::string_view name, const Bytes& content) {
    if (name == "eXIf") return clues.TakeExif(content);
    std::string_view text = TextOf(content);
    const std::string_view keyword = TakeWord(text);
    if (name == "tEXt") return clues.TakeText(keyword, text);
    if (name == "zTXt" && text.size() > 1) return TakePackedText(clues, keyword, text.substr(1));
    if (name != "iTXt" || text.size() < 2) return;
    const bool packed = text[0] != 0;
    text.remove_prefix(2);
    TakeWord(text);
    TakeWord(text);
    if (packed)
        TakePackedText(clues, keyword, text);
    else
        clues.TakeText(keyword, text);
}

bool HoldsMetadata(std::string_view name) {
    return name == "eXIf" || name == "tEXt" || name == "zTXt" || name == "iTXt";
}

// The content of a chunk whose head was just read; empty where its check sum is wrong.
Bytes ReadContent(std::FILE* stream, const std::uint8_t* name, std::uint32_t length) {
    Bytes bytes(length + std::size_t{4});  // with the check sum
    ReadExactly(stream, bytes.data(), bytes.size());
    const uLong sum = crc32(crc32(0, name, 4), bytes.data(), length);
    const bool good = sum == Big(bytes.data() + length);
    bytes.resize(good ? length : 0);
    return bytes;
}

}  // namespace

std::int32_t WalkPngChunks(const Input& input) {
    std::FILE* stream = input.stream.get();
    Clues clues;
    for (std::int64_t at = kSignatureBytes;;) {
        std::uint8_t head[8];
        if (fseeko(stream, at, SEEK_SET) != 0) FailFormat(kImageReadSays.cutShort());
        ReadExactly(stream, head, sizeof head);
        const std::uint32_t length = Big(head);
        const std::string_view name(reinterpret_cast<const char*>(head) + 4, 4);
        at += std::int64_t{length} + 12;
        if (at > input.size) FailFormat(kImageReadSays.cutShort());
        if (name == "IEND") break;
        if (HoldsMetadata(name) && length <= kMostBytes) TakeChunk(clues, name, ReadContent(stream, head + 4, length));
    }
    std::rewind(stream);
    return clues.Orientation();
}

}  // namespace host::codec
