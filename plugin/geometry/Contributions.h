// Which source samples make each pixel of a scaled row or column, and with what weights.
//
// One list an output index. The samples of a list are a run of neighbours; samples in between that
// weigh nothing keep a weight of 0. Samples outside the picture are dropped, and since sums are
// divided by the weights' own total, edges neither darken nor repeat.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/ScaleKernels.h"
#include "plugin/rows/Taps.h"

namespace tqx {

// The direction in which a pass scales. When enlarging, the two look for samples differently, which
// only shows in samples that weigh next to nothing.
enum class Axis { Across, Down };

// One direction of a scaling.
struct AxisScale {
    Axis axis;
    std::int32_t from;   // samples of the source, 1 or more
    std::int32_t to;     // pixels of the result, 1 or more
    std::int32_t built;  // lists wanted, of the first pixels; at most `to`
};

// Memory that grows in blocks and is freed at once.
class WeightStore {
  public:
    WeightStore() = default;
    ~WeightStore();
    WeightStore(const WeightStore&) = delete;
    WeightStore& operator=(const WeightStore&) = delete;

    // Room for `count` weights; null when memory is short.
    double* Reserve(std::int64_t count);

    // Gives back the end of what was reserved last, but for the first `count` weights.
    void Keep(const double* reserved, std::int64_t count);

  private:
    struct Block;
    Block* blocks_ = nullptr;
    double* free_ = nullptr;
    std::int64_t room_ = 0;  // weights left in the newest block
};

// The lists of one direction.
class Contributions {
  public:
    // Starts for a direction, once; false when there is no memory for the lists.
    bool Start(const ScaleKernel& kernel, const AxisScale& scale);

    // Builds list i; call it for 0, 1, … in turn. A list whose weights find no memory is empty with
    // total 0.
    void BuildList(std::int32_t i);

    std::int32_t Count() const { return scale_.built; }
    const rows::Taps& operator[](std::int32_t i) const { return lists_[i]; }
    const rows::Taps* Lists() const { return lists_.data(); }

    // The most samples of a list.
    std::int32_t MostTaps() const { return mostTaps_; }

  private:
    struct Remembered {
        double x = -1, weight = 0;  // no distance is negative
    };
    static constexpr int kRemembered = 256;

    double WeightAt(double x);
    void Fill(rows::Taps& list, std::int64_t left, std::int64_t right, double centre);

    const ScaleKernel* kernel_ = nullptr;
    AxisScale scale_{};
    double factor_ = 1;
    Scratch<rows::Taps> lists_;
    std::int32_t mostTaps_ = 0;
    WeightStore weights_;
    Remembered remembered_[kRemembered];
};

}  // namespace tqx
