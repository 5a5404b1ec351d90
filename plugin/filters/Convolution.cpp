// The caller's kernel brought to five by five weights, and run over padded rows.
#include "plugin/filters/Convolution.h"

#include <algorithm>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/Convolve.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr std::int32_t kWeights = 25;
constexpr std::int32_t kReach = 2;  // rows and columns to either side of the pixel
constexpr std::int32_t kRows = 2 * kReach + 1;
constexpr std::int32_t kLargestWeight = 254;  // anything above makes a hole: intended

rows::Kernel ReadKernel(sdk::Array* matrix, std::int32_t delta, double scale) {
    rows::Kernel kernel{{}, delta, scale};
    for (std::int32_t k = 0; k < kWeights; ++k) {
        const std::int32_t weight = host.RuntimeDirectReadIntArray(matrix, k);
        kernel.weight[k] = weight > kLargestWeight ? 0 : weight;
    }
    return kernel;
}

// The five rows around row y, those outside the picture replaced by row y itself. `rowAt` gives a row
// that there may be.
template <class RowAt>
rows::KernelRows RowsAround(const PackedRows& rows, std::int32_t y, const RowAt& rowAt) {
    rows::KernelRows around{{}, rows.Channels(), rows.Width()};
    for (std::int32_t dy = -kReach; dy <= kReach; ++dy) {
        const std::int64_t sampled = std::int64_t{y} + dy;
        const bool inside = sampled >= 0 && sampled < rows.Height();
        around.row[dy + kReach] = rowAt(inside ? sampled : y);
    }
    return around;
}

// The copy of the row becomes the result, so that later rows see it.
void ConvolveInPlace(Operation& operation, const rows::Kernel& kernel) {
    const PackedRows rows(operation);
    RowRing ring(rows, kRows, rows.Width());
    if (!ring) return;
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        std::uint8_t* const centre = ring.Row(y);
        if (!centre) continue;
        const auto around = RowsAround(rows, y, [&](std::int64_t row) { return ring.Row(row); });
        rows::ConvolveInOrder(kernel, around, 0, rows.Width(), centre);
        rows.Write(y, 0, rows.Width(), centre);
    }
}

void ConvolveApart(Operation& operation, const rows::Kernel& kernel) {
    const PackedRows rows(operation);
    RowRing ring(rows, kRows, rows.Width());
    const ScratchBytes result(rows.BytesOf(rows.Width()));
    const rows::ConvolvePlan plan = rows::PlanConvolution(kernel);
    if (!ring || !result) return;
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        if (!ring.Unchanged(y)) continue;
        const auto around = RowsAround(rows, y, [&](std::int64_t row) { return ring.Unchanged(row); });
        std::uint8_t* const direct = rows.PackedInPlace(y, 0, rows.Width());
        rows::ConvolveRow(plan, around, direct ? direct : result.data());
        if (!direct) rows.Write(y, 0, rows.Width(), result.data());
    }
}

// Copies the neighbourhood of one pixel as it stands now and convolves that.
void ConvolvePixel(const PackedRows& rows, const rows::Kernel& kernel, std::int32_t x, std::int32_t y) {
    std::uint8_t patch[kRows][kRows * 4];
    std::uint8_t result[kRows * 4];
    const std::int32_t first = std::max(x - kReach, 0);
    const std::int32_t count = std::min(x, rows.Width() - 1 - kReach) + kReach + 1 - first;
    rows::KernelRows around{{}, rows.Channels(), count};
    for (std::int32_t dy = -kReach; dy <= kReach; ++dy) {
        const std::int64_t sampled = std::int64_t{y} + dy;
        const bool inside = sampled >= 0 && sampled < rows.Height();
        std::uint8_t* const row = patch[dy + kReach];
        if (rows.Read(inside ? static_cast<std::int32_t>(sampled) : y, first, count, row))
            around.row[dy + kReach] = row;
    }
    rows::ConvolveInOrder(kernel, around, x - first, x - first + 1, result);
    rows.Write(y, x, 1, result + rows.BytesOf(x - first));
}

void ConvolveByPixels(Operation& operation, const rows::Kernel& kernel) {
    const PackedRows rows(operation);
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        if (!rows.Have(y)) continue;
        for (std::int32_t x = 0; x < operation.CommonWidth(); ++x) ConvolvePixel(rows, kernel, x, y);
    }
}

}  // namespace

sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix) {
    return ApplyMatrix(self, dest, matrix, 0, 1.0);
}

sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix, std::int32_t delta) {
    return ApplyMatrix(self, dest, matrix, delta, 1.0);
}

sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix, std::int32_t delta,
                         double scaleFactor) {
    if (!matrix || host.RuntimeUBound(matrix) != kWeights - 1) return nullptr;
    const rows::Kernel kernel = ReadKernel(matrix, delta, scaleFactor);
    const PixelBuffer& source = *BufferOf(self);
    // Width and height are exchanged: intended.
    Operation operation(self, dest, source.Height, source.Width);
    if (!operation) return operation.Give();
    switch (operation.Sharing()) {
        case Sharing::Apart:
            ConvolveApart(operation, kernel);
            break;
        case Sharing::SamePixels:
            ConvolveInPlace(operation, kernel);
            break;
        case Sharing::Overlapping:
            ConvolveByPixels(operation, kernel);
    }
    return operation.Give();
}

}  // namespace tqx
