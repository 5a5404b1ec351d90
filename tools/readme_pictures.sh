#!/usr/bin/env bash
# Installs what is missing, and makes the pictures of README.md anew: the strip by its script, and what
# the script in README.md itself makes of the photograph, 720 pixels wide.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $photo_packages

CMAKE_EXTRA="${CMAKE_EXTRA:-} -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF -DTQX_PYTHON=OFF" build release
tqx=$PWD/build/release/bin/tqx
photo=$(dpkg -L $photo_packages | grep '/seeding_by_Clements_Engelhardt\.jpg$')
"$tqx" run site/figures/strip.rbs "$photo" docs/strip.jpg

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$tqx" run site/figures/photo.rbs "$photo" "$folder/photo.jpg" 720
sed -n '/^```vb$/,/^```$/p' README.md | grep -v '^```' >"$folder/script.rbs"
(cd "$folder" && "$tqx" run script.rbs)
cp "$folder/result.jpg" docs/result.jpg
