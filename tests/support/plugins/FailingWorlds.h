// What the plug-in's worlds do on purpose in the module FailingWorlds, and what it did with them.
#pragma once

namespace failing_worlds {

enum class Fault {
    None,
    NoWorld,      // NewGWorld gives null
    NoPixMap,     // GetGWorldPixMap gives null
    LockRefused,  // LockPixels is false
    NullBase,     // GetPixBaseAddr is null
};

struct Record {
    Fault fault = Fault::None;
    int made = 0;  // worlds
    int disposed = 0;
    int locks = 0;  // LockPixels that succeeded less UnlockPixels, of all worlds that were disposed of
};

// Exported by the module under this name.
using RecordFunction = Record* (*)();
inline constexpr const char* kRecordFunction = "RecordOfWorlds";

}  // namespace failing_worlds
