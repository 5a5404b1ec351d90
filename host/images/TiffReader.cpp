// The first picture of a TIFF file. Grays, colours, palettes, inks and L*a*b* of 1 to 16 bits or of
// reals are read here row by row (or by rows of strips and tiles); everything else the library
// converts.
#include <algorithm>
#include <cstring>
#include <new>

#include "host/images/TiffColors.h"

namespace host::codec {

namespace {

// Memory that strips or tiles may take beyond what the image itself would, at four samples of 16
// bits a pixel.
constexpr std::int64_t kSpareBytes = 64 << 20;
constexpr std::int64_t kHeldBytesPerPixel = 8;

// How many bytes a stored byte can become at most; 0: no saying.
std::int64_t MostExpansion(std::uint16_t compression) {
    switch (compression) {
        case COMPRESSION_NONE:
            return 1;
        case COMPRESSION_PACKBITS:
            return 64;  // 128 out of two
        case COMPRESSION_LZW:
            return 4096;  // a code is longer than a byte, its text shorter than the table
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return 1032;
        default:
            return 0;
    }
}

class TiffDecoder final : public Decoder {
  public:
    TiffDecoder(Input input, std::unique_ptr<TiffFile> file, const TiffDescription& description)
        : input_(std::move(input)), file_(std::move(file)), d_(description), colors_(file_->get(), description) {
        info = {ImageFileFormat::Tiff, static_cast<std::int32_t>(d_.width), static_cast<std::int32_t>(d_.height),
                LayoutOf(d_.IsGray(), d_.alphaSample >= 0), d_.orientation};
        for (int i = 0; i < d_.ColorSamples(); ++i) wanted_.push_back(i);
        if (d_.alphaSample >= 0) wanted_.push_back(d_.alphaSample);
        samples_.resize(std::size_t{d_.width} * wanted_.size());
        CheckEnoughData();
        ChooseBlocks();
        file_->StartPixels();
    }

    void ReadRow(std::uint8_t* pixels) override {
        if (blocks_.height == 0) {
            if (TIFFReadScanline(tiff(), block_.data(), next_, 0) < 0) FailTiff(*file_);
            UnpackBlockRow(block_.data(), 0, d_.width, 0);
        } else {
            if (next_ % blocks_.height == 0) ReadBlocks();
            UnpackBlocks(next_ % blocks_.height);
        }
        ++next_;
        if (file_->IsDamaged()) FailTiff(*file_);
        colors_.Convert(samples_.data(), pixels);
    }

  private:
    TIFF* tiff() const { return file_->get(); }
    // Planes that are read: one for each wanted sample where samples lie apart.
    std::size_t Planes() const { return d_.Separate() ? wanted_.size() : 1; }

    // A file that can't hold its pixels however well they were packed is cut short.
    void CheckEnoughData() const {
        const std::int64_t rowBytes = (std::int64_t{d_.width} * d_.samples * d_.bits + 7) / 8;
        const std::int64_t expansion = MostExpansion(d_.compression);
        if (expansion > 0 && rowBytes > input_.size * expansion / d_.height) FailFormat(kImageReadSays.cutShort());
    }

    // Rows come one by one from strips of whole pixels; everything else by rows of blocks.
    void ChooseBlocks() {
        const std::int64_t mostBytes = d_.Pixels() * kHeldBytesPerPixel + kSpareBytes;
        if (!TIFFIsTiled(tiff()) && !d_.Separate()) {
            const std::int64_t rowBytes = TIFFScanlineSize64(tiff());
            if (rowBytes < (std::int64_t{d_.width} * d_.samples * d_.bits + 7) / 8) FailTiff(*file_);
            if (rowBytes > mostBytes) FailFormat(kImageReadSays.tiffDamaged("its rows are too large"));
            block_ = LazyBytes(static_cast<std::size_t>(rowBytes));
            return;
        }
        blocks_ = BlocksOfTiff(*file_, d_);
        blocksAcross_ = (d_.width + blocks_.width - 1) / blocks_.width;
        const std::size_t count = blocksAcross_ * Planes();
        const std::int64_t blockBytes = static_cast<std::int64_t>(
            TIFFIsTiled(tiff()) ? TIFFTileSize64(tiff()) : TIFFVStripSize64(tiff(), blocks_.height));
        if (blockBytes < 1 || blockBytes > mostBytes / static_cast<std::int64_t>(count))
            FailFormat(kImageReadSays.tiffDamaged("its tiles are too large"));
        blockBytes_ = static_cast<std::size_t>(blockBytes);
        blockRowBytes_ = (std::size_t{blocks_.width} * (d_.Separate() ? 1 : d_.samples) * d_.bits + 7) / 8;
        if (blockRowBytes_ * std::min(blocks_.height, d_.height) > blockBytes_) FailTiff(*file_);
        block_ = LazyBytes(blockBytes_ * count);
    }

    std::uint8_t* BlockAt(std::uint32_t column, std::size_t plane) {
        return block_.data() + (plane * blocksAcross_ + column) * blockBytes_;
    }

    // All blocks that the next row begins.
    void ReadBlocks() {
        for (std::size_t plane = 0; plane < Planes(); ++plane)
            for (std::uint32_t column = 0; column < blocksAcross_; ++column) {
                const auto sample = static_cast<std::uint16_t>(d_.Separate() ? wanted_[plane] : 0);
                const auto size = static_cast<tmsize_t>(blockBytes_);
                std::uint8_t* block = BlockAt(column, plane);
                const tmsize_t got =
                    TIFFIsTiled(tiff())
                        ? TIFFReadEncodedTile(tiff(), TIFFComputeTile(tiff(), column * blocks_.width, next_, 0, sample),
                                              block, size)
                        : TIFFReadEncodedStrip(tiff(), TIFFComputeStrip(tiff(), next_, sample), block, size);
                if (got < 0) FailTiff(*file_);
            }
    }

    void UnpackBlocks(std::uint32_t row) {
        for (std::size_t plane = 0; plane < Planes(); ++plane)
            for (std::uint32_t column = 0; column < blocksAcross_; ++column) {
                const std::uint32_t x = column * blocks_.width;
                UnpackBlockRow(BlockAt(column, plane) + row * blockRowBytes_, x, std::min(blocks_.width, d_.width - x),
                               plane);
            }
    }

    // The wanted samples of a row of a block, as TiffColors takes them; palette indexes as they are.
    void UnpackBlockRow(const std::uint8_t* packed, std::uint32_t x, std::uint32_t count, std::size_t plane) {
        for (std::size_t i = 0; i < wanted_.size(); ++i) {
            if (d_.Separate() && i != plane) continue;
            const std::size_t stride = d_.Separate() ? 1 : d_.samples;
            std::size_t at = d_.Separate() ? 0 : static_cast<std::size_t>(wanted_[i]);
            std::uint16_t* sample = samples_.data() + x * wanted_.size() + i;
            for (std::uint32_t k = 0; k < count; ++k, at += stride, sample += wanted_.size())
                *sample = SampleAt(packed, at);
        }
    }

    std::uint16_t SampleAt(const std::uint8_t* packed, std::size_t at) const {
        if (d_.bits == 8) return packed[at];
        if (d_.bits == 16) {
            std::uint16_t wide;
            std::memcpy(&wide, packed + 2 * at, 2);
            return wide;
        }
        if (d_.bits == 32) {
            float real;
            std::memcpy(&real, packed + 4 * at, 4);
            return static_cast<std::uint16_t>(real > 0 ? std::min(real, 1.0f) * 65535 + 0.5f : 0);  // 0: no number too
        }
        const std::size_t bit = at * d_.bits;
        const unsigned most = (1u << d_.bits) - 1;
        const unsigned value = packed[bit / 8] >> (8 - d_.bits - bit % 8) & most;
        return static_cast<std::uint16_t>(d_.IsPalette() ? value : value * 255 / most);
    }

    Input input_;
    std::unique_ptr<TiffFile> file_;
    TiffDescription d_;
    TiffColors colors_;
    std::vector<int> wanted_;             // sample numbers: colours, then alpha
    std::vector<std::uint16_t> samples_;  // one row of the wanted samples
    LazyBytes block_;                     // a row as stored, or all blocks that a row lies in
    TiffBlocks blocks_;                   // of height 0: rows are read one by one
    std::uint32_t blocksAcross_ = 0;
    std::size_t blockBytes_ = 0;
    std::size_t blockRowBytes_ = 0;
    std::uint32_t next_ = 0;
};

}  // namespace

DecoderPointer OpenTiff(Input input) {
    const std::int64_t mostBytes = input.pixelLimit > 0 ? input.pixelLimit * 8 : 0;
    auto file = std::make_unique<TiffFile>(input.stream.get(), "rm", mostBytes);
    if (!file->get()) FailTiff(*file);
    const TiffDescription description = DescribeTiff(file->get());
    if (file->IsShortOfMemory()) throw std::bad_alloc();
    input.CheckSize(description.width, description.height);
    CheckCompression(description.compression);
    // The old way of JPEG in TIFF keeps its pixels elsewhere.
    if (description.compression != COMPRESSION_OJPEG) CheckBlocksInFile(file->get(), description, input.size);
    // The JPEG decoder would be used though it could not be made.
    if (description.compression == COMPRESSION_JPEG && file->IsDamaged()) FailTiff(*file);
    if (!description.IsPlain()) return OpenConvertedTiff(std::move(input), std::move(file), description);
    return std::make_unique<TiffDecoder>(std::move(input), std::move(file), description);
}

}  // namespace host::codec
