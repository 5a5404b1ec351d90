// What holds for the yields of whole families of members.
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

// Works on two pictures, which have one size and format.
using Working = std::function<void(const Ref<Object>& first, const Ref<Object>& second)>;

// It yields once for each, however long it takes.
void ExpectOneYieldForEach(const Working& work);

// Works on one picture, in place.
using WorkingInPlace = std::function<void(const Ref<Object>& picture)>;

// Of a format: it ends where a yield closes the picture or builds it anew.
void ExpectEndWhenAYieldTakesThePicture(int format, const WorkingInPlace& work);

}  // namespace support
