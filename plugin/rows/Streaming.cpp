// Runs written plainly.
#include "plugin/rows/Streaming.h"

#include <algorithm>
#include <cstring>

namespace rows {

namespace {

void TilePlain(const std::uint8_t* tile, std::uint8_t* to, std::int64_t count) {
    for (; count > 0; count -= kTileBytes, to += kTileBytes)
        std::memcpy(to, tile, static_cast<std::size_t>(std::min<std::int64_t>(count, kTileBytes)));
}

// Either place may be null for a run of nothing.
void CopyPlain(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
    if (count > 0) std::memcpy(to, from, static_cast<std::size_t>(count));
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/StreamingWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

const Forms<StreamTileFunction> kStreamTile = ROWS_FORMS(TilePlain, StreamTile);
const Forms<StreamCopyFunction> kStreamCopy = ROWS_FORMS(CopyPlain, StreamCopy);

}  // namespace rows
