#!/usr/bin/env bash
# Installs what is missing, builds and runs every test: ./test.sh [release] [debug] [asan]
set -euo pipefail
cd "$(dirname "$0")"
. tools/packages.sh
install_packages $build_packages $test_packages $photo_packages

for preset in "${@:-release}"; do
    echo "== $preset"
    build "$preset"
    ctest --preset "$preset" -j 2
done
