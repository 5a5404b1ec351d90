// Windows bitmaps. A file head of 14 bytes, a description of 12 to 124 bytes whose first word is
// its length, masks and palette, then rows padded to four bytes, as a rule from the bottom up.
//
// Written here: the libraries that read bitmaps are whole toolkits, which hold a picture in memory
// and have limits of their own.
#include <algorithm>
#include <bit>
#include <cstring>

#include "host/images/Codec.h"

namespace host::codec {

namespace {

constexpr std::size_t kFileHead = 14;
constexpr std::size_t kShortHead = 12;  // 16-bit sizes, palette of three bytes an entry
constexpr std::size_t kLongHead = 40;
constexpr std::size_t kMostHead = 124;

enum Compression : std::uint32_t { kPlain = 0, kRuns8 = 1, kRuns4 = 2, kMasks = 3, kAlphaMasks = 6 };

std::uint32_t Little(const std::uint8_t* bytes, int count) {
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) number |= std::uint32_t{bytes[i]} << 8 * i;
    return number;
}

// One channel among the bits of a pixel.
struct Mask {
    std::uint32_t bits = 0;

    std::uint8_t Sample(std::uint32_t pixel) const {
        if (bits == 0) return 0;
        const int shift = std::countr_zero(bits);
        const std::uint64_t most = bits >> shift;
        return static_cast<std::uint8_t>((((pixel & bits) >> shift) * std::uint64_t{255} + most / 2) / most);
    }
};

struct Rgb {
    std::uint8_t red, green, blue;
};

struct Head {
    std::int64_t width = 0;
    std::int64_t height = 0;  // below 0: rows from the top down
    std::uint32_t bits = 0;   // a pixel
    std::uint32_t compression = kPlain;
    std::uint32_t pixelsAt = 0;        // from the file's start
    std::uint32_t descriptionEnd = 0;  // the same; masks or a palette may follow
    Mask masks[4];                     // red, green, blue, alpha
    Rgb palette[256] = {};

    std::int64_t RowBytes() const { return (width * bits + 31) / 32 * 4; }
};

void ReadMasks(Head& head, const std::uint8_t* description, std::size_t length, std::FILE* stream) {
    if (head.compression == kPlain) {
        // Without masks the fourth byte of a pixel means nothing.
        const Mask five[] = {{0x7c00}, {0x03e0}, {0x001f}}, eight[] = {{0xff0000}, {0x00ff00}, {0x0000ff}};
        std::copy_n(head.bits == 16 ? five : eight, 3, head.masks);
        return;
    }
    const std::size_t count = head.compression == kAlphaMasks || length >= 56 ? 4 : 3;
    std::uint8_t after[16] = {};
    const std::uint8_t* masks = description + kLongHead;
    if (length < kLongHead + 4 * count) {
        ReadExactly(stream, after, 4 * count);
        masks = after;
        if (head.pixelsAt < head.descriptionEnd + 4 * count) FailFormat(kImageReadSays.bmpMasks());
    }
    for (std::size_t i = 0; i < count; ++i) head.masks[i].bits = Little(masks + 4 * i, 4);
}

// The entries that are said to be used, or all that fit before the pixels.
void ReadPalette(Head& head, std::uint32_t used, std::size_t entryBytes, std::FILE* stream) {
    const std::uint32_t most = 1u << head.bits;
    const auto room = static_cast<std::uint32_t>((head.pixelsAt - head.descriptionEnd) / entryBytes);
    const std::uint32_t count = std::min(used == 0 || used > most ? most : used, room);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint8_t entry[4] = {};
        ReadExactly(stream, entry, entryBytes);
        head.palette[i] = {entry[2], entry[1], entry[0]};
    }
}

bool IsKnown(const Head& head) {
    switch (head.compression) {
        case kPlain:
            return head.bits == 1 || head.bits == 2 || head.bits == 4 || head.bits == 8 || head.bits == 16 ||
                   head.bits == 24 || head.bits == 32;
        case kRuns8:
            return head.bits == 8 && head.height > 0;
        case kRuns4:
            return head.bits == 4 && head.height > 0;
        case kMasks:
        case kAlphaMasks:
            return head.bits == 16 || head.bits == 32;
        default:
            return false;
    }
}

Head ReadHead(const Input& input) {
    std::uint8_t bytes[kFileHead + kMostHead] = {};
    ReadExactly(input.stream.get(), bytes, kFileHead + 4);
    const std::uint8_t* description = bytes + kFileHead;
    const std::size_t length = Little(description, 4);
    if (length != kShortHead && (length < kLongHead || length > kMostHead)) FailFormat(kImageReadSays.bmpKind());
    ReadExactly(input.stream.get(), bytes + kFileHead + 4, length - 4);
    Head head;
    head.pixelsAt = Little(bytes + 10, 4);
    head.descriptionEnd = static_cast<std::uint32_t>(kFileHead + length);
    const bool isShort = length == kShortHead;
    const auto side = [&](std::size_t at) {
        return isShort ? std::int64_t{Little(description + 4 + at / 2, 2)}
                       : std::int64_t{static_cast<std::int32_t>(Little(description + 4 + at, 4))};
    };
    head.width = side(0);
    head.height = side(4);
    head.bits = Little(description + (isShort ? 10 : 14), 2);
    if (!isShort) head.compression = Little(description + 16, 4);
    if (!IsKnown(head)) FailFormat(kImageReadSays.bmpKind());
    if (head.pixelsAt < head.descriptionEnd) FailFormat(kImageReadSays.bmpHead());
    input.CheckSize(head.width, std::abs(head.height));
    if (head.bits >= 16)
        ReadMasks(head, description, length, input.stream.get());
    else
        ReadPalette(head, isShort ? 0 : Little(description + 32, 4), isShort ? 3 : 4, input.stream.get());
    return head;
}

ImageInfo Describe(const Head& head) {
    return {ImageFileFormat::Bmp, static_cast<std::int32_t>(head.width),
            static_cast<std::int32_t>(std::abs(head.height)), LayoutOf(false, head.masks[3].bits != 0), 1};
}

class BmpDecoder final : public Decoder {
  public:
    BmpDecoder(Input input, const Head& head) : input_(std::move(input)), head_(head) {
        info = Describe(head);
        if (head_.pixelsAt + head_.RowBytes() * info.height > input_.size) FailFormat(kImageReadSays.cutShort());
        row_.resize(static_cast<std::size_t>(head_.RowBytes()));
    }

    void ReadRow(std::uint8_t* pixels) override {
        const std::int64_t stored = head_.height < 0 ? next_ : info.height - 1 - next_;
        ++next_;
        if (fseeko(input_.stream.get(), head_.pixelsAt + stored * head_.RowBytes(), SEEK_SET) != 0)
            FailFormat(kImageReadSays.cutShort());
        ReadExactly(input_.stream.get(), row_.data(), row_.size());
        if (head_.bits <= 8)
            ReadIndexes(pixels);
        else if (head_.bits == 24)
            ReadTriples(pixels);
        else
            ReadWords(pixels);
    }

  private:
    void ReadIndexes(std::uint8_t* pixels) const {
        const int perByte = static_cast<int>(8 / head_.bits);
        const unsigned mask = (1u << head_.bits) - 1;
        for (std::int32_t x = 0; x < info.width; ++x, pixels += 3) {
            const int shift = static_cast<int>(head_.bits) * (perByte - 1 - x % perByte);
            const Rgb& color = head_.palette[row_[x / perByte] >> shift & mask];
            std::memcpy(pixels, &color, 3);
        }
    }

    void ReadTriples(std::uint8_t* pixels) const {
        for (std::size_t x = 0; x < std::size_t(info.width) * 3; x += 3)
            for (std::size_t channel = 0; channel < 3; ++channel) pixels[x + channel] = row_[x + 2 - channel];
    }

    void ReadWords(std::uint8_t* pixels) const {
        const int bytes = static_cast<int>(head_.bits / 8);
        const int channels = BytesPerPixel(info.layout);
        for (std::int32_t x = 0; x < info.width; ++x, pixels += channels) {
            const std::uint32_t pixel = Little(row_.data() + std::size_t(x) * bytes, bytes);
            for (int channel = 0; channel < channels; ++channel) pixels[channel] = head_.masks[channel].Sample(pixel);
        }
    }

    Input input_;
    Head head_;
    std::vector<std::uint8_t> row_;
    std::int64_t next_ = 0;
};

// --- Run lengths ----------------------------------------------------------------------------

// Pairs of bytes: a count and what to repeat; or 0 and an order: end of row, end of image, skip,
// or so many pixels as they are, padded to an even count of bytes. Skipped pixels have index 0.
class RunReader {
  public:
    RunReader(std::FILE* stream, const Head& head, HeldImage& indexes)
        : stream_(stream), head_(head), indexes_(indexes), width_(indexes.info.width), height_(indexes.info.height) {}

    void ReadAll() {
        while (y_ < height_) {
            const int count = Byte(), value = Byte();
            if (count > 0)
                Repeat(count, value);
            else if (value == 0)
                x_ = 0, ++y_;
            else if (value == 1)
                return;
            else if (value == 2)
                x_ = std::min(x_ + Byte(), width_), y_ += Byte();
            else
                Copy(value);
        }
    }

  private:
    int Byte() {
        std::uint8_t byte;
        ReadExactly(stream_, &byte, 1);
        return byte;
    }

    // What lies outside the image is dropped.
    void Put(int index) {
        if (x_ >= width_ || y_ >= height_) return;
        indexes_.Row(height_ - 1 - y_)[x_++] = static_cast<std::uint8_t>(index);
    }

    void Repeat(int count, int value) {
        for (int i = 0; i < count; ++i) Put(head_.bits == 8 ? value : i % 2 == 0 ? value >> 4 : value & 15);
    }

    void Copy(int count) {
        const int bytes = head_.bits == 8 ? count : (count + 1) / 2;
        for (int i = 0; i < bytes; ++i) {
            const int value = Byte();
            if (head_.bits == 8)
                Put(value);
            else
                Repeat(std::min(2, count - 2 * i), value);
        }
        if (bytes % 2 == 1) Byte();
    }

    std::FILE* stream_;
    const Head& head_;
    HeldImage& indexes_;
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t x_ = 0;
    std::int32_t y_ = 0;  // from the bottom
};

// The indexes that the runs give, coloured row by row.
class RunDecoder final : public Decoder {
  public:
    RunDecoder(const Input& input, const Head& head) : head_(head), indexes_(IndexInfo(head)) {
        info = Describe(head);
        row_.resize(static_cast<std::size_t>(info.width));
        if (fseeko(input.stream.get(), head.pixelsAt, SEEK_SET) != 0) FailFormat(kImageReadSays.cutShort());
        RunReader(input.stream.get(), head, indexes_).ReadAll();
    }

    void ReadRow(std::uint8_t* pixels) override {
        indexes_.ReadRow(row_.data());
        for (std::int32_t x = 0; x < info.width; ++x)
            std::memcpy(pixels + std::size_t(x) * 3, &head_.palette[row_[x]], 3);
    }

  private:
    static ImageInfo IndexInfo(const Head& head) {
        ImageInfo indexes = Describe(head);
        indexes.layout = PixelLayout::Gray;
        return indexes;
    }

    Head head_;
    HeldImage indexes_;
    std::vector<std::uint8_t> row_;
};

// --- Writing --------------------------------------------------------------------------------

void PutLittle(std::uint8_t* bytes, std::uint32_t number, int count) {
    for (int i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(number >> 8 * i);
}

// Blue, green, red, from the bottom up; with alpha four bytes and the 108-byte description that
// names the masks.
class BmpEncoder final : public Encoder {
  public:
    explicit BmpEncoder(const Output& output) : output_(output) {
        layout = LayoutOf(false, HasAlpha(output.layout));
        row_.resize((std::size_t(output.width) * BytesPerPixel(layout) + 3) / 4 * 4);
        headBytes_ = kFileHead + (HasAlpha(layout) ? 108 : kLongHead);
        if (row_.size() * static_cast<std::size_t>(output.height) > UINT32_MAX - headBytes_)
            FailFormat(kImageWriteSays.bmpTooLarge());
        WriteHead();
    }

    void WriteRow(const std::uint8_t* pixels) override {
        const std::size_t size = static_cast<std::size_t>(BytesPerPixel(layout));
        for (std::size_t at = 0; at < std::size_t(output_.width) * size; at += size) {
            for (std::size_t channel = 0; channel < 3; ++channel) row_[at + channel] = pixels[at + 2 - channel];
            if (size == 4) row_[at + 3] = pixels[at + 3];
        }
        const std::int64_t stored = output_.height - 1 - next_++;
        const auto place = static_cast<off_t>(headBytes_) + stored * static_cast<off_t>(row_.size());
        if (fseeko(output_.stream, place, SEEK_SET) != 0) FailFile(kImageFileSays.noPlace());
        WriteExactly(output_.stream, row_.data(), row_.size());
    }

    void Finish() override {}

  private:
    void WriteHead() {
        std::uint8_t head[kFileHead + kMostHead] = {'B', 'M'};
        const auto pixels = static_cast<std::uint32_t>(row_.size() * static_cast<std::size_t>(output_.height));
        PutLittle(head + 2, static_cast<std::uint32_t>(headBytes_) + pixels, 4);
        PutLittle(head + 10, static_cast<std::uint32_t>(headBytes_), 4);
        PutLittle(head + 14, static_cast<std::uint32_t>(headBytes_ - kFileHead), 4);
        PutLittle(head + 18, static_cast<std::uint32_t>(output_.width), 4);
        PutLittle(head + 22, static_cast<std::uint32_t>(output_.height), 4);
        PutLittle(head + 26, 1, 2);
        PutLittle(head + 28, static_cast<std::uint32_t>(BytesPerPixel(layout) * 8), 2);
        PutLittle(head + 34, pixels, 4);
        if (HasAlpha(layout)) {
            PutLittle(head + 30, kMasks, 4);
            const std::uint32_t masks[] = {0x00ff0000, 0x0000ff00, 0x000000ff, 0xff000000};
            for (int i = 0; i < 4; ++i) PutLittle(head + 54 + 4 * i, masks[i], 4);
            PutLittle(head + 70, 0x73524742, 4);  // "sRGB"
        }
        WriteExactly(output_.stream, head, headBytes_);
    }

    Output output_;
    std::vector<std::uint8_t> row_;  // as stored, padded
    std::size_t headBytes_ = 0;
    std::int64_t next_ = 0;
};

}  // namespace

DecoderPointer OpenBmp(Input input) {
    const Head head = ReadHead(input);
    if (head.compression == kRuns8 || head.compression == kRuns4) return std::make_unique<RunDecoder>(input, head);
    return std::make_unique<BmpDecoder>(std::move(input), head);
}

EncoderPointer CreateBmp(const Output& output) { return std::make_unique<BmpEncoder>(output); }

}  // namespace host::codec
