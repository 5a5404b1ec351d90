// One row function, and how it is done at each CpuLevel.
//
// A row function is a table: the plain form, which is its definition, and wider forms that give
// the same bytes. An operation asks the table once, before its first row. Where the compiler makes
// the wider forms out of the plain loop, LoopForms.h fills the table; where they are written by
// hand, they stand in one source for all widths, which WideForms.h compiles for each level.
#pragma once

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/X86.h"

namespace rows {

template <class Function>
struct Forms {
    Function* plain;
    Function* avx2;  // null where the build has no code for the level
    Function* avx512;

    // The form of a level, or of the highest below it.
    Function* At(CpuLevel level) const {
        if (level == CpuLevel::Avx512 && avx512) return avx512;
        return level != CpuLevel::Plain && avx2 ? avx2 : plain;
    }

    Function* Chosen() const { return At(ActiveCpuLevel()); }
};

// The plain form, and the wider ones, which have one name in rows::avx2 and rows::avx512.
#ifdef ROWS_AVX2
#define ROWS_AVX2_FORM(name) &avx2::name
#else
#define ROWS_AVX2_FORM(name) nullptr
#endif
#ifdef ROWS_AVX512
#define ROWS_AVX512_FORM(name) &avx512::name
#else
#define ROWS_AVX512_FORM(name) nullptr
#endif
#define ROWS_FORMS(plain, name) \
    { &plain, ROWS_AVX2_FORM(name), ROWS_AVX512_FORM(name) }

}  // namespace rows
