// What goes wrong while a script runs, what it means and what to do: one table, from which
// docs/messages.md is made.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace host {

struct MessageRow {
    std::string_view chapter;
    std::string_view exception;  // the class
    std::string_view text;       // … stands for names, numbers and reasons
    std::string_view meaning;
    std::string_view remedy;
    std::string_view example;  // a script that ends with it
};

std::span<const MessageRow> MessageRows();

// Whether a message is one of a row: the row's text with anything for each ….
bool Matches(const MessageRow& row, std::string_view message);

// The page, as it stands in docs/messages.md.
std::string MessagesPage();

}  // namespace host
