#include "buffer/MappedStorage.h"

#include <algorithm>

#include "buffer/Picture.h"

namespace tqx {

namespace {

std::int64_t pageSize = 4096;

}  // namespace

void KeepPageSize(std::int64_t systemPageSize) { pageSize = std::max<std::int64_t>(systemPageSize, 4096); }

void ConstructMappedPicture(sdk::Object* self, std::int32_t, std::int32_t, std::int32_t, std::int32_t, sdk::Object*) {
    StartConstruction(self);
}

void SetMappingBlockSize(sdk::Object*, std::int32_t) {}

std::uint8_t* MappedRowAddress(PixelBuffer&, std::int32_t) { return nullptr; }

std::uint8_t* MirroredMappedRowAddress(PixelBuffer&, std::int32_t) { return nullptr; }

void ShareMapping(const PixelBuffer&, PixelBuffer&) {}

void ReleaseMapping(PixelBuffer&) {}

}  // namespace tqx
