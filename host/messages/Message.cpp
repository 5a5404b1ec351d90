// A row's gaps filled, and texts matched with rows.
#include "host/messages/Message.h"

namespace host {

namespace {

constexpr std::string_view kGap = "…";

}  // namespace

std::string Message::Filled(std::initializer_list<std::string> parts) const {
    std::string filled;
    std::string_view rest = text;
    for (const std::string& part : parts) {
        const std::size_t gap = rest.find(kGap);
        if (gap == std::string_view::npos) break;
        filled += std::string(rest.substr(0, gap)) + part;
        rest.remove_prefix(gap + kGap.size());
    }
    return filled += rest;
}

bool Matches(std::string_view text, std::string_view message) {
    bool anything = false;  // a … stands before the piece
    for (;;) {
        const std::size_t gap = text.find(kGap);
        const std::string_view piece = text.substr(0, gap);
        const bool last = gap == std::string_view::npos;
        const std::size_t at = !anything ? 0 : last ? message.rfind(piece) : message.find(piece);
        if (at == std::string_view::npos || message.substr(at, piece.size()) != piece) return false;
        message.remove_prefix(at + piece.size());
        if (last) return message.empty();
        text.remove_prefix(gap + kGap.size());
        anything = true;
    }
}

}  // namespace host
