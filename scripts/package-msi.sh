#!/usr/bin/env bash
# Makes an installer of a build for Windows: the files of the archive for Windows, where they belong
# on a machine (packaging/windows/installer.wxs.in says where, and what of it stays). The same builds
# give the same bytes: the installer is as old as SOURCE_DATE_EPOCH says, or the last commit where
# nothing says so.
#
#   scripts/package-msi.sh [--version VERSION] INSTALLER.msi BUILD
#
# Another version than the project's is for tests of upgrades.
set -euo pipefail

version=
if [ "${1:-}" = --version ]; then
    version=${2:-}
    shift 2
fi
if [ $# -ne 2 ]; then
    echo "usage: $0 [--version VERSION] INSTALLER.msi BUILD" >&2
    exit 2
fi
installer=$(realpath -m "$1")
build=$2
scripts=$(realpath "$(dirname "$0")")

# The cabinet in it knows no time before 1980.
earliest=315532800
epoch=${SOURCE_DATE_EPOCH:-$(git -C "$scripts" log -1 --format=%ct 2>/dev/null || true)}
[ "${epoch:-0}" -ge "$earliest" ] || epoch=$earliest

built=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
umask 022
# Times in a cabinet are local ones.
export TZ=UTC

cmake --install "$build" --prefix "$work/staged" >/dev/null
find "$work/staged" -exec touch -d "@$epoch" {} +
target=x86
[ ! -e "$work/staged/x64" ] || target=x64
"$scripts/msi-source.py" "$scripts/../packaging/windows" "$work/staged" "$target" \
    "${version:-$built}" "$built" "$work/installer"

# wixl leaves out what it does not know, tells so, and succeeds.
(cd "$work/staged" && wixl -a "$target" -o "$work/installer.msi" "$work/installer.wxs") \
    2>"$work/said" || {
    cat "$work/said" >&2
    exit 1
}
if [ -s "$work/said" ]; then
    cat "$work/said" >&2
    echo "$0: wixl does not understand all of packaging/windows/installer.wxs.in" >&2
    exit 1
fi
mapfile -t statements <"$work/installer.sql"
for statement in "${statements[@]}"; do
    msibuild "$work/installer.msi" -q "$statement" || {
        echo "$0: the tables do not take: $statement" >&2
        exit 1
    }
done
"$scripts/stamp-msi.py" "$work/installer.msi" "$(cat "$work/installer.code")" "$epoch"
mkdir -p "$(dirname "$installer")"
mv "$work/installer.msi" "$installer"
