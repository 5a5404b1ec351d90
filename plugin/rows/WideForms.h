// Compiles the source ROWS_WIDE for each wide level of the build.
//
//   #define ROWS_WIDE "plugin/rows/LookUpWide.h"
//   #include "plugin/rows/WideForms.h"
//
// The source has no includes. It stands in namespace rows::ROWS_LEVEL, where Registers.h has the
// level's registers, and is the same for all levels but for what it puts under
// `#if ROWS_LEVEL_IS_AVX512`. It uses no lambdas: they would not be compiled for the level.
#include "plugin/rows/Registers.h"

#ifdef ROWS_AVX2
ROWS_BEGIN_AVX2
#define ROWS_LEVEL avx2
#define ROWS_LEVEL_IS_AVX512 0
#include ROWS_WIDE
#undef ROWS_LEVEL
#undef ROWS_LEVEL_IS_AVX512
ROWS_END_LEVEL
#endif

#ifdef ROWS_AVX512
ROWS_BEGIN_AVX512
#define ROWS_LEVEL avx512
#define ROWS_LEVEL_IS_AVX512 1
#include ROWS_WIDE
#undef ROWS_LEVEL
#undef ROWS_LEVEL_IS_AVX512
ROWS_END_LEVEL
#endif

#undef ROWS_WIDE
