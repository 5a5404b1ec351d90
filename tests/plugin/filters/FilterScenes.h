// Every way in which a filter can meet a source and a destination, and the comparison with a
// plain walk over the same bytes.
//
// A scene is made twice: the plug-in works on one copy, the reference on the other, each on real
// memory with all its sharing. Afterwards all bytes of both must be equal, those that no filter
// should touch included.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace scenes {

using support::Bytes;
using support::Object;
using support::Ref;

enum Channel { kRed, kGreen, kBlue, kGray, kAlpha };

// A picture's bytes as a reference sees them.
struct Pixels {
    explicit Pixels(const Ref<Object>& picture);

    // The byte of a channel; null outside the picture and in a row that can't be had.
    std::uint8_t* At(std::int64_t x, std::int64_t y, Channel channel) const;
    bool Has(std::int64_t x, std::int64_t y) const { return x >= 0 && x < width && y >= 0 && y < height && rows[y]; }
    int Value(std::int64_t x, std::int64_t y, Channel channel) const { return *At(x, y, channel); }

    int width, height, pixelSize, rowSize, format;
    std::array<int, 5> offset;  // indexed by Channel
    bool isGray, isRGB, hasAlpha;
    std::vector<std::uint8_t*> rows;
    std::vector<Channel> channels;  // that a filter works on, in order; empty: neither gray nor RGB
};

struct Pictures {
    Ref<Object> source;
    Ref<Object> destination;           // nil: the filter makes one
    std::vector<Ref<Object>> storage;  // what owns the bytes: pictures or memory blocks
};

struct FilterScene {
    std::string name;
    std::function<Pictures()> make;
};

// Views, sharing and sizes, each in the given format. Sizes are `width` × `height` or a little less.
std::vector<FilterScene> ScenesOf(const support::Format& format, int width, int height);

// Into a destination of every format.
std::vector<FilterScene> ScenesAcrossFormats(const support::Format& format);

// ScenesOf and ScenesAcrossFormats of every format that has channels.
std::vector<FilterScene> AllScenes();

// A scene without sharing: a random picture, nil as its destination.
FilterScene Plain(int format, int width, int height, std::uint64_t seed = 1);

// The filter under test, given a source and a destination or nil.
using Filter = std::function<Ref<Object>(const Ref<Object>& source, const Ref<Object>& destination)>;

// What it should do to the bytes.
using Reference = std::function<void(const Pixels& source, const Pixels& destination)>;

// The size of a destination that the filter makes.
struct Size {
    int width, height;
};
using SizeOfResult = std::function<Size(const Pixels& source)>;
Size SameSize(const Pixels& source);

// Whether both copies of a scene hold the same bytes.
::testing::AssertionResult SameStorage(const Pictures& actual, const Pictures& expected);

// Runs the filter in a scene and compares all bytes and the result.
void ExpectScene(const FilterScene& scene, const Filter& filter, const Reference& reference,
                 const SizeOfResult& sizeOfResult = SameSize);
void ExpectScenes(const std::vector<FilterScene>& all, const Filter& filter, const Reference& reference,
                  const SizeOfResult& sizeOfResult = SameSize);

// A reference for filters that take each pixel by itself: value(source value, channel, x, y).
Reference EachPixel(std::function<int(int value, Channel channel, int x, int y)> value);

// A reference that computes all channels of a pixel from the source as it stands when the pixel's
// turn comes, then writes them: value(source, channel, x, y).
Reference InPixelOrder(std::function<int(const Pixels& source, Channel channel, int x, int y)> value);

}  // namespace scenes
