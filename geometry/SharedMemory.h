// Whether whole pictures lie in the same memory, whatever their channels: an intermediate picture has
// none.
#pragma once

#include "buffer/PixelBuffer.h"

namespace tqx {

// False only if nothing written to one picture can show in the other: they are no views of the
// same picture, their bytes don't overlap, and they don't map the same file. Pictures around
// memory blocks that lie next to each other may be taken for sharing.
bool MayShareMemory(const PixelBuffer& a, const PixelBuffer& b);

}  // namespace tqx
