// Weighted sums of five rows plainly.
#include "plugin/rows/Convolve.h"

#include <algorithm>
#include <cstdlib>

#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

ROWS_INLINE std::uint8_t Scaled(double scale, std::int32_t sum) {
    const double value = scale * sum;
    const double positive = value > 0 ? value : 0;  // not-a-number is 0
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(std::min(positive, 255.0)));
}

// Weights of any size, for bytes whose neighbours all lie within the rows.
struct Convolving {
    static constexpr std::int64_t kStep = 64;

    ROWS_INLINE static void Run(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                                std::uint8_t* __restrict result) {
        const double scale = kernel.scale;
        for (std::int64_t i = 0; i < count; i += kStep) {
            std::uint32_t sums[kStep];
            const std::int64_t step = std::min(kStep, count - i);
            for (std::int64_t j = 0; j < kStep; ++j) sums[j] = static_cast<std::uint32_t>(kernel.delta);
            for (int k = 0; k < 25; ++k) {
                if (kernel.weight[k] == 0) continue;
                const std::uint8_t* const from = rows.row[k / 5] + at + i + (k % 5 - 2) * rows.channels;
                const auto weight = static_cast<std::uint32_t>(kernel.weight[k]);
                for (std::int64_t j = 0; j < step; ++j) sums[j] += weight * from[j];
            }
            for (std::int64_t j = 0; j < step; ++j) result[i + j] = Scaled(scale, static_cast<std::int32_t>(sums[j]));
        }
    }
};

// Whether each weight has 8 bits, and no order of adding products of bytes leaves 16.
bool HasSumsOf16Bits(const Kernel& kernel) {
    std::int64_t reach = 0;
    for (const std::int32_t weight : kernel.weight) reach += std::abs(std::int64_t{weight});
    return reach <= INT8_MAX && reach * 255 + std::abs(std::int64_t{kernel.delta}) <= INT16_MAX;
}

bool HasWeightsOf16Bits(const Kernel& kernel) {
    return std::all_of(kernel.weight, kernel.weight + 25,
                       [](std::int32_t weight) { return weight == static_cast<std::int16_t>(weight); });
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/ConvolveWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

using InsideFunction = void(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                            std::uint8_t* result);

constexpr Forms<InsideFunction> kConvolveBytes = ROWS_FORMS(LoopForms<Convolving>::Plain, ConvolveBytes);
constexpr Forms<InsideFunction> kConvolvePairs = ROWS_FORMS(LoopForms<Convolving>::Plain, ConvolvePairs);

const Forms<InsideFunction>& FormsFor(const Kernel& kernel) {
    if (HasSumsOf16Bits(kernel)) return kConvolveBytes;
    return HasWeightsOf16Bits(kernel) ? kConvolvePairs : LoopForms<Convolving>::kTable;
}

}  // namespace

ConvolvePlan PlanConvolution(const Kernel& kernel) { return {kernel, FormsFor(kernel).Chosen()}; }

void ConvolveInOrder(const Kernel& kernel, const KernelRows& rows, std::int32_t first, std::int32_t end,
                     std::uint8_t* result) {
    for (std::int32_t x = first; x < end; ++x) {
        std::int64_t at[5];  // of the five columns' first channel
        for (int dx = -2; dx <= 2; ++dx) {
            const bool inside = x + dx >= 0 && x + dx < rows.width;
            at[dx + 2] = std::int64_t{inside ? x + dx : x} * rows.channels;
        }
        for (int channel = 0; channel < rows.channels; ++channel) {
            auto sum = static_cast<std::uint32_t>(kernel.delta);
            for (int k = 0; k < 25; ++k)
                if (const std::uint8_t* const row = rows.row[k / 5])
                    sum += static_cast<std::uint32_t>(kernel.weight[k]) * row[at[k % 5] + channel];
            result[std::int64_t{x} * rows.channels + channel] = Scaled(kernel.scale, static_cast<std::int32_t>(sum));
        }
    }
}

void ConvolveRow(const ConvolvePlan& plan, const KernelRows& rows, std::uint8_t* result) {
    const Kernel& kernel = plan.kernel;
    constexpr std::int32_t kReach = 2;
    const std::int32_t inside = std::max(rows.width - 2 * kReach, 0);  // pixels with all neighbours in the row
    const std::int32_t first = std::min(kReach, rows.width);
    ConvolveInOrder(kernel, rows, 0, first, result);
    ConvolveInOrder(kernel, rows, first + inside, rows.width, result);
    // A row that isn't there may be any other with weights of 0.
    Kernel present = kernel;
    KernelRows all = rows;
    for (int row = 0; row < 5; ++row)
        if (!rows.row[row]) {
            all.row[row] = rows.row[2];
            std::fill_n(present.weight + 5 * row, 5, 0);
        }
    const std::int64_t at = std::int64_t{first} * rows.channels;
    plan.inside(present, all, at, std::int64_t{inside} * rows.channels, result + at);
}

}  // namespace rows
