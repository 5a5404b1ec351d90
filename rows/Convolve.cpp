#include "rows/Convolve.h"

namespace rows {

namespace {

std::uint8_t Scaled(const Kernel& kernel, std::uint32_t sum) {
    const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(kernel.delta) + sum);
    const double value = kernel.scale * wrapped;
    if (value >= 255) return 255;
    return value > 0 ? static_cast<std::uint8_t>(value) : 0;  // not-a-number is 0
}

}  // namespace

void ConvolveInOrder(const Kernel& kernel, const KernelRows& rows, std::int32_t first, std::int32_t end,
                     std::uint8_t* result) {
    for (std::int32_t x = first; x < end; ++x) {
        std::int64_t at[5];  // of the five columns' first channel
        for (int dx = -2; dx <= 2; ++dx) {
            const bool inside = x + dx >= 0 && x + dx < rows.width;
            at[dx + 2] = std::int64_t{inside ? x + dx : x} * rows.channels;
        }
        for (int channel = 0; channel < rows.channels; ++channel) {
            std::uint32_t sum = 0;
            for (int k = 0; k < 25; ++k)
                if (const std::uint8_t* const row = rows.row[k / 5])
                    sum += static_cast<std::uint32_t>(kernel.weight[k]) * row[at[k % 5] + channel];
            result[std::int64_t{x} * rows.channels + channel] = Scaled(kernel, sum);
        }
    }
}

void ConvolveRow(const Kernel& kernel, const KernelRows& rows, std::uint8_t* result) {
    ConvolveInOrder(kernel, rows, 0, rows.width, result);
}

}  // namespace rows
