// Weights as singles, and the bounds that QuickTaps.h proves.
#include "plugin/geometry/QuickTaps.h"

#include <algorithm>
#include <cmath>

namespace tqx {

namespace {

constexpr std::int32_t kMostTaps = 4096;
constexpr double kExactUnit = 0x1p-20;
constexpr double kUnit = 0x1p-24, kSecondOrder = 1 + 0x1p-10, kRest = 0x1p-28, kRounding = 0x1p-17;

bool IsMultiple(double number, double unit) { return number / unit == std::floor(number / unit); }

// The least p, from `places` on, for which a weight, divided by its total, is a multiple of 2^-p;
// kMostPlaces + 1 where it takes more, or where the definition rounds. A fused step rounds once, so it
// gives 0 for nothing but 0.
int PlacesOf(float weight, double total, double defined, int places) {
    if (std::fma(static_cast<double>(weight), total, -defined) != 0 || !IsMultiple(defined, kExactUnit))
        return QuickTaps::kMostPlaces + 1;
    while (places <= QuickTaps::kMostPlaces && !IsMultiple(weight, std::ldexp(1.0, -places))) ++places;
    return places;
}

bool Serves(const rows::Taps& list) { return list.count > 0 && list.count <= kMostTaps && list.reciprocal != 0; }

std::int32_t PaddedCount(const Contributions& lists, std::int32_t i, std::int32_t samples) {
    constexpr std::int32_t kMostPadding = 1;
    const rows::Taps& list = lists[i];
    const bool pads = list.count + kMostPadding >= lists.MostTaps() && list.first + lists.MostTaps() <= samples;
    return pads ? lists.MostTaps() : list.count;
}

bool HaveSameWeights(const rows::QuickTaps& one, const rows::QuickTaps& other) {
    return one.count == other.count && std::equal(one.weights, one.weights + one.count, other.weights);
}

}  // namespace

bool QuickTaps::Build(const Contributions& lists, std::int32_t samples) {
    count_ = lists.Count();
    std::int64_t weights = 0;
    for (std::int32_t i = 0; i < count_; ++i) {
        if (!Serves(lists[i])) return false;
        weights += PaddedCount(lists, i, samples);
    }
    if (!taps_.Allocate(count_) || !bounds_.Allocate(count_) || !weights_.Allocate(weights)) return false;
    float* next = weights_.data();
    for (std::int32_t i = 0; i < count_; ++i) {
        const rows::Taps& list = lists[i];
        taps_[i] = {next, list.first, PaddedCount(lists, i, samples)};
        for (std::int32_t turn = 0; turn < taps_[i].count; ++turn) {
            const std::int32_t k = rows::QuickTurn(turn, taps_[i].count);
            next[k] = k < list.count ? Add(list.weights[k], list, bounds_[i]) : 0;
        }
        if (i > 0 && HaveSameWeights(taps_[i], taps_[i - 1]))
            taps_[i].weights = taps_[i - 1].weights;
        else
            next += taps_[i].count;
        mostPlaces_ = std::max(mostPlaces_, bounds_[i].places);
    }
    return true;
}

// The next weight of a list as a single, counted into its bound.
float QuickTaps::Add(double weight, const rows::Taps& list, Bound& bound) {
    const auto single = static_cast<float>(weight * list.reciprocal);
    if (bound.places <= kMostPlaces) bound.places = PlacesOf(single, list.total, weight, bound.places);
    bound.whole += std::abs(single);
    bound.sum += bound.whole;
    return single;
}

double QuickTaps::ErrorOf(const Bound& bound) {
    return rows::kMiddle * kUnit * (bound.sum + bound.whole) * kSecondOrder + kRest;
}

double QuickTaps::ErrorAcross(std::int64_t first, std::int64_t end) const {
    double most = 0;
    for (std::int64_t i = first; i < std::min<std::int64_t>(end, count_); ++i)
        most = std::max(most, ErrorOf(bounds_[i]));
    return most + kRounding;
}

double QuickTaps::ErrorDown(std::int32_t i, double across) const {
    return ErrorOf(bounds_[i]) + bounds_[i].whole * kSecondOrder * across + kRounding;
}

}  // namespace tqx
