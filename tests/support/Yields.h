// What holds for the yields of every member that copies the rows of one picture into another.
#pragma once

#include <functional>

#include "tests/support/PluginFixture.h"

namespace support {

// Copies the whole of `source`, which has the destination's size and format.
using Copying = std::function<void(const Ref<Object>& destination, const Ref<Object>& source)>;

// It yields for the source and for the destination before its first row, and for the destination
// after each row.
void ExpectYieldsForBothAndAfterEachRow(const Copying& copy);

// It ends where a yield closes either picture or builds it anew.
void ExpectEndWhenAYieldTakesEither(const Copying& copy);

}  // namespace support
