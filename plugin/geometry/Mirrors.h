// Mirrors and the half turn, in place.
//
// Only the picture's channels move; a filler byte stays with its place. Nothing happens to a
// picture that can't be used or is neither gray nor RGB. All yield for the picture first and then
// after each row or pair of rows; a pair of which one can't be had is passed over.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// Trades the pixels x and Width - 1 - x of every row.
void HMirror(sdk::Object* self);

// Trades the rows y and Height - 1 - y. Nothing happens when memory for two rows is short.
void VMirror(sdk::Object* self);

// Trades pixel (x, y) with pixel (Width - 1 - x, Height - 1 - y), but of an odd number of rows the
// middle one stays as it is. Nothing happens when memory for two rows is short.
void Rotate180(sdk::Object* self);

}  // namespace tqx
