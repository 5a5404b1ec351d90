// The record behind every PictureTQX instance.
//
// A PixelBuffer describes a rectangle of pixels in one image format and says where its rows are.
// The pixels live in a block of the picture's own, in a host memory block, in a host picture's
// pixel memory, or in windows of a file mapped into memory. Views (clips, single channels, the
// RGB part, a mirrored view) are further PixelBuffers over the same storage.
//
// Rows are reached only through RowAddress, and by operations through a RowCursor, so every
// operation works with every storage and every view. A clip's left edge is folded into its channel offsets, never into
// a pointer: the data pointer of a view stays the storage's base. Channel c of pixel x in row y is the byte at
// RowAddress(buffer, y) + x × PixelSize + the channel's offset.
//
// A new instance is all zero. The constructors alone set Valid, and nothing clears it; Close
// leaves the description as it was and takes the storage away.
#pragma once

#include <algorithm>
#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

struct PixelBuffer;

// Gives the first byte of row y, counted from the picture's own top row, or null when the row is
// not among the storage's rows or can't be had. The address is good until the next call for the
// same picture.
using RowAddressOperation = std::uint8_t* (*)(PixelBuffer& buffer, std::int32_t y);

// Fields whose names begin with a capital are the host's properties of that name. References to
// host objects and strings are retained while they stand here.
struct PixelBuffer {
    std::int32_t YieldTicks;      // least interval of two yields, 1/60 s; 0 or less: never
    std::uint32_t lastYieldTick;  // tick count of the last yield
    sdk::Object* Factory;         // makes the destination pictures of this picture's operations
    sdk::Object* MemoryTarget;    // the memory block that holds the pixels
    bool DebugPictureEnabled;     // while false, DebugPicture gives nil
    std::int32_t RedOffset;       // channel offsets in bytes; 0 when the channel is absent
    bool IsGray;
    std::int32_t GreenOffset;
    bool IsRGB;
    std::int32_t BlueOffset;
    bool HasGreen;
    std::int32_t GrayOffset;
    bool HasRed;
    std::int32_t AlphaOffset;
    bool HasBlue;
    std::int32_t Width;  // pixels; below 0 for a clip that begins past the right edge
    bool HasGray;
    std::int32_t Height;  // rows; below 0 for a clip that begins past the bottom edge
    bool HasAlpha;
    std::int32_t PixelSize;  // bytes from one pixel to the next
    bool Valid;              // a constructor succeeded
    std::int32_t RowSize;    // bytes from one storage row to the next
    std::int32_t ImageFormat;
    std::int32_t RowOffset;          // storage row of this picture's row 0 (of a clip)
    std::int64_t TotalSize;          // bytes of the storage
    sdk::Object* Parent;             // the picture whose storage this view uses
    sdk::Object* mappingFile;        // folder item of the mapped file
    sdk::Object* Target;             // the host picture whose pixels these are
    char* mappingPath;               // owned, zero-terminated UTF-8: the mapped file's path
    bool ownsMemory;                 // `data` is a block of this picture's own
    std::uint8_t* data;              // base of the storage, or of the mapped window
    bool ownsFile;                   // this picture made the mapped file and deletes it
    bool windowMapped;               // `data` is a mapped window of MappingBlockSize bytes
    std::int32_t fileDescriptor;     // of the mapped file
    bool IsMapping;                  // the storage is a mapped file
    std::int32_t MappingBlockSize;   // bytes of one window
    RowAddressOperation rowAddress;  // null while there is no storage
    std::int32_t firstMappedRow;     // storage rows of the window; -1: none
    std::int32_t lastMappedRow;
    std::int64_t faultsBefore;       // the window was mapped
    std::int32_t windowsToBringIn;   // windows that come with all their pages; see MappedStorage
    std::int32_t windowRows;         // rows of one window; of unmapped storage, all its rows
    std::int32_t storageRows;        // rows that the storage has
    std::int32_t rowsAtHand;         // of a picture in the making: those from the top that were cleared,
    std::int32_t clearedFrom;        // and the first byte of each that is: what lies before will be written
    std::uint32_t generation;        // counts the storages taken away; see RowCursor
    std::uint32_t parentGeneration;  // the parent's generation when this view was made
};

// The registered class; its instanceDataOffset is where a PixelBuffer lies in an instance. The
// tables of the class fill it.
extern sdk::ClassDefinition pictureClass;

// The record of an instance; null for nil.
inline PixelBuffer* BufferOf(sdk::Object* instance) {
    if (!instance) return nullptr;
    return reinterpret_cast<PixelBuffer*>(reinterpret_cast<std::uint8_t*>(instance) + pictureClass.instanceDataOffset);
}

// Whether the storage that the picture points into is still there: a view's is gone once its
// parent, or the parent's parent, was closed or built anew. Its rows are null from then on.
bool StorageStands(const PixelBuffer& buffer);

// The row-address operations of unmapped storage; MappedStorage.h has those of mapped files. The
// mirrored one counts rows from the bottom.
std::uint8_t* MemoryRowAddress(PixelBuffer& buffer, std::int32_t y);
std::uint8_t* MirroredMemoryRowAddress(PixelBuffer& buffer, std::int32_t y);

// The one of a picture in the making, whose storage holds any bytes: a row is cleared, with all above it,
// when it is first asked for. What an operation then writes is in the cache. FinishPicture clears the
// rows that nobody asked for and makes it an ordinary picture, before anyone else sees it; others it leaves.
std::uint8_t* ClearingRowAddress(PixelBuffer& buffer, std::int32_t y);
void FinishPicture(PixelBuffer& buffer);

// The storage row behind row y of an upright or a mirrored picture, or -1 when the storage has no
// such row.
std::int64_t StorageRow(const PixelBuffer& buffer, std::int32_t y);
std::int64_t MirroredStorageRow(const PixelBuffer& buffer, std::int32_t y);

// Whether row 0 is the picture's lowest storage row.
bool IsMirrored(const PixelBuffer& buffer);

// The storage row behind row y, however the picture counts its rows, or -1.
std::int64_t StorageRowOf(const PixelBuffer& buffer, std::int32_t y);

// The one way to a row: first byte of row y, or null where there is none.
inline std::uint8_t* RowAddress(PixelBuffer& buffer, std::int32_t y) {
    return buffer.rowAddress ? buffer.rowAddress(buffer, y) : nullptr;
}

// Rows first .. end - 1 of a picture.
struct RowRange {
    std::int32_t first;
    std::int32_t end;

    constexpr bool IsEmpty() const { return end <= first; }
};

// The picture's rows that its storage has. A clip may claim 2^31 - 1 rows of a storage of ten, so
// loops over rows go over these and not from 0 to Height: the address of any other row is null. Rows
// without a byte, of which there may be as many in no memory at all, are none.
RowRange RowsOf(const PixelBuffer& buffer);

// The rows that are in both ranges.
constexpr RowRange CommonRows(const RowRange& a, const RowRange& b) {
    return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

// Whether an operation can work on the picture: valid, with a row-address operation, storage and
// a Height other than 0.
inline bool IsUsable(const PixelBuffer& buffer) {
    return buffer.Valid && buffer.rowAddress && buffer.data && buffer.Height != 0;
}

// What every view and copy takes as it is from the picture that it is made of.
void CopyGeometry(const PixelBuffer& from, PixelBuffer& to);

}  // namespace tqx
