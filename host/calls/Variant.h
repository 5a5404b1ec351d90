// The class behind values of type Variant.
#pragma once

namespace host {

class Runtime;

void RegisterVariant(Runtime& runtime);

}  // namespace host
