#!/usr/bin/env bash
# Builds what ships twice, from scratch, in source and build folders of other names and lengths, one
# after the other and without a compiler cache, and compares byte by byte: the archives and installers
# for Windows and the Debian packages. Takes the committed sources.
#
#   scripts/check-reproducible.sh [JOBS [debian | windows]]
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${1:-2}
what=${2:-all}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CCACHE_DISABLE=1
commit=$(git rev-parse HEAD)

# debian SOURCE BUILD RESULT: the packages, without what tells where, when and with what.
debian() {
    mkdir -p "$2"
    PACKAGE_WORK=$2 "$1/scripts/package-debian.sh" "$3" "$jobs"
    rm "$3"/*.{buildinfo,changes}
}

# windows SOURCE BUILD RESULT: the archives and the installers.
windows() {
    local target builds=()
    for target in x64 x86; do
        cmake -S "$1" -B "$2-$target" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZOTAVPCI_TESTS=OFF \
            "-DCMAKE_TOOLCHAIN_FILE=$1/cmake/toolchains/windows-$target.cmake" >/dev/null
        cmake --build "$2-$target" -j "$jobs" --target zotavpci zopcibrd tavctl
        builds+=("$2-$target")
        "$1/scripts/package-msi.sh" "$3/$target.msi" "$2-$target"
    done
    "$1/scripts/package-windows.sh" "$3/zotavpci-windows.zip" "${builds[@]}"
}

# once SOURCE BUILD RESULT: a build of its own, of names below the working folder.
once() {
    local system
    git clone -q . "$work/$1"
    git -C "$work/$1" checkout -q --detach "$commit"
    mkdir "$work/$3"
    for system in debian windows; do
        case $what in
        all | "$system") "$system" "$work/$1" "$work/$2/$system" "$work/$3" ;;
        esac
    done
}
once first first/build one
# Another time zone, another mask, another time and other folders.
TZ=Pacific/Auckland
export TZ
umask 027
once second-and-longer elsewhere two
diff -r "$work/one" "$work/two"
(cd "$work/one" && sha256sum -- *)
echo "both builds gave the same bytes"
