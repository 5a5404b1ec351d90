// All messages in chapters, from which docs/messages.md is made.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/messages/RunningMessages.h"

namespace host {

// A table or a few to a chapter.
template <class Row>
struct Chapter {
    std::string_view title;
    std::vector<Row> rows;
};

// What is told but for running scripts.
std::vector<Chapter<Message>> MessageChapters();

// The exceptions that end scripts.
std::vector<Chapter<RaisedMessage>> RunningChapters();

// The page, as it stands in docs/messages.md.
std::string MessagesPage();

}  // namespace host
