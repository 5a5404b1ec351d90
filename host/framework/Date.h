// The class Date: a moment as a place on earth with a fixed distance to Greenwich sees it.
#pragma once

#include <cstdint>

#include "host/objects/Object.h"

namespace host {

class Runtime;

// A moment, in seconds since 1970 in Greenwich, in the system's local time.
Ref<Object> NewDate(std::int64_t moment);

void RegisterDate(Runtime& runtime);

}  // namespace host
