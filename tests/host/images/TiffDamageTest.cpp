// Damage in the pixels of TIFF files, of which the library only warns.
#include <cstring>

#include "tests/host/images/TiffTestFiles.h"

namespace host {
namespace {

constexpr int kWidth = 64, kRows = 8;  // of a strip

// A picture of two strips as a compression packs it; without a byte where the file can't be written.
class Packed {
  public:
    Packed(const TemporaryDirectory& directory, int compression)
        : compression_(compression), bits_(IsFax() ? 1 : 8), path_(directory.Path("packed.tif")) {
        const std::size_t rowBytes = static_cast<std::size_t>(kWidth) * static_cast<std::size_t>(bits_) / 8;
        Bytes pixels;
        for (std::size_t i = 0; i < rowBytes * 2 * kRows; ++i)
            pixels.push_back(static_cast<std::uint8_t>((i % rowBytes * 4 + i / rowBytes * 7) ^ i / 13));
        TIFF* tiff = Create(path_);
        for (std::uint32_t strip = 0; strip < 2; ++strip)
            TIFFWriteEncodedStrip(tiff, strip, pixels.data() + strip * kRows * rowBytes,
                                  static_cast<tmsize_t>(kRows * rowBytes));
        TIFFClose(tiff);
        tiff = TIFFOpen(path_.c_str(), "r");
        for (std::uint32_t strip = 0; strip < 2; ++strip) {
            strips[strip].resize(static_cast<std::size_t>(TIFFRawStripSize(tiff, strip)));
            TIFFReadRawStrip(tiff, strip, strips[strip].data(), TIFFRawStripSize(tiff, strip));
        }
        std::uint32_t length = 0;
        void* tables = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &length, &tables))
            tables_.assign(static_cast<char*>(tables), length);
        TIFFClose(tiff);
    }

    TestImage Whole() const { return ReadImage(path_); }

    // The file with other packed bytes.
    std::string With(const Bytes& first, const Bytes& second) const {
        TIFF* tiff = Create(path_ + "2");
        if (!tables_.empty())
            TIFFSetField(tiff, TIFFTAG_JPEGTABLES, static_cast<std::uint32_t>(tables_.size()), tables_.data());
        Bytes parts[] = {first, second};
        for (std::uint32_t strip = 0; strip < 2; ++strip)
            TIFFWriteRawStrip(tiff, strip, parts[strip].data(), static_cast<tmsize_t>(parts[strip].size()));
        TIFFClose(tiff);
        return path_ + "2";
    }

    Bytes strips[2];

  private:
    bool IsFax() const {
        return compression_ == COMPRESSION_CCITTRLE || compression_ == COMPRESSION_CCITTFAX3 ||
               compression_ == COMPRESSION_CCITTFAX4;
    }

    TIFF* Create(const std::string& path) const {
        TIFF* tiff = TIFFOpen(path.c_str(), "w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 2 * kRows);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits_);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, IsFax() ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression_);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kRows);
        return tiff;
    }

    int compression_;
    int bits_;
    std::string path_;
    std::string tables_;  // of JPEG
};

class PackedTiff : public testing::TestWithParam<int> {
  protected:
    TemporaryDirectory directory;
};

TEST_P(PackedTiff, StripsThatAreTooShortAreNoPicture) {
    const Packed packed(directory, GetParam());
    const TestImage whole = packed.Whole();
    int failures = 0;
    for (std::size_t length = packed.strips[0].size() - 1; length > 0; --length) {
        const Bytes cut(packed.strips[0].begin(), packed.strips[0].begin() + static_cast<std::ptrdiff_t>(length));
        for (const bool last : {false, true}) {
            const std::string path = last ? packed.With(packed.strips[1], cut) : packed.With(cut, packed.strips[1]);
            const std::string failure = ReadFailure(path);
            if (!failure.empty()) {
                EXPECT_EQ(failure.find(path + ": is "), 0U) << failure;
                ++failures;
            } else if (!last) {
                ASSERT_EQ(ReadImage(path), whole) << length;
            }
        }
    }
    // A few bytes at the end may only close the data.
    EXPECT_GE(failures, 2 * static_cast<int>(packed.strips[0].size()) - 12);
}

INSTANTIATE_TEST_SUITE_P(Compressions, PackedTiff,
                         testing::Values(COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                         COMPRESSION_PACKBITS, COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3,
                                         COMPRESSION_CCITTFAX4, COMPRESSION_JPEG),
                         [](const auto& instance) { return "Number" + std::to_string(instance.param); });

// Bytes that stand for no code, in the middle of good ones.
TEST(TiffDamage, FaxCodesThatMakeNoSenseAreNoPicture) {
    TemporaryDirectory directory;
    for (const int compression : {COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        const Packed packed(directory, compression);
        const TestImage whole = packed.Whole();
        Bytes damaged = packed.strips[0];
        std::memset(damaged.data() + damaged.size() / 3, 0, 6);
        const std::string path = packed.With(damaged, packed.strips[1]);
        EXPECT_EQ(ReadFailure(path).find(path + ": is a damaged TIFF file ("), 0U) << compression;
        int failures = 0, changed = 0;
        for (std::size_t at = 0; at < packed.strips[0].size(); ++at) {
            damaged = packed.strips[0];
            damaged[at] ^= 0x5a;
            const std::string flipped = packed.With(damaged, packed.strips[1]);
            if (!ReadFailure(flipped).empty())
                ++failures;
            else
                changed += ReadImage(flipped) != whole;
        }
        // Without a check sum, other codes of the same length can't be told from the right ones.
        EXPECT_GT(failures, 3 * changed) << compression;
    }
}

// A strip of plain pixels that is said to be shorter than its rows.
TEST(TiffDamage, PlainPixelsThatWouldReachIntoTheDescriptionAreNone) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.tif");
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (const auto& [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, 10},
                                     {TIFFTAG_IMAGELENGTH, 10},
                                     {TIFFTAG_BITSPERSAMPLE, 8},
                                     {TIFFTAG_SAMPLESPERPIXEL, 1},
                                     {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                                     {TIFFTAG_ROWSPERSTRIP, 10}})
        TIFFSetField(tiff, static_cast<std::uint32_t>(tag), value);
    Bytes few(60, 7);
    TIFFWriteRawStrip(tiff, 0, few.data(), 60);
    TIFFClose(tiff);
    EXPECT_EQ(ReadFailure(path), path + ": is a damaged TIFF file (a strip is too short)");
}

TEST(TiffDamage, CompressionsThatAreNotSupportedAreNamed) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.tif");
    WriteTiff(path, 2, 2, {}, {{1, 2, 3, 4}});
    const std::string plain = ReadBytes(path), entry = Little(TIFFTAG_COMPRESSION, 2) + Little(3, 2) + Little(1, 4);
    const std::size_t at = plain.find(entry);
    ASSERT_NE(at, std::string::npos);
    for (const auto& [number, name] :
         {std::pair{34661, "ISO JBIG"}, {34712, "number 34712"}, {12345, "number 12345"}}) {
        WriteBytes(path, std::string(plain).replace(at + entry.size(), 2, Little(static_cast<unsigned>(number), 2)));
        EXPECT_EQ(ReadFailure(path), path + ": is a TIFF file whose compression is not supported (" + name + ")");
    }
}

}  // namespace
}  // namespace host
