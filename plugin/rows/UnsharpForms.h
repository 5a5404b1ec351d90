// The wider form of sharpening, for Unsharp.cpp alone.
#pragma once

#include "plugin/rows/Unsharp.h"
#include "plugin/rows/X86.h"

namespace rows {

// The rule itself, in doubles.
void UnsharpByRule(const UnsharpRule& rule, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples);

#ifdef ROWS_X86
// Finds the steps of a rule; false when they don't give what it gives for every pair of samples.
bool FindUnsharpSteps(const UnsharpRule& rule, UnsharpSteps* steps);

void UnsharpAvx512(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples);
#endif

}  // namespace rows
