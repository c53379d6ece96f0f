#!/usr/bin/env bash
# Packs builds for Windows, one for each target, into one archive, and their symbols into another
# beside it, ARCHIVE-symbols.zip. The same builds give the same bytes: every file is as old as
# SOURCE_DATE_EPOCH says, or the last commit where nothing says so.
#
#   scripts/package-windows.sh ARCHIVE.zip BUILD...
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: $0 ARCHIVE.zip BUILD..." >&2
    exit 2
fi
archive=$(realpath -m "$1")
shift

# Archives know no time before 1980.
earliest=315532800
epoch=${SOURCE_DATE_EPOCH:-$(git -C "$(dirname "$0")" log -1 --format=%ct 2>/dev/null || true)}
[ "${epoch:-0}" -ge "$earliest" ] || epoch=$earliest

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$1/CMakeCache.txt")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
umask 022

# pack ARCHIVE FOLDER: packs what stands in that folder of the working folder's.
pack() {
    mkdir -p "$(dirname "$1")"
    rm -f "$1"
    # An archive's times are local ones.
    (cd "$work" && export TZ=UTC && find "$2" -exec touch -d "@$epoch" {} + &&
        find "$2" -type f | LC_ALL=C sort | zip -q -X "$1" -@)
}

folder=zotavpci-$version-windows
for build in "$@"; do
    cmake --install "$build" --prefix "$work/$folder" >/dev/null
    cmake --install "$build" --prefix "$work/$folder-symbols" --component symbols >/dev/null
done
pack "$archive" "$folder"
pack "${archive%.zip}-symbols.zip" "$folder-symbols"
