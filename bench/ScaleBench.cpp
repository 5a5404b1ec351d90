// Filtered scaling: the kernels and factors that people use, with the intermediate made for the call.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/BenchPictures.h"

namespace {

struct Size {
    int fromWidth, fromHeight, toWidth, toHeight;
};

constexpr Size kSizes[] = {
    {4000, 3000, 1000, 750},
    {4000, 3000, 3000, 2250},
    {1000, 750, 4000, 3000},
};

struct Kernel {
    int mode;
    const char* name;
};

constexpr Kernel kKernels[] = {{1, "triangle"}, {2, "box"},   {3, "Lanczos3"}, {4, "Lanczos8"},
                               {5, "Mitchell"}, {6, "Poly3"}, {7, "Cubic"}};

struct NamedFormat {
    int code;
    const char* name;
};

constexpr NamedFormat kFormats[] = {{bench::kRGB, "RGB"}, {bench::kRGBA, "RGBA"}, {bench::kGray, "gray"}};

void Scale(benchmark::State& state, const Size& size, int mode, int format, bool supplied) {
    const auto source = bench::Photo(size.fromWidth, size.fromHeight, format);
    const auto self = bench::NewPicture(size.toWidth, size.toHeight, format);
    constexpr int kScaling = 14;
    const auto temp =
        supplied ? bench::NewPicture(size.toWidth, size.fromHeight, kScaling) : bench::Ref<bench::Object>();
    const double fromPixels = 1.0 * size.fromWidth * size.fromHeight, toPixels = 1.0 * size.toWidth * size.toHeight;
    const double pixels = std::max(fromPixels, toPixels);
    const int bytes = bench::PixelSize(format);
    bench::Measure(state, {pixels, (fromPixels + toPixels) * bytes, pixels * bytes}, [&] {
        if (!bench::Call(self, "Scale", source, temp, mode, size.toWidth, size.toHeight).ToBoolean()) {
            std::fprintf(stderr, "Scale refused\n");
            std::abort();
        }
    });
}

const bool registered = [] {
    for (const Size& size : kSizes)
        for (const NamedFormat& format : kFormats)
            for (const Kernel& kernel : kKernels)
                for (const bool supplied : {false, true}) {
                    if (supplied && (format.code != bench::kRGB || kernel.mode != 3)) continue;
                    const std::string name = "BM_Scale/" + std::to_string(size.fromWidth) + "_to_" +
                                             std::to_string(size.toWidth) + "/" + format.name + "/" + kernel.name +
                                             (supplied ? "/temp" : "");
                    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                        Scale(state, size, kernel.mode, format.code, supplied);
                    })->UseManualTime();
                }
    return true;
}();

}  // namespace
