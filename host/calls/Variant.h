// The class behind values of type Variant.
#pragma once

#include <cstdint>

namespace host {

class Runtime;

// The language's own numbers for what a variant holds, known to scripts as Variant.TypeNil and the like. That
// of an array is kTypeArray and the number of its elements' type.
enum VariantType : std::int32_t {
    kTypeNil = 0,
    kTypeInteger = 2,
    kTypeLong = 3,
    kTypeSingle = 4,
    kTypeDouble = 5,
    kTypeDate = 7,
    kTypeString = 8,
    kTypeObject = 9,
    kTypeBoolean = 11,
    kTypeColor = 16,
    kTypeArray = 4096,
};

void RegisterVariant(Runtime& runtime);

}  // namespace host
