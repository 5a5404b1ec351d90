// Filtered scaling written out once more, for tests: one sample, one pixel and one row after the
// other, with lists that hold what they are said to hold and nothing else.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/support/Formats.h"

namespace scale_test {

using support::Bytes;
using support::Format;

inline constexpr int kModes = 7;
inline constexpr const char* kModeNames[] = {"",         "Triangle", "Box",   "Lanczos3",
                                             "Lanczos8", "Mitchell", "Poly3", "Cubic"};

double SupportOf(int mode);
double WeightOf(int mode, double x);

struct Entry {
    double weight;
    int index;
};

struct List {
    std::vector<Entry> entries;
    double total = 0;
};

// The lists of a pass from `from` samples to `to` pixels.
std::vector<List> ListsOf(int mode, int from, int to, bool across);

// A picture as packed rows of PixelSize bytes a pixel.
struct Plane {
    Format format;
    int width, height;
    Bytes bytes;

    const std::uint8_t* Pixel(int x, int y) const {
        return bytes.data() + (static_cast<std::size_t>(y) * width + x) * format.pixelSize;
    }
    std::uint8_t* Pixel(int x, int y) {
        return bytes.data() + (static_cast<std::size_t>(y) * width + x) * format.pixelSize;
    }
};

using Slots = std::array<float, 4>;

// The intermediate, width × the source's height.
struct Middle {
    int width, height;
    std::vector<Slots> pixels;
    Slots& At(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }
    const Slots& At(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
};

// Writes what the pass along rows stores for this pair of pictures; other slots stay.
void PassAcross(const Plane& source, const Format& self, int mode, Middle& middle);

// Writes `height` rows of self, as far as it has them.
void PassDown(const Middle& middle, const Format& source, int mode, int height, Plane& self);

// Both passes.
void Scale(const Plane& source, Plane& self, int mode, int width, int height);

}  // namespace scale_test
