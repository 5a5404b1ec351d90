#!/usr/bin/env bash
# Holds the digests of all members against the plug-in as other builds make it: by clang, and by
# both compilers without optimisation, each at every level of instructions that this machine has.
#
#     tools/digests.sh [clang++-Release] [g++-Debug] [clang++-Debug]
#
# The tests are those of the release build; only the plug-in that they load is another.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $test_packages $clang_packages

build release digest_tests | tail -1
[ $# -gt 0 ] || set -- clang++-Release g++-Debug clang++-Debug
for kind in "$@"; do
    folder=build/digests/$kind
    mkdir -p "$folder"
    cmake -G Ninja -S . -B "$folder" -DCMAKE_CXX_COMPILER="${kind%-*}" -DCMAKE_BUILD_TYPE="${kind##*-}" \
        -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF -DTQX_PYTHON=OFF >"$folder/configure.log" 2>&1 ||
        { cat "$folder/configure.log"; exit 1; }
    cmake --build "$folder" --target PictureTQX | tail -1
    for level in plain avx2 avx512; do
        echo "== $kind, $level"
        TQX_TEST_PLUGIN=$PWD/$folder/lib/tqx/PictureTQX.so TQX_CPU_LEVEL=$level \
            build/release/bin/digest_tests --gtest_brief=1 | tail -2
    done
done
