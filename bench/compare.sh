#!/usr/bin/env bash
# Builds two commits and runs their benchmarks by turns:
#
#     bench/compare.sh OLD NEW [--runs COUNT] [--filter REGEX]
#
# A benchmark has lost only where the best new run is below the worst old one, and gained only where
# the worst new run is above the best old one: whatever else the machine does falls on both. Where
# a benchmark measures a memcpy beside itself, parts of that are compared, else calls a second.
# Exit code: 0, 1 with losses, 2 for wrong words.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

usage() { sed -n '2,4s/^# \{0,1\}//p' "$0" >&2; exit 2; }

[ $# -ge 2 ] || usage
commits=("$1" "$2") runs=7 filter=.
shift 2
while [ $# -gt 0 ]; do
    case $1 in
        --runs) runs=${2:?} ;;
        --filter) filter=${2:?} ;;
        *) usage ;;
    esac
    shift 2
done

install_packages $build_packages libbenchmark-dev python3

# checkout COMMIT FOLDER: the commit, built, in a clone that later comparisons use again.
checkout() {
    local commit
    commit=$(git rev-parse --verify "$1^{commit}")
    [ -d "$2" ] || git clone --quiet . "$2"
    git -C "$2" fetch --quiet origin "$commit" 2>/dev/null || true
    git -C "$2" checkout --quiet "$commit"
    (cd "$2" && CMAKE_EXTRA="-DTQX_TESTS=OFF -DTQX_BENCHMARKS=ON" build release tqx_bench)
}

work=build/compare
mkdir -p "$work"
checkout "${commits[0]}" "$work/old"
checkout "${commits[1]}" "$work/new"
rm -f "$work"/*.json
for run in $(seq "$runs"); do
    for side in old new; do
        echo "Run $run of $runs, $side"
        "$work/$side/build/release/bin/tqx_bench" --benchmark_filter="$filter" --benchmark_format=json \
            >"$work/$side-$run.json"
    done
done
tools/speed-compare.py "$work"
