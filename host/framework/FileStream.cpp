// Reads and writes through the C library's streams, turning between the two.
#include "host/framework/FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/framework/Support.h"

namespace host {

namespace {

constexpr std::int64_t kPart = 1 << 16;  // bytes read at once

struct ModeRow {
    int flags;
    const char* mode;
};

ModeRow RowOf(FileStream::Mode mode) {
    switch (mode) {
        case FileStream::Mode::Read:
            return {O_RDONLY, "rb"};
        case FileStream::Mode::ReadWrite:
            return {O_RDWR, "rb+"};
        case FileStream::Mode::Create:
            return {O_RDWR | O_CREAT | O_TRUNC, "wb+"};
        case FileStream::Mode::CreateNew:
            return {O_RDWR | O_CREAT | O_EXCL, "wb+"};
        case FileStream::Mode::Append:
            return {O_RDWR | O_CREAT | O_APPEND, "ab+"};
    }
    return {O_RDONLY, "rb"};
}

}  // namespace

FileStream::FileStream(const std::string& path, Mode mode)
    : path_(path), file_(nullptr), writable_(mode != Mode::Read) {
    const ModeRow row = RowOf(mode);
    const int descriptor = open(path.c_str(), row.flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) FailSystem(kFilesRaise.cannotOpen);
    struct stat status {};
    const bool ordinary = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (ordinary) file_ = fdopen(descriptor, row.mode);
    if (file_) return;
    close(descriptor);
    if (!ordinary) Fail(S_ISDIR(status.st_mode) ? kFilesRaise.folder(path_) : kFilesRaise.notOrdinary(path_));
    throw std::bad_alloc();
}

FileStream::~FileStream() {
    if (file_ && !borrowed_) std::fclose(file_);
}

std::FILE* FileStream::Open() const {
    if (!file_) Fail(kFilesRaise.closed(path_));
    return file_;
}

std::FILE* FileStream::OpenForWriting() const {
    std::FILE* const file = Open();
    if (!writable_) Fail(kFilesRaise.readOnly(path_));
    return file;
}

// Between reading and writing the position has to be set anew.
void FileStream::Turn(Last next) {
    if (last_ != Last::None && last_ != next) std::fseek(Open(), 0, SEEK_CUR);
    last_ = next;
}

void FileStream::FailSystem(const RaisedMessage& what) const {
    const int number = errno;
    Fail(what(path_, std::strerror(number)), number);
}

std::string FileStream::Read(std::int64_t count) {
    std::FILE* file = Open();
    Turn(Last::Read);
    std::string bytes;
    // In parts, so that a count far beyond the file takes no memory.
    while (count > 0) {
        const auto part = static_cast<std::size_t>(std::min(count, kPart));
        const std::size_t before = bytes.size();
        if (before > kMostStringBytes) throw std::bad_alloc();  // more than a string holds
        bytes.resize(before + part);
        const std::size_t got = std::fread(bytes.data() + before, 1, part, file);
        bytes.resize(before + got);
        if (std::ferror(file)) FailSystem(kFilesRaise.cannotRead);
        if (got < part) break;
        count -= static_cast<std::int64_t>(part);
    }
    return bytes;
}

std::string FileStream::ReadAll() { return Read(INT64_MAX); }

bool FileStream::ReadLine(std::string& line) {
    std::FILE* file = Open();
    Turn(Last::Read);
    line.clear();
    int c = std::getc(file);
    if (c == EOF && std::ferror(file)) FailSystem(kFilesRaise.cannotRead);
    if (c == EOF) return false;
    for (; c != EOF && c != '\n' && c != '\r'; c = std::getc(file)) {
        if (line.size() >= kMostStringBytes) throw std::bad_alloc();
        line.push_back(static_cast<char>(c));
    }
    if (c != '\r') return true;
    const int next = std::getc(file);
    if (next != '\n' && next != EOF) std::ungetc(next, file);
    return true;
}

void FileStream::Write(std::string_view bytes) {
    std::FILE* file = OpenForWriting();
    Turn(Last::Write);
    if (bytes.empty()) return;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) FailSystem(kFilesRaise.cannotWrite);
}

bool FileStream::AtEnd() {
    std::FILE* file = Open();
    Turn(Last::Read);
    const int c = std::getc(file);
    if (c == EOF) return true;
    std::ungetc(c, file);
    return false;
}

std::int64_t FileStream::Position() { return ftello(Open()); }

void FileStream::SetPosition(std::int64_t position) {
    if (fseeko(Open(), std::max<std::int64_t>(position, 0), SEEK_SET) != 0) FailSystem(kFilesRaise.cannotPosition);
    last_ = Last::None;
}

std::int64_t FileStream::Length() {
    struct stat status {};
    if (std::fflush(Open()) != 0 || fstat(fileno(file_), &status) != 0) FailSystem(kFilesRaise.cannotMeasure);
    return status.st_size;
}

void FileStream::SetLength(std::int64_t length) {
    if (std::fflush(OpenForWriting()) != 0 || ftruncate(fileno(file_), std::max<std::int64_t>(length, 0)) != 0)
        FailSystem(kFilesRaise.cannotResize);
}

void FileStream::Close() {
    if (file_ && std::fclose(std::exchange(file_, nullptr)) != 0) FailSystem(kFilesRaise.cannotWrite);
}

}  // namespace host
