// Rows of two pictures at the same time.
//
// Two addresses of one mapped picture never live together, and one file row has different
// addresses in the windows of two pictures. RowPairs hands out pairs that a row function may use
// as they are: both addresses live, and the rows overlap in memory just where they are the same
// bytes.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"

namespace tqx {

// How many neighbouring rows a mapped picture's window holds, whichever of them is asked for first:
// it begins up to two rows above that one. At least 1; of a picture in memory, no limit.
std::int32_t RowsInWindow(const PixelBuffer& buffer);

// Puts a mapped picture's window over rows first .. last, RowsInWindow at most, so that it does
// not slide among them.
void PlaceWindow(PixelBuffer& buffer, std::int32_t first, std::int32_t last);

struct RowPair {
    const std::uint8_t* source;
    std::uint8_t* destination;

    // Whether both rows are there.
    explicit operator bool() const { return source && destination; }
};

class RowPairs {
  public:
    // Both pictures outlive the pairs.
    RowPairs(PixelBuffer& source, PixelBuffer& destination);
    RowPairs(const RowPairs&) = delete;
    RowPairs& operator=(const RowPairs&) = delete;
    ~RowPairs();

    // Row sourceY and row destinationY, both good until the next row of either picture is asked
    // for; null where there is none. A source row that the destination's would displace is a copy.
    RowPair At(std::int32_t sourceY, std::int32_t destinationY);

  private:
    const std::uint8_t* CopyOfSourceRow(std::int32_t y);

    PixelBuffer& source_;
    PixelBuffer& destination_;
    bool sameFile_;
    std::uint8_t* copy_ = nullptr;  // a row of the source
};

}  // namespace tqx
