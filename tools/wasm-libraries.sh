#!/usr/bin/env bash
# Builds the libraries that the desk host stands on for WebAssembly, from Debian's source packages:
# tools/wasm-libraries.sh FOLDER
#
# They end up in FOLDER/root, once: a later run finds them there. Only what the host asks of each is built.
# The sources are those of the distribution's release, so the bytes that they make are those of its own libraries.
set -Eeuo pipefail
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1"
folder=$(cd "$1" && pwd)
root=$folder/root
log=$folder/build.log
sources="utf8proc libmd pcre2 zlib libpng1.6 libjpeg-turbo giflib libwebp tiff freetype harfbuzz"
. "$here/wasm-flags.sh"

# What is finished already, for a run that was broken off, unless it was compiled otherwise.
if [ "$(cat "$folder/flags" 2>/dev/null)" != "$wasm_flags" ]; then
    rm -rf "$root" "$folder/build" "$folder/done"
    echo "$wasm_flags" >"$folder/flags"
fi
mkdir -p "$folder/done"
# once NAME COMMAND...
once() {
    [ ! -e "$folder/done/$1" ] || return 0
    echo "  $1"
    "${@:2}"
    touch "$folder/done/$1"
}

mkdir -p "$root/lib/pkgconfig" "$root/include" "$folder/build" "$folder/apt/lists/partial" "$folder/apt/parts"
: >"$log"
export CFLAGS=$wasm_flags CXXFLAGS=$wasm_flags

# Sources are asked for beside what the machine has set up for packages, which stays as it is.
apt_sources() {
    apt-get -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$folder/apt/parts" \
        -o Dir::State::lists="$folder/apt/lists" "$@" >>"$log" 2>&1
}

fetch() {
    local release part name
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    for part in /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list; do
        [ -f "$part" ] || continue
        sed -e 's/^Types:.*/Types: deb-src/' -e 's/^deb /deb-src /' "$part" >"$folder/apt/parts/$(basename "$part")"
    done
    apt_sources update
    rm -rf "$folder/source"
    mkdir -p "$folder/source"
    cd "$folder/source"
    for name in $sources; do
        apt_sources source "$name" || apt_sources source -t "$release" "$name"
    done
}

# with_cmake SOURCE OPTION...
with_cmake() {
    local name=$1
    shift
    emcmake cmake -G Ninja -S "$folder"/source/"$name"-* -B "$folder/build/$name" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$root" -DCMAKE_FIND_ROOT_PATH="$root" -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
        -DBUILD_SHARED_LIBS=OFF "$@" >>"$log" 2>&1
    cmake --build "$folder/build/$name" --target install >>"$log" 2>&1
}

# from_files NAME FLAGS FILE...: a library of a few sources, which needs no configuration.
from_files() {
    local name=$1 flags=$2 file
    shift 2
    mkdir -p "$folder/build/$name"
    for file in "$@"; do
        emcc $wasm_flags -O3 $flags -c "$file" -o "$folder/build/$name/$(basename "$file").o" >>"$log" 2>&1
    done
    emar rcs "$root/lib/lib$name.a" "$folder/build/$name"/*.o
}

# describe NAME LIBRARY FLAGS: for pkg-config.
describe() {
    printf 'Name: %s\nDescription: %s\nVersion: 1\nLibs: -L%s -l%s\nCflags: -I%s %s\n' \
        "$1" "$1" "$root/lib" "$2" "$root/include" "$3" >"$root/lib/pkgconfig/$1.pc"
}

utf8proc() {
    from_files utf8proc -DUTF8PROC_STATIC utf8proc-*/utf8proc.c
    cp utf8proc-*/utf8proc.h "$root/include"
    describe libutf8proc utf8proc -DUTF8PROC_STATIC
}

md() {
    touch "$folder/build/config.h"  # nothing there concerns this digest
    from_files md "-I$(echo libmd-*/include) -I$folder/build" libmd-*/src/md5.c
    cp libmd-*/include/md5.h "$root/include"
    describe libmd md ""
}

gif() {
    from_files gif "" giflib-*/{dgif_lib,egif_lib,gif_err,gif_hash,gifalloc,openbsd-reallocarray}.c
    cp giflib-*/gif_lib.h "$root/include"
}

z() {
    from_files z "-DHAVE_UNISTD_H -DHAVE_STDARG_H" zlib-*/*.c
    cp zlib-*/{zlib,zconf}.h "$root/include"
    describe zlib z ""
}

harfbuzz() {
    from_files harfbuzz "-Os -std=c++11 -fno-exceptions -fno-rtti -DHAVE_FREETYPE -I$root/include/freetype2" \
        harfbuzz-*/src/harfbuzz.cc
    mkdir -p "$root/include/harfbuzz"
    cp harfbuzz-*/src/hb*.h "$root/include/harfbuzz"
    describe harfbuzz harfbuzz "-I$root/include/harfbuzz"
}

# Headers alone, the same for every machine.
json() {
    local folder
    for folder in $(dpkg -L nlohmann-json3-dev | grep -E '/include/nlohmann$|/cmake/nlohmann_json$'); do
        mkdir -p "$root/$(dirname "${folder#/usr/}")"
        cp -r "$folder" "$root/$(dirname "${folder#/usr/}")"
    done
}

trap 'tail -n 30 "$log" >&2' ERR
echo "Libraries for WebAssembly:"
once sources fetch
cd "$folder/source"
once utf8proc utf8proc
once md md
once gif gif
once z z
once pcre2 with_cmake pcre2 -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_BUILD_TESTS=OFF -DPCRE2_SUPPORT_UNICODE=ON
once png with_cmake libpng1.6 -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
# Sizes of types are told, since CMake can't read them out of a WebAssembly program.
once jpeg with_cmake libjpeg-turbo -DHAVE_{SIZE_T,UNSIGNED_LONG}=1 -D{SIZE_T,UNSIGNED_LONG}=4 -DENABLE_SHARED=OFF -DWITH_SIMD=OFF -DWITH_TURBOJPEG=OFF -DCMAKE_SYSTEM_PROCESSOR=wasm32
once webp with_cmake libwebp -DWEBP_BUILD_{ANIM_UTILS,CWEBP,DWEBP,GIF2WEBP,IMG2WEBP,VWEBP,WEBPINFO,WEBPMUX,EXTRAS}=OFF \
    -DWEBP_ENABLE_SIMD=OFF -DWEBP_USE_THREAD=OFF
once tiff with_cmake tiff -D{HAVE_,}SIZEOF_SIZE_T=4 -Dtiff-{tools,tests,contrib,docs}=OFF -Dcxx=OFF -D{lzma,zstd,webp,jbig,lerc,libdeflate}=OFF
once freetype with_cmake freetype -DFT_DISABLE_{BZIP2,HARFBUZZ,BROTLI,PNG}=ON
once harfbuzz harfbuzz
once json json
