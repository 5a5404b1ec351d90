#!/usr/bin/env bash
# Installs what is missing, builds and runs every test: ./test.sh [release] [debug] [asan]
set -euo pipefail
cd "$(dirname "$0")"
. tools/packages.sh
install_packages $build_packages $test_packages $photo_packages $python_test_packages

# Which levels the digests of all members were compared at, as ctest told.
levels_run() {
    local level
    for level in plain avx2 avx512; do
        if grep -q " digests_$level .*Passed" "$1"; then
            printf '%s ran; ' "$level"
        elif grep -q " digests_$level .*Skipped" "$1"; then
            printf '%s SKIPPED, not to be had here; ' "$level"
        else
            printf '%s NOT RUN; ' "$level"
        fi
    done
}

levels=""
for preset in "${@:-release}"; do
    echo "== $preset"
    build "$preset"
    ctest --preset "$preset" -j 2 | tee "/tmp/tqx-tests-$$.log"
    levels="$levels
Levels of instructions, $preset: $(levels_run "/tmp/tqx-tests-$$.log")"
    rm -f "/tmp/tqx-tests-$$.log"
done
echo "$levels"
