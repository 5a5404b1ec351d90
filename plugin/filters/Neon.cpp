// Gradients from a row, the one below and the next pixel.
#include "plugin/filters/Neon.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/Neon.h"

namespace tqx {

namespace {

// Packed copies of rows with one pixel more than the picture has: the bytes that follow in the
// row, and 0 for bytes that the row does not have.
class RowsAndNext {
  public:
    RowsAndNext(RowCursor& source, const PackedRows& rows)
        : source_(source),
          rows_(rows),
          pixels_(std::int64_t{source->Width} + 1),
          wanted_(rows.EndOf(pixels_)),
          raw_(wanted_) {}

    explicit operator bool() const { return static_cast<bool>(raw_); }

    // All 0 and false for a row that the picture lacks.
    bool Read(std::int32_t y, std::uint8_t* packed) const {
        const std::uint8_t* const row = y < source_->Height ? source_.Row(y) : nullptr;
        const std::int64_t present = row ? std::clamp<std::int64_t>(source_->RowSize, 0, wanted_) : 0;
        if (present > 0) std::memcpy(raw_.data(), row, static_cast<std::size_t>(present));
        std::fill(raw_.data() + present, raw_.data() + wanted_, std::uint8_t{0});
        rows_.Pack(raw_.data(), pixels_, packed);
        return row != nullptr;
    }

  private:
    RowCursor& source_;
    const PackedRows& rows_;
    std::int64_t pixels_;
    std::int64_t wanted_;  // bytes of a row, up to the last channel of the pixel past the end
    ScratchBytes raw_;
};

}  // namespace

sdk::Object* NeonFilter(sdk::Object* self, sdk::Object* dest) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const PackedRows rows(operation);
    const RowsAndNext source(operation.source, rows);
    const std::int64_t bytes = rows.BytesOf(std::int64_t{rows.Width()} + 1);
    const ScratchBytes first(bytes), second(bytes), result(bytes);
    if (!source || !first || !second || !result) return operation.Give();
    rows::NeonFunction* const neon = rows::kNeonRow.Chosen();
    // Both rows are copied before the upper one is written, and the lower copy becomes the next
    // upper one: what a destination that shares memory makes of it meanwhile doesn't count.
    std::uint8_t* row = first.data();
    std::uint8_t* below = second.data();
    const RowRange range = operation.Rows();
    bool present = source.Read(range.first, row);
    for (std::int32_t y = range.first; y < range.end; ++y) {
        const bool belowPresent = source.Read(y + 1, below);
        if (present) {
            neon(row, below, rows.Channels(), rows.BytesOf(rows.Width()), result.data());
            rows.Write(y, 0, rows.Width(), result.data());
        }
        std::swap(row, below);
        present = belowPresent;
    }
    return operation.Give();
}

}  // namespace tqx
