// What the passes of a filtered scaling work on, and the two ways to run them.
#pragma once

#include <cstdint>

#include "plugin/buffer/RowCursor.h"
#include "plugin/geometry/Contributions.h"
#include "plugin/geometry/ScalePath.h"

namespace tqx {

struct ScaleJob {
    RowCursor& source;
    RowCursor& self;
    RowCursor& intermediate;
    bool intermediateIsOurs;  // nobody but this call can see it
    const ScaleKernel* kernel;
    std::int32_t width;  // the size to scale to
    std::int32_t height;
    ScalePath path;

    // The part of the result that self has, and the part of the intermediate's pixels that the
    // intermediate has: nothing else is computed.
    std::int32_t columns;
    std::int32_t rows;
    std::int32_t keptColumns;
    std::int32_t keptRows;

    AxisScale AcrossScale(std::int32_t built) const { return {Axis::Across, source->Width, width, built}; }
    AxisScale DownScale() const { return {Axis::Down, source->Height, height, rows}; }

    // Yields for each picture that asks for it; false when script code took the storage of any.
    bool Yield() const {
        for (RowCursor* const picture : {&source, &self, &intermediate})
            if (!picture->Yield() || !Stand()) return false;
        return true;
    }
    bool Stand() const { return source.Stands() && self.Stands() && intermediate.Stands(); }
};

// --- In order ----------------------------------------------------------------------------------

// The passes one row after the other, pixel by pixel where pictures share memory, with yields after
// each list and each row: right in every case. False when script code took a picture's storage,
// or when there is no memory for the lists.
bool ScaleAcrossInOrder(const ScaleJob& job);
bool ScaleDownInOrder(const ScaleJob& job);

// --- In bands ----------------------------------------------------------------------------------

// The passes several rows at a time, for pictures that don't yield and an intermediate that shares
// no memory with the others. They give the same values and bytes. None may suit, in size or for
// want of memory; then nothing has been written.

enum class Across {
    Complete,  // the intermediate's rows are written
    Gaps,      // but for some that the source does not have
    NotDone,
};
Across ScaleAcrossInBands(const ScaleJob& job);

// Wants an intermediate without gaps.
bool ScaleDownInBands(const ScaleJob& job);

// Both at once, without the intermediate. The source may not share memory with self.
bool ScaleThroughBands(const ScaleJob& job);

// The same, mostly by quick arithmetic: a third of the time, and more than that only for pictures
// that leave much undecided.
bool ScaleQuickly(const ScaleJob& job);

// The same in whole numbers, where these leave nothing to round: enlarging by a triangle or a box at
// powers of two.
bool ScaleInWholeNumbers(const ScaleJob& job);

}  // namespace tqx
