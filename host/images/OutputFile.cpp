// A temporary file beside the wanted one, renamed over it when it is complete.
#include "host/images/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

#include "host/images/Codec.h"

namespace host::codec {

namespace {

constexpr std::size_t kBufferBytes = 64 << 10;

// As many as the system itself follows.
constexpr int kMostLinks = 40;

[[noreturn]] void FailSystem(int error) { FailFile(kImageFileSays.cannotWrite(std::strerror(error))); }

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

// The file that a name leads to: itself, or what a symbolic link points at. The system's own
// function for this knows no file that doesn't exist yet.
std::string FollowLinks(std::string path) {
    for (int i = 0; i < kMostLinks; ++i) {
        char text[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), text, sizeof text);
        if (length < 0) return path;
        const std::string next(text, static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : FolderOf(path) + next;
    }
    FailSystem(ELOOP);
}

// Whether there is a file already. One that nobody may write to is refused for the superuser too:
// who made it read-only wants to keep it.
bool FindOlder(const std::string& path, struct stat& status) {
    if (stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) FailSystem(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode))
        FailFile(S_ISDIR(status.st_mode) ? kImageFileSays.folder() : kImageFileSays.notOrdinary());
    if ((status.st_mode & 0222) == 0) FailFile(kImageFileSays.readOnly());
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) FailSystem(errno);
    return true;
}

mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : target_(FollowLinks(path)), buffer_(kBufferBytes) {
    try {
        MakeTemporary();
        OpenStream();
    } catch (...) {
        Close();
        throw;
    }
}

OutputFile::~OutputFile() { Close(); }

void OutputFile::MakeTemporary() {
    struct stat older {};
    const bool exists = FindOlder(target_, older);
    // Short, so that a name of any length has room for it.
    std::string name = FolderOf(target_) + ".tqx-XXXXXX";
    file_ = platform::MakeScratchFile(name, kept_);
    if (file_ < 0) FailSystem(errno);
    temporary_ = std::move(name);
    // What the system doesn't allow, or the file system doesn't know, is left as it is.
    if (exists && fchown(file_, older.st_uid, older.st_gid) != 0) errno = 0;
    fchmod(file_, exists ? older.st_mode & 0777 : NewFileMode());
}

void OutputFile::OpenStream() {
    stream_ = fopencookie(this, "wb+", {OnRead, OnWrite, OnSeek, nullptr});
    if (!stream_) throw std::bad_alloc();
    std::setvbuf(stream_, buffer_.data(), _IOFBF, buffer_.size());
}

void OutputFile::Check() const {
    if (error_ != 0) FailSystem(error_);
}

void OutputFile::Complete() {
    std::fclose(std::exchange(stream_, nullptr));
    Check();
    // Some file systems tell only now that there was no room.
    if (close(std::exchange(file_, -1)) != 0 || rename(temporary_.c_str(), target_.c_str()) != 0) FailSystem(errno);
    temporary_.clear();
    kept_.Forget();
}

void OutputFile::Close() {
    if (stream_) std::fclose(std::exchange(stream_, nullptr));
    if (file_ >= 0) close(std::exchange(file_, -1));
    if (!temporary_.empty()) unlink(temporary_.c_str());
    temporary_.clear();
    kept_.Forget();
}

ssize_t OutputFile::OnRead(void* self, char* bytes, std::size_t count) {
    auto* file = static_cast<OutputFile*>(self);
    const ssize_t got = read(file->file_, bytes, count);
    if (got < 0 && file->error_ == 0) file->error_ = errno;
    return got;
}

// The stream takes what is less than the count as a failure.
ssize_t OutputFile::OnWrite(void* self, const char* bytes, std::size_t count) {
    auto* file = static_cast<OutputFile*>(self);
    std::size_t done = 0;
    while (done < count && file->error_ == 0) {
        const ssize_t written = write(file->file_, bytes + done, count - done);
        if (written > 0) done += static_cast<std::size_t>(written);
        if (written == 0) file->error_ = EIO;
        if (written < 0 && errno != EINTR) file->error_ = errno;
    }
    return static_cast<ssize_t>(done);
}

int OutputFile::OnSeek(void* self, off64_t* place, int from) {
    auto* file = static_cast<OutputFile*>(self);
    const off_t now = lseek(file->file_, *place, from);
    if (now < 0 && file->error_ == 0) file->error_ = errno;
    if (now >= 0) *place = now;
    return now < 0 ? -1 : 0;
}

}  // namespace host::codec
