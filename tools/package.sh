#!/usr/bin/env bash
# Installs what is missing, and makes Debian's packages and the archive in build/packages; with "check"
# as its word, has lintian look at them.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $package_packages

# Where Debian has things; the archive has the same shape.
now=-Wl,-z,relro,-z,now
cmake -G Ninja -S . -B build/package -DCMAKE_BUILD_TYPE=Release -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF \
    -DTQX_PYTHON=ON -DTQX_DEBIAN=ON -DCMAKE_INSTALL_LIBDIR=lib -DTQX_ZSH_FOLDER=share/zsh/vendor-completions \
    -DCMAKE_EXE_LINKER_FLAGS=$now -DCMAKE_MODULE_LINKER_FLAGS=$now \
    -DTQX_PYTHON_FOLDER=lib/python3/dist-packages/tqx ${CMAKE_EXTRA:-}
cmake --build build/package
rm -rf build/packages
cpack --config build/package/CPackConfig.cmake -B build/packages
rm -rf build/packages/_CPack_Packages
if [ "${1:-}" = check ]; then
    install_packages lintian
    lintian --allow-root --fail-on error,warning build/packages/*.deb
fi
ls build/packages/*
