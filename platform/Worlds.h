// Off-screen worlds and their pixel maps: plain records over memory that the host and its
// plug-ins share by address.
//
// A world of depth 32 keeps four bytes a pixel: unused (or alpha), red, green, blue. Depth 24
// keeps three, red, green, blue; depth 8 one index into its colour table. Row 0 is the top row.
// Rows are padded to multiples of 16 bytes, so a narrow world of depth 24 may have room for four
// bytes a pixel.
//
// The pixels of a world are reached between LockPixels and UnlockPixels. Nothing moves them here,
// yet a world whose owner gave them up (`purged`) says so by refusing the lock.
#pragma once

#include <cstddef>
#include <cstdint>

#include "sdk/PluginInterface.h"

namespace platform {

// 256 colours of an 8-bit world, 0x00RRGGBB each.
struct ColorTable {
    std::uint32_t colors[256];
};

// The pixels of a world.
struct PixMap {
    std::uint8_t* baseAddress;  // null when there is no memory
    std::int32_t rowBytes;      // from one row to the next
    std::int32_t depth;         // bits a pixel: 32, 24 or 8
    std::int32_t lockCount;     // LockPixels less UnlockPixels
    const ColorTable* colors;   // of depth 8; or null
    bool purged = false;        // the pixels are lost: LockPixels refuses
};

// A new world, its pixels of any bytes. Null when the depth is not 32, 24 or 8, a side is below 1, the
// pixels reach 2^31 bytes or memory is short. `colors` (may be null) is not owned.
sdk::GWorld* NewGWorld(std::int32_t depth, std::int32_t width, std::int32_t height, const ColorTable* colors = nullptr);

// Frees a world from NewGWorld and its pixels, whoever made it. Null is ignored.
void DisposeGWorld(sdk::GWorld* world);

// The pixel map of a world; null for null. The world keeps it. The two differ in how the world
// was come by (made here, or taken from a picture's description), not in what they give.
PixMap* GetGWorldPixMap(sdk::GWorld* world);
PixMap* GetPortPixMap(sdk::GWorld* world);

// Counts one more user of the pixels' address; false when the pixels are lost. Each true
// LockPixels wants one UnlockPixels. The address may still be null: ask GetPixBaseAddr.
bool LockPixels(PixMap* pixMap);
void UnlockPixels(PixMap* pixMap);

std::int32_t GetPixDepth(const PixMap* pixMap);
std::int32_t GetPixRowBytes(const PixMap* pixMap);
std::uint8_t* GetPixBaseAddr(const PixMap* pixMap);

// A system colour table; 40 is the ramp of 256 grays that runs from black to white. Null for
// any other number. Never freed.
const ColorTable* GetCTable(std::int32_t number);

}  // namespace platform

namespace sdk {

struct GWorld {
    platform::PixMap pixMap;
    std::int32_t width;        // pixels
    std::int32_t height;       // pixels
    void (*dispose)(GWorld*);  // frees it, in the module that made it; null: not to be disposed of
};

}  // namespace sdk
