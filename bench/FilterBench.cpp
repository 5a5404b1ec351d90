// The filters on 12 megapixels, from one picture into another unless they work in place.
#include <cstdint>
#include <vector>

#include "bench/BenchPictures.h"
#include "host/objects/Array.h"

namespace {

constexpr int kWidth = 4000, kHeight = 3000;

using bench::Object;
using bench::Ref;
using bench::Value;

Value IntegerArray(const std::vector<int>& elements) { return Value(host::MakeIntegerArray(elements)); }

// A filter with its arguments behind the destination.
struct Filter {
    const char* method;
    std::vector<Value> arguments;
};

void IntoDestination(benchmark::State& state, int format, int width, int height, const Filter& filter) {
    const auto picture = bench::Photo(width, height, format);
    const auto destination = bench::NewPicture(width, height, format);
    std::vector<Value> arguments = {Value(destination)};
    arguments.insert(arguments.end(), filter.arguments.begin(), filter.arguments.end());
    bench::Measure(state, bench::WorkOf(width, height, format, format),
                   [&] { bench::CallWith(picture, filter.method, arguments); });
}

// Into a new picture, given up before the next call.
void BM_GammaIntoNew_RGB(benchmark::State& state) {
    const auto picture = bench::Photo(kWidth, kHeight, bench::kRGB);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, bench::kRGB, bench::kRGB),
                   [&] { bench::Call(picture, "GammaFilter", bench::Ref<bench::Object>(), 2.2); });
}
BENCHMARK(BM_GammaIntoNew_RGB)->UseManualTime()->Unit(benchmark::kMillisecond);

#define FILTER_BENCHMARK(name, format, method, ...)                               \
    void BM_##name(benchmark::State& state) {                                     \
        IntoDestination(state, format, kWidth, kHeight, {method, {__VA_ARGS__}}); \
    }                                                                             \
    BENCHMARK(BM_##name)->UseManualTime()->Unit(benchmark::kMillisecond)

Value Sharpening() {
    return IntegerArray({0, 0, -1, 0, 0, 0, -1, -2, -1, 0, -1, -2, 17, -2, -1, 0, -1, -2, -1, 0, 0, 0, -1, 0, 0});
}

Value LargeWeights() {
    return IntegerArray(
        std::vector<int>{1, 4, 7, 4, 1, 4, 16, 26, 16, 4, 7, 26, 241, 26, 7, 4, 16, 26, 16, 4, 1, 4, 7, 4, 1});
}

Value Ramp(int step) {
    std::vector<int> elements(256);
    for (int i = 0; i < 256; ++i) elements[static_cast<std::size_t>(i)] = i * step;
    return IntegerArray(elements);
}

FILTER_BENCHMARK(Gamma_Gray, bench::kGray, "GammaFilter", Value(2.2));
FILTER_BENCHMARK(Gamma_RGB, bench::kRGB, "GammaFilter", Value(2.2));
FILTER_BENCHMARK(Gamma_RGBA_AlphaStays, bench::kRGBA, "GammaFilter", Value(2.2));
FILTER_BENCHMARK(GammaEach_RGB, bench::kRGB, "GammaFilter", Value(2.2), Value(1.8), Value(1.4));
FILTER_BENCHMARK(TransferEach_RGB, bench::kRGB, "TransferFilter", Ramp(3), Ramp(5), Ramp(7));
FILTER_BENCHMARK(Solarize_RGB, bench::kRGB, "SolarizeFilter");
FILTER_BENCHMARK(Solarize_RGBA, bench::kRGBA, "SolarizeFilter");
FILTER_BENCHMARK(Solarize_Gray, bench::kGray, "SolarizeFilter");
FILTER_BENCHMARK(Convolve_RGB, bench::kRGB, "ApplyMatrix", Sharpening(), Value(3));
FILTER_BENCHMARK(ConvolveScaled_RGB, bench::kRGB, "ApplyMatrix", Sharpening(), Value(3), Value(0.3));
FILTER_BENCHMARK(ConvolveLargeWeights_RGB, bench::kRGB, "ApplyMatrix", LargeWeights(), Value(0), Value(1.0 / 500));
FILTER_BENCHMARK(Convolve_RGBA, bench::kRGBA, "ApplyMatrix", Sharpening(), Value(3));
FILTER_BENCHMARK(Convolve_Gray, bench::kGray, "ApplyMatrix", Sharpening(), Value(3));
FILTER_BENCHMARK(BoxBlur1_RGB, bench::kRGB, "BoxBlurFilter", Value(1.0));
FILTER_BENCHMARK(BoxBlur3_RGB, bench::kRGB, "BoxBlurFilter", Value(3.0));
FILTER_BENCHMARK(BoxBlur20_RGB, bench::kRGB, "BoxBlurFilter", Value(20.0));
FILTER_BENCHMARK(BoxBlur100_RGB, bench::kRGB, "BoxBlurFilter", Value(100.0));
FILTER_BENCHMARK(BoxBlur1000_RGB, bench::kRGB, "BoxBlurFilter", Value(1000.0));
FILTER_BENCHMARK(BoxBlur3_Gray, bench::kGray, "BoxBlurFilter", Value(3.0));
FILTER_BENCHMARK(BoxBlur3_RGBA, bench::kRGBA, "BoxBlurFilter", Value(3.0));
FILTER_BENCHMARK(BoxBlur20_Gray, bench::kGray, "BoxBlurFilter", Value(20.0));
FILTER_BENCHMARK(BoxBlur20_RGBA, bench::kRGBA, "BoxBlurFilter", Value(20.0));
FILTER_BENCHMARK(BoxBlur3ThreeTimes_RGB, bench::kRGB, "BoxBlurFilter", Value(3.0), Value(3));
FILTER_BENCHMARK(FractionalBlur_RGB, bench::kRGB, "BoxBlurFractionalFilter", Value(0.4));
FILTER_BENCHMARK(FractionalBlur_Gray, bench::kGray, "BoxBlurFractionalFilter", Value(0.4));
FILTER_BENCHMARK(Dither2Levels_Gray, bench::kGray, "DitherFilter", Value(7), Value(2));
FILTER_BENCHMARK(Dither2Levels_RGB, bench::kRGB, "DitherFilter", Value(7), Value(2));
FILTER_BENCHMARK(Engrave_RGB, bench::kRGB, "EngraveFilter", Value(1));
FILTER_BENCHMARK(Engrave_Gray, bench::kGray, "EngraveFilter", Value(1));
FILTER_BENCHMARK(Neon_RGB, bench::kRGB, "NeonFilter");
FILTER_BENCHMARK(Neon_Gray, bench::kGray, "NeonFilter");
FILTER_BENCHMARK(Diffuse5_RGB, bench::kRGB, "DiffuseFilter", Value(5));

// A smaller picture: hundreds of nanoseconds a pixel.
void BM_Oil(benchmark::State& state) {
    IntoDestination(state, bench::kRGB, 1000, 750,
                    {"OilFilter", {Value(256), Value(static_cast<std::int32_t>(state.range(0)))}});
}
BENCHMARK(BM_Oil)->ArgName("range")->Arg(1)->Arg(3)->Arg(10)->UseManualTime()->Unit(benchmark::kMillisecond);

// Reads two pictures and writes one.
void BM_Unsharp_RGB(benchmark::State& state) {
    const auto photo = bench::Photo(kWidth, kHeight, bench::kRGB);
    const auto picture = bench::NewPicture(kWidth, kHeight, bench::kRGB);
    const auto blurred = bench::NewPicture(kWidth, kHeight, bench::kRGB);
    bench::Call(photo, "BoxBlurFilter", blurred, 3.0);
    bench::Work work = bench::WorkOf(kWidth, kHeight, bench::kRGB, bench::kRGB);
    work.bytes *= 1.5;
    // Sharpened again and again, a photograph becomes noise of black and white.
    bench::Measure(
        state, work, [&] { bench::Call(picture, "UnsharpFilter", blurred, 0.3, 2); },
        [&] { bench::Call(picture, "CopyPixels", photo); });
}
BENCHMARK(BM_Unsharp_RGB)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_AutoLevel_RGB(benchmark::State& state) {
    const auto picture = bench::Photo(kWidth, kHeight, bench::kRGB);
    bench::Measure(state, bench::WorkOf(kWidth, kHeight, bench::kRGB, bench::kRGB),
                   [&] { bench::Call(picture, "AutoLevel"); });
}
BENCHMARK(BM_AutoLevel_RGB)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
