// Pictures of files, described and shown in the terminal.
#include <unistd.h>

#include "host/images/ImageReader.h"
#include "tqx/Commands.h"
#include "tqx/Output.h"
#include "tqx/TerminalPicture.h"

namespace tqx {

namespace {

// The most pixels that are handed on: more than any terminal shows. Rows and columns between are
// left out.
constexpr std::int32_t kMostAcross = 2000;

ShownPixels Read(host::ImageReader& reader) {
    const host::ImageInfo& info = reader.Info();
    const std::int32_t step = std::max(info.width, info.height) / kMostAcross + 1;
    ShownPixels pixels{(info.width + step - 1) / step, (info.height + step - 1) / step, {}};
    std::vector<std::uint8_t> row(static_cast<std::size_t>(info.width) * 4);
    for (std::int32_t y = 0; y < info.height; ++y) {
        reader.ReadRow(row.data(), host::PixelLayout::Rgba);
        if (y % step != 0) continue;
        for (std::int32_t x = 0; x < info.width; x += step)
            pixels.bytes.insert(pixels.bytes.end(), row.begin() + std::ptrdiff_t{x} * 4,
                                row.begin() + std::ptrdiff_t{x} * 4 + 4);
    }
    return pixels;
}

void Draw(const ShownPixels& pixels) {
    const TerminalSize terminal = SizeOfTerminal();
    WriteOutput(TerminalPicture(pixels, terminal.columns, terminal.rows - 2));  // the description and the prompt
}

// Outside a terminal too the whole file is read, and found to be sound.
void ShowFile(const std::string& file, bool onTerminal) {
    host::ImageReader reader(file);
    WriteLine(file + ", " + std::to_string(reader.Info().width) + " × " + std::to_string(reader.Info().height));
    const ShownPixels pixels = Read(reader);
    if (onTerminal) Draw(pixels);
}

}  // namespace

void ShowPicture(const std::string& file) {
    host::ImageReader reader(file);
    Draw(Read(reader));
}

int Show(const std::vector<std::string>& files) {
    const bool onTerminal = isatty(STDOUT_FILENO) != 0;
    bool ok = true;
    for (const std::string& file : files) {
        try {
            ShowFile(file, onTerminal);
        } catch (const host::ImageError& error) {
            Complain(std::string("tqx: ") + error.what() + '\n');
            ok = false;
        }
    }
    return ok ? 0 : 1;
}

}  // namespace tqx
