# Flags of every target. Floating point is exact: no contraction, no reassociation.
add_compile_options(-Wall -Wextra -Wshadow -Wno-missing-field-initializers -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Takes the library's own string concatenation for overlapping copies.
  add_compile_options(-Wno-restrict)
endif()
if(TQX_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
if(TQX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

find_program(CCACHE ccache)
if(CCACHE)
  # Paths relative to the tree, so that several checkouts share one cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                  ${CCACHE})
endif()

include_directories(${CMAKE_SOURCE_DIR})
if(EMSCRIPTEN)
  include_directories(BEFORE ${CMAKE_SOURCE_DIR}/cmake/wasm)
endif()
