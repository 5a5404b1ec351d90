// The JPEG library's header, which leaves it to its user to include stdio before it.
#pragma once

// clang-format off
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on
