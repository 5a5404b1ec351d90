// Where the pixels of a picture of the plug-in are, from its properties by name.
#pragma once

#include <cstdint>

#include "host/objects/Object.h"

namespace pytqx {

struct Pixels {
    std::int64_t height, width;  // 0 or more
    std::int64_t channels;       // items of a pixel that show
    std::int64_t itemSize;       // bytes of an item: 1, or 4 for floats
    std::int64_t first;          // bytes from a row's address to the first item
    std::int64_t pixelSize;      // bytes from pixel to pixel
    bool mapped;                 // a row's address is good until the next one's
};

// Whether the object is a picture: of a class with the properties and the method that this needs.
bool IsPicture(const host::Object* object);

// Throws a BufferError for a picture without pixels to show. Inside the gate.
Pixels PixelsOf(host::Object* picture);

// The address of a row's first byte; throws a BufferError where it can't be had. Inside the gate.
std::uint8_t* RowAddress(host::Object* picture, std::int64_t row);

// The picture whose pixels a view shares, and the memory block around whose bytes a picture is; null for none.
host::Ref<host::Object> ParentOf(host::Object* picture);
host::Ref<host::Object> BlockOf(host::Object* picture);

}  // namespace pytqx
