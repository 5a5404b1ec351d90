#!/bin/sh
# Feeds what reads files and scripts with any bytes, under the sanitizers:
#
#   tools/fuzz.sh run 600            programs are compiled and run, for ten minutes
#   tools/fuzz.sh png 60             a minute of damaged PNG files
#
# The first word is one of fuzz/CMakeLists.txt. What is found lies in build/fuzz/found.
set -e
cd "$(dirname "$0")/.."
. tools/packages.sh
name=${1:?"run, script, declaration, png, jpeg, tiff, webp, gif, bmp or pnm"} seconds=${2:-600}
install_packages $build_packages $fuzz_packages
cmake -B build/fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQX_SANITIZE=ON \
    -DTQX_FUZZERS=ON -DTQX_TESTS=OFF -DTQX_BENCHMARKS=OFF >/dev/null
cmake --build build/fuzz --target "${name}_fuzzer"
mkdir -p "build/fuzz/found/$name"
limits="-timeout=2 -rss_limit_mb=160 -malloc_limit_mb=100" words=""
case $name in
run) limits="-timeout=20 -rss_limit_mb=2000" words="-dict=fuzz/script.dict" ;;
script) limits="-timeout=20 -rss_limit_mb=2000" words="-dict=fuzz/script.dict" ;;
esac
# shellcheck disable=SC2086
ASAN_OPTIONS=quarantine_size_mb=4:allocator_may_return_null=1:max_allocation_size_mb=256 \
    build/fuzz/bin/"${name}_fuzzer" -max_total_time="$seconds" -max_len=6000 $limits $words -print_final_stats=1 \
    -artifact_prefix="build/fuzz/found/$name-" "build/fuzz/found/$name" "fuzz/corpus/$name"
