// The class Graphics: draws into a picture, which it keeps alive.
#pragma once

#include "host/objects/Object.h"

namespace host {

class Runtime;

// Draws into a picture. What is set on it (ForeColor) belongs to the picture: all graphics of
// one picture share it. Throws std::bad_alloc.
Ref<Object> NewGraphics(sdk::Object* picture);

void RegisterGraphics(Runtime& runtime);

}  // namespace host
