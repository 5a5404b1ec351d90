// The tick clock, by the system's monotonic one.
#include "platform/TickCount.h"

#include <ctime>

namespace platform {

std::uint32_t TickCount() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t whole = static_cast<std::uint64_t>(now.tv_sec) * 60;
    const std::uint64_t part = static_cast<std::uint64_t>(now.tv_nsec) * 60 / 1'000'000'000;
    return static_cast<std::uint32_t>(whole + part);
}

}  // namespace platform
