#!/usr/bin/env bash
# Measures the plug-in beside other image libraries, on one thread and one picture:
#
#     bench/peers.sh [--level avx2|avx512] [--filter REGEX] [--runs COUNT] [--write]
#
# Without a level both are measured, one after the other; a level holds the plug-in down, and those
# peers that can be held down. Each call is set against a memcpy right before it, and the processor's
# time counts, so other work on the machine distorts little. --write makes the tables and charts of
# docs/speed.md from what build/peers/ then has.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

usage() { sed -n '2,4s/^# \{0,1\}//p' "$0" >&2; exit 2; }

levels="avx2 avx512" write="" options=()
while [ $# -gt 0 ]; do
    case $1 in
        --level) levels=${2:?} && shift ;;
        --filter | --runs) options+=("$1" "${2:?}") && shift ;;
        --write) write=yes ;;
        *) usage ;;
    esac
    shift
done

install_packages $build_packages libbenchmark-dev $peers_packages
CMAKE_EXTRA="-DTQX_BENCHMARKS=ON" build release tqx_bench >/dev/null
mkdir -p build/peers
cpu=$(taskset -cp $$ | sed 's/.*[:,-] *//')
for level in $levels; do
    # The libraries are packages of the system's own Python.
    taskset -c "$cpu" /usr/bin/python3 bench/peers/measure.py build/release/bin/tqx_bench "$level" \
        "build/peers/$level.json" "${options[@]}"
done
[ -z "$write" ] || /usr/bin/python3 bench/peers/page.py build/peers docs
