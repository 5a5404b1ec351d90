// Making, cloning and closing pictures.
//
// A constructor method called on an instance that already holds storage closes it first and
// clears the record. Every failure leaves Valid false and reports nothing.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"

namespace tqx {

// A zero-filled picture in memory of its own. Rows are padded to multiples of 64 bytes. Invalid
// when the format is unknown, a side is negative, a row or the whole reaches 2^31 bytes, or
// memory is short. A side of 0 makes a valid empty picture.
void ConstructMemoryPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

// The same for a picture that may never be touched: its pixels take no memory until they are.
void ConstructUntouchedPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

// The same for an operation that writes most of it and then calls FinishPicture: where the memory is
// recycled, its bytes are cleared row by row when they are asked for.
void ConstructPictureInTheMaking(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

// A picture around a host memory block, which is retained. The layout is the caller's word:
// neither the block's size nor rowSize against width is checked. Invalid for a nil block, an
// unknown format, or a rowSize × height whose upper 32 bits, as a signed number, are above 0.
void ConstructMemoryBlockPicture(sdk::Object* self, sdk::Object* block, std::int32_t width, std::int32_t height,
                                 std::int32_t format, std::int32_t rowSize);

// Closes whatever the record holds and sets it to zero, ready for a constructor. YieldTicks,
// Factory and DebugPictureEnabled start anew as well.
PixelBuffer& StartConstruction(sdk::Object* self);

// The method Close, also the destructor: frees or unmaps the storage, deletes a mapped file of
// its own, and releases what the record retains. Description fields and Valid stay. A second
// call does nothing further.
void Close(sdk::Object* self);

// A picture with a memory copy of this one's storage: Height rows from the storage's base (not
// from row 0 of a clip), with the same offsets. Nil for a mapped or invalid picture, one without
// storage, or when memory is short. The caller owns it.
sdk::Object* Clone(sdk::Object* self);

// A new PictureTQX instance, all zero, owned by the caller; nil when the host can't.
sdk::Object* NewPictureInstance();

// The property Memory: a new memory block around the storage (of mapped storage, around the
// current window), which stays the picture's. Nil while there is no storage.
sdk::Object* GetMemory(sdk::Object* self);

// The property TotalSize, bytes.
std::int64_t GetTotalSize(sdk::Object* self);

}  // namespace tqx
