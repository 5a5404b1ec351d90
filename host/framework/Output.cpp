// Who takes what scripts say, and saying it to them.
#include "host/framework/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "host/framework/Support.h"

namespace host {

namespace {

const TextSink* current = nullptr;  // null: standard output

}  // namespace

void WriteStandardOutput(std::string_view text) {
    if (text.empty() || std::fwrite(text.data(), 1, text.size(), stdout) == text.size()) return;
    const int number = errno;
    Fail(kFilesRaise.cannotWrite("standard output", std::strerror(number)), number);
}

void WriteOutput(std::string_view text) { current ? (*current)(text) : WriteStandardOutput(text); }

OutputTo::OutputTo(TextSink sink) : sink_(std::move(sink)), before_(std::exchange(current, &sink_)) {}

OutputTo::~OutputTo() { current = before_; }

}  // namespace host
