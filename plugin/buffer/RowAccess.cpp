// The members that give and take rows and whole pictures as blocks and strings.
#include "plugin/buffer/RowAccess.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "plugin/buffer/FormatConversion.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/RowCursor.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// A conversion between a picture and a caller's format; rowBytes is the packed size of a row.
struct FormatWork {
    rows::Conversion conversion;
    std::int64_t rowBytes;
    std::int32_t pixelSize;  // of the caller's format
};

// Bytes that a setter reads.
struct ByteView {
    const std::uint8_t* data;
    std::int64_t size;
};

// Raises for an index outside 0 .. Height - 1. The second comparison is unsigned.
bool CheckIndex(const PixelBuffer& buffer, std::int32_t index) {
    if (index >= 0 && static_cast<std::uint32_t>(index) < static_cast<std::uint32_t>(buffer.Height)) return true;
    RaiseOutOfBounds("Index is out of bounds.");
    return false;
}

// The text speaks of a memory block for strings as well: intended.
bool CheckNotNil(const void* value) {
    if (value) return true;
    RaiseNilObject("Memoryblock is nil");
    return false;
}

std::optional<ImageFormatInfo> Describe(const PixelBuffer& buffer, std::int32_t format) {
    ImageFormatInfo info;
    if (!SetUpDescriptor(&info, buffer.Width, buffer.Height, format)) return std::nullopt;
    return info;
}

// From the picture to a format. Gray with alpha read as colour with alpha gives every pixel the
// alpha of its row's first one: intended, in getters alone.
std::optional<FormatWork> PlanGet(const PixelBuffer& buffer, std::int32_t format, bool invertAlpha) {
    const auto info = Describe(buffer, format);
    if (!info) return std::nullopt;
    auto conversion = ChooseConversion(buffer, *info);
    if (!conversion) return std::nullopt;
    if (conversion->alpha == rows::AlphaRule::Copy) {
        const bool first = buffer.IsGray && info->IsRGB;
        if (first)
            conversion->alpha = invertAlpha ? rows::AlphaRule::InvertFirst : rows::AlphaRule::CopyFirst;
        else if (invertAlpha)
            conversion->alpha = rows::AlphaRule::Invert;
    }
    return FormatWork{*conversion, std::int64_t{buffer.Width} * info->PixelSize, info->PixelSize};
}

// From a format to the picture.
std::optional<FormatWork> PlanSet(const PixelBuffer& buffer, std::int32_t format, bool invertAlpha) {
    const auto info = Describe(buffer, format);
    if (!info) return std::nullopt;
    auto conversion = ChooseConversion(*info, buffer);
    if (!conversion) return std::nullopt;
    if (invertAlpha && conversion->alpha == rows::AlphaRule::Copy) conversion->alpha = rows::AlphaRule::Invert;
    return FormatWork{*conversion, std::int64_t{buffer.Width} * info->PixelSize, info->PixelSize};
}

// How many bytes a block holds. One around foreign bytes doesn't know and says less than 0; its
// maker answers for a whole row.
std::int64_t SizeOfBlock(sdk::Object* block, std::int64_t wanted) {
    std::int32_t size = 0;
    host.REALGetPropValueInt(block, "Size", &size);
    return size < 0 ? wanted : size;
}

void WriteRow(const FormatWork& work, ByteView bytes, std::uint8_t* row) {
    const std::int64_t available = std::min(bytes.size, work.rowBytes);
    if (available < work.pixelSize) return;
    rows::ConvertRow(work.conversion, bytes.data, row, static_cast<std::int32_t>(available / work.pixelSize));
}

// The checks that every converting row getter makes, in their order.
std::uint8_t* RowToRead(PixelBuffer& buffer, std::int32_t index) {
    if (!buffer.Valid || !CheckIndex(buffer, index)) return nullptr;
    return RowAddress(buffer, index);
}

sdk::Object* ReadRowBlock(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha) {
    PixelBuffer& buffer = *BufferOf(self);
    const std::uint8_t* const row = RowToRead(buffer, index);
    if (!row) return nullptr;
    const auto work = PlanGet(buffer, format, invertAlpha);
    if (!work || work->rowBytes < 1) return nullptr;
    OwnedObject block(host.newMemoryBlock(work->rowBytes));
    std::uint8_t* const bytes = block ? host.memoryBlockGetPtr(block.Get()) : nullptr;
    if (!bytes) return nullptr;
    rows::ConvertRow(work->conversion, row, bytes, buffer.Width);
    return block.Give();
}

// `bytes.data` null: the caller's block or string has no address.
void WriteConvertedRow(PixelBuffer& buffer, std::int32_t index, std::int32_t format, bool invertAlpha, ByteView bytes) {
    if (!bytes.data) return;
    std::uint8_t* const row = RowAddress(buffer, index);
    if (!row) return;
    if (const auto work = PlanSet(buffer, format, invertAlpha)) WriteRow(*work, bytes, row);
}

void WriteRowBlock(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha, sdk::Object* block) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!CheckNotNil(block) || !buffer.Valid || !CheckIndex(buffer, index)) return;
    const std::int64_t most = std::int64_t{buffer.Width} * 16;  // no format's pixel is larger
    WriteConvertedRow(buffer, index, format, invertAlpha, {host.memoryBlockGetPtr(block), SizeOfBlock(block, most)});
}

}  // namespace

sdk::Object* RawRow(sdk::Object* self, std::int32_t index) {
    std::uint8_t* const row = RowToRead(*BufferOf(self), index);
    return row ? host.PtrToMemoryBlock(row) : nullptr;
}

sdk::Object* GetRow(sdk::Object* self, std::int32_t index) {
    PixelBuffer& buffer = *BufferOf(self);
    const std::uint8_t* const row = RowToRead(buffer, index);
    return row ? MemoryBlockFromBytes(row, buffer.RowSize) : nullptr;
}

void SetRow(sdk::Object* self, std::int32_t index, sdk::Object* block) {
    PixelBuffer& buffer = *BufferOf(self);
    // The index comes first and Valid is not asked for: intended.
    if (!CheckIndex(buffer, index) || !CheckNotNil(block)) return;
    const std::uint8_t* const bytes = host.memoryBlockGetPtr(block);
    std::uint8_t* const row = RowAddress(buffer, index);
    const std::int64_t size = std::min<std::int64_t>(SizeOfBlock(block, buffer.RowSize), buffer.RowSize);
    if (bytes && row && size > 0) std::memmove(row, bytes, static_cast<std::size_t>(size));
}

sdk::Object* GetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format) {
    return ReadRowBlock(self, index, format, false);
}

void SetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, sdk::Object* block) {
    WriteRowBlock(self, index, format, false, block);
}

sdk::Object* GetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha) {
    return ReadRowBlock(self, index, format, invertAlpha);
}

void SetRowInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, bool invertAlpha, sdk::Object* block) {
    WriteRowBlock(self, index, format, invertAlpha, block);
}

sdk::String* GetRowStringInFormat(sdk::Object* self, std::int32_t index, std::int32_t format) {
    PixelBuffer& buffer = *BufferOf(self);
    const std::uint8_t* const row = RowToRead(buffer, index);
    if (!row) return nullptr;
    const auto work = PlanGet(buffer, format, false);
    if (!work || work->rowBytes < 1) return nullptr;
    const ScratchBytes scratch(work->rowBytes);
    if (!scratch.data()) return nullptr;
    rows::ConvertRow(work->conversion, row, scratch.data(), buffer.Width);
    return BuildHostString(scratch.data(), work->rowBytes, sdk::Encoding::None);
}

void SetRowStringInFormat(sdk::Object* self, std::int32_t index, std::int32_t format, sdk::String* bytes) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!CheckNotNil(bytes) || !buffer.Valid || !CheckIndex(buffer, index)) return;
    WriteConvertedRow(buffer, index, format, false, {bytes->data, bytes->length});
}

sdk::String* GetDataStringInFormat(sdk::Object* self, std::int32_t format) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!buffer.Valid) return nullptr;
    const auto work = PlanGet(buffer, format, false);
    if (!work || work->rowBytes < 1 || buffer.Height < 1) return nullptr;
    std::int64_t size;
    if (__builtin_mul_overflow(work->rowBytes, buffer.Height, &size)) return nullptr;
    const ScratchBytes scratch(size);
    if (!scratch.data()) return nullptr;
    RowCursor picture(buffer);
    const RowRange range = picture.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y)
        if (const std::uint8_t* const row = picture.Row(y))
            rows::ConvertRow(work->conversion, row, scratch.data() + y * work->rowBytes, buffer.Width);
    return BuildHostString(scratch.data(), size, sdk::Encoding::None);
}

void SetDataStringInFormat(sdk::Object* self, std::int32_t format, sdk::String* bytes) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!CheckNotNil(bytes) || !buffer.Valid || !bytes->data) return;
    const auto work = PlanSet(buffer, format, false);
    if (!work || work->rowBytes < 1) return;
    RowCursor picture(buffer);
    std::int64_t begin = 0;
    for (std::int32_t y = 0; y < buffer.Height && begin < bytes->length; ++y, begin += work->rowBytes)
        if (std::uint8_t* const row = picture.Row(y))
            WriteRow(*work, {bytes->data + begin, bytes->length - begin}, row);
}

}  // namespace tqx
