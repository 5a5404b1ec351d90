// Host pictures drawn into a picture of 12 megapixels, and made from it.
#include <cstdio>
#include <cstdlib>

#include "bench/BenchPictures.h"

namespace {

using bench::Call;
using bench::Object;
using bench::Photo;
using bench::Ref;
using bench::Value;

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr double kPixels = 12e6;
constexpr double kHostBytes = 4 * kPixels;  // of a host picture

// A host picture with the photo's colours, and its alpha as the mask where it has alpha.
Ref<Object> HostPhoto(int format) {
    const Value made = Call(Photo(kWidth, kHeight, format), "CopyPictureWithMask");
    if (made.object()) return Ref<Object>::Share(made.object());
    std::fputs("no host picture was made\n", stderr);
    std::exit(1);
}

// Draws a host picture into a picture of a format by a method; `read` is what a pixel's reading
// takes in bytes, `written` what is written.
void Draw(benchmark::State& state, const char* method, int hostFormat, int format, double read, double written) {
    const auto picture = HostPhoto(hostFormat);
    const auto buffer = Photo(kWidth, kHeight, format);
    bench::Measure(state, {kPixels, (read + written) * kPixels, kHostBytes}, [&] { Call(buffer, method, picture); });
}

void DrawToGray(benchmark::State& state) {
    const auto picture = HostPhoto(bench::kRGB);
    const auto buffer = Photo(kWidth, kHeight, bench::kGray);
    bench::Measure(state, {kPixels, 5 * kPixels, kHostBytes},
                   [&] { Call(buffer, "DrawPictureGreenToGrayChannel", picture, 0, 0, kWidth, kHeight); });
}

// Makes a host object; it goes before the next is made, as a script's would.
void Make(benchmark::State& state, const char* method, int format, double read, double written) {
    const auto buffer = Photo(kWidth, kHeight, format);
    bench::Measure(state, {kPixels, (read + written) * kPixels, kHostBytes}, [&] { Call(buffer, method); });
}

#define INTEROP_BENCHMARK(name, function, ...) \
    BENCHMARK_CAPTURE(function, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)

INTEROP_BENCHMARK(PictureRGB_RGB, Draw, "DrawPictureRGB", bench::kRGB, bench::kRGB, 4, 3);
INTEROP_BENCHMARK(PictureRGB_RGBA, Draw, "DrawPictureRGB", bench::kRGB, bench::kRGBA, 4, 4);
INTEROP_BENCHMARK(PictureRGB_ARGB, Draw, "DrawPictureRGB", bench::kRGB, bench::kARGB, 4, 4);
INTEROP_BENCHMARK(PictureRGB_BGRA, Draw, "DrawPictureRGB", bench::kRGB, bench::kBGRA, 4, 4);
INTEROP_BENCHMARK(Masked_RGBA, Draw, "DrawMaskedPictureRGB", bench::kRGBA, bench::kRGBA, 8, 4);
INTEROP_BENCHMARK(Masked_ARGB, Draw, "DrawMaskedPictureRGB", bench::kRGBA, bench::kARGB, 8, 4);
INTEROP_BENCHMARK(MaskedWithoutMask_RGBA, Draw, "DrawMaskedPictureRGB", bench::kRGB, bench::kRGBA, 4, 4);
INTEROP_BENCHMARK(ApplyMask_RGB, Draw, "DrawMaskedPictureApplyMaskRGB", bench::kRGBA, bench::kRGB, 11, 3);
INTEROP_BENCHMARK(ApplyMask_RGBA, Draw, "DrawMaskedPictureApplyMaskRGB", bench::kRGBA, bench::kRGBA, 12, 4);
BENCHMARK(DrawToGray)->UseManualTime()->Unit(benchmark::kMillisecond);
INTEROP_BENCHMARK(CopyPicture_RGB, Make, "CopyPicture", bench::kRGB, 3, 4);
INTEROP_BENCHMARK(CopyPicture_RGBA, Make, "CopyPicture", bench::kRGBA, 4, 4);
INTEROP_BENCHMARK(CopyPicture_Gray, Make, "CopyPicture", bench::kGray, 1, 4);
INTEROP_BENCHMARK(CopyMask_RGBA, Make, "CopyMask", bench::kRGBA, 4, 4);
INTEROP_BENCHMARK(CopyGWorld_RGBA, Make, "CopyGWorld", bench::kRGBA, 4, 4);
INTEROP_BENCHMARK(CopyGWorld_RGB, Make, "CopyGWorld", bench::kRGB, 3, 3);

}  // namespace
