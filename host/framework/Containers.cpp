// Values in a slot of an object, and room for more of them.
#include "host/framework/Containers.h"

#include "host/calls/Call.h"
#include "host/objects/Class.h"

namespace host {

Values* ListIn(const Class& owner, sdk::Object* object, std::size_t slot) {
    Array* const list = owner.SlotsOf(FromPlugin(object))[slot].array();
    return list ? &list->values : nullptr;
}

Values& ListOrNew(const Class& owner, sdk::Object* object, std::size_t slot) {
    Value& held = owner.SlotsOf(FromPlugin(object))[slot];
    if (!held.array()) held = Value(MakeArray(TypeNamed("Variant")));
    return held.array()->values;
}

void MakeRoom(Values& list) {
    if (list.size() == list.capacity()) list.reserve(2 * list.size() + 4);
}

Value ValueIn(sdk::Object* variant) { return Unbox(Ref<Object>::Share(FromPlugin(variant))); }

}  // namespace host
