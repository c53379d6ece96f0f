#!/usr/bin/env bash
# Packs builds for Windows, one for each target, into one archive.
#
#   scripts/package-windows.sh ARCHIVE.zip BUILD...
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: $0 ARCHIVE.zip BUILD..." >&2
    exit 2
fi
archive=$(realpath -m "$1")
shift

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$1/CMakeCache.txt")
folder=zotavpci-$version-windows
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for build in "$@"; do
    cmake --install "$build" --prefix "$work/$folder" >/dev/null
done
mkdir -p "$(dirname "$archive")"
rm -f "$archive"
cd "$work"
find "$folder" -type f | LC_ALL=C sort | zip -q -X "$archive" -@
