#!/usr/bin/env bash
# Builds what ships for Windows twice, from scratch, in source and build folders of other names and
# lengths and without a compiler cache, and compares the archives byte by byte. Takes the committed
# sources.
#
#   scripts/check-reproducible.sh [JOBS]
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${1:-2}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CCACHE_DISABLE=1
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH

# once FOLDER BUILD: a build of its own, with its archives in the working folder, called FOLDER.
once() {
    local target builds=()
    mkdir "$work/$1"
    git archive HEAD | tar -x -C "$work/$1"
    for target in x64 x86; do
        cmake -S "$work/$1" -B "$work/$2-$target" -G Ninja -DCMAKE_BUILD_TYPE=Release \
            -DZOTAVPCI_TESTS=OFF \
            "-DCMAKE_TOOLCHAIN_FILE=$work/$1/cmake/toolchains/windows-$target.cmake" >/dev/null
        cmake --build "$work/$2-$target" -j "$jobs" --target zotavpci zopcibrd tavctl
        builds+=("$work/$2-$target")
    done
    "$work/$1/scripts/package-windows.sh" "$work/$1.zip" "${builds[@]}"
}
once first first/build/windows
once second-and-longer elsewhere
for archive in .zip -symbols.zip; do
    cmp "$work/first$archive" "$work/second-and-longer$archive"
    sha256sum "$work/first$archive" | sed "s|$work/first|zotavpci-windows|"
done
echo "both builds gave the same bytes"
