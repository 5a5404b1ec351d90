// Half and quarter turns: by tiles, by blocks for mapped files, or in pixel order.
#include "plugin/geometry/Turns.h"

#include <algorithm>
#include <limits>

#include "plugin/buffer/Operation.h"
#include "plugin/geometry/TurnedBlock.h"
#include "plugin/geometry/TurnedTile.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Move.h"

namespace tqx {

namespace {

enum class Walk { Rows, Blocks };

// The pixels of a turn's source that have a place in the destination.
struct Reach {
    std::int32_t left, right;  // columns left .. right - 1
    std::int32_t top, bottom;
};

// One quarter turn of a picture into another.
struct QuarterTurn {
    RowCursor& source;
    RowCursor& destination;
    Quarter quarter;
    std::int32_t width, height;  // of the source

    std::int32_t RowOf(std::int32_t x) const { return quarter == Quarter::Left ? width - 1 - x : x; }
    std::int32_t ColumnOf(std::int32_t y) const { return quarter == Quarter::Left ? y : height - 1 - y; }

    Reach Reached() const {
        const std::int32_t down = std::min(height, destination->Width);
        const RowRange written = CommonRows(destination.Rows(), {0, width});
        if (written.IsEmpty() || down <= 0) return {};
        const RowRange present = source.Rows();
        const bool left = quarter == Quarter::Left;
        const RowRange read = CommonRows(present, left ? RowRange{0, down} : RowRange{height - down, height});
        return {left ? width - written.end : written.first, left ? width - written.first : written.end, read.first,
                read.end};
    }
};

constexpr std::int32_t kNoLimit = std::numeric_limits<std::int32_t>::max();

// The side of a block whose rows stay in both pictures' windows, by what each picture says of its
// windows: one in memory has all its rows in one.
std::int32_t BlockSize(const RowCursor& source, const RowCursor& destination) {
    const std::int64_t rows = std::min(source->windowRows, destination->windowRows);
    return static_cast<std::int32_t>(std::max<std::int64_t>(rows - 2, 1));
}

// --- Pictures that share pixels -------------------------------------------------------------------

// One pixel, read before the destination's row is asked for.
void TurnPixel(const QuarterTurn& turn, const rows::PixelMoves& moves, std::int32_t x, std::int32_t y) {
    const std::uint8_t* const source = turn.source.Row(y);
    if (!source) return;
    const std::uint8_t* const from = source + std::int64_t{x} * moves.fromPixelSize;
    std::uint8_t value[4];
    for (std::int32_t i = 0; i < moves.count; ++i) value[i] = from[moves.from[i]];
    std::uint8_t* const row = turn.destination.Row(turn.RowOf(x));
    if (!row) return;
    std::uint8_t* const to = row + std::int64_t{turn.ColumnOf(y)} * moves.toPixelSize;
    for (std::int32_t i = 0; i < moves.count; ++i) to[moves.to[i]] = value[i];
}

// The definition: blocks by rows, and the pixels of a block by rows.
void TurnInOrder(const QuarterTurn& turn, const rows::PixelMoves& moves, std::int32_t block) {
    const Reach reach = turn.Reached();
    for (std::int64_t y0 = reach.top / block * block; y0 < reach.bottom; y0 += block)
        for (std::int64_t x0 = reach.left / block * block; x0 < reach.right; x0 += block) {
            const std::int64_t right = std::min<std::int64_t>(x0 + block, reach.right);
            const std::int64_t bottom = std::min<std::int64_t>(y0 + block, reach.bottom);
            for (std::int64_t y = std::max<std::int64_t>(y0, reach.top); y < bottom; ++y)
                for (std::int64_t x = std::max<std::int64_t>(x0, reach.left); x < right; ++x)
                    TurnPixel(turn, moves, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
        }
}

// --- Pictures that don't ----------------------------------------------------------------------------

// A block by tiles; in the destination from the top, so that its window only slides down.
void TurnBlock(const QuarterTurn& turn, TurnedTile& tile, const Reach& block) {
    const std::int32_t columns = block.right - block.left;
    const std::int32_t lowest = std::min(turn.RowOf(block.left), turn.RowOf(block.right - 1));
    turn.source.Hold({block.top, block.bottom});
    turn.destination.Hold({lowest, lowest + columns});
    for (const rows::Block across : rows::Blocks(columns, TurnedTile::kSide)) {
        const std::int32_t x = turn.quarter == Quarter::Left ? block.right - across.End() : block.left + across.first;
        for (const rows::Block down : rows::Blocks(block.top, block.bottom, TurnedTile::kSide)) {
            const std::int32_t column = std::min(turn.ColumnOf(down.first), turn.ColumnOf(down.End() - 1));
            tile.Read(turn.source, x, down.first, across.count, down.count);
            tile.Write(turn.destination, column, lowest + across.first);
        }
    }
}

// In any order: blocks only where there are windows to keep.
void TurnByTiles(const QuarterTurn& turn, TurnedTile& tile, const Reach& reach) {
    const std::int32_t down = turn.source.RowsAtOnce(), across = turn.destination.RowsAtOnce();
    for (const rows::Block lines : rows::Blocks(reach.top, reach.bottom, down))
        for (const rows::Block columns : rows::Blocks(reach.left, reach.right, across))
            TurnBlock(turn, tile, {columns.first, columns.End(), lines.first, lines.End()});
}

// Blocks between two files that are turned in memory, in pixels of the source. The destination is
// walked once for each block above another, the source's rows of a block once for each beside
// another: walks of the destination cost more, for their pages are written.
constexpr std::int32_t kBlockRows = 8192;
constexpr std::int32_t kBlockColumns = 2048;

bool HasManyWindows(const RowCursor& picture) { return picture->IsMapping && picture->windowRows < picture->Height; }

void TurnThroughMemory(const QuarterTurn& turn, const Reach& reach, TurnedTile& tile, TurnedBlock& block) {
    for (const rows::Block lines : rows::Blocks(reach.top, reach.bottom, kBlockRows))
        for (const rows::Block columns : rows::Blocks(reach.left, reach.right, kBlockColumns)) {
            const Reach part{columns.first, columns.End(), lines.first, lines.End()};
            if (block.Take(turn.source, part.left, part.right, part.top, part.bottom))
                block.Write(turn.destination, std::min(turn.ColumnOf(part.top), turn.ColumnOf(part.bottom - 1)),
                            std::min(turn.RowOf(part.left), turn.RowOf(part.right - 1)));
            else
                TurnByTiles(turn, tile, part);
        }
}

void TurnInAnyOrder(const QuarterTurn& turn, Operation& operation) {
    const rows::ChannelSet set = operation.channels;
    const Reach reach = turn.Reached();
    TurnedTile tile(set, operation.From(), operation.To(), turn.quarter);
    if (HasManyWindows(turn.source) && HasManyWindows(turn.destination)) {
        TurnedBlock block(set, operation.From(), operation.To(), turn.quarter, std::min(kBlockColumns, turn.width),
                          std::min(kBlockRows, turn.height),
                          rows::BytesToWrite(turn.width, turn.height, turn.destination->PixelSize));
        if (block) return TurnThroughMemory(turn, reach, tile, block);
    }
    TurnByTiles(turn, tile, reach);
}

// Whether the order in which pixels are written shows in the result.
bool OrderShows(const QuarterTurn& turn, Operation& operation) {
    const rows::PixelLayout to = operation.To();
    const int count = rows::ChannelCount(operation.channels);
    return RowsMeet(turn.source.Picture(), turn.destination.Picture()) ||
           !rows::SpanOf(to.pixelSize, to.offset, count).IsCompact();
}

sdk::Object* TurnQuarter(sdk::Object* self, sdk::Object* dest, Quarter quarter, Walk walk) {
    const PixelBuffer& picture = *BufferOf(self);
    Operation operation(self, dest, picture.Height, picture.Width);
    if (!operation) return operation.Give();
    const QuarterTurn turn{operation.source, operation.destination, quarter, picture.Width, picture.Height};
    if (OrderShows(turn, operation)) {
        // A picture onto itself reads and writes far apart.
        if (&turn.source.Picture() == &turn.destination.Picture()) turn.source.UseOwnWindow();
        const std::int32_t block = walk == Walk::Blocks ? BlockSize(turn.source, turn.destination) : kNoLimit;
        TurnInOrder(turn, rows::MovesBetween(operation.channels, operation.From(), operation.To()), block);
    } else {
        TurnInAnyOrder(turn, operation);
    }
    return operation.Give();
}

// --- Half turns ---------------------------------------------------------------------------------------

void TurnHalf(Operation& operation, const rows::MovePlan& plan) {
    RowCursor& source = operation.source;
    RowCursor& destination = operation.destination;
    // Columns from the destination's left, so of a narrow one the source's last pixels.
    const std::int32_t width = operation.CommonWidth(), height = source->Height;
    const std::int64_t first = (std::int64_t{source->Width} - width) * source->PixelSize;
    const RowRange written = destination.Rows();
    const RowRange range = CommonRows(source.Rows(), {height - written.end, height - written.first});
    RowPairs pairs(source, destination);
    const std::int32_t band = std::min(source.RowsAtOnce(), destination.RowsAtOnce());
    for (const rows::Block lines : rows::Blocks(range.first, range.end, band)) {
        source.Hold({lines.first, lines.End()});
        destination.Hold({height - lines.End(), height - lines.first});
        for (std::int32_t y = lines.first; y < lines.End(); ++y)
            if (const RowPair pair = pairs.At(y, height - 1 - y))
                rows::MoveRowReversed(plan, pair.source + first, pair.destination, width);
    }
}

}  // namespace

sdk::Object* Rotate180(sdk::Object* self, sdk::Object* dest) {
    Operation operation(self, dest);
    if (operation)
        TurnHalf(operation, rows::PlanMoves(rows::MovesBetween(operation.channels, operation.From(), operation.To())));
    return operation.Give();
}

sdk::Object* Rotate90(sdk::Object* self, sdk::Object* dest) {
    return TurnQuarter(self, dest, Quarter::Left, Walk::Blocks);
}

sdk::Object* Rotate90slow(sdk::Object* self, sdk::Object* dest) {
    return TurnQuarter(self, dest, Quarter::Left, Walk::Rows);
}

sdk::Object* Rotate270(sdk::Object* self, sdk::Object* dest) {
    return TurnQuarter(self, dest, Quarter::Right, Walk::Blocks);
}

sdk::Object* Rotate270slow(sdk::Object* self, sdk::Object* dest) {
    return TurnQuarter(self, dest, Quarter::Right, Walk::Rows);
}

}  // namespace tqx
