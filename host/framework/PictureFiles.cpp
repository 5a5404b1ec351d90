// Rows between image files and pictures, with masks as alpha.
#include "host/framework/PictureFiles.h"

#include <algorithm>
#include <new>
#include <vector>

#include "host/framework/Picture.h"
#include "host/framework/Support.h"
#include "host/images/ImageReader.h"

namespace host {

namespace {

Ref<Object> NewPictureOrThrow(std::int32_t width, std::int32_t height) {
    Ref<Object> picture = NewPicture(width, height, 32);
    if (!picture) throw std::bad_alloc();
    return picture;
}

// RGB or RGBA bytes into the colours of picture and mask.
void SplitRow(const std::vector<std::uint8_t>& bytes, bool alpha, std::vector<RgbColor>& colors,
              std::vector<RgbColor>& mask) {
    const std::size_t size = alpha ? 4 : 3;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const std::uint8_t* pixel = bytes.data() + i * size;
        colors[i] = RgbColor{pixel[0]} << 16 | RgbColor{pixel[1]} << 8 | pixel[2];
        if (alpha) mask[i] = (255u - pixel[3]) * 0x010101u;
    }
}

// The mask's part of one row of the picture; what lies outside it is clear.
void LoadMaskRow(const PictureStorage& mask, std::int32_t y, std::vector<RgbColor>& row) {
    std::fill(row.begin(), row.end(), kWhite);
    const std::int32_t width = std::min(mask.width, static_cast<std::int32_t>(row.size()));
    if (y < mask.height) LoadColors(mask, 0, y, width, row.data());
}

void JoinRow(const std::vector<RgbColor>& colors, const std::vector<RgbColor>* mask, std::vector<std::uint8_t>& bytes) {
    std::uint8_t* pixel = bytes.data();
    for (std::size_t i = 0; i < colors.size(); ++i) {
        *pixel++ = static_cast<std::uint8_t>(colors[i] >> 16);
        *pixel++ = static_cast<std::uint8_t>(colors[i] >> 8);
        *pixel++ = static_cast<std::uint8_t>(colors[i]);
        if (mask) *pixel++ = static_cast<std::uint8_t>(255 - ((*mask)[i] >> 16));
    }
}

}  // namespace

Ref<Object> ReadPicture(const std::string& path) {
    ImageReader reader(path);
    const ImageInfo& info = reader.Info();
    const bool alpha = HasAlpha(info.layout);
    const auto width = static_cast<std::size_t>(info.width);
    Ref<Object> picture = NewPictureOrThrow(info.width, info.height);
    Ref<Object> mask = alpha ? MaskOrNew(picture.get(), info.width, info.height) : nullptr;
    if (alpha && !mask) throw std::bad_alloc();
    std::vector<std::uint8_t> bytes(width * (alpha ? 4 : 3));
    std::vector<RgbColor> colors(width), opacity(alpha ? width : 0);
    for (std::int32_t y = 0; y < info.height; ++y) {
        reader.ReadRow(bytes.data(), alpha ? PixelLayout::Rgba : PixelLayout::Rgb);
        SplitRow(bytes, alpha, colors, opacity);
        StoreColors(*StorageOf(picture.get()), 0, y, info.width, colors.data());
        if (alpha) StoreColors(*StorageOf(mask.get()), 0, y, info.width, opacity.data());
    }
    return picture;
}

void WritePicture(sdk::Object* picture, const std::string& path, const ImageWriteOptions& options) {
    const PictureStorage* storage = StorageOf(picture);
    if (!storage) Fail(kPicturesRaise.nothingToWrite(path));
    const PictureStorage* mask = StorageOf(MaskOf(picture));
    ImageWriter writer(path, storage->width, storage->height, mask ? PixelLayout::Rgba : PixelLayout::Rgb, options);
    const auto width = static_cast<std::size_t>(storage->width);
    std::vector<RgbColor> colors(width), opacity(mask ? width : 0);
    std::vector<std::uint8_t> bytes(width * (mask ? 4 : 3));
    for (std::int32_t y = 0; y < storage->height; ++y) {
        LoadColors(*storage, 0, y, storage->width, colors.data());
        if (mask) LoadMaskRow(*mask, y, opacity);
        JoinRow(colors, mask ? &opacity : nullptr, bytes);
        writer.WriteRow(bytes.data());
    }
    writer.Finish();
}

}  // namespace host
