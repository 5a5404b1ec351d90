// What a script says, as whoever runs it takes it: lines of Print, and the text that StdOut and MsgBox
// write. Where only lines are taken, text waits for the end of its line.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "host/framework/Output.h"

namespace script {

class SpokenLines {
  public:
    using Take = std::function<void(std::string_view)>;

    // Either may be empty: then nobody listens to Print, or text goes to `print` line by line.
    SpokenLines(Take print, Take write) : print_(std::move(print)), write_(std::move(write)) {}
    SpokenLines(const SpokenLines&) = delete;
    SpokenLines& operator=(const SpokenLines&) = delete;

    void Print(std::string_view line);  // without its end
    void Write(std::string_view text);

    // Hands over a line that has no end yet.
    void End();

  private:
    Take print_, write_;
    std::string begun_;  // of a line
};

}  // namespace script
