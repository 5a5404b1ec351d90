// Writing past the cache.
//
// A store brings the line that it goes to into the cache first, and in the end something else out of
// it. For what is larger than the cache that is twice the traffic: bytes that are not read before they
// are written may go to memory directly. A fill of 36 MB then takes 1.6 ms instead of 3.6, a copy 2.5
// instead of 5. Smaller pictures stay in the cache, where whoever reads them next finds them.
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// An operation that writes so many bytes or more streams them: beyond the last cache of most processors,
// or what one core has of it.
inline constexpr std::int64_t kBytesToStream = 32 << 20;

// Bytes of a rectangle of pixels of up to 4 bytes, to be held against that; a number as large as any for one that
// no memory holds.
constexpr std::int64_t BytesToWrite(std::int64_t width, std::int64_t height, std::int64_t pixelSize) {
    return std::clamp<std::int64_t>(width * height, 0, INT64_MAX / 4) * pixelSize;
}

// Bytes that are written again and again to a run: a multiple of a cache line, and of the pixel sizes 1 to 4.
inline constexpr int kTileBytes = 192;

// Stands around an operation's loop over rows: at its end other threads can see what was streamed, as they
// see plain stores.
struct StreamsEnd {
    StreamsEnd() = default;
    StreamsEnd(const StreamsEnd&) = delete;
    StreamsEnd& operator=(const StreamsEnd&) = delete;
    ~StreamsEnd() {
#ifdef ROWS_X86
        __builtin_ia32_sfence();
#endif
    }
};

// Writes `count` bytes (0 or more) of a tile over and over.
using StreamTileFunction = void(const std::uint8_t* tile, std::uint8_t* to, std::int64_t count);
extern const Forms<StreamTileFunction> kStreamTile;

// Copies such a run from bytes apart from it.
using StreamCopyFunction = void(const std::uint8_t* from, std::uint8_t* to, std::int64_t count);
extern const Forms<StreamCopyFunction> kStreamCopy;

}  // namespace rows
