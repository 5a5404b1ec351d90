// The sums along rows plainly, and one pixel by itself.
#include "plugin/rows/ScaleAcross.h"

#include <algorithm>

#include "plugin/rows/ScaleTurns.h"

#define ROWS_WIDE "plugin/rows/ScaleAcrossWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

double Luma(double red, double green, double blue) { return 0.3 * red + 0.59 * green + 0.11 * blue; }

// A quotient as a value. Minus zero, which only a negative total can give, stays.
float ValueOf(double quotient) {
    if (!(quotient >= 0)) return 0;
    return quotient > 255 ? 255.0F : static_cast<float>(quotient);
}

void BytesToLanesPlain(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes) {
    for (std::int64_t v = 0; v < count; ++v)
        for (int r = 0; r < kLanes; ++r) lanes[v * kLanes + r] = band[r * stride + v];
}

// The sums of one pixel, all rows of the band.
template <int Values>
void SumPixelPlain(const Taps& taps, const double* lanes, float* sums) {
    constexpr int kCount = Values * kLanes;
    double sum[kCount] = {};
    for (std::int32_t k = 0; k < taps.count; ++k) {
        const double* const column = lanes + std::int64_t{k} * kCount;
        for (int i = 0; i < kCount; ++i) sum[i] += taps.weights[k] * column[i];
    }
    for (int i = 0; i < kCount; ++i) sums[i] = ValueOf(sum[i] / taps.total);
}

template <int Values>
void SumAcrossPlain(const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                    float* sums) {
    for (std::int64_t x = 0; x < count; ++x) {
        const double* const first = lanes + (columns[x].first - firstColumn) * Values * kLanes;
        SumPixelPlain<Values>(columns[x], first, sums + x * Values * kLanes);
    }
}

void SumAcrossPlain(int values, const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                    float* sums) {
    switch (values) {
        case 1:
            return SumAcrossPlain<1>(columns, count, lanes, firstColumn, sums);
        case 2:
            return SumAcrossPlain<2>(columns, count, lanes, firstColumn, sums);
        case 3:
            return SumAcrossPlain<3>(columns, count, lanes, firstColumn, sums);
        default:
            return SumAcrossPlain<4>(columns, count, lanes, firstColumn, sums);
    }
}

void LanesToRowsPlain(const float* sums, std::int64_t count, double* rows, std::int64_t stride) {
    const std::int64_t whole = (count + 7) / 8 * 8;
    for (int r = 0; r < kLanes; ++r)
        for (std::int64_t v = 0; v < whole; ++v) rows[r * stride + v] = sums[v * kLanes + r];
}

template <int Bytes, bool WithLuma>
void SumPixel(const PixelLayout& layout, const Taps& taps, const std::uint8_t* row, double* values) {
    constexpr int kValues = WithLuma ? Bytes - 2 : Bytes;
    double sum[kValues] = {};
    const std::uint8_t* pixel = row + std::int64_t{taps.first} * layout.pixelSize;
    for (std::int32_t k = 0; k < taps.count; ++k, pixel += layout.pixelSize) {
        const double weight = taps.weights[k];
        double value[Bytes];
        for (int c = 0; c < Bytes; ++c) value[c] = pixel[layout.offset[c]];
        if constexpr (WithLuma) value[0] = Luma(value[0], value[1], value[2]);
        if constexpr (WithLuma && Bytes == 4) value[1] = value[3];
        for (int c = 0; c < kValues; ++c) sum[c] += weight * value[c];
    }
    for (int c = 0; c < kValues; ++c) values[c] = ValueOf(sum[c] / taps.total);
}

}  // namespace

void SumAcrossPixel(const Samples& samples, const Taps& taps, const std::uint8_t* row, double* values) {
    if (samples.luma) {
        if (samples.bytes == 3) return SumPixel<3, true>(samples.layout, taps, row, values);
        return SumPixel<4, true>(samples.layout, taps, row, values);
    }
    switch (samples.bytes) {
        case 1:
            return SumPixel<1, false>(samples.layout, taps, row, values);
        case 2:
            return SumPixel<2, false>(samples.layout, taps, row, values);
        case 3:
            return SumPixel<3, false>(samples.layout, taps, row, values);
        default:
            return SumPixel<4, false>(samples.layout, taps, row, values);
    }
}

// Some rows at a time, since each sum waits for its own additions.
void SumAcrossSamples(const Taps& taps, const std::uint8_t* const* rows, int count, std::int64_t offset, int stride,
                      float* values) {
    constexpr int kRows = 4;
    const std::int64_t start = std::int64_t{taps.first} * stride + offset;
    for (int r = 0; r < count; r += kRows) {
        const std::uint8_t* sample[kRows];
        for (int i = 0; i < kRows; ++i) sample[i] = rows[std::min(r + i, count - 1)] + start;
        double sum[kRows] = {};
        for (std::int64_t k = 0; k < taps.count; ++k)
            for (int i = 0; i < kRows; ++i) sum[i] += taps.weights[k] * sample[i][k * stride];
        for (int i = 0; i < kRows && r + i < count; ++i) values[r + i] = ValueOf(sum[i] / taps.total);
    }
}

void LumaOfLanes(int values, std::int64_t pixels, double* lanes) {
    const int kept = values - 2;
    for (std::int64_t x = 0; x < pixels; ++x) {
        const double* const from = lanes + x * values * kLanes;
        double* const to = lanes + x * kept * kLanes;
        double alpha[kLanes] = {};
        if (values == 4)
            for (int r = 0; r < kLanes; ++r) alpha[r] = from[3 * kLanes + r];
        for (int r = 0; r < kLanes; ++r) to[r] = Luma(from[r], from[kLanes + r], from[2 * kLanes + r]);
        if (values == 4)
            for (int r = 0; r < kLanes; ++r) to[kLanes + r] = alpha[r];
    }
}

const Forms<BytesToLanesFunction> kBytesToLanes = ROWS_FORMS(BytesToLanesPlain, BytesToLanes);
const Forms<SumAcrossFunction> kSumAcross = ROWS_FORMS(SumAcrossPlain, SumAcross);
const Forms<LanesToRowsFunction> kLanesToRows = ROWS_FORMS(LanesToRowsPlain, LanesToRows);

}  // namespace rows
