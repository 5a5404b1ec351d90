// The first picture of a TIFF file. Grays, colours and palettes of 1 to 16 bits a sample are read
// here row by row (or by rows of strips and tiles); everything else the library converts, and the
// whole image is held.
#include <algorithm>
#include <cstring>

#include "host/images/TiffFile.h"

namespace host::codec {

namespace {

// Memory that strips or tiles may take beyond what the image itself would.
constexpr std::int64_t kSpareBytes = 64 << 20;

struct Description {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, photometric = 0, planar = PLANARCONFIG_CONTIG;
    std::uint16_t format = SAMPLEFORMAT_UINT, compression = COMPRESSION_NONE, orientation = 1;
    int alphaSample = -1;  // none
    bool premultiplied = false;
    bool knownPhotometric = false;

    int ColorSamples() const { return photometric == PHOTOMETRIC_RGB ? 3 : 1; }
    bool IsPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
    bool Separate() const { return planar == PLANARCONFIG_SEPARATE; }

    // Whether the samples can be read here.
    bool IsPlain() const {
        const bool known = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE ||
                           photometric == PHOTOMETRIC_RGB || (IsPalette() && bits <= 8);
        const bool width8 = bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
        const bool whole = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
        return knownPhotometric && known && width8 && whole && samples >= ColorSamples();
    }
};

void FindAlpha(TIFF* tiff, Description& description) {
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) return;
    for (int i = 0; i < count && description.alphaSample < 0; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
        if (description.ColorSamples() + i >= description.samples) continue;
        description.alphaSample = description.ColorSamples() + i;
        description.premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
    }
}

Description Describe(TIFF* tiff) {
    Description d;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &d.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &d.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &d.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &d.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &d.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &d.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &d.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &d.orientation);
    d.knownPhotometric = TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &d.photometric) != 0;
    if (d.compression == COMPRESSION_JPEG && d.photometric == PHOTOMETRIC_YCBCR && !d.Separate()) {
        // The library decodes to red, green and blue when asked to.
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        d.photometric = PHOTOMETRIC_RGB;
    }
    if (d.orientation < 1 || d.orientation > 8) d.orientation = 1;
    FindAlpha(tiff, d);
    return d;
}

[[noreturn]] void FailTiff(const TiffFile& file) {
    const std::string message = file.message();
    FailFormat(message.empty() ? "is a damaged TIFF file" : "is a damaged TIFF file (" + message + ")");
}

// --- Plain samples ----------------------------------------------------------------------------

class TiffDecoder final : public Decoder {
  public:
    TiffDecoder(Input input, std::unique_ptr<TiffFile> file, const Description& description)
        : input_(std::move(input)), file_(std::move(file)), d_(description) {
        const bool gray = !d_.IsPalette() && d_.ColorSamples() == 1;
        info = {ImageFileFormat::Tiff, static_cast<std::int32_t>(d_.width), static_cast<std::int32_t>(d_.height),
                LayoutOf(gray, d_.alphaSample >= 0), d_.orientation};
        for (int i = 0; i < d_.ColorSamples(); ++i) wanted_.push_back(i);
        if (d_.alphaSample >= 0) wanted_.push_back(d_.alphaSample);
        samples_.resize(std::size_t{d_.width} * wanted_.size());
        if (d_.IsPalette()) ReadPalette();
        ChooseBlocks();
    }

    void ReadRow(std::uint8_t* pixels) override {
        if (blockHeight_ == 0) {
            if (TIFFReadScanline(tiff(), block_.data(), next_, 0) < 0) FailTiff(*file_);
            UnpackBlockRow(block_.data(), 0, d_.width, 0);
        } else {
            if (next_ % blockHeight_ == 0) ReadBlocks();
            UnpackBlocks(next_ % blockHeight_);
        }
        ++next_;
        Finish(pixels);
    }

  private:
    TIFF* tiff() const { return file_->get(); }
    int Planes() const { return d_.Separate() ? d_.samples : 1; }

    void ReadPalette() {
        std::uint16_t* parts[3];
        if (!TIFFGetField(tiff(), TIFFTAG_COLORMAP, &parts[0], &parts[1], &parts[2]))
            FailFormat("is a damaged TIFF file (no colours)");
        const std::size_t count = std::size_t{1} << d_.bits;
        bool small = true;  // some writers forget that entries have 16 bits
        for (const auto* part : parts) small = small && std::all_of(part, part + count, [](int v) { return v < 256; });
        for (std::size_t i = 0; i < count; ++i)
            for (const auto* part : parts)
                palette_.push_back(static_cast<std::uint8_t>(small ? part[i] : part[i] >> 8));
    }

    // Rows come one by one from strips of whole pixels; everything else by rows of blocks.
    void ChooseBlocks() {
        std::int64_t blockBytes = 0;
        if (TIFFIsTiled(tiff())) {
            std::uint32_t width = 0, height = 0;
            TIFFGetField(tiff(), TIFFTAG_TILEWIDTH, &width);
            TIFFGetField(tiff(), TIFFTAG_TILELENGTH, &height);
            if (width == 0 || height == 0) FailTiff(*file_);
            blockWidth_ = width;
            blockHeight_ = height;
            blockBytes = TIFFTileSize64(tiff());
        } else if (d_.Separate()) {
            blockWidth_ = d_.width;
            TIFFGetFieldDefaulted(tiff(), TIFFTAG_ROWSPERSTRIP, &blockHeight_);
            blockHeight_ = std::clamp(blockHeight_, 1u, d_.height);
            blockBytes = TIFFVStripSize64(tiff(), blockHeight_);
        } else {
            block_.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff())));
            if (block_.size() < (std::size_t{d_.width} * d_.samples * d_.bits + 7) / 8) FailTiff(*file_);
            return;
        }
        blocksAcross_ = (d_.width + blockWidth_ - 1) / blockWidth_;
        const std::int64_t count = std::int64_t{blocksAcross_} * Planes();
        const std::int64_t imageBytes = std::int64_t{d_.width} * d_.height * d_.samples * 2;
        if (blockBytes < 1 || blockBytes > (imageBytes + kSpareBytes) / count)
            FailFormat("is a damaged TIFF file (its tiles are too large)");
        blockBytes_ = static_cast<std::size_t>(blockBytes);
        blockRowBytes_ = (std::size_t{blockWidth_} * (d_.Separate() ? 1 : d_.samples) * d_.bits + 7) / 8;
        if (blockRowBytes_ * std::min(blockHeight_, d_.height) > blockBytes_) FailTiff(*file_);
        block_.resize(blockBytes_ * static_cast<std::size_t>(count));
    }

    std::uint8_t* BlockAt(std::uint32_t column, int plane) {
        return block_.data() + (std::size_t(plane) * blocksAcross_ + column) * blockBytes_;
    }

    // All blocks that the next row begins.
    void ReadBlocks() {
        for (int plane = 0; plane < Planes(); ++plane)
            for (std::uint32_t column = 0; column < blocksAcross_; ++column) {
                const auto sample = static_cast<std::uint16_t>(plane);
                const auto size = static_cast<tmsize_t>(blockBytes_);
                std::uint8_t* block = BlockAt(column, plane);
                const tmsize_t got =
                    TIFFIsTiled(tiff())
                        ? TIFFReadEncodedTile(tiff(), TIFFComputeTile(tiff(), column * blockWidth_, next_, 0, sample),
                                              block, size)
                        : TIFFReadEncodedStrip(tiff(), TIFFComputeStrip(tiff(), next_, sample), block, size);
                if (got < 0) FailTiff(*file_);
            }
    }

    void UnpackBlocks(std::uint32_t row) {
        for (int plane = 0; plane < Planes(); ++plane)
            for (std::uint32_t column = 0; column < blocksAcross_; ++column) {
                const std::uint32_t x = column * blockWidth_;
                UnpackBlockRow(BlockAt(column, plane) + row * blockRowBytes_, x, std::min(blockWidth_, d_.width - x),
                               plane);
            }
    }

    // The wanted samples of a row of a block, as 8 bits; palette indexes as they are.
    void UnpackBlockRow(const std::uint8_t* packed, std::uint32_t x, std::uint32_t count, int plane) {
        for (std::size_t i = 0; i < wanted_.size(); ++i) {
            if (d_.Separate() && wanted_[i] != plane) continue;
            const std::size_t stride = d_.Separate() ? 1 : d_.samples;
            std::size_t at = d_.Separate() ? 0 : static_cast<std::size_t>(wanted_[i]);
            std::uint8_t* sample = samples_.data() + x * wanted_.size() + i;
            for (std::uint32_t k = 0; k < count; ++k, at += stride, sample += wanted_.size())
                *sample = SampleAt(packed, at);
        }
    }

    std::uint8_t SampleAt(const std::uint8_t* packed, std::size_t at) const {
        if (d_.bits == 8) return packed[at];
        if (d_.bits == 16) {
            std::uint16_t wide;
            std::memcpy(&wide, packed + 2 * at, 2);
            return static_cast<std::uint8_t>((std::uint32_t{wide} * 255 + 32895) >> 16);
        }
        const std::size_t bit = at * d_.bits;
        const unsigned most = (1u << d_.bits) - 1;
        const unsigned value = packed[bit / 8] >> (8 - d_.bits - bit % 8) & most;
        return static_cast<std::uint8_t>(d_.IsPalette() ? value : value * 255 / most);
    }

    // Samples into pixels: palette, inverted grays, colours that were multiplied by alpha.
    void Finish(std::uint8_t* pixels) const {
        const std::size_t channels = wanted_.size(), colors = std::size_t(d_.ColorSamples());
        const std::uint8_t* sample = samples_.data();
        for (std::uint32_t x = 0; x < d_.width; ++x, sample += channels) {
            if (d_.IsPalette()) {
                pixels = std::copy_n(palette_.data() + std::size_t{sample[0]} * 3, 3, pixels);
            } else {
                for (std::size_t i = 0; i < colors; ++i) *pixels++ = Color(sample, i);
            }
            if (d_.alphaSample >= 0) *pixels++ = sample[colors];
        }
    }

    std::uint8_t Color(const std::uint8_t* sample, std::size_t i) const {
        unsigned value = sample[i];
        if (d_.photometric == PHOTOMETRIC_MINISWHITE) value = 255 - value;
        const unsigned alpha = d_.premultiplied ? sample[d_.ColorSamples()] : 255;
        if (alpha == 0) return 0;
        return static_cast<std::uint8_t>(std::min(255u, (value * 255 + alpha / 2) / alpha));
    }

    Input input_;
    std::unique_ptr<TiffFile> file_;
    Description d_;
    std::vector<int> wanted_;            // sample numbers: colours, then alpha
    std::vector<std::uint8_t> samples_;  // one row of the wanted samples
    std::vector<std::uint8_t> palette_;  // red, green, blue
    std::vector<std::uint8_t> block_;    // a row as stored, or all blocks that a row lies in
    std::uint32_t blockWidth_ = 0;       // pixels
    std::uint32_t blockHeight_ = 0;      // rows; 0: rows are read one by one
    std::uint32_t blocksAcross_ = 0;
    std::size_t blockBytes_ = 0;
    std::size_t blockRowBytes_ = 0;
    std::uint32_t next_ = 0;
};

// --- Everything else --------------------------------------------------------------------------

// The library gives alpha multiplied into the colours, whatever the file has.
void TakePixel(std::uint32_t packed, bool alpha, std::uint8_t* pixel) {
    const std::uint32_t opacity = alpha ? TIFFGetA(packed) : 255;
    const std::uint32_t colors[] = {TIFFGetR(packed), TIFFGetG(packed), TIFFGetB(packed)};
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>(
            opacity == 0 ? 0 : std::min<std::uint32_t>(255, (colors[i] * 255 + opacity / 2) / opacity));
    if (alpha) pixel[3] = static_cast<std::uint8_t>(opacity);
}

DecoderPointer ReadConverted(const TiffFile& file, const Description& d) {
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(file.get(), reason))
        FailFormat(std::string("is a TIFF file of a kind that can't be read (") + reason + ")");
    auto image = std::make_unique<HeldImage>(ImageInfo{ImageFileFormat::Tiff, static_cast<std::int32_t>(d.width),
                                                       static_cast<std::int32_t>(d.height),
                                                       LayoutOf(false, d.alphaSample >= 0), d.orientation});
    // Turning is the caller's business.
    TIFFSetField(file.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    std::vector<std::uint32_t> raster(std::size_t{d.width} * d.height);
    if (!TIFFReadRGBAImageOriented(file.get(), d.width, d.height, raster.data(), ORIENTATION_TOPLEFT, 1))
        FailTiff(file);
    const int size = BytesPerPixel(image->info.layout);
    for (std::size_t i = 0; i < raster.size(); ++i)
        TakePixel(raster[i], d.alphaSample >= 0, image->Row(0) + i * static_cast<std::size_t>(size));
    return image;
}

}  // namespace

DecoderPointer OpenTiff(Input input) {
    const std::int64_t mostBytes = input.pixelLimit > 0 ? input.pixelLimit * 8 : 0;
    auto file = std::make_unique<TiffFile>(input.stream.get(), "rm", mostBytes);
    if (!file->get()) FailTiff(*file);
    const Description description = Describe(file->get());
    input.CheckSize(description.width, description.height);
    if (!description.IsPlain()) return ReadConverted(*file, description);
    return std::make_unique<TiffDecoder>(std::move(input), std::move(file), description);
}

}  // namespace host::codec
