// The tick clock.
#pragma once

#include <cstdint>

namespace platform {

// Ticks of 1/60 second since the system started, modulo 2^32.
std::uint32_t TickCount();

}  // namespace platform
