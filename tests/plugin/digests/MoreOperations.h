// Operations beside those of the table that all tests share: members that make pictures, and
// arguments for which the last bit of a sine, power or logarithm counts most.
#pragma once

#include <span>

#include "tests/support/PictureOperations.h"

namespace digests {

std::span<const support::PictureOperation> MoreOperations();

}  // namespace digests
