#!/usr/bin/env bash
# Builds the plug-in for other machines, emulates them and holds what every member gives there
# against the same digests as here: tools/elsewhere.sh [aarch64] [s390x]
#
# aarch64 has its bytes in the usual order, s390x in the other one. What a machine needs of Debian
# is unpacked below build/elsewhere; nothing foreign is installed.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $build_packages $elsewhere_packages

debian_name() {
    case $1 in
        aarch64) echo arm64 ;;
        *) echo "$1" ;;
    esac
}

# unpack_libraries MACHINE FOLDER
unpack_libraries() {
    local include
    include=$(printf '%s\n' libstdc++-12-dev $build_packages $test_packages | grep -e '-dev$' | grep -v -e python -e pybind | paste -sd ,)
    [ "$(cat "$2/.complete" 2>/dev/null)" != "$include" ] || return 0
    rm -rf "$2"
    mmdebstrap --quiet --variant=extract --arch="$(debian_name "$1")" --include="$include" \
        "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$2"
    echo "$include" >"$2/.complete"
}

# The emulator keeps notes of every page that was ever mapped: a process for each part of the tests
# holds them below a gigabyte.
shards=16

[ $# -gt 0 ] || set -- aarch64 s390x
for machine in "$@"; do
    echo "== $machine"
    folder=build/elsewhere/$machine
    mkdir -p "$folder"
    unpack_libraries "$machine" "$PWD/$folder/root"
    # Read again whenever the build configures itself anew.
    export TQX_MACHINE=$machine TQX_MACHINE_ROOT=$PWD/$folder/root
    cmake -G Ninja -S . -B "$folder/build" \
        --toolchain cmake/Elsewhere.cmake -DCMAKE_BUILD_TYPE=Release -DTQX_BENCHMARKS=OFF \
        >"$folder/configure.log" 2>&1 || { cat "$folder/configure.log"; exit 1; }
    cmake --build "$folder/build" --target digest_tests
    seq 0 $((shards - 1)) | xargs -P "$(nproc)" -I {} \
        env GTEST_TOTAL_SHARDS=$shards GTEST_SHARD_INDEX={} \
        qemu-"$machine" -L "$folder/root" "$folder/build/bin/digest_tests" --gtest_brief=1
done
