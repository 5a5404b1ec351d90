// Where what a script says goes: standard output, unless whoever runs the script takes it.
#pragma once

#include <functional>
#include <string_view>

namespace host {

// Takes text as it comes, lines with their ends.
using TextSink = std::function<void(std::string_view)>;

// Says text.
void WriteOutput(std::string_view text);

// Raises IOException when standard output doesn't take it.
void WriteStandardOutput(std::string_view text);

// While one of these lives, what is written goes to its sink; of several, to that of the one made last.
class OutputTo {
  public:
    explicit OutputTo(TextSink sink);
    ~OutputTo();
    OutputTo(const OutputTo&) = delete;
    OutputTo& operator=(const OutputTo&) = delete;

  private:
    TextSink sink_;
    const TextSink* before_;
};

}  // namespace host
