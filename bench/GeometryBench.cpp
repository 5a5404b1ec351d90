// Mirrors, turns, rotation and nearest scaling.
#include "bench/BenchPictures.h"

namespace {

constexpr int kWidth = 4000, kHeight = 3000;

const std::vector<std::int64_t> kFormats = {bench::kRGB, bench::kRGBA, bench::kGray};

void InPlace(benchmark::State& state, const char* member) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, format, format), [&] { bench::Call(picture, member); });
}

void BM_HMirror(benchmark::State& state) { InPlace(state, "HMirror"); }
BENCHMARK(BM_HMirror)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_VMirror(benchmark::State& state) { InPlace(state, "VMirror"); }
BENCHMARK(BM_VMirror)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_Rotate180InPlace(benchmark::State& state) { InPlace(state, "Rotate180"); }
BENCHMARK(BM_Rotate180InPlace)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void Turn(benchmark::State& state, const char* member, int width, int height) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    const auto dest = bench::NewPicture(width, height, format);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, format, format), [&] { bench::Call(picture, member, dest); });
}

void BM_Rotate180(benchmark::State& state) { Turn(state, "Rotate180", kWidth, kHeight); }
BENCHMARK(BM_Rotate180)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_Rotate90(benchmark::State& state) { Turn(state, "Rotate90", kHeight, kWidth); }
BENCHMARK(BM_Rotate90)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_Rotate270(benchmark::State& state) { Turn(state, "Rotate270", kHeight, kWidth); }
BENCHMARK(BM_Rotate270)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

// Its three pictures are new at every call. Pixels of the result.
void BM_Rotate10Degrees(benchmark::State& state) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    bench::Work work = bench::WorkOf(kWidth, kHeight, format, format);
    work.pixels = 4461.0 * 3650.0;
    work.bytes = (work.pixels + 12e6) * bench::PixelSize(format);
    bench::Measure(state, work, [&] { bench::Call(picture, "Rotate", 10.0, 0, 0, 0, 0, 0); });
}
BENCHMARK(BM_Rotate10Degrees)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

// Pixels of the larger picture; every byte of either once.
void ScaleFast(benchmark::State& state, int fromWidth, int fromHeight, int width, int height) {
    const int format = static_cast<int>(state.range(0)), size = bench::PixelSize(format);
    const auto source = bench::Photo(fromWidth, fromHeight, format);
    const auto dest = bench::NewPicture(width, height, format);
    const double from = static_cast<double>(fromWidth) * fromHeight, to = static_cast<double>(width) * height;
    bench::Measure(state, {12e6, size * (from + to), size * 12e6},
                   [&] { bench::Call(dest, "ScaleFast", source, width, height); });
}

void BM_ScaleFastToHalf(benchmark::State& state) { ScaleFast(state, kWidth, kHeight, kWidth / 2, kHeight / 2); }
BENCHMARK(BM_ScaleFastToHalf)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_ScaleFastToDouble(benchmark::State& state) { ScaleFast(state, kWidth / 2, kHeight / 2, kWidth, kHeight); }
BENCHMARK(BM_ScaleFastToDouble)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

}  // namespace
