// The sums along columns plainly, piece by piece.
#include "plugin/rows/ScaleDown.h"

#include <bit>
#include <cstring>

#define ROWS_WIDE "plugin/rows/ScaleDownWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

std::uint8_t ByteOf(double quotient) {
    if (!(quotient > 0)) return 0;
    return quotient > 255 ? 255 : static_cast<std::uint8_t>(quotient);
}

void SumPiecePlain(const DownRow& output, std::int64_t at) {
    double sums[kPiece] = {};
    if (!output.begins) std::memcpy(sums, output.carried + at, sizeof(sums));
    for (int k = 0; k < output.count; ++k) {
        const double* const values = output.rows[k] + at;
        for (int i = 0; i < kPiece; ++i) sums[i] += output.weights[k] * values[i];
    }
    if (output.ends)
        BytesOfSums(sums, output.total, kPiece, output.bytes + at);
    else
        std::memcpy(output.carried + at, sums, sizeof(sums));
}

// Piece by piece, so that the rows that several outputs share come from the nearest cache.
void SumDownPlain(const DownRow* outputs, int count, std::int64_t values) {
    for (std::int64_t at = 0; at < values; at += kPiece)
        for (int i = 0; i < count; ++i) SumPiecePlain(outputs[i], at);
}

}  // namespace

const Forms<SumDownFunction> kSumDown = ROWS_FORMS(SumDownPlain, SumDown);

void AddWeighted(double weight, const std::uint8_t* floats, std::int64_t count, double* sums) {
    for (std::int64_t i = 0; i < count; ++i) {
        float value;
        std::memcpy(&value, floats + i * 4, sizeof(value));
        sums[i] += weight * static_cast<double>(value);
    }
}

void BytesOfSums(const double* sums, double total, std::int64_t count, std::uint8_t* bytes) {
    for (std::int64_t i = 0; i < count; ++i) bytes[i] = ByteOf(sums[i] / total);
}

}  // namespace rows
