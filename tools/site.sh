#!/usr/bin/env bash
# Installs what is missing and makes the pages in build/site: tools/site.sh [playground] [check]
#
# "playground" builds that page's programs before (tools/playground.sh); pages made without say so. "check" opens
# each page in a browser, and runs every script in the playground if it is there.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $photo_packages $site_packages

asked() { case " $words " in *" $1 "*) true ;; *) false ;; esac; }
words="$*"
! asked playground || tools/playground.sh

CMAKE_EXTRA="${CMAKE_EXTRA:-} -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF -DTQX_PYTHON=OFF" build release
photo=$(dpkg -L $photo_packages | grep '/seeding_by_Clements_Engelhardt\.jpg$')
/usr/bin/python3 site/make_pages.py build/release/bin/tqx "$photo" build/site-pages
TQX_VERSION=$(build/release/bin/tqx --version) mkdocs build --quiet --config-file site/mkdocs.yml
if asked check; then
    install_packages $site_check_packages
    /usr/bin/python3 site/check_pages.py build/site build/site-shots
    [ ! -e build/site/playground/tqx.wasm ] ||
        /usr/bin/python3 site/check_playground.py build/site build/release/bin/tqx build/site-shots
fi
echo "Pages: $PWD/build/site/index.html"
echo "Browsers search and run scripts only in what a server hands out: python3 -m http.server --directory build/site"
