// Names of classes as the classes themselves spell them, where a declaration spells them otherwise.
#pragma once

#include "host/calls/Declaration.h"

namespace host {

Type SpelledType(Type type);
Declaration SpelledTypes(Declaration declaration);

}  // namespace host
