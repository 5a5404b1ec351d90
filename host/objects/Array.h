// Host arrays: counted, of one element type, from index 0. The elements of several dimensions lie one row
// behind the other, the last index counting fastest; plug-ins see them so.
#pragma once

#include <cstdint>
#include <vector>

#include "host/objects/Ref.h"
#include "host/objects/Type.h"
#include "host/objects/Values.h"
#include "sdk/PluginInterface.h"

namespace host {

struct Array : sdk::Array {
    std::int32_t references;
    Type element;
    Values values;                      // each of the element type
    std::vector<std::int32_t> highest;  // of several dimensions: the highest index of each
    Array* previous;                    // among all that are alive
    Array* next;
    Array* waitsBefore;  // the next one that waits to be freed

    Array();
    ~Array();
};

inline Array* FromPlugin(sdk::Array* array) { return static_cast<Array*>(array); }

// `count` elements of the type's default value.
Ref<Array> MakeArray(const Type& element, std::size_t count = 0);
Ref<Array> MakeIntegerArray(const std::vector<std::int32_t>& values);

// The highest index; -1 for an empty array or nil.
std::int32_t UpperBound(const Array* array);

std::int64_t LiveArrayCount();
std::vector<Array*> LiveArrays();

}  // namespace host
