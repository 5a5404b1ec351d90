// A picture's bytes mapped through tables, one a channel.
#pragma once

#include "plugin/buffer/Operation.h"
#include "plugin/rows/LookUp.h"

namespace tqx {

// Tables by what they are for; null: the channel keeps the destination's bytes.
struct Curves {
    const rows::Table* red;
    const rows::Table* green;
    const rows::Table* blue;
    const rows::Table* gray;
    const rows::Table* alpha;
};

// Maps every channel of the operation's source into its destination.
void LookUpPicture(Operation& operation, const Curves& curves);

}  // namespace tqx
