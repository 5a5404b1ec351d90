// Mirrors and turns of model pictures, pixel by pixel.
#pragma once

#include <algorithm>
#include <array>

#include "tests/support/Scene.h"

namespace geometry_test {

using support::Bytes;
using support::ModelPicture;

// The channels of `source` that a move takes, and where they go.
struct Moved {
    std::vector<int> from, to;
};

inline Moved ChannelsFor(const ModelPicture& source, const ModelPicture& dest) {
    Moved moved{source.Channels(), {}};
    if (source.isGray)
        moved.to = {dest.gray};
    else if (source.isRGB)
        moved.to = {dest.red, dest.green, dest.blue};
    if (!moved.to.empty() && source.hasAlpha) moved.to.push_back(dest.alpha);
    return moved;
}

using Values = std::array<std::uint8_t, 4>;

inline Values ReadChannels(const ModelPicture& picture, const std::vector<int>& offsets, std::int64_t x,
                           std::int64_t y) {
    Values values{};
    const std::uint8_t* const pixel = picture.Pixel(x, y);
    for (std::size_t i = 0; i < offsets.size(); ++i) values[i] = pixel[offsets[i]];
    return values;
}

inline void WriteChannels(const ModelPicture& picture, const std::vector<int>& offsets, std::int64_t x, std::int64_t y,
                          const Values& values) {
    std::uint8_t* const pixel = picture.Pixel(x, y);
    for (std::size_t i = 0; i < offsets.size(); ++i) pixel[offsets[i]] = values[i];
}

// Source pixel (x, y) to destination pixel (toX, toY), unless either is not there.
inline void MovePixel(const Moved& moved, const ModelPicture& source, std::int64_t x, std::int64_t y,
                      const ModelPicture& dest, std::int64_t toX, std::int64_t toY) {
    if (toX >= dest.width || toY >= dest.height || !source.Row(y) || !dest.Row(toY)) return;
    WriteChannels(dest, moved.to, toX, toY, ReadChannels(source, moved.from, x, y));
}

inline void ReferenceHMirror(const ModelPicture& p) {
    const std::vector<int> channels = p.Channels();
    for (int y = 0; y < p.height && p.Row(y); ++y)
        for (int i = 0; i < p.width / 2; ++i) {
            const Values left = ReadChannels(p, channels, i, y), right = ReadChannels(p, channels, p.width - 1 - i, y);
            WriteChannels(p, channels, i, y, right);
            WriteChannels(p, channels, p.width - 1 - i, y, left);
        }
}

// VMirror, or the half turn in place: rows through copies of rowSize bytes, in which pixels that
// reach past their end are absent.
inline void ReferenceTradeRows(const ModelPicture& p, bool reverses) {
    const std::vector<int> channels = p.Channels();
    if (channels.empty() || p.width <= 0) return;
    const int last = *std::max_element(channels.begin(), channels.end());
    const auto write = [&](std::int64_t y, const Bytes& copy) {
        for (int x = 0; x < p.width; ++x) {
            const std::int64_t from = std::int64_t{reverses ? p.width - 1 - x : x} * p.pixelSize;
            if (from + last >= p.storage->rowSize) continue;
            Values values{};
            for (std::size_t i = 0; i < channels.size(); ++i)
                values[i] = copy[static_cast<std::size_t>(from + channels[i])];
            WriteChannels(p, channels, x, y, values);
        }
    };
    for (int i = 0; i < p.height / 2; ++i) {
        const std::uint8_t* const upper = p.Row(i);
        const std::uint8_t* const lower = p.Row(p.height - 1 - i);
        if (!upper || !lower) continue;
        const Bytes first(upper, upper + p.storage->rowSize), second(lower, lower + p.storage->rowSize);
        write(i, second);
        write(p.height - 1 - i, first);
    }
}

inline void ReferenceRotate180(const ModelPicture& source, const ModelPicture& dest) {
    const Moved moved = ChannelsFor(source, dest);
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x)
            MovePixel(moved, source, source.width - 1 - x, y, dest, x, source.height - 1 - y);
}

// A quarter turn in blocks of `block` pixels; a block as large as the picture walks it by rows.
inline void ReferenceQuarter(const ModelPicture& source, const ModelPicture& dest, bool left, std::int64_t block) {
    const Moved moved = ChannelsFor(source, dest);
    for (std::int64_t y0 = 0; y0 < source.height; y0 += block)
        for (std::int64_t x0 = 0; x0 < source.width; x0 += block)
            for (std::int64_t y = y0; y < std::min<std::int64_t>(y0 + block, source.height); ++y)
                for (std::int64_t x = x0; x < std::min<std::int64_t>(x0 + block, source.width); ++x) {
                    if (left)
                        MovePixel(moved, source, x, y, dest, y, source.width - 1 - x);
                    else
                        MovePixel(moved, source, x, y, dest, source.height - 1 - y, x);
                }
}

}  // namespace geometry_test
