// Sliding a mapped picture's window to the rows that are asked for, from above or from below.
#include "plugin/buffer/MappedStorage.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/FileWindow.h"
#include "plugin/buffer/FilePath.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/Picture.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/buffer/ScratchFile.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr std::int64_t kRowSizeLimit = std::int64_t{1} << 31;

constexpr std::int64_t kLeastWindowRows = 5;

// Rows above the requested one that a new window holds as well.
constexpr std::int64_t kLookBehind = 2;

std::int64_t pageSize = 4096;

std::int64_t RoundUpToPages(std::int64_t bytes) { return (bytes + pageSize - 1) / pageSize * pageSize; }

// Bytes of a window, a whole number of pages. A wish below pageSize × pageSize (16 MiB with pages
// of 4 KiB) gets that much: intended.
std::int64_t WindowSize(const PixelBuffer& buffer, std::int32_t wanted) {
    std::int64_t window = std::max(wanted / pageSize, pageSize) * pageSize;
    window = std::min(window, buffer.TotalSize);
    window = std::max(window, kLeastWindowRows * buffer.RowSize);
    window = RoundUpToPages(std::max<std::int64_t>(window, 1));
    // MappingBlockSize has 32 bits. Only rows above 400 MB then get less than five to a window;
    // one always fits.
    return std::min(window, std::numeric_limits<std::int32_t>::max() / pageSize * pageSize);
}

void SetWindowSize(PixelBuffer& buffer, std::int32_t wanted) {
    buffer.MappingBlockSize = static_cast<std::int32_t>(WindowSize(buffer, wanted));
    // Rows of no bytes all fit.
    buffer.windowRows = buffer.RowSize > 0 ? buffer.MappingBlockSize / buffer.RowSize : buffer.Height;
}

// A window of which every other page at least was waited for is one that is written page by page; of
// one that is read the system brings some at once, and large ones are few. So the next few windows are taken
// for written ones too, and the one after them tells anew.
void LearnFromWindow(PixelBuffer& buffer) {
    constexpr std::int32_t kWindows = 4;
    if (buffer.windowsToBringIn > 0)
        --buffer.windowsToBringIn;
    else if (platform::PageFaults() - buffer.faultsBefore >= buffer.MappingBlockSize / pageSize / 2)
        buffer.windowsToBringIn = kWindows;
}

void UnmapWindow(PixelBuffer& buffer) {
    if (!buffer.windowMapped) return;
    LearnFromWindow(buffer);
    buffer.windowMapped = false;
    platform::UnmapFileWindow(buffer.data, std::int64_t{buffer.firstMappedRow} * buffer.RowSize,
                              buffer.MappingBlockSize);
    buffer.data = nullptr;
    buffer.firstMappedRow = buffer.lastMappedRow = -1;
}

// The storage row at which a window for `row` begins: a little above it, and so that the window
// ends with the picture's last row if it would reach past that.
std::int64_t FirstRowOfWindow(const PixelBuffer& buffer, std::int64_t row) {
    const std::int64_t above = row >= kLookBehind ? row - kLookBehind : row;
    // Unsigned, so that a picture lower than its window doesn't count.
    const std::uint32_t latest =
        static_cast<std::uint32_t>(buffer.Height) - static_cast<std::uint32_t>(buffer.windowRows);
    // Counted from the storage's top, which in a clip may leave the row below the window.
    const std::int64_t first = std::min<std::int64_t>(above, latest);
    if (row - first < buffer.windowRows) return first;
    return row - above < buffer.windowRows ? above : row;
}

// Slides the window to hold a row of the storage; false, and no window, when it can't be mapped.
// It may reach past the file's end: its memory may only be touched where the storage has rows.
bool MapWindow(PixelBuffer& buffer, std::int64_t row) {
    UnmapWindow(buffer);
    const std::int64_t first = FirstRowOfWindow(buffer, row);
    std::uint8_t* const window = platform::MapFileWindow(buffer.fileDescriptor, first * buffer.RowSize,
                                                         buffer.MappingBlockSize, buffer.windowsToBringIn > 0);
    if (!window) return false;
    buffer.faultsBefore = platform::PageFaults();
    buffer.data = window;
    buffer.firstMappedRow = Saturate(first);
    buffer.lastMappedRow = Saturate(first + buffer.windowRows - 1);
    buffer.windowMapped = true;
    return true;
}

// A view may not touch even the window it has once its file is gone: the pages went with it.
std::uint8_t* AddressOfStorageRow(PixelBuffer& buffer, std::int64_t row) {
    if (row < 0 || !StorageStands(buffer)) return nullptr;
    const bool within = buffer.windowMapped && row >= buffer.firstMappedRow && row <= buffer.lastMappedRow;
    if (!within && !MapWindow(buffer, row)) return nullptr;
    return buffer.data + (row - buffer.firstMappedRow) * buffer.RowSize;
}

// Maps the window of the picture's row 0. A clip that begins past the storage has no such row; it
// gets the storage's first window, so that it has a base like any clip in memory.
void MapFirstWindow(PixelBuffer& buffer) {
    if (RowAddress(buffer, 0) || !buffer.rowAddress || !buffer.IsMapping || buffer.windowMapped) return;
    if (StorageStands(buffer)) MapWindow(buffer, 0);
}

}  // namespace

void KeepPageSize(std::int64_t systemPageSize) { pageSize = std::max<std::int64_t>(systemPageSize, 4096); }

void ConstructMappedPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format,
                            std::int32_t blockSize, sdk::Object* folderItem) {
    PixelBuffer& buffer = StartConstruction(self);
    if (!SetUpDescriptor(&buffer, width, height, format) || width < 0 || height < 0) return;
    // Every row starts at a page, so that any row can start a window.
    const std::int64_t rowSize = RoundUpToPages(std::int64_t{width} * buffer.PixelSize);
    if (rowSize >= kRowSizeLimit) return;
    char* const path = PathOfFolderItem(folderItem);
    if (!path) return;
    const int descriptor = MakeScratchFile(path, rowSize * height, pageSize);
    if (descriptor < 0) {
        std::free(path);
        return;
    }
    buffer.mappingPath = path;
    buffer.fileDescriptor = descriptor;
    buffer.RowSize = static_cast<std::int32_t>(rowSize);
    buffer.TotalSize = rowSize * height;
    buffer.storageRows = height;
    SetWindowSize(buffer, blockSize);
    KeepObject(buffer.mappingFile, folderItem);
    buffer.IsMapping = true;
    buffer.ownsFile = true;
    buffer.rowAddress = &MappedRowAddress;
    buffer.Valid = MapWindow(buffer, 0);
}

void SetMappingBlockSize(sdk::Object* self, std::int32_t blockSize) {
    PixelBuffer& buffer = *BufferOf(self);
    if (buffer.RowSize <= 0) return;
    UnmapWindow(buffer);
    SetWindowSize(buffer, blockSize);
    MapFirstWindow(buffer);
}

std::uint8_t* MappedRowAddress(PixelBuffer& buffer, std::int32_t y) {
    return AddressOfStorageRow(buffer, StorageRow(buffer, y));
}

std::uint8_t* MirroredMappedRowAddress(PixelBuffer& buffer, std::int32_t y) {
    return AddressOfStorageRow(buffer, MirroredStorageRow(buffer, y));
}

void ShareMapping(const PixelBuffer& parent, PixelBuffer& view) {
    view.fileDescriptor = parent.fileDescriptor;
    view.MappingBlockSize = parent.MappingBlockSize;
    view.windowRows = parent.windowRows;
    view.IsMapping = true;
    MapFirstWindow(view);
}

void SlideWindow(PixelBuffer& buffer, std::int32_t y) {
    const std::int64_t row = StorageRowOf(buffer, y);
    if (row >= 0 && StorageStands(buffer)) MapWindow(buffer, row);
}

OwnWindow::OwnWindow(const PixelBuffer& buffer) : picture_(buffer) {
    picture_.ownsFile = picture_.windowMapped = false;
    picture_.data = nullptr;
    picture_.firstMappedRow = picture_.lastMappedRow = -1;
}

OwnWindow::~OwnWindow() { UnmapWindow(picture_); }

void ReleaseMapping(PixelBuffer& buffer) {
    UnmapWindow(buffer);
    if (!buffer.ownsFile || !buffer.IsMapping) return;
    DeleteScratchFile(buffer.fileDescriptor, buffer.mappingPath);
    buffer.fileDescriptor = 0;
    buffer.ownsFile = false;
}

}  // namespace tqx
