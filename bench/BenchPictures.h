// What benchmarks share: photo-like pictures of the loaded plug-in, calls by name, and the
// measure of a call against a memcpy.
//
//   void BM_Invert(benchmark::State& state) {
//       const auto picture = bench::Photo(4000, 3000, bench::kRGB);
//       bench::Measure(state, {12e6, 72e6, 36e6}, [&] { bench::Call(picture, "Invert"); });
//   }
//   BENCHMARK(BM_Invert)->UseManualTime();
//
// Set UseManualTime: the time of an iteration is the call's alone.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string_view>
#include <vector>

#include "host/objects/Object.h"
#include "host/objects/Value.h"

namespace bench {

using host::Object;
using host::Ref;
using host::Value;

// Codes of the formats that benchmarks use.
inline constexpr int kRGB = 1, kRGBA = 2, kARGB = 4, kBGR = 6, kBGRA = 7, kGray = 11, kGrayAlpha = 12;

// Bytes of a pixel in one of these formats.
int PixelSize(int format);

// A new picture in memory, all zero.
Ref<Object> NewPicture(int width, int height, int format);

// The pixels of a photograph as packed red, green, blue and alpha.
std::string_view PhotoBytes(int width, int height);

// A new picture of smooth noise with edges and grain, the same at every run.
Ref<Object> Photo(int width, int height, int format);

// Calls a method by name. A member or overload that does not exist ends the program.
Value CallWith(const Ref<Object>& object, std::string_view method, const std::vector<Value>& arguments);

template <class... Arguments>
Value Call(const Ref<Object>& object, std::string_view method, const Arguments&... arguments) {
    return CallWith(object, method, {Value(arguments)...});
}

// What one call works on.
struct Work {
    double pixels;        // of the larger of source and destination, or of the rectangle
    double bytes;         // read once plus written once
    double pictureBytes;  // of the memcpy to compare with: the larger picture
};

// The work from one picture into another, or in place when both formats are the same picture's.
Work WorkOf(int width, int height, int fromFormat, int toFormat);

// Runs the call once for each iteration, and just before each a memcpy between two other blocks.
// Reports, by their medians and by their best times:
//   MP/s, best_MP/s      pixels of the call
//   memcpy%, best_memcpy% bytes per second of the call against those of the memcpy
// `prepare` runs before the memcpy, for a call that must not find what the last one left.
void Measure(
    benchmark::State& state, const Work& work, const std::function<void()>& call,
    const std::function<void()>& prepare = [] {});

}  // namespace bench
