// Samples that quick scaling leaves undecided, by the doubles of the definition.
//
// Some thousandths of the samples of a photograph lie too near a whole number, and are scattered:
// those of a row are summed by themselves. Where many lie together, the picture is mostly flat there, as white
// paper and blown-out sky are, and flat areas lie on whole numbers. Where the source below a piece of
// a row really has one colour, a byte depends on that colour and the row's weights alone. Elsewhere
// the whole piece is summed, from intermediate values that are kept as long as rows may need
// them, so that each is summed once.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/Contributions.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/ScaleDown.h"
#include "plugin/rows/ScaleOpen.h"
#include "plugin/rows/ScaleScattered.h"

namespace tqx {

// The sampled bytes of the source's latest rows, `rows` of them, a multiple of rows::kQuickLanes. Row y
// is in place y % rows, and in `rows` places more, so that runs may wrap.
struct SampledRows {
    const std::uint8_t* const* row;
    std::int64_t stride;
    std::int64_t rows;

    const std::uint8_t* const* From(std::int64_t y) const { return row + y % rows; }
};

class ExactSamples {
  public:
    // `stride` values a row, whole blocks. All that is given must outlive it. False when memory is short.
    bool Prepare(const ScaleJob& job, const Contributions& across, const Contributions& down,
                 const SampledRows& sampled, std::int64_t stride);

    // The sampled rows from y on, rows::kQuickLanes of them, are new.
    void Forget(std::int64_t y);

    // Makes the bytes of row y of which `undecided` has bits, a word for each piece.
    void Decide(std::int32_t y, std::uint64_t* undecided, std::uint8_t* bytes);

    // Pixels of a block; its values are as many pieces as a pixel has values.
    static constexpr std::int32_t kBlockColumns = rows::kPiece;

  private:
    rows::Block ColumnsOf(std::int64_t piece) const;
    void DecideScattered(std::int32_t y, const rows::OpenSamples& open, std::uint8_t* bytes);
    bool IsFlat(std::int32_t y, const rows::Block& columns) const;
    std::uint8_t FlatByte(std::int32_t y, std::uint8_t value);
    void DecideFlat(std::int32_t y, std::int64_t at, const rows::Block& columns, std::uint8_t* bytes);
    void DecidePiece(std::int32_t y, std::int64_t at, std::uint8_t* bytes);
    bool& Made(std::int64_t band, std::int64_t block) const;
    void MakeBlock(std::int64_t band, std::int64_t block);

    const ScaleJob* job_ = nullptr;
    int values_ = 0;
    std::int64_t count_ = 0;  // values of a row
    const Contributions* across_ = nullptr;
    const Contributions* down_ = nullptr;
    int few_ = 0;  // up to so many undecided samples of a piece are quicker one by one
    SampledRows sampled_{};
    std::int64_t stride_ = 0;
    std::int64_t blocks_ = 0;
    rows::BytesToLanesFunction* bytesToLanes_ = rows::kBytesToLanes.Chosen();
    rows::SumAcrossFunction* sumAcross_ = rows::kSumAcross.Chosen();
    rows::LanesToRowsFunction* lanesToRows_ = rows::kLanesToRows.Chosen();
    rows::SumDownFunction* sumDown_ = rows::kSumDown.Chosen();
    rows::SumScatteredFunction* sumScattered_ = nullptr;
    rows::ListOpenFunction* listOpen_ = rows::kListOpen.Chosen();
    Scratch<double> rows_;   // intermediate values, of blocks that were made
    Scratch<bool> made_;     // by bands of rows::kLanes rows and by blocks
    Scratch<double> lanes_;  // of a block
    Scratch<float> sums_;
    Scratch<const double*> piece_;     // where a piece's rows are
    Scratch<std::int32_t> scattered_;  // the row's samples that are summed by themselves
    Scratch<std::int32_t> openPieces_;
    struct Flat {
        std::int32_t row = -1;
        std::uint8_t byte;
    };
    Flat flat_[256];  // by values, for the row they were last wanted for
};

}  // namespace tqx
