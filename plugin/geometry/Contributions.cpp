// Lists of weights: the range searched, the kernel at each distance, the total.
#include "plugin/geometry/Contributions.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <new>

namespace tqx {

namespace {

constexpr std::int64_t kBlockWeights = 16384;  // 128 KiB, the lists of an ordinary picture

// The indices between which samples are looked for, both counted, before they are cut to the
// source.
struct Range {
    std::int64_t left;
    std::int64_t right;
};

Range RangeAround(double centre, double reach, bool outward) {
    if (outward)
        return {static_cast<std::int64_t>(std::floor(centre - reach)),
                static_cast<std::int64_t>(std::ceil(centre + reach))};
    return {static_cast<std::int64_t>(centre - reach), static_cast<std::int64_t>(centre + reach)};
}

// Whether the total's reciprocal may stand for a division; rows::Taps says when.
double ReciprocalOf(const rows::Taps& list) {
    constexpr double kLeastPart = 0x1p-70, kMostMagnitude = 4;
    double least = HUGE_VAL, magnitude = 0;
    for (std::int32_t k = 0; k < list.count; ++k) {
        const double weight = std::abs(list.weights[k]);
        if (weight != 0) least = std::min(least, weight);
        magnitude += weight;
    }
    const bool serves = std::isnormal(list.total) && list.total > 0 && least >= list.total * kLeastPart &&
                        magnitude <= list.total * kMostMagnitude;
    return serves ? 1 / list.total : 0;
}

}  // namespace

struct alignas(double) WeightStore::Block {
    Block* next;  // its weights follow
};

WeightStore::~WeightStore() {
    while (blocks_) {
        Block* const next = blocks_->next;
        std::free(blocks_);
        blocks_ = next;
    }
}

double* WeightStore::Reserve(std::int64_t count) {
    if (count > room_) {
        const std::int64_t size = std::max(count, kBlockWeights);
        void* const memory = std::malloc(sizeof(Block) + static_cast<std::size_t>(size) * sizeof(double));
        if (!memory) return nullptr;
        blocks_ = new (memory) Block{blocks_};
        free_ = reinterpret_cast<double*>(blocks_ + 1);
        room_ = size;
    }
    double* const reserved = free_;
    free_ += count;
    room_ -= count;
    return reserved;
}

void WeightStore::Keep(const double* reserved, std::int64_t count) {
    const std::int64_t unused = free_ - (reserved + count);
    free_ -= unused;
    room_ += unused;
}

bool Contributions::Start(const ScaleKernel& kernel, const AxisScale& scale) {
    kernel_ = &kernel;
    scale_ = scale;
    scale_.built = std::max(scale.built, 0);
    factor_ = static_cast<double>(scale.to) / static_cast<double>(scale.from);
    return lists_.Allocate(scale_.built);
}

void Contributions::BuildList(std::int32_t i) {
    const double centre = (i + 0.5) / factor_;
    const bool enlarging = factor_ >= 1;
    const double reach = enlarging ? kernel_->support : kernel_->support / factor_;
    // Only enlarging across rounds the ends outward: intended.
    const Range range = RangeAround(centre, reach, enlarging && scale_.axis == Axis::Across);
    const std::int64_t left = std::max<std::int64_t>(range.left, 0);
    const std::int64_t right = std::min<std::int64_t>(range.right, std::int64_t{scale_.from} - 1);
    Fill(lists_[i], left, right, centre);
    mostTaps_ = std::max(mostTaps_, lists_[i].count);
}

// Weights that are 0 are no samples: those at the ends are left out.
void Contributions::Fill(rows::Taps& list, std::int64_t left, std::int64_t right, double centre) {
    const double stretch = factor_ >= 1 ? 1 : factor_;
    double* const weights = right >= left ? weights_.Reserve(right - left + 1) : nullptr;
    if (!weights) return;
    std::int64_t count = 0, kept = 0;
    for (std::int64_t j = left; j <= right; ++j) {
        const double distance = centre - static_cast<double>(j) - 0.5;
        const double weight = WeightAt(stretch * distance);
        if (weight == 0 && count == 0) continue;
        if (count == 0) list.first = static_cast<std::int32_t>(j);
        weights[count++] = weight;
        list.total += weight;
        if (weight != 0) kept = count;
    }
    weights_.Keep(weights, kept);
    list.weights = weights;
    list.count = static_cast<std::int32_t>(kept);
    list.reciprocal = ReciprocalOf(list);
}

// Distances recur from list to list when the factor is a power of two, and often otherwise. Two
// sines cost ten times the look-up.
double Contributions::WeightAt(double x) {
    if (!kernel_->costly) return kernel_->weight(x);
    const double distance = std::abs(x);
    const std::uint64_t mixed = std::bit_cast<std::uint64_t>(distance) * 0x9E3779B97F4A7C15u;
    Remembered& remembered = remembered_[mixed >> 56];
    if (remembered.x != distance) remembered = {distance, kernel_->weight(distance)};
    return remembered.weight;
}

}  // namespace tqx
