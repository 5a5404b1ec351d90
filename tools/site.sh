#!/usr/bin/env bash
# Installs what is missing and makes the pages in build/site; with "check" as its word, opens each in
# a browser as well: tools/site.sh [check]
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $photo_packages $site_packages

CMAKE_EXTRA="${CMAKE_EXTRA:-} -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF -DTQX_PYTHON=OFF" build release
photo=$(dpkg -L $photo_packages | grep '/seeding_by_Clements_Engelhardt\.jpg$')
/usr/bin/python3 site/make_pages.py build/release/bin/tqx "$photo" build/site-pages
TQX_VERSION=$(build/release/bin/tqx --version) mkdocs build --quiet --config-file site/mkdocs.yml
if [ "${1:-}" = check ]; then
    install_packages $site_check_packages
    /usr/bin/python3 site/check_pages.py build/site build/site-shots
fi
echo "Pages: $PWD/build/site/index.html"
