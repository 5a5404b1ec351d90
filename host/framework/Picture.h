// The class Picture.
//
// A picture's pixels never move while it lives. Its mask, when it has one, is a picture of its
// own: black is opaque, white is clear. A mask is a part of its picture: assigning one copies it.
#pragma once

#include "host/framework/DrawingState.h"
#include "host/framework/PictureStorage.h"
#include "host/objects/Object.h"

namespace host {

class Runtime;

// A new white picture; nil when the size or the depth is not to be had.
Ref<Object> NewPicture(std::int32_t width, std::int32_t height, std::int32_t depth);

// The pixels of a picture, good for its life; null for any other object and for a picture that
// has none because its constructor did not run.
PictureStorage* StorageOf(sdk::Object* picture);

// A picture's mask, borrowed; nil when it has none.
Object* MaskOf(sdk::Object* picture);

// The mask, made when there is none: of the given size, depth 32, white.
Ref<Object> MaskOrNew(sdk::Object* picture, std::int32_t width, std::int32_t height);

// What a picture's Graphics draws with.
DrawingState& DrawingStateOf(sdk::Object* picture);

// For tests: locks of the picture's description that wait for their unlock, and how many unlocks
// of any picture came without a lock since the process started.
std::int32_t PictureLockCount(sdk::Object* picture);
std::int64_t ExcessUnlockCount();

void RegisterPicture(Runtime& runtime);

}  // namespace host
