// Host pictures and off-screen worlds, held open while their pixels are read or written.
//
// A host pixel is four bytes: unused, red, green, blue. A host picture that lies in a world of
// such pixels is read where it is; any other (of another depth, or without a world) is first drawn
// by the host into a new picture of depth 32, and that is read.
#pragma once

#include <cstdint>

#include "platform/Worlds.h"
#include "plugin/rows/PixelLayout.h"
#include "sdk/PluginInterface.h"

namespace tqx {

// Where the colours of a host pixel lie.
inline constexpr rows::PixelLayout kHostColors{4, {1, 2, 3}};

struct LockedPicture {
    std::int32_t rowBytes;         // from one row to the next
    std::uint8_t* baseAddress;     // first byte of the top row
    std::int32_t width;            // pixels, by the picture's description
    std::int32_t height;           // pixels
    std::int32_t bytesPerPixel;    // 4
    sdk::Object* picture;          // whose description is locked; null: nothing is locked
    sdk::Object* retainedPicture;  // the same, retained while it is locked
    sdk::PictureDescription description;
    platform::PixMap* pixMap;  // the world's, locked
};

// Opens a picture's pixels; with `mayConvert` a picture that can't be read directly is converted.
// False, with nothing held, for nil and when the host fails at any step. Each true wants one
// UnlockPicture.
bool LockPicture(sdk::Object* picture, bool mayConvert, LockedPicture* locked);
void UnlockPicture(LockedPicture* locked);

// An integer property of a host object; 0 for nil or when it can't be read.
std::int32_t ReadIntegerProperty(sdk::Object* object, const char* name);

// Has the host draw the top left width × height pixels of a picture onto another's top left
// corner. False when the host can't.
bool DrawOntoPicture(sdk::Object* target, sdk::Object* picture, std::int32_t width, std::int32_t height);

// A new world, its pixels of any bytes and locked for writing.
struct LockedWorld {
    std::int32_t rowBytes;
    std::uint8_t* baseAddress;
    std::int32_t width;   // pixels
    std::int32_t height;  // pixels
    std::int32_t bytesPerPixel;
    sdk::GWorld* world;
    platform::PixMap* pixMap;
};

// Locks the pixels of a world just made; takes null for one that could not be made. False
// disposes of the world.
bool LockWorld(sdk::GWorld* world, LockedWorld* locked);

inline std::uint8_t* HostRow(const LockedPicture& locked, std::int32_t y) {
    return locked.baseAddress + std::int64_t{y} * locked.rowBytes;
}

inline std::uint8_t* HostRow(const LockedWorld& locked, std::int32_t y) {
    return locked.baseAddress + std::int64_t{y} * locked.rowBytes;
}

// Sets a row of a world to 0, padding included.
void ClearHostRow(const LockedWorld& locked, std::int32_t y);

}  // namespace tqx
