// What is watched while a case runs: counts that must be the same afterwards.
#pragma once

#include <string>

#include "host/check/Children.h"

namespace host::check {

enum ComplaintKind : std::int32_t { kWrongResult, kReferences, kGuards, kYields, kExceptions };

// Counts since it was made.
class Watch {
  public:
    Watch();

    std::int64_t Objects() const;
    std::int64_t Strings() const;
    std::int64_t Arrays() const;
    std::int64_t Yields() const;
    bool LeavesNothing() const;

    // Guard bytes, references given up too often.
    Complaint Damage() const;

    // What is left alive, with the newest objects' classes; nothing when nothing is.
    Complaint LeftAlive() const;

  private:
    std::int64_t objects_, strings_, arrays_, yields_, guards_, overReleases_;
};

}  // namespace host::check
