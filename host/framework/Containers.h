// The classes Dictionary and Collection.
//
// What a container holds lies in slots of its object, as what the objects of scripts hold does, so
// that a program's end finds those that hold each other.
#pragma once

#include "host/objects/Class.h"
#include "host/objects/Values.h"

namespace host {

class Runtime;

// The list in a slot, which must be one; null before there is any.
Values* ListIn(const Class& owner, sdk::Object* object, std::size_t slot);

// The list in a slot, made when there is none.
Values& ListOrNew(const Class& owner, sdk::Object* object, std::size_t slot);

// Takes memory for one more, in growing steps, so that adding one can't fail.
void MakeRoom(Values& list);

// What a variant of a record's function holds.
Value ValueIn(sdk::Object* variant);

void RegisterDictionary(Runtime& runtime);
void RegisterCollection(Runtime& runtime);

}  // namespace host
