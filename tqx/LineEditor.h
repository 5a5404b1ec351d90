// Lines typed by a person, with editing, history and completion; read as they are where standard
// input is no terminal.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tqx {

class LineEditor {
  public:
    // Gives the words that the last word of a line may become, in alphabetical order.
    using Complete = std::function<std::vector<std::string>(std::string_view line)>;

    explicit LineEditor(Complete complete);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    enum class Outcome { Line, Cancelled, End };

    // Reads a line, without its end. Cancelled: by Ctrl-C. End: of the input, by Ctrl-D.
    Outcome Read(const char* prompt, std::string& line);

    // Whether a person sits at the other end.
    bool Interactive() const { return terminal_ != nullptr; }

  private:
    struct Terminal;

    std::unique_ptr<Terminal> terminal_;
};

}  // namespace tqx
