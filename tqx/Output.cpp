// Writing to standard output and remembering what failed.
#include "tqx/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "host/messages/CommandMessages.h"

namespace tqx {

namespace {

int outputError = 0;  // errno of the first failure

bool Noted(bool written) {
    if (!written && outputError == 0) outputError = errno;
    return outputError == 0;
}

// A closed stream stays unusable: it is open the wrong way.
void Occupy(int stream, int flags) {
    if (fcntl(stream, F_GETFD) == 0 || errno != EBADF) return;
    const int descriptor = open("/dev/null", flags);
    if (descriptor < 0 || descriptor == stream) return;
    dup2(descriptor, stream);
    close(descriptor);
}

}  // namespace

void SettleStandardStreams() {
    Occupy(STDIN_FILENO, O_RDONLY);
    Occupy(STDOUT_FILENO, O_RDONLY);
    Occupy(STDERR_FILENO, O_RDONLY);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

// The stream's own flag tells more than the count: a line's end may be counted that was not written.
bool WriteOutput(std::string_view text) {
    if (!text.empty()) std::fwrite(text.data(), 1, text.size(), stdout);
    return Noted(!std::ferror(stdout));
}

bool WriteLine(std::string_view line) { return WriteOutput(line) && WriteOutput("\n"); }

void Complain(std::string_view text) {
    Noted(std::fflush(stdout) == 0);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

int FinishOutput(int exitCode) {
    Noted(std::fflush(stdout) == 0);
    if (outputError == 0 && std::ferror(stdout)) outputError = EIO;  // elsewhere, some time ago
    if (outputError == 0) return exitCode;
    if (outputError != EPIPE) Complain("tqx: " + kCommandSays.output.Text(std::strerror(outputError)) + '\n');
    return exitCode == 0 ? 1 : exitCode;
}

}  // namespace tqx
