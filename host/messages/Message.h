// What the host says when something is wrong: a text with gaps, what it means and what to do.
//
// All rows stand in the tables of this room, and the functions that tell of faults take nothing but what
// a row says; so no message can be told that docs/messages.md, which is made of the tables, doesn't have.
#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>

namespace host {

// The text of a row with its gaps filled. Only rows make one that isn't empty.
class Said {
  public:
    Said() = default;

    const std::string& text() const { return text_; }
    bool empty() const { return text_.empty(); }

    // What a row said before and was kept as a text: an error that travels as a token.
    static Said Again(std::string text) { return Said(std::move(text)); }

  private:
    friend struct Message;
    explicit Said(std::string text) : text_(std::move(text)) {}

    std::string text_;
};

struct Message {
    std::string_view text;  // … stands for names, numbers and reasons
    std::string_view meaning;
    std::string_view remedy;

    // The text with a part for each gap: texts and whole numbers.
    template <class... Parts>
    Said operator()(const Parts&... parts) const {
        return Said(Filled({Part(parts)...}));
    }

    // The same as a text.
    template <class... Parts>
    std::string Text(const Parts&... parts) const {
        return Filled({Part(parts)...});
    }

  private:
    static std::string Part(std::string_view text) { return std::string(text); }
    static std::string Part(std::integral auto number) { return std::to_string(number); }

    // A gap without a part stays; parts without a gap are dropped.
    std::string Filled(std::initializer_list<std::string> parts) const;
};

// The rows of a table, which is a struct of nothing but rows, in their order.
template <class Row = Message, class Table>
std::array<Row, sizeof(Table) / sizeof(Row)> RowsOf(const Table& table) {
    return std::bit_cast<std::array<Row, sizeof(Table) / sizeof(Row)>>(table);
}

// Whether a message is one of a row: the row's text with anything for each ….
bool Matches(std::string_view text, std::string_view message);

}  // namespace host
