#!/usr/bin/env bash
# Builds the playground in build/playground: the plug-in and the desk host as WebAssembly, and the page's own script.
# tools/site.sh takes it into the pages.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
. tools/wasm-flags.sh
install_packages $build_packages $playground_packages
command -v npm >/dev/null || install_packages npm

libraries=$PWD/build/wasm-libraries
tools/wasm-libraries.sh "$libraries"
PKG_CONFIG_LIBDIR=$libraries/root/lib/pkgconfig CXXFLAGS=$wasm_flags \
    emcmake cmake --preset wasm -DCMAKE_FIND_ROOT_PATH="$libraries/root" ${CMAKE_EXTRA:-} >build/wasm-configure.log 2>&1 ||
    { cat build/wasm-configure.log; exit 1; }
cmake --build --preset wasm ${@:+--target "$@"}

# The bundler and what it bundles, exactly as the lock says.
modules=build/playground-modules
mkdir -p "$modules" build/playground/fonts
if ! cmp -s site/playground/package-lock.json "$modules/built"; then
    cp site/playground/package*.json "$modules"
    npm ci --prefix "$modules" --ignore-scripts --no-audit --no-fund --loglevel=error
    cp site/playground/package-lock.json "$modules/built"
fi
NODE_PATH=$modules/node_modules "$modules/node_modules/.bin/esbuild" site/playground/page.js --bundle --minify \
    --format=iife --target=es2022 --log-level=warning --outfile=build/playground/page.js
cp build/wasm/playground/tqx.{js,wasm} build/wasm/lib/tqx/PictureTQX.{so,explain} site/playground/worker.js build/playground

fonts=$(dpkg -L fonts-dejavu-core | grep -E '/DejaVu(Sans|Serif|SansMono)(-Bold)?\.ttf$')
cp $fonts build/playground/fonts
(cd build/playground/fonts && printf '%s\n' *.ttf | sed 's/.*/"&"/' | paste -sd, | sed 's/.*/[&]/') >build/playground/fonts.json
echo "Playground: $PWD/build/playground"
