// Access to memory whose extent the host does not know, without a crash where there is none.
#pragma once

#include <cstddef>

namespace host {

// Copies bytes from or to an address of this process. False, with nothing or only a first part
// copied, when the address is not mapped or not to be written to.
bool ReadForeign(const void* address, void* result, std::size_t length);
bool WriteForeign(void* address, const void* bytes, std::size_t length);

}  // namespace host
