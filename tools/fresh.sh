#!/usr/bin/env bash
# Proves on bare Debian machines, made below build/fresh, what README says: tools/fresh.sh [build] [packages]
#
#   build      in a clone, ./demo.sh and ./test.sh
#   packages   those that tools/package.sh makes, installed; the archive, unpacked; a plug-in, built
#
# Without a word both. Needs root, for the machines are folders to chroot into; their packages come from
# where this machine's do. Of the environment they get CMAKE_EXTRA and, as a cache of compilations, the
# folder CCACHE_DIR.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
install_packages $fresh_packages

suite=$(. /etc/os-release && echo "$VERSION_CODENAME")

# make_machine NAME: a bare Debian in build/fresh/NAME, copied from one that is kept.
make_machine() {
    local bare=build/fresh/bare mirror
    if [ ! -e "$bare/.complete" ]; then
        rm -rf "$bare"
        mkdir -p "$bare"
        mirror=$(apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' "Created-By: Packages" |
            awk -v suite="$suite" '$1 == suite && $2 == "main" { print $3; exit }')
        debootstrap --variant=minbase "$suite" "$bare" "$mirror" >build/fresh/debootstrap.log ||
            { tail build/fresh/debootstrap.log; return 1; }
        touch "$bare/.complete"
    fi
    rm -rf "build/fresh/$1"
    cp -a "$bare" "build/fresh/$1"
    cp /etc/resolv.conf "build/fresh/$1/etc/resolv.conf"
    apt-config dump Acquire >"build/fresh/$1/etc/apt/apt.conf.d/90fetch"
}

# on_machine NAME COMMAND: runs a shell's command there. Whatever is mounted for it goes with it.
on_machine() {
    unshare --mount --pid --fork --kill-child -- bash -euc '
        root=$1
        mount -t proc proc "$root/proc"
        mount --rbind /dev "$root/dev"
        if [ -n "${CCACHE_DIR:-}" ]; then
            mkdir -p "$root/ccache"
            mount --bind "$CCACHE_DIR" "$root/ccache"
        fi
        exec chroot "$root" env -i HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
            PATH=/usr/sbin:/usr/bin:/sbin:/bin CMAKE_EXTRA="${CMAKE_EXTRA:-}" \
            ${CCACHE_DIR:+CCACHE_DIR=/ccache} bash -euc "$2"' bash "$PWD/build/fresh/$1" "$2"
}

prove_build() {
    make_machine build
    git clone --quiet . build/fresh/build/root/picturetqx
    on_machine build 'cd /root/picturetqx && ./demo.sh && ./test.sh'
}

prove_packages() {
    tools/package.sh
    make_machine packages
    cp -r build/packages tools/use_packages.sh build/fresh/packages/root/
    on_machine packages 'cd /root && ./use_packages.sh'
}

for proof in ${@:-build packages}; do
    echo "== $proof"
    "prove_$proof"
done
echo "All of it works on a bare $suite: ${*:-build packages}."
