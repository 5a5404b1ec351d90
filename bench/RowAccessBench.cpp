// Rows and whole pictures converted to bytes.
#include "bench/BenchPictures.h"

namespace {

constexpr int kWidth = 4000, kHeight = 3000;
constexpr double kPixels = 1.0 * kWidth * kHeight;

void BM_RowInFormat(benchmark::State& state) {
    const int from = static_cast<int>(state.range(0)), to = static_cast<int>(state.range(1));
    const auto picture = bench::Photo(kWidth, kHeight, from);
    const double bytes = kPixels * (bench::PixelSize(from) + bench::PixelSize(to));
    bench::Measure(state, {kPixels, bytes, kPixels * bench::PixelSize(from)}, [&] {
        for (int y = 0; y < kHeight; ++y) benchmark::DoNotOptimize(bench::Call(picture, "RowInFormat", y, to));
    });
}
BENCHMARK(BM_RowInFormat)
    ->ArgNames({"from", "to"})
    ->Args({bench::kRGB, bench::kBGRA})
    ->Args({bench::kRGB, bench::kGray})
    ->Args({bench::kRGBA, bench::kRGBA})
    ->UseManualTime();

void BM_DataStringInFormat(benchmark::State& state) {
    const int from = static_cast<int>(state.range(0)), to = static_cast<int>(state.range(1));
    const auto picture = bench::Photo(kWidth, kHeight, from);
    const double bytes = kPixels * (bench::PixelSize(from) + bench::PixelSize(to));
    bench::Measure(state, {kPixels, bytes, kPixels * bench::PixelSize(from)},
                   [&] { benchmark::DoNotOptimize(bench::Call(picture, "DataStringInFormat", to)); });
}
BENCHMARK(BM_DataStringInFormat)
    ->ArgNames({"from", "to"})
    ->Args({bench::kRGB, bench::kBGRA})
    ->Args({bench::kRGB, bench::kGray})
    ->Args({bench::kRGBA, bench::kRGBA})
    ->UseManualTime();

}  // namespace
