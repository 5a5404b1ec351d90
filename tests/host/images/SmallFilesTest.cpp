// Small files that state large pictures: what a file of n bytes may cost is bounded.
#include <tiffio.h>
#include <webp/encode.h>
#include <zlib.h>

#include "tests/host/images/MemoryFixture.h"

namespace host {
namespace {

std::string Big(std::uint64_t number, int bytes) {
    std::string text = Little(number, bytes);
    return {text.rbegin(), text.rend()};
}

// A chunk of a PNG file; one that states more than it holds when `stated` is more.
std::string PngChunk(const std::string& name, const std::string& content, std::uint32_t stated = 0) {
    const std::string summed = name + content;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(summed.data()), static_cast<uInt>(summed.size()));
    return Big(std::max<std::uint64_t>(stated, content.size()), 4) + summed + Big(sum, 4);
}

std::string PngHead(std::uint32_t width, std::uint32_t height, int bits, bool interlaced) {
    return "\x89PNG\r\n\x1a\n" + PngChunk("IHDR", Big(width, 4) + Big(height, 4) + static_cast<char>(bits) +
                                                      std::string(3, '\0') + static_cast<char>(interlaced));
}

// Zeroes, packed as well as can be.
std::string Packed(std::size_t count) {
    const std::vector<Bytef> zeroes(count);
    uLongf length = compressBound(count);
    std::string packed(length, '\0');
    compress2(reinterpret_cast<Bytef*>(packed.data()), &length, zeroes.data(), count, 9);
    packed.resize(length);
    return packed;
}

// One black pixel on a clear canvas: 35 bytes.
std::string GifCanvas(int side) {
    return "GIF89a" + Little(side, 2) + Little(side, 2) + std::string("\x80\0\0", 3) + std::string(6, '\0') + "," +
           Little(0, 4) + Little(1, 2) + Little(1, 2) + std::string("\0\2\2\x44\1\0;", 7);
}

std::string WebPChunk(const std::string& name, const std::string& content) {
    return name + Little(content.size(), 4) + content + std::string(content.size() % 2, '\0');
}

// An animation of one frame of one pixel.
std::string AnimatedWebP(int side) {
    const std::uint8_t pixel[] = {10, 20, 30};
    std::uint8_t* bytes = nullptr;
    const std::size_t length = WebPEncodeLosslessRGB(pixel, 1, 1, 3, &bytes);
    const std::string coded(reinterpret_cast<char*>(bytes) + 12, length - 12);
    WebPFree(bytes);
    const std::string sides = Little(std::uint64_t(side) - 1, 3) + Little(std::uint64_t(side) - 1, 3);
    const std::string content = "WEBP" + WebPChunk("VP8X", std::string("\2\0\0\0", 4) + sides) +
                                WebPChunk("ANIM", std::string(6, '\0')) +
                                WebPChunk("ANMF", std::string(16, '\0') + coded);
    return "RIFF" + Little(content.size(), 4) + content;
}

// Runs that end before the first pixel.
std::string EmptyRunsBmp(std::uint32_t side) {
    return "BM" + Little(0, 8) + Little(58, 4) + Little(40, 4) + Little(side, 4) + Little(side, 4) + Little(1, 2) +
           Little(8, 2) + Little(1, 4) + Little(0, 12) + Little(1, 4) + Little(0, 4) + Little(0, 4) +
           std::string("\0\1", 2);
}

void WriteBlankFax(const std::string& path, int side) {
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, side);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(side + 7) / 8);
    for (int y = 0; y < side; ++y) TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0);
    TIFFClose(tiff);
}

class SmallFiles : public ImageMemory {
  protected:
    // A file of so many pixels a side is refused for its size, by a message that says what to do.
    void ExpectTooLarge(const std::string& name, int side) {
        const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(directory.Path(name)));
        const std::string sides = std::to_string(side) + " x " + std::to_string(side);
        ExpectRefusal(name, "is too large: " + sides + " pixels are more than the limit of " +
                                std::to_string((1 << 24) + 1024 * bytes) + " for a file of " + std::to_string(bytes) +
                                " bytes; the option --max-pixels lifts it");
    }
};

TEST_F(SmallFiles, OfLargePicturesAreRefused) {
    WriteBytes(directory.Path("a.gif"), GifCanvas(16000));
    ExpectTooLarge("a.gif", 16000);
    WriteBytes(directory.Path("a.webp"), AnimatedWebP(16000));
    ExpectTooLarge("a.webp", 16000);
    WriteBytes(directory.Path("a.bmp"), EmptyRunsBmp(16000));
    ExpectTooLarge("a.bmp", 16000);
    WriteBlankFax(directory.Path("a.tif"), 16000);
    ExpectTooLarge("a.tif", 16000);
    const std::size_t rows = 8000, rowBytes = 1001;  // 8 MB, packed to 8 KB
    WriteBytes(directory.Path("a.png"),
               PngHead(8000, 8000, 1, true) + PngChunk("IDAT", Packed(rows * rowBytes)) + PngChunk("IEND", ""));
    ExpectTooLarge("a.png", 8000);
}

TEST_F(SmallFiles, OfPngChunksThatStateGigabytesAreRefused) {
    for (const char* name : {"pCAL", "sCAL", "tEXt", "eXIf", "iCCP", "sPLT", "hIST", "abCd", "PLTE"}) {
        WriteBytes(directory.Path("a.png"), PngHead(1, 1, 8, false) + PngChunk(name, "1234", 0x40000000));
        ExpectRefusal("a.png", "is cut short");
    }
}

TEST_F(SmallFiles, OfPicturesOfSomeSizeAreRead) {
    for (const std::string& file : {GifCanvas(4000), AnimatedWebP(4000), EmptyRunsBmp(4000)}) {
        const ImageReader reader(file.data(), file.size(), "small");
        EXPECT_EQ(reader.Info().width, 4000);
        EXPECT_EQ(reader.Info().height, 4000);
    }
}

TEST_F(SmallFiles, OfAnySizeAreReadWhereTheLimitIsLifted) {
    const std::string file = GifCanvas(16000);
    ImageReadSettings settings;
    for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{256000000}}) {
        settings.pixelLimit = limit;
        EXPECT_EQ(ImageReader(file.data(), file.size(), "small", settings).Info().width, 16000);
    }
    settings.pixelLimit = 255999999;
    EXPECT_THROW(ImageReader(file.data(), file.size(), "small", settings), ImageError);
    settings.pixelsAtHand = 256000000;
    EXPECT_EQ(ImageReader(file.data(), file.size(), "small", settings).Info().width, 16000);
}

TEST_F(SmallFiles, GrowTheLimitWithTheirLengthUpToAMost) {
    for (const auto& [length, limit] : {std::pair{35, (1 << 24) + 1024 * 35}, {1 << 18, 1 << 28}}) {
        std::string file = GifCanvas(16385);
        file.resize(static_cast<std::size_t>(length));
        try {
            ImageReader reader(file.data(), file.size(), "small");
            ADD_FAILURE();
        } catch (const ImageError& error) {
            EXPECT_NE(std::string(error.what()).find("the limit of " + std::to_string(limit)), std::string::npos)
                << error.what();
        }
    }
}

// The first frame lies where the file says, on a clear canvas.
TEST_F(SmallFiles, AnimatedWebPShowsItsFirstFrame) {
    const std::string file = AnimatedWebP(3);
    ImageReader reader(file.data(), file.size(), "small");
    const TestImage image = ReadAll(reader, PixelLayout::Rgba);
    TestImage expected{3, 3, PixelLayout::Rgba, std::vector<std::uint8_t>(36)};
    const std::uint8_t pixel[] = {10, 20, 30, 255};
    std::copy_n(pixel, 4, expected.pixels.begin());
    EXPECT_EQ(image, expected);
}

}  // namespace
}  // namespace host
