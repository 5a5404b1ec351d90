// Steps planned from columns, made plainly, and the pixels after them.
#include "plugin/rows/PickSteps.h"

#include <algorithm>
#include <cstring>

namespace rows {

namespace {

// The definition.
void PickStepsPlain(const PickedPixels& pixels, const std::uint8_t* row, std::uint8_t* picked) {
    const std::int32_t advance = pixels.StepPixels() * pixels.pixelSize;
    const std::uint8_t* index = pixels.index;
    for (std::int32_t step = 0; step < pixels.steps; ++step) {
        for (std::int32_t i = 0; i < pixels.stepBytes; ++i) picked[i] = row[pixels.from[step] + index[i]];
        picked += advance;
        index += pixels.stepBytes;
    }
}

// Whether a step from pick `first` on stays within the row and the result, and sees all its columns.
bool MayStep(const PickedPixels& pixels, std::int32_t first) {
    const std::int64_t size = pixels.pixelSize, seen = kStepReach * pixels.stepBytes;
    const std::int64_t begin = pixels.columns[first] * size;
    const std::int64_t end = (pixels.columns[first + pixels.StepPixels() - 1] + std::int64_t{1}) * size;
    return end - begin <= seen && begin + seen <= pixels.width * size &&
           first * size + pixels.stepBytes <= pixels.count * size;
}

template <int Size>
void PickEach(const PickedPixels& pixels, std::int32_t first, const std::uint8_t* row, std::uint8_t* picked) {
    for (std::int64_t i = first; i < pixels.count; ++i)
        std::memcpy(picked + i * Size, row + std::int64_t{pixels.columns[i]} * Size, Size);
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/PickStepsWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

const Forms<PickStepsFunction> kPickSteps = ROWS_FORMS(PickStepsPlain, PickStepsOf);

void PlanPickSteps(PickedPixels& pixels) {
    const CpuLevel level = ActiveCpuLevel();
    pixels.stepBytes = level == CpuLevel::Avx512 ? kMostStepBytes : 16;
    pixels.steps = 0;
    if (level == CpuLevel::Plain) return;  // without shuffles one by one is as quick or quicker
    const std::int32_t size = pixels.pixelSize, each = pixels.StepPixels();
    std::uint8_t* index = pixels.index;
    for (std::int32_t first = 0; first + each <= pixels.count && MayStep(pixels, first); first += each) {
        const std::int32_t from = pixels.columns[first];
        pixels.from[pixels.steps++] = from * size;
        for (std::int32_t i = 0; i < pixels.stepBytes; ++i)
            index[i] = static_cast<std::uint8_t>(
                i < each * size ? (pixels.columns[first + i / size] - from) * size + i % size : 0);
        index += pixels.stepBytes;
    }
}

void PickRow(const PickedPixels& pixels, PickStepsFunction* steps, const std::uint8_t* row, std::uint8_t* picked) {
    steps(pixels, row, picked);
    const std::int32_t first = pixels.steps * pixels.StepPixels();
    switch (pixels.pixelSize) {
        case 1:
            return PickEach<1>(pixels, first, row, picked);
        case 2:
            return PickEach<2>(pixels, first, row, picked);
        case 3:
            return PickEach<3>(pixels, first, row, picked);
        default:
            return PickEach<4>(pixels, first, row, picked);
    }
}

}  // namespace rows
