// A class of pictures in a memory block: four bytes a pixel, of which the last is none of its channels.
// FAULT 1 writes that byte as well, 2 whole rows, 3 a byte behind the last row.
#include <cstring>

#include "sdk/Declare.h"
#include "tests/support/plugins/Host.h"

namespace {

using sdk::Object;

struct Data {
    Object* block;
    std::uint8_t* bytes;
    std::int32_t width, height, rowSize, pixelSize;
    std::int32_t redOffset, greenOffset, blueOffset;
    bool hasRed, hasGreen, hasBlue;
};

extern sdk::ClassDefinition pixels;

Data& DataOf(Object* self) {
    return *reinterpret_cast<Data*>(reinterpret_cast<std::uint8_t*>(self) + pixels.instanceDataOffset);
}

void Close(Object* self) {
    CallHost(sdk::kREALUnlockObject, DataOf(self).block);
    DataOf(self) = {};
}

void Construct(Object* self, Object* block, std::int32_t width, std::int32_t height, std::int32_t rowSize) {
    Close(self);
    if (!block || width < 1 || height < 1 || rowSize < 4 * width) return;
    CallHost(sdk::kREALLockObject, block);
    DataOf(self) = {block, CallHost(sdk::kmemoryBlockGetPtr, block), width, height, rowSize, 4, 0, 1, 2, true, true,
                    true};
}

Object* RawRow(Object* self, std::int32_t index) {
    const Data& data = DataOf(self);
    if (!data.bytes || index < 0 || index >= data.height) return nullptr;
    return CallHost(sdk::kPtrToMemoryBlock, data.bytes + std::ptrdiff_t{index} * data.rowSize);
}

void Fill(Object* self, std::int32_t value) {
    const Data& data = DataOf(self);
    for (std::int32_t y = 0; data.bytes && y < data.height; ++y) {
        std::uint8_t* const row = data.bytes + std::ptrdiff_t{y} * data.rowSize;
        if (FAULT == 2) std::memset(row, value, static_cast<std::size_t>(data.rowSize));
        for (std::int32_t x = 0; x < data.width; ++x) std::memset(row + 4 * x, value, FAULT == 1 ? 4 : 3);
    }
    if (FAULT == 3 && data.bytes) data.bytes[std::ptrdiff_t{data.height} * data.rowSize] = 1;
}

sdk::ClassDefinition pixels{
    .version = sdk::kInterfaceVersion, .name = "Pixels", .instanceDataSize = sizeof(Data), .destructor = &Close};

}  // namespace

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    CallHost(sdk::kRegisterPluginVersion, sdk::kInterfaceVersion);
    using sdk::Method, sdk::ReadOnly;
    constexpr auto flags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        Method<"Constructor(block as MemoryBlock, width as integer, height as integer, RowSize as integer)",
               &Construct>(flags),
        Method<"RawRow(index as integer) as MemoryBlock", &RawRow>(flags),
        Method<"Fill(value as integer)", &Fill>(flags),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"Width as Integer", &Data::width>(flags),
        ReadOnly<"Height as Integer", &Data::height>(flags),
        ReadOnly<"RowSize as Integer", &Data::rowSize>(flags),
        ReadOnly<"PixelSize as Integer", &Data::pixelSize>(flags),
        ReadOnly<"RedOffset as Integer", &Data::redOffset>(flags),
        ReadOnly<"GreenOffset as Integer", &Data::greenOffset>(flags),
        ReadOnly<"BlueOffset as Integer", &Data::blueOffset>(flags),
        ReadOnly<"HasRed as Boolean", &Data::hasRed>(flags),
        ReadOnly<"HasGreen as Boolean", &Data::hasGreen>(flags),
        ReadOnly<"HasBlue as Boolean", &Data::hasBlue>(flags),
    };
    pixels.methods = methods;
    pixels.methodCount = static_cast<std::int32_t>(std::size(methods));
    pixels.properties = properties;
    pixels.propertyCount = static_cast<std::int32_t>(std::size(properties));
    return CallHost(sdk::kPluginRegisterClass, &pixels);
}
