// The digest MD5.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace host {

// The 16 bytes of the digest of some bytes (R. Rivest, The MD5 Message-Digest Algorithm, 1992).
std::array<std::uint8_t, 16> Md5(std::string_view bytes);

}  // namespace host
