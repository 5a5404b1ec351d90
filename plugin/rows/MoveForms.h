// The wider forms of a row of moves, for Move.cpp alone. Each takes the addresses of the first
// moved bytes, moves as many pixels as it can, at least 0, and gives their number: from the left
// of the destination, and in reverse from the right of the source.
#pragma once

#include <cstdint>

#include "plugin/rows/Move.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
std::int32_t MoveAvx2(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
                      bool reversed);
std::int32_t MoveAvx512(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width,
                        bool reversed);
#endif

}  // namespace rows
