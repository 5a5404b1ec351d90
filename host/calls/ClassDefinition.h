// Reading the definition records of classes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/objects/Class.h"
#include "sdk/PluginInterface.h"

namespace host {

// The class behind a definition record, with its members read. What is wrong with the record is
// added to `problems`, each a sentence that names the member; with problems the class is null.
// Writes instanceDataOffset; event numbers start at `firstEventNumber` and are written as well.
std::unique_ptr<Class> ClassFromDefinition(sdk::ClassDefinition& definition, const Class* superclass,
                                           std::intptr_t firstEventNumber, std::vector<std::string>& problems);

// The method behind a record.
bool MethodFromRecord(const sdk::MethodRecord& record, Method& method, std::string& problem);

}  // namespace host
