// Text of the many encodings that strings themselves don't have.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Sound UTF-8 text as bytes of an encoding that the C library knows by this name; what the encoding
// lacks becomes '?'.
std::string EncodeAs(const char* encoding, std::string_view text);

// Bytes of such an encoding as UTF-8; a byte that is no sound text becomes U+FFFD.
std::string DecodeFrom(const char* encoding, std::string_view bytes);

}  // namespace host
