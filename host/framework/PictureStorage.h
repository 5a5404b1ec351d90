// The pixels behind a host picture, of any depth, as colours 0x00RRGGBB by rows.
//
// Depths 32, 24 and 8 lie in an off-screen world (platform/Worlds.h), as plug-ins see them: a
// world of depth 32 has the bytes unused, red, green, blue; depth 8 an index into a table of 256
// colours. Depths 16 (five bits a colour) and 1 have no world: plug-ins can't look at them and
// have the host draw them into a picture of depth 32.
#pragma once

#include <cstdint>

#include "platform/Worlds.h"

namespace host {

using RgbColor = std::uint32_t;  // 0x00RRGGBB

inline constexpr RgbColor kWhite = 0xffffff;
inline constexpr RgbColor kBlack = 0;

// Who frees a storage's pixels.
enum class PixelOwner {
    Host,      // guarded memory of the host's own; freed with the storage
    Platform,  // a world that was handed over; disposed of with the storage
};

struct PictureStorage {
    sdk::GWorld* world = nullptr;   // null for depths 16 and 1, and when there are no pixels
    std::uint8_t* bytes = nullptr;  // row 0
    std::int32_t rowBytes = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t depth = 0;
    PixelOwner owner = PixelOwner::Host;
};

// Fills an empty storage with white pixels. False when the depth is none of 32, 24, 16, 8 and 1,
// a side is below 1 or the rows take 2^31 bytes or more, or when memory is short.
bool CreateStorage(PictureStorage& storage, std::int32_t width, std::int32_t height, std::int32_t depth);

// Takes over a world that somebody else made. False when it has no pixels or is of a depth that
// worlds don't have.
bool AdoptWorld(PictureStorage& storage, sdk::GWorld* world);

// Fills an empty storage with a copy of another's pixels, byte by byte.
bool CopyStorage(PictureStorage& storage, const PictureStorage& source);
bool CopyWorld(PictureStorage& storage, const sdk::GWorld& source);

void DestroyStorage(PictureStorage& storage);

// `count` colours of a row from column x on. All must lie inside.
void LoadColors(const PictureStorage& storage, std::int32_t x, std::int32_t y, std::int32_t count, RgbColor* colors);

// The other way. A depth that can't hold a colour takes the nearest; the unused byte of depth 32
// stays as it is.
void StoreColors(PictureStorage& storage, std::int32_t x, std::int32_t y, std::int32_t count, const RgbColor* colors);

inline bool Contains(const PictureStorage& storage, std::int64_t x, std::int64_t y) {
    return x >= 0 && x < storage.width && y >= 0 && y < storage.height;
}

}  // namespace host
