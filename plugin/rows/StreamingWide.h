// Runs written past the cache, for Streaming.cpp.
//
// Only whole cache lines go that way: a part of one would be read and merged by the memory.

namespace rows::ROWS_LEVEL {

namespace {

constexpr std::int64_t kLine = 64;

// Bytes of a run before its first whole line.
ROWS_INLINE std::int64_t BytesBeforeLine(const std::uint8_t* to, std::int64_t count) {
    return std::min<std::int64_t>(-reinterpret_cast<std::intptr_t>(to) & (kLine - 1), count);
}

void StreamCopy(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
    const std::int64_t before = BytesBeforeLine(to, count);
    CopyPlain(from, to, before);
    std::int64_t at = before;
    for (; at + kLine <= count; at += kLine) {
        Register line[kLine / kBytes];
        for (int i = 0; i < kLine / kBytes; ++i) line[i] = Load(from + at + i * kBytes);
        for (int i = 0; i < kLine / kBytes; ++i) Stream(to + at + i * kBytes, line[i]);
    }
    CopyPlain(from + at, to + at, count - at);
}

void StreamTile(const std::uint8_t* tile, std::uint8_t* to, std::int64_t count) {
    const std::int64_t before = BytesBeforeLine(to, count);
    CopyPlain(tile, to, before);
    // From here on the tile begins with the byte that is due.
    std::uint8_t turned[kTileBytes];
    std::rotate_copy(tile, tile + before, tile + kTileBytes, turned);
    Register part[kTileBytes / kBytes];
    for (int i = 0; i < kTileBytes / kBytes; ++i) part[i] = Load(turned + i * kBytes);
    std::int64_t at = before;
    for (; at + kTileBytes <= count; at += kTileBytes)
        for (int i = 0; i < kTileBytes / kBytes; ++i) Stream(to + at + i * kBytes, part[i]);
    TilePlain(turned, to + at, count - at);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
