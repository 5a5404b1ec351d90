// The library's virtual arrays, kept in a file through a window in memory.
#include "host/images/JpegCoefficients.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace host::codec {

namespace {

// Large enough that the system's calls don't count beside what is done with the rows.
constexpr std::size_t kWindowBytes = 4 << 20;

// What lies behind the file's end is zero.
bool ReadAt(int file, void* bytes, std::size_t length, std::int64_t place) {
    auto* to = static_cast<std::uint8_t*>(bytes);
    while (length > 0) {
        const ssize_t got = pread(file, to, length, place);
        if (got < 0) return false;
        if (got == 0) break;
        to += got, length -= static_cast<std::size_t>(got), place += got;
    }
    std::fill_n(to, length, std::uint8_t{0});
    return true;
}

bool WriteAt(int file, const void* bytes, std::size_t length, std::int64_t place) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    while (length > 0) {
        const ssize_t put = pwrite(file, from, length, place);
        if (put <= 0) return false;
        from += put, length -= static_cast<std::size_t>(put), place += put;
    }
    return true;
}

}  // namespace

struct JpegCoefficients::Array {
    int file;
    std::int64_t place;  // of row 0 in the file
    JDIMENSION blocksAcross;
    JDIMENSION rows;
    LazyBytes window;
    std::vector<JBLOCKROW> addresses;  // of the window's rows
    JDIMENSION first = 0;              // row in the window
    bool loaded = false;
    bool dirty = false;

    std::int64_t RowBytes() const { return std::int64_t{blocksAcross} * static_cast<std::int64_t>(sizeof(JBLOCK)); }
    std::int64_t PlaceOf(JDIMENSION row) const { return place + row * RowBytes(); }

    // Rows of the window that the array has.
    std::size_t WindowBytes() const {
        return std::min<std::size_t>(addresses.size(), rows - first) * static_cast<std::size_t>(RowBytes());
    }

    bool Store() {
        const bool stored = !dirty || WriteAt(file, window.data(), WindowBytes(), PlaceOf(first));
        dirty = false;
        return stored;
    }

    bool MoveTo(JDIMENSION row) {
        if (!Store()) return false;
        first = row;
        loaded = ReadAt(file, window.data(), WindowBytes(), PlaceOf(first));
        return loaded;
    }
};

JpegCoefficients::JpegCoefficients() = default;

JpegCoefficients::~JpegCoefficients() {
    if (file_ >= 0) close(file_);
}

bool JpegCoefficients::OpenFile() {
    if (file_ >= 0) return true;
    std::error_code error;
    std::string folder = std::filesystem::temp_directory_path(error).string();
    if (error) folder = "/tmp";
    file_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file_ < 0) {
        // Not every file system knows files without a name.
        std::string name = folder + "/tqx-jpeg-XXXXXX";
        file_ = mkostemp(name.data(), O_CLOEXEC);
        if (file_ >= 0) unlink(name.c_str());
    }
    return file_ >= 0;
}

jvirt_barray_ptr JpegCoefficients::Request(JDIMENSION blocksAcross, JDIMENSION rows, JDIMENSION mostRows) noexcept try {
    if (!OpenFile()) return nullptr;
    auto array = std::make_unique<Array>(Array{file_, end_, blocksAcross, rows, LazyBytes(), {}});
    const auto rowBytes = static_cast<std::size_t>(array->RowBytes());
    const auto fitting = static_cast<JDIMENSION>(kWindowBytes / rowBytes);
    const JDIMENSION windowRows = std::max(std::min(fitting, rows), mostRows);
    array->window = LazyBytes(windowRows * rowBytes);
    for (JDIMENSION row = 0; row < windowRows; ++row)
        array->addresses.push_back(reinterpret_cast<JBLOCKROW>(array->window.data() + row * rowBytes));
    end_ += rows * array->RowBytes();
    arrays_.push_back(std::move(array));
    return reinterpret_cast<jvirt_barray_ptr>(arrays_.back().get());
} catch (const std::exception&) {
    return nullptr;
}

JBLOCKARRAY JpegCoefficients::Access(jvirt_barray_ptr handle, JDIMENSION first, JDIMENSION count,
                                     bool writable) noexcept {
    auto& array = *reinterpret_cast<Array*>(handle);
    if (count > array.addresses.size() || first > array.rows || count > array.rows - first) return nullptr;
    const bool inside = array.loaded && first >= array.first && first + count <= array.first + array.addresses.size();
    if (!inside && !array.MoveTo(first)) return nullptr;
    array.dirty |= writable;
    return array.addresses.data() + (first - array.first);
}

}  // namespace host::codec
