// Image files for the tests: small pictures made of formulas, bytes to and from files, and PNG
// files of kinds that the host reads but doesn't write.
#pragma once

#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "host/images/ImageReader.h"
#include "host/images/ImageWriter.h"

namespace host {

// A folder of the test's own, gone with it.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "tqx-test-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
    std::string Path(const std::string& name) const { return (path_ / name).string(); }
    const std::filesystem::path& path() const { return path_; }

    std::size_t FileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path_), std::filesystem::directory_iterator()));
    }

  private:
    std::filesystem::path path_;
};

struct TestImage {
    std::int32_t width = 0;
    std::int32_t height = 0;
    PixelLayout layout = PixelLayout::Rgb;
    std::vector<std::uint8_t> pixels;

    std::size_t RowBytes() const { return std::size_t(width) * BytesPerPixel(layout); }
    const std::uint8_t* Row(std::int32_t y) const { return pixels.data() + std::size_t(y) * RowBytes(); }
    std::uint8_t At(std::int32_t x, std::int32_t y, int channel) const {
        return Row(y)[std::size_t(x) * BytesPerPixel(layout) + channel];
    }
    bool operator==(const TestImage&) const = default;
};

// Every pixel differs from its neighbours in every channel.
inline TestImage MakeTestImage(std::int32_t width, std::int32_t height, PixelLayout layout) {
    TestImage image{width, height, layout, {}};
    const int channels = BytesPerPixel(layout);
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            for (int channel = 0; channel < channels; ++channel)
                image.pixels.push_back(static_cast<std::uint8_t>(x * 7 + y * 13 + channel * 61 + x * y));
    return image;
}

inline TestImage ReadAll(ImageReader& reader, PixelLayout layout) {
    TestImage image{reader.Info().width, reader.Info().height, layout, {}};
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(image.height));
    for (std::int32_t y = 0; y < image.height; ++y)
        reader.ReadRow(image.pixels.data() + std::size_t(y) * image.RowBytes(), layout);
    return image;
}

inline TestImage ReadImage(const std::string& path, const ImageReadSettings& settings = {}) {
    ImageReader reader(path, settings);
    return ReadAll(reader, reader.Info().layout);
}

inline void WriteImage(const std::string& path, const TestImage& image, const ImageWriteOptions& options = {}) {
    ImageWriter writer(path, image.width, image.height, image.layout, options);
    for (std::int32_t y = 0; y < image.height; ++y) writer.WriteRow(image.Row(y));
    writer.Finish();
}

inline std::string ReadBytes(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// What reading the whole file throws; empty when it throws nothing.
inline std::string ReadFailure(const std::string& path, const ImageReadSettings& settings = {}) {
    try {
        ReadImage(path, settings);
        return "";
    } catch (const ImageError& error) {
        return error.what();
    }
}

// Reads the first bytes of a file from memory.
inline TestImage ReadCut(const std::string& whole, std::size_t length) {
    // A copy, so that tools see a step past it.
    const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    ImageReader reader(cut.data(), cut.size(), "cut", {});
    return ReadAll(reader, reader.Info().layout);
}

// Damages a file at random; reading must end in an image or an error that names it.
inline void ExpectSurvivesDamage(const std::string& whole, const std::string& name) {
    std::srand(3);
    for (int round = 0; round < 400; ++round) {
        std::string damaged =
            round % 4 == 0 ? whole.substr(0, whole.size() * static_cast<std::size_t>(round) / 400) : whole;
        for (int i = 0; i < 2 && !damaged.empty(); ++i)
            damaged[static_cast<std::size_t>(std::rand()) % damaged.size()] = static_cast<char>(std::rand());
        ImageReadSettings settings;
        settings.pixelLimit = 1000000;
        try {
            ImageReader reader(damaged.data(), damaged.size(), name, settings);
            ReadAll(reader, PixelLayout::Rgba);
        } catch (const ImageError& error) {
            EXPECT_EQ(std::string(error.what()).find(name + ": "), 0u);
        }
    }
}

// A number as bytes, the lowest first.
inline std::string Little(std::uint64_t number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> 8 * i);
    return text;
}

// A PNG file written by the library itself; `setUp` states everything between signature and
// rows, `rows` are the rows as stored.
inline void WritePng(const std::string& path, const std::function<void(png_structp, png_infop)>& setUp,
                     std::vector<std::vector<std::uint8_t>> rows) {
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream);
    setUp(png, info);
    png_write_info(png, info);
    std::vector<png_bytep> addresses;
    for (auto& row : rows) addresses.push_back(row.data());
    png_write_image(png, addresses.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(stream);
}

}  // namespace host
