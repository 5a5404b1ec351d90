// What can be said of a plug-in's records without calling anything.
#pragma once

#include <string>
#include <vector>

#include "host/objects/Class.h"

namespace host::check {

// How many were looked at, and a sentence for each fault.
struct RecordFindings {
    std::int64_t looked = 0;
    std::vector<std::string> faults;
};

// Every declaration parses, and reads the same when it is written out and read again.
RecordFindings CheckDeclarations(const std::vector<const Class*>& classes);

// Versions, flags, names and types go together.
RecordFindings CheckConsistency(const std::vector<const Class*>& classes);

// Every constant's declaration has a value, and the record's own value does not contradict it.
RecordFindings CheckConstants(const std::vector<const Class*>& classes);

}  // namespace host::check
