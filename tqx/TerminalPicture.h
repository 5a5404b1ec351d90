// Pictures in the terminal: in its own pixels where it has them, else in coloured characters.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tqx {

// Pixels of four bytes, red, green, blue and straight alpha, without gaps between rows.
struct ShownPixels {
    std::int32_t width;
    std::int32_t height;
    std::vector<std::uint8_t> bytes;
};

// What makes the terminal of the environment show a picture, cut to so many columns and rows of
// characters and never larger than a column a pixel: whole lines with their ends.
std::string TerminalPicture(const ShownPixels& pixels, int columns, int rows);

// The size of the terminal that standard output is, in characters: 80 × 24 where it won't say.
struct TerminalSize {
    int columns;
    int rows;
};
TerminalSize SizeOfTerminal();

}  // namespace tqx
