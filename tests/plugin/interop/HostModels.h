// Host pictures for tests, and plain models of what a plug-in reads of them.
#pragma once

#include <algorithm>
#include <memory>

#include "host/framework/Picture.h"
#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"
#include "tests/support/Scene.h"

namespace interop_test {

using namespace support;

// The host's own record of a picture's pixels.
inline host::PictureStorage& StorageOf(const Ref<Object>& picture) { return *host::StorageOf(picture.get()); }

// A host picture of random bytes, unused ones too. Depth 8 and below by random colours.
inline Ref<Object> RandomHostPicture(Random& random, int width, int height, int depth = 32) {
    const auto picture = New("Picture", width, height, depth);
    host::PictureStorage& storage = StorageOf(picture);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto color = static_cast<host::RgbColor>(random.Next() & 0xffffff);
            host::StoreColors(storage, x, y, 1, &color);
            if (depth == 32) storage.bytes[y * storage.rowBytes + 4 * x] = static_cast<std::uint8_t>(random.Next());
        }
    return picture;
}

// The picture's mask; nil when it has none. Does not make one.
inline Ref<Object> MaskOf(const Ref<Object>& picture) { return Ref<Object>::Share(host::MaskOf(picture.get())); }

inline Bytes StorageBytes(const Ref<Object>& picture) {
    const host::PictureStorage& storage = StorageOf(picture);
    return Bytes(storage.bytes, storage.bytes + std::int64_t{storage.rowBytes} * storage.height);
}

// Pixels of four bytes: unused, red, green, blue.
struct HostModel {
    std::shared_ptr<ModelStorage> storage;
    int width = 0, height = 0;

    std::uint8_t* Pixel(std::int64_t x, std::int64_t y) const {
        return storage->bytes.data() + y * storage->rowSize + x * 4;
    }
};

// What a plug-in reads of a picture: its own pixels, or those the host draws of another depth.
inline HostModel ModelOf(const Ref<Object>& picture) {
    Ref<Object> read = picture;
    const int width = StorageOf(picture).width, height = StorageOf(picture).height;
    if (StorageOf(picture).depth != 32) {
        read = New("Picture", width, height, 32);
        Call(GetObject(read, "Graphics"), "DrawPicture", picture, 0, 0, width, height, 0, 0, width, height);
    }
    const std::int64_t rowBytes = StorageOf(read).rowBytes;
    return {std::make_shared<ModelStorage>(ModelStorage{StorageBytes(read), rowBytes, height}), width, height};
}

// No description and no pixels of the picture or its mask are still locked.
inline ::testing::AssertionResult NothingIsLocked(const Ref<Object>& picture) {
    for (const Ref<Object>& each : {picture, MaskOf(picture)}) {
        if (!each) continue;
        if (host::PictureLockCount(each.get()) != 0) return ::testing::AssertionFailure() << "a description is locked";
        const sdk::GWorld* const world = StorageOf(each).world;
        if (world && world->pixMap.lockCount != 0) return ::testing::AssertionFailure() << "pixels are locked";
    }
    return ::testing::AssertionSuccess();
}

}  // namespace interop_test
