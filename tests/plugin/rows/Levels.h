// What tests of row functions share: every instruction set of this machine, and bytes.
#pragma once

#include <vector>

#include "plugin/rows/CpuLevel.h"
#include "tests/support/Formats.h"

namespace rows_test {

using support::Bytes;
using support::Random;

// The levels that this machine has, the plain one first.
inline std::vector<rows::CpuLevel> Levels() {
    using rows::CpuLevel;
    const CpuLevel best = rows::ForceCpuLevel(CpuLevel::Avx512);
    std::vector<CpuLevel> levels;
    for (const CpuLevel level : {CpuLevel::Plain, CpuLevel::Avx2, CpuLevel::Avx512}) {
        rows::ForceCpuLevel(level);
        if (rows::ActiveCpuLevel() == level) levels.push_back(level);
    }
    rows::ForceCpuLevel(best);
    return levels;
}

// Uses a level while it lives.
class AtLevel {
  public:
    explicit AtLevel(rows::CpuLevel level) : before_(rows::ForceCpuLevel(level)) {}
    ~AtLevel() { rows::ForceCpuLevel(before_); }
    AtLevel(const AtLevel&) = delete;
    AtLevel& operator=(const AtLevel&) = delete;

  private:
    rows::CpuLevel before_;
};

}  // namespace rows_test
