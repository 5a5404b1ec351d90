# Debian packages, for demo.sh, test.sh and .ci/run to source.

python_packages="python3 python3-dev pybind11-dev python3-numpy"
build_packages="$python_packages
    g++ cmake ninja-build pkg-config ccache libffi-dev libpng-dev libjpeg62-turbo-dev libtiff-dev
    libwebp-dev libgif-dev libcli11-dev libutf8proc-dev libmd-dev libpcre2-dev nlohmann-json3-dev libchafa-dev
    libglib2.0-dev libedit-dev libfreetype-dev libharfbuzz-dev fonts-dejavu-core"
test_packages="libgtest-dev libgmock-dev libbenchmark-dev libmpfr-dev valgrind binutils python3 zsh"
wheel_packages="python3-pip python3-venv python3-skbuild python3-setuptools python3-wheel"
python_test_packages="python3-pytest python3-pil mypy python3-dask python3-distributed python3-zarr"
fuzz_packages="clang libclang-rt-14-dev"
format_packages="clang-format black"
clang_packages="clang"
elsewhere_packages="mmdebstrap qemu-user g++-aarch64-linux-gnu g++-s390x-linux-gnu"
package_packages="dpkg-dev file fakeroot"
fresh_packages="debootstrap git util-linux"
site_packages="mkdocs mkdocs-material python3"
playground_packages="emscripten nodejs dpkg-dev patch xz-utils bzip2"
site_check_packages="chromium chromium-driver python3-selenium"
peers_packages="python3-opencv python3-pil python3-numpy python3-wand python3-gi gir1.2-vips-8.0 libzimg2
    libgraphicsmagick-q16-3 util-linux"
photo_packages="lomiri-wallpapers-16.04"

# install_packages NAME...: installs what is missing. Asks for nothing where nothing is.
install_packages() {
    local missing="" package sudo=""
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
            missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    echo "Installing:$missing"
    $sudo apt-get update -qq
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

# build PRESET [TARGET...]: configures and builds.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" ${CMAKE_EXTRA:-} >"/tmp/tqx-configure-$$.log" 2>&1 ||
        { cat "/tmp/tqx-configure-$$.log"; return 1; }
    rm -f "/tmp/tqx-configure-$$.log"
    cmake --build --preset "$preset" ${@:+--target "$@"}
}
