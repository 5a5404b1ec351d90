// Scratch files with pictures in them, and the process's own list of mappings.
#include "tests/support/MappedPictures.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/framework/FolderItem.h"

namespace support {

namespace {

// The system names an open file that has no name any more by its last one and this.
constexpr std::string_view kDeleted = " (deleted)";

bool Names(std::string_view shown, const std::string& path) {
    if (shown.ends_with(kDeleted)) shown.remove_suffix(kDeleted.size());
    return shown == path;
}

}  // namespace

Ref<Object> FolderItemOf(const std::string& path) { return host::NewFolderItem(path); }

Ref<Object> NewMapped(const std::string& path, int width, int height, int format, int blockSize) {
    return New("PictureTQX", width, height, format, blockSize, FolderItemOf(path));
}

int OpenDescriptorsOf(const std::string& path) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the descriptor of the listing itself
        const auto target = std::filesystem::read_symlink(entry.path(), gone);
        if (!gone && Names(target.string(), path)) ++count;
    }
    return count;
}

int MappingsOf(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        const auto slash = line.find('/');
        if (slash != std::string::npos && Names(std::string_view(line).substr(slash), path)) ++count;
    }
    return count;
}

Bytes ReadFile(const std::string& path, std::int64_t position, std::size_t count) {
    Bytes bytes(count);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t got = file < 0 ? 0 : pread(file, bytes.data(), count, position);
    if (file >= 0) close(file);
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

void WriteFile(const std::string& path, std::int64_t position, const Bytes& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0) << path;
    EXPECT_EQ(pwrite(file, bytes.data(), bytes.size(), position), static_cast<ssize_t>(bytes.size()));
    close(file);
}

}  // namespace support
