// Pictures made at random with their models, and both compared.
#include "tests/support/Scene.h"

#include <algorithm>

#include "host/framework/FolderItem.h"

namespace support {

namespace {

// All rows of a live picture without views, RowSize bytes each.
Bytes StorageBytes(const Ref<Object>& live) {
    Bytes bytes;
    const auto size = static_cast<std::size_t>(std::max<std::int64_t>(GetInt(live, "RowSize"), 0));
    const auto height = static_cast<int>(GetInt(live, "Height"));
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* const row = RowAddress(live, y);
        if (row) bytes.insert(bytes.end(), row, row + size);
    }
    return bytes;
}

void ReadDescription(const Ref<Object>& live, ModelPicture& model) {
    const auto number = [&](const char* name) { return static_cast<int>(GetInt(live, name)); };
    model.rowOffset = number("RowOffset");
    model.width = number("Width");
    model.height = number("Height");
    model.format = number("ImageFormat");
    model.pixelSize = number("PixelSize");
    model.red = number("RedOffset");
    model.green = number("GreenOffset");
    model.blue = number("BlueOffset");
    model.gray = number("GrayOffset");
    model.alpha = number("AlphaOffset");
    model.isRGB = GetBool(live, "IsRGB");
    model.isGray = GetBool(live, "IsGray");
    model.hasAlpha = GetBool(live, "HasAlpha");
    model.hasGray = GetBool(live, "HasGray");
    model.hasColors = GetBool(live, "HasRed") && GetBool(live, "HasGreen") && GetBool(live, "HasBlue");
}

}  // namespace

std::uint8_t* ModelPicture::Row(std::int64_t y) const {
    const std::int64_t row = (mirrored ? height - y - 1 : y) + rowOffset;
    if (row < 0 || row >= storage->rows) return nullptr;
    return storage->bytes.data() + row * storage->rowSize;
}

std::vector<int> ModelPicture::Channels() const {
    std::vector<int> channels;
    if (isGray)
        channels = {gray};
    else if (isRGB)
        channels = {red, green, blue};
    else
        return channels;
    if (hasAlpha) channels.push_back(alpha);
    return channels;
}

std::string CodeName(const ::testing::TestParamInfo<int>& info) { return kFormats[info.param].name; }

ModelPicture NewModel(int width, int height, int format) {
    const Format& info = kFormats[format];
    ModelPicture model;
    model.width = width;
    model.height = height;
    model.format = format;
    model.pixelSize = info.pixelSize;
    model.red = info.red;
    model.green = info.green;
    model.blue = info.blue;
    model.gray = info.gray;
    model.alpha = info.alpha;
    model.isRGB = model.hasColors = info.isRGB;
    model.isGray = model.hasGray = info.isGray;
    model.hasAlpha = info.hasAlpha;
    const std::int64_t rowSize = (std::int64_t{width} * info.pixelSize + 63) / 64 * 64;
    model.storage = std::make_shared<ModelStorage>(
        ModelStorage{Bytes(static_cast<std::size_t>(rowSize * height)), rowSize, height});
    return model;
}

Twin Scene::AddRoot(const Ref<Object>& live, const Ref<Object>& block) {
    Twin twin{live, {}};
    twin.model.storage = std::make_shared<ModelStorage>(
        ModelStorage{block ? BlockBytes(block) : StorageBytes(live), GetInt(live, "RowSize"), GetInt(live, "Height")});
    ReadDescription(live, twin.model);
    roots_.push_back({live, block, twin.model.storage});
    return twin;
}

Twin Scene::Memory(int width, int height, int format) {
    const auto live = New("PictureTQX", width, height, format);
    for (int y = 0; y < height; ++y) {
        const Bytes bytes = random_.NextBytes(static_cast<std::size_t>(GetInt(live, "RowSize")));
        if (std::uint8_t* const row = RowAddress(live, y)) std::copy(bytes.begin(), bytes.end(), row);
    }
    return AddRoot(live, nullptr);
}

Twin Scene::Block(int width, int height, int format, int rowSize) {
    // Rows may be shorter than their pixels; the last one still has room for them.
    const std::size_t needed = static_cast<std::size_t>(width) * static_cast<std::size_t>(kFormats[format].pixelSize);
    const std::size_t size = static_cast<std::size_t>(height) * static_cast<std::size_t>(rowSize) + needed;
    const auto block = MakeBlock(random_.NextBytes(size));
    return AddRoot(New("PictureTQX", block, width, height, format, rowSize), block);
}

Twin Scene::Mapped(int width, int height, int format, const std::string& path, int blockSize) {
    const auto live = New("PictureTQX", width, height, format, blockSize, host::NewFolderItem(path));
    for (int y = 0; y < height; ++y) {
        const Bytes bytes = random_.NextBytes(static_cast<std::size_t>(width) * kFormats[format].pixelSize);
        if (std::uint8_t* const row = RowAddress(live, y)) std::copy(bytes.begin(), bytes.end(), row);
    }
    return AddRoot(live, nullptr);
}

Twin Scene::Describe(const Ref<Object>& live, const ModelPicture& parent, bool mirrors) {
    Twin twin{live, {}};
    if (!live) return twin;
    ReadDescription(live, twin.model);
    twin.model.storage = parent.storage;
    twin.model.mirrored = parent.mirrored != mirrors;
    return twin;
}

Twin Scene::Kind(int kind, int width, int height, int format) {
    const auto orElse = [](const Twin& view, const Twin& plain) { return view.live ? view : plain; };
    const char* const channels[] = {"RedChannel", "GreenChannel", "BlueChannel", "GrayChannel", "AlphaChannel"};
    switch (kind) {
        case 0:
            return Memory(width, height, format);
        case 1:
            return View(Memory(width + 5, height + 4, format), "ClipImage", 3, 1, width, height);
        case 2:
            return View(Memory(width, height, format), "MirroredView");
        case 3:  // a clip of a mirrored view
            return View(View(Memory(width + 3, height + 5, format), "MirroredView"), "ClipImage", 1, 2, width, height);
        case 4:  // a mirrored clip
            return View(View(Memory(width + 3, height + 5, format), "ClipImage", 2, 3, width, height), "MirroredView");
        case 5: {
            const Twin root = Memory(width, height, format);
            for (int first = random_.Below(5), i = 0; i < 5; ++i)
                if (const Twin view = View(root, channels[(first + i) % 5]); view.live) return view;
            return root;
        }
        case 6: {
            const Twin root = Memory(width, height, format);
            return orElse(View(root, "RGBChannels"), root);
        }
        case 7: {  // clipped, an RGB view has all its channels in byte 0
            const Twin root = Memory(width + 2, height + 2, format);
            const Twin view = View(root, "RGBChannels");
            return view.live ? View(view, "ClipImage", 1, 1, width, height) : root;
        }
        case 8:  // rows with odd gaps
            return Block(width, height, format, width * kFormats[format].pixelSize + random_.Below(7));
        default:  // rows that lie over each other
            return Block(width, height, format, std::max(1, width * kFormats[format].pixelSize / 2));
    }
}

::testing::AssertionResult Scene::Same() const {
    for (std::size_t i = 0; i < roots_.size(); ++i) {
        const Root& root = roots_[i];
        const Bytes actual = root.block ? BlockBytes(root.block) : StorageBytes(root.live);
        const auto same = SameBytes(actual, root.storage->bytes, static_cast<int>(root.storage->rowSize),
                                    static_cast<int>(GetInt(root.live, "PixelSize")));
        if (!same) return ::testing::AssertionFailure() << "storage " << i << ": " << same.message();
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult SamePicture(const Ref<Object>& live, const ModelPicture& model) {
    if (!live) return ::testing::AssertionFailure() << "there is no picture";
    const std::int64_t width = GetInt(live, "Width"), height = GetInt(live, "Height");
    if (width != model.width || height != model.height || GetInt(live, "ImageFormat") != model.format)
        return ::testing::AssertionFailure() << width << " x " << height << " where " << model.width << " x "
                                             << model.height << " was expected, or another format";
    return SameBytes(StorageBytes(live), model.storage->bytes, static_cast<int>(model.storage->rowSize),
                     model.pixelSize);
}

}  // namespace support
