// Pixels in a scratch file, of which a window of consecutive rows is mapped at a time.
//
// The file is made by the picture that owns it, holds every row at a multiple of the page size,
// and is deleted when that picture closes. Every row address slides the window if it must, so an
// address is good only until the next one of the same picture. Views map windows of their own.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"

namespace tqx {

// Keeps the system's page size, raised to 4096; called once at start-up.
void KeepPageSize(std::int64_t systemPageSize);

// The constructor of a mapped picture. blockSize is the wanted size of a window in bytes.
// Invalid when the format or a size is refused, the item has no path, or the file can't be made
// and filled to its size; a file made until then is removed.
void ConstructMappedPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format,
                            std::int32_t blockSize, sdk::Object* folderItem);

// The setter of MappingBlockSize: unmaps the window, takes the new size by the constructor's rule
// and maps row 0. Does not ask whether the picture is mapped.
void SetMappingBlockSize(sdk::Object* self, std::int32_t blockSize);

// The row-address operations of mapped storage.
std::uint8_t* MappedRowAddress(PixelBuffer& buffer, std::int32_t y);
std::uint8_t* MirroredMappedRowAddress(PixelBuffer& buffer, std::int32_t y);

// Makes a view that already has its description and row-address operation share the file of
// `parent` through a window of its own, and maps that for the view's row 0.
void ShareMapping(const PixelBuffer& parent, PixelBuffer& view);

// Puts the window where a row-address operation would for row y, also when it holds that row already.
void SlideWindow(PixelBuffer& buffer, std::int32_t y);

// Another window on the rows of a mapped picture: what is written through one is read through the
// other. Rows may only be asked for while the picture has its storage.
class OwnWindow {
  public:
    explicit OwnWindow(const PixelBuffer& buffer);
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;
    ~OwnWindow();

    PixelBuffer& Picture() { return picture_; }

  private:
    PixelBuffer picture_;
};

// The mapped part of Close: unmaps the window; empties, closes and deletes a file of its own.
void ReleaseMapping(PixelBuffer& buffer);

}  // namespace tqx
