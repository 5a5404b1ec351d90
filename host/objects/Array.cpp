// Arrays made, counted and given back.
#include "host/objects/Array.h"

#include "host/objects/Value.h"

namespace host {

namespace {
std::int64_t liveArrays = 0;
Array* firstLive = nullptr;
}  // namespace

Array::Array() : references(1), previous(nullptr), next(firstLive), waitsBefore(nullptr) {
    if (firstLive) firstLive->previous = this;
    firstLive = this;
    ++liveArrays;
}

Array::~Array() {
    (previous ? previous->next : firstLive) = next;
    if (next) next->previous = previous;
    --liveArrays;
}

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

namespace {

// An array may hold arrays, and these more. Beyond this depth they wait for their turn, so that a
// long chain does not exhaust the stack.
constexpr int kDeepestRelease = 64;
int releaseDepth = 0;
Array* waiting = nullptr;  // without references; a list by Array::waitsBefore

}  // namespace

void Release(Array* array) noexcept {
    if (!array || --array->references > 0) return;
    if (releaseDepth == kDeepestRelease) {
        array->waitsBefore = std::exchange(waiting, array);
        return;
    }
    ++releaseDepth;
    delete array;
    while (releaseDepth == kDeepestRelease && waiting) delete std::exchange(waiting, waiting->waitsBefore);
    --releaseDepth;
}

std::int32_t UpperBound(const Array* array) { return array ? static_cast<std::int32_t>(array->values.size()) - 1 : -1; }

std::int64_t LiveArrayCount() { return liveArrays; }

std::vector<Array*> LiveArrays() {
    std::vector<Array*> arrays;
    for (Array* array = firstLive; array; array = array->next) arrays.push_back(array);
    return arrays;
}

}  // namespace host
