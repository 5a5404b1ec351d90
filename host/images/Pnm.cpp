// The portable any-map family: P1 to P6 (bits, grays and colours, as text or binary) and P7 (PAM,
// which adds alpha). Samples of any range up to 65535 are brought to 0..255, rounded.
//
// Written here: the formats are a line of text and plain samples, and their own library ends the
// process at a damaged file.
#include <cctype>
#include <cstring>

#include "host/images/Codec.h"

namespace host::codec {

namespace {

constexpr std::int64_t kMostSample = 65535;

enum class Coding { Text, TextBits, Bytes, PackedBits };

struct Head {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t most = 1;  // the sample that stands for full intensity
    PixelLayout layout = PixelLayout::Gray;
    Coding coding = Coding::Bytes;
};

class HeadReader {
  public:
    explicit HeadReader(std::FILE* stream) : stream_(stream) {}

    Head Read() {
        std::getc(stream_);
        const int kind = std::getc(stream_);
        if (kind == '7') return ReadNamed();
        Head head;
        head.width = Number();
        head.height = Number();
        const bool bits = kind == '1' || kind == '4';
        if (!bits) head.most = Number();
        head.layout = kind == '3' || kind == '6' ? PixelLayout::Rgb : PixelLayout::Gray;
        if (kind < '4')
            head.coding = bits ? Coding::TextBits : Coding::Text;
        else
            head.coding = bits ? Coding::PackedBits : Coding::Bytes;
        return head;
    }

    // The next number, after spaces and comments; the character behind it is taken as well.
    std::int64_t Number() {
        const int first = NextSignificant();
        if (!std::isdigit(first)) FailFormat(first == EOF ? kImageReadSays.cutShort() : kImageReadSays.pnmDamaged());
        std::int64_t number = 0;
        int c = first;
        for (; std::isdigit(c); c = std::getc(stream_)) {
            number = number * 10 + (c - '0');
            if (number > UINT32_MAX) FailFormat(kImageReadSays.pnmDamaged());
        }
        // A comment may touch the number; its line's end is then the character behind.
        if (c == '#') SkipComment();
        return number;
    }

    // One digit of a text bitmap: they need no space between them.
    int Bit() {
        const int digit = NextSignificant();
        if (digit == '0' || digit == '1') return digit - '0';
        FailFormat(digit == EOF ? kImageReadSays.cutShort() : kImageReadSays.pnmDamaged());
    }

  private:
    void SkipComment() {
        for (int c = '#'; c != '\n' && c != EOF;) c = std::getc(stream_);
    }

    int NextSignificant() {
        int c = std::getc(stream_);
        while (c != EOF && (std::isspace(c) || c == '#')) {
            if (c == '#') SkipComment();
            c = std::getc(stream_);
        }
        return c;
    }

    // Lines of a name and a value, ended by ENDHDR.
    Head ReadNamed() {
        Head head;
        std::int64_t depth = 0;
        char line[256];
        while (std::fgets(line, sizeof line, stream_)) {
            char name[17] = "", value[33] = "";
            if (std::sscanf(line, "%16s %32s", name, value) < 1 || name[0] == '#') continue;
            const std::int64_t number = std::min<long long>(std::atoll(value), UINT32_MAX);
            if (std::strcmp(name, "WIDTH") == 0) head.width = number;
            if (std::strcmp(name, "HEIGHT") == 0) head.height = number;
            if (std::strcmp(name, "DEPTH") == 0) depth = number;
            if (std::strcmp(name, "MAXVAL") == 0) head.most = number;
            if (std::strcmp(name, "ENDHDR") != 0) continue;
            if (depth < 1 || depth > 4) FailFormat(kImageReadSays.pamKind());
            head.layout = static_cast<PixelLayout>(depth);
            return head;
        }
        FailFormat(kImageReadSays.cutShort());
    }

    std::FILE* stream_;
};

class PnmDecoder final : public Decoder {
  public:
    explicit PnmDecoder(Input input) : input_(std::move(input)), reader_(input_.stream.get()) {
        head_ = reader_.Read();
        input_.CheckSize(head_.width, head_.height);
        if (head_.most < 1 || head_.most > kMostSample) FailFormat(kImageReadSays.pnmDamaged());
        info = {ImageFileFormat::Pnm, static_cast<std::int32_t>(head_.width), static_cast<std::int32_t>(head_.height),
                head_.layout, 1};
        if (StoredBytes() * head_.height > input_.size) FailFormat(kImageReadSays.cutShort());
        if (head_.coding == Coding::Bytes || head_.coding == Coding::PackedBits)
            row_.resize(static_cast<std::size_t>(StoredBytes()));
    }

    void ReadRow(std::uint8_t* pixels) override {
        if (!row_.empty()) ReadExactly(input_.stream.get(), row_.data(), row_.size());
        const std::size_t samples = RowBytes();
        switch (head_.coding) {
            case Coding::Text:
                for (std::size_t i = 0; i < samples; ++i) pixels[i] = Scale(reader_.Number());
                break;
            case Coding::TextBits:
                for (std::size_t i = 0; i < samples; ++i) pixels[i] = reader_.Bit() ? 0 : 255;
                break;
            case Coding::PackedBits:  // 1 is black
                for (std::size_t i = 0; i < samples; ++i) pixels[i] = row_[i / 8] << i % 8 & 128 ? 0 : 255;
                break;
            case Coding::Bytes:
                ScaleBytes(pixels, samples);
                break;
        }
    }

  private:
    // The least that a row takes in the file.
    std::int64_t StoredBytes() const {
        const std::int64_t samples = head_.width * BytesPerPixel(head_.layout);
        if (head_.coding == Coding::PackedBits) return (samples + 7) / 8;
        return samples * (head_.coding == Coding::Bytes && head_.most > 255 ? 2 : 1);
    }

    std::uint8_t Scale(std::int64_t sample) const {
        return static_cast<std::uint8_t>((std::min(sample, head_.most) * 255 + head_.most / 2) / head_.most);
    }

    void ScaleBytes(std::uint8_t* pixels, std::size_t samples) const {
        if (head_.most == 255) {
            std::memcpy(pixels, row_.data(), samples);
        } else if (head_.most < 255) {
            for (std::size_t i = 0; i < samples; ++i) pixels[i] = Scale(row_[i]);
        } else {
            for (std::size_t i = 0; i < samples; ++i) pixels[i] = Scale(row_[2 * i] << 8 | row_[2 * i + 1]);
        }
    }

    Input input_;
    HeadReader reader_;
    Head head_;
    std::vector<std::uint8_t> row_;
};

PixelLayout LayoutOfKind(PnmKind kind, PixelLayout layout) {
    switch (kind) {
        case PnmKind::Gray:
            return PixelLayout::Gray;
        case PnmKind::Colors:
            return PixelLayout::Rgb;
        default:
            return layout;
    }
}

// P5 for gray, P6 for colours, P7 where there is alpha or the name asks for it.
class PnmEncoder final : public Encoder {
  public:
    explicit PnmEncoder(const Output& output) : output_(output) {
        layout = LayoutOfKind(output.pnmKind, output.layout);
        const bool named = output.pnmKind == PnmKind::Named || HasAlpha(layout);
        const std::string head = named ? NamedHead() : NumberedHead();
        WriteExactly(output.stream, head.data(), head.size());
    }

    void WriteRow(const std::uint8_t* pixels) override {
        WriteExactly(output_.stream, pixels, std::size_t(output_.width) * BytesPerPixel(layout));
    }

    void Finish() override {}

  private:
    std::string NumberedHead() const {
        return (IsGray(layout) ? "P5\n" : "P6\n") + std::to_string(output_.width) + " " +
               std::to_string(output_.height) + "\n255\n";
    }

    std::string NamedHead() const {
        return "P7\nWIDTH " + std::to_string(output_.width) + "\nHEIGHT " + std::to_string(output_.height) +
               "\nDEPTH " + std::to_string(BytesPerPixel(layout)) + "\nMAXVAL 255\nTUPLTYPE " +
               (IsGray(layout) ? "GRAYSCALE" : "RGB") + (HasAlpha(layout) ? "_ALPHA" : "") + "\nENDHDR\n";
    }

    Output output_;
};

}  // namespace

DecoderPointer OpenPnm(Input input) { return std::make_unique<PnmDecoder>(std::move(input)); }

EncoderPointer CreatePnm(const Output& output) { return std::make_unique<PnmEncoder>(output); }

}  // namespace host::codec
