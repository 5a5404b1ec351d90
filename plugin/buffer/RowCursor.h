// The way of an operation to a picture's rows, whatever storage and view it has.
//
// A mapped picture shows a few of its rows at a time, through a window that slides to whatever row
// is asked for and begins a little above it. Of a mirrored view, walked from its top, the file is
// walked upwards, so that each window would serve its lowest rows alone: there the cursor puts the
// window where the same rows lie in it that an upright picture would have. Script code that runs
// in a yield may close a picture or build it anew: from then on its rows are null.
#pragma once

#include <cstdint>
#include <optional>

#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/PixelBuffer.h"

namespace tqx {

class RowCursor {
  public:
    // A cursor over nothing, until Open.
    RowCursor() = default;

    // The picture outlives the cursor.
    explicit RowCursor(PixelBuffer& picture) { Open(picture); }
    void Open(PixelBuffer& picture);

    RowCursor(const RowCursor&) = delete;
    RowCursor& operator=(const RowCursor&) = delete;

    PixelBuffer& Picture() const { return *picture_; }
    PixelBuffer* operator->() const { return picture_; }

    // Row y, or null where there is none. Good until the next row of the same picture is asked for.
    std::uint8_t* Row(std::int32_t y);

    // The rows that there are, unless windows can't be mapped. Loops go over these and not from 0 to
    // Height.
    RowRange Rows() const { return RowsOf(*picture_); }

    // How many neighbouring rows Hold can keep in reach. At least 1; in memory all there are.
    std::int32_t RowsAtOnce() const;

    // Brings the window over a range of rows, RowsAtOnce at most, so that it does not slide among them.
    void Hold(const RowRange& range);

    // Whether script code left the picture's storage alone since the cursor was opened.
    bool Stands() const { return picture_->generation == generation_; }

    // Lets the host run if the picture asks for it and its interval has passed; false when script code
    // took the storage, in this yield or before.
    bool Yield();

    // From here on rows come through a window of the cursor's own, if the picture is mapped: for a loop
    // that goes through two parts of it by turns.
    void UseOwnWindow();

  private:
    PixelBuffer& Window() { return own_ ? own_->Picture() : *picture_; }
    void PlaceFor(std::int32_t y);

    PixelBuffer* picture_ = nullptr;
    std::uint32_t generation_ = 0;  // of the picture's storage
    std::optional<OwnWindow> own_;
};

// A row of each of two pictures, both good at once.
struct RowPair {
    const std::uint8_t* source;
    std::uint8_t* destination;

    // Whether both rows are there.
    explicit operator bool() const { return source && destination; }
};

// Rows of two pictures at the same time. One file row has different addresses in two windows; the
// pairs overlap in memory just where they are the same bytes, so a row function may use them as
// they are. The cursors outlive the pairs.
class RowPairs {
  public:
    RowPairs(RowCursor& source, RowCursor& destination);

    // Row sourceY and row destinationY, both good until the next row of either picture.
    RowPair At(std::int32_t sourceY, std::int32_t destinationY);

  private:
    RowCursor& source_;
    RowCursor& destination_;
    bool sameFile_;
};

// Calls work(row) for the rows of a range from the top, and yields for the picture after each. Rows
// that can't be had are passed over. False when script code took the picture's storage.
template <class Work>
bool ForRowsInPlace(RowCursor& picture, const RowRange& wanted, const Work& work) {
    const RowRange range = CommonRows(picture.Rows(), wanted);
    for (std::int32_t y = range.first; y < range.end; ++y) {
        if (std::uint8_t* const row = picture.Row(y)) work(row);
        if (!picture.Yield()) return false;
    }
    return true;
}

}  // namespace tqx
