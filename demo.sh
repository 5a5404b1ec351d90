#!/usr/bin/env bash
# Installs what is missing, builds, and brightens a real photograph through the plug-in: by a script, or with
# ./demo.sh python from Python.
set -euo pipefail
cd "$(dirname "$0")"
. tools/packages.sh
with_python=OFF
[ "${1:-}" != python ] || with_python=ON
install_packages $build_packages $photo_packages

CMAKE_EXTRA="${CMAKE_EXTRA:-} -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF -DTQX_PYTHON=$with_python" build release
photo=$(dpkg -L $photo_packages | grep '/seeding_by_Clements_Engelhardt\.jpg$')
result=$PWD/build/gamma.jpg

if [ $with_python = ON ]; then
    PYTHONPATH=build/release/python /usr/bin/python3 examples/python/brighten.py "$photo" "$result"
else
    build/release/bin/tqx run examples/gamma.rbs "$photo" "$result"
fi
echo "Source: $photo"
echo "Result: $result"
