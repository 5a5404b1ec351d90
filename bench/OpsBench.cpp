// Clearing, filling, inverting and copying; copies between formats are the row conversions.
#include "bench/BenchPictures.h"

namespace {

constexpr int kWidth = 4000, kHeight = 3000;

// Pixels that are written without being read.
bench::Work Written(int format) {
    bench::Work work = bench::WorkOf(kWidth, kHeight, format, format);
    work.bytes /= 2;
    return work;
}

const std::vector<std::int64_t> kFormats = {bench::kRGB, bench::kRGBA, bench::kGray};

void BM_ClearRect(benchmark::State& state) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    bench::Measure(state, Written(format), [&] { bench::Call(picture, "ClearRect"); });
}
BENCHMARK(BM_ClearRect)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_FillRectRGB(benchmark::State& state) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    bench::Measure(state, Written(format),
                   [&] { bench::Call(picture, "FillRectRGB", 0, 0, kWidth, kHeight, 10, 200, 30); });
}
BENCHMARK(BM_FillRectRGB)->UseManualTime()->ArgName("format")->Arg(bench::kRGB)->Arg(bench::kRGBA);

void BM_Invert(benchmark::State& state) {
    const int format = static_cast<int>(state.range(0));
    const auto picture = bench::Photo(kWidth, kHeight, format);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, format, format), [&] { bench::Call(picture, "Invert"); });
}
BENCHMARK(BM_Invert)->UseManualTime()->ArgName("format")->ArgsProduct({kFormats});

void BM_CopyPixels(benchmark::State& state) {
    const int from = static_cast<int>(state.range(0)), to = static_cast<int>(state.range(1));
    const auto source = bench::Photo(kWidth, kHeight, from);
    const auto dest = bench::NewPicture(kWidth, kHeight, to);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, from, to), [&] { bench::Call(dest, "CopyPixels", source); });
}
BENCHMARK(BM_CopyPixels)
    ->UseManualTime()
    ->ArgNames({"from", "to"})
    ->Args({bench::kRGB, bench::kRGB})
    ->Args({bench::kRGBA, bench::kRGBA})
    ->Args({bench::kGray, bench::kGray})
    ->Args({bench::kRGB, bench::kBGR})
    ->Args({bench::kRGB, bench::kBGRA})
    ->Args({bench::kRGB, bench::kGray})
    ->Args({bench::kRGBA, bench::kGray})
    ->Args({bench::kRGBA, bench::kARGB})
    ->Args({bench::kRGBA, bench::kRGB})
    ->Args({bench::kGray, bench::kRGB})
    ->Args({bench::kRGBA, bench::kGrayAlpha});

void BM_ExtractChannel(benchmark::State& state) {
    const auto source = bench::Photo(kWidth, kHeight, bench::kRGB);
    const auto channel = bench::Ref<bench::Object>::Share(bench::Call(source, "GreenChannel").object());
    const auto dest = bench::NewPicture(kWidth, kHeight, bench::kGray);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, bench::kRGB, bench::kGray),
                   [&] { bench::Call(dest, "CopyPixels", channel); });
}
BENCHMARK(BM_ExtractChannel)->UseManualTime();

}  // namespace
