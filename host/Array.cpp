#include "host/Array.h"

#include "host/Value.h"

namespace host {

namespace {
std::int64_t liveArrays = 0;
}

Array::Array() : references(1) { ++liveArrays; }

Array::~Array() { --liveArrays; }

Ref<Array> MakeArray(const Type& element, std::size_t count) {
    auto array = Ref<Array>::Adopt(new Array);
    array->element = element;
    array->values.assign(count, DefaultOf(element));
    return array;
}

Ref<Array> MakeIntegerArray(const std::vector<std::int32_t>& values) {
    auto array = MakeArray(TypeNamed("Integer"));
    array->values.assign(values.begin(), values.end());
    return array;
}

void Retain(Array* array) {
    if (array) ++array->references;
}

void Release(Array* array) {
    if (array && --array->references == 0) delete array;
}

std::int32_t UpperBound(const Array* array) { return array ? static_cast<std::int32_t>(array->values.size()) - 1 : -1; }

std::int64_t LiveArrayCount() { return liveArrays; }

}  // namespace host
