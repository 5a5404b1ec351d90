// All messages in chapters, from which docs/messages.md is made: those of the tables in host/messages,
// and what goes wrong while a script runs.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/messages/Message.h"

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

// What is told otherwise, a table or a few to a chapter.
struct MessageChapter {
    std::string_view title;
    std::vector<Message> rows;
};

std::vector<MessageChapter> MessageChapters();

// The page, as it stands in docs/messages.md.
std::string MessagesPage();

}  // namespace host
