// Pictures through libchafa.
#include "tqx/TerminalPicture.h"

#include <chafa.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace tqx {

namespace {

// A character is about twice as high as it is wide.
constexpr float kCharacterShape = 0.5F;

template <auto Release>
struct Releaser {
    template <class Held>
    void operator()(Held* held) const {
        Release(held);
    }
};

using TermInfo = std::unique_ptr<ChafaTermInfo, Releaser<chafa_term_info_unref>>;
using Symbols = std::unique_ptr<ChafaSymbolMap, Releaser<chafa_symbol_map_unref>>;
using Config = std::unique_ptr<ChafaCanvasConfig, Releaser<chafa_canvas_config_unref>>;
using Canvas = std::unique_ptr<ChafaCanvas, Releaser<chafa_canvas_unref>>;

TermInfo TerminalOfEnvironment() {
    char** const environment = g_get_environ();
    TermInfo info(chafa_term_db_detect(chafa_term_db_get_default(), environment));
    g_strfreev(environment);
    return info;
}

ChafaCanvasMode ColoursOf(const ChafaTermInfo& info) {
    if (chafa_term_info_have_seq(&info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_DIRECT)) return CHAFA_CANVAS_MODE_TRUECOLOR;
    if (chafa_term_info_have_seq(&info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_256)) return CHAFA_CANVAS_MODE_INDEXED_240;
    if (chafa_term_info_have_seq(&info, CHAFA_TERM_SEQ_SET_COLOR_FGBG_16)) return CHAFA_CANVAS_MODE_INDEXED_16;
    return CHAFA_CANVAS_MODE_FGBG;
}

ChafaPixelMode PixelsOf(const ChafaTermInfo& info) {
    if (chafa_term_info_have_seq(&info, CHAFA_TERM_SEQ_BEGIN_KITTY_IMMEDIATE_IMAGE_V1)) return CHAFA_PIXEL_MODE_KITTY;
    if (chafa_term_info_have_seq(&info, CHAFA_TERM_SEQ_BEGIN_SIXELS)) return CHAFA_PIXEL_MODE_SIXELS;
    return CHAFA_PIXEL_MODE_SYMBOLS;
}

Config ConfigFor(const ShownPixels& pixels, const ChafaTermInfo& info, int columns, int rows) {
    int across = std::clamp<int>(columns, 1, std::max(pixels.width, 1));
    int down = std::max(rows, 1);
    chafa_calc_canvas_geometry(pixels.width, pixels.height, &across, &down, kCharacterShape, FALSE, FALSE);
    const Symbols symbols(chafa_symbol_map_new());
    chafa_symbol_map_add_by_tags(symbols.get(),
                                 static_cast<ChafaSymbolTags>(CHAFA_SYMBOL_TAG_BLOCK | CHAFA_SYMBOL_TAG_SPACE));
    Config config(chafa_canvas_config_new());
    chafa_canvas_config_set_geometry(config.get(), across, down);
    chafa_canvas_config_set_canvas_mode(config.get(), ColoursOf(info));
    chafa_canvas_config_set_pixel_mode(config.get(), PixelsOf(info));
    chafa_canvas_config_set_symbol_map(config.get(), symbols.get());
    return config;
}

}  // namespace

std::string TerminalPicture(const ShownPixels& pixels, int columns, int rows) {
    const TermInfo info = TerminalOfEnvironment();
    const Config config = ConfigFor(pixels, *info, columns, rows);
    const Canvas canvas(chafa_canvas_new(config.get()));
    chafa_canvas_draw_all_pixels(canvas.get(), CHAFA_PIXEL_RGBA8_UNASSOCIATED, pixels.bytes.data(), pixels.width,
                                 pixels.height, pixels.width * 4);
    GString* const printed = chafa_canvas_print(canvas.get(), info.get());
    std::string text(printed->str, printed->len);
    g_string_free(printed, TRUE);
    return text + '\n';
}

TerminalSize SizeOfTerminal() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {80, 24};
    return {size.ws_col, size.ws_row};
}

}  // namespace tqx
