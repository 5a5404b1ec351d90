// The class RGBSurface: the single pixels of a picture.
#pragma once

#include "host/objects/Object.h"

namespace host {

class Runtime;

Ref<Object> NewSurface(sdk::Object* picture);

void RegisterSurface(Runtime& runtime);

}  // namespace host
