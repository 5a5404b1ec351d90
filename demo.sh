#!/usr/bin/env bash
# Installs what is missing, builds, and brightens a real photograph through the plug-in.
set -euo pipefail
cd "$(dirname "$0")"
. tools/packages.sh
install_packages $build_packages $photo_packages

CMAKE_EXTRA="${CMAKE_EXTRA:-} -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF" build release
photo=$(dpkg -L $photo_packages | grep '/seeding_by_Clements_Engelhardt\.jpg$')
result=$PWD/build/gamma.jpg

build/release/bin/tqx run examples/gamma.rbs "$photo" "$result"
echo "Source: $photo"
echo "Result: $result"
