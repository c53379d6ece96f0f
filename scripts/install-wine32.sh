#!/usr/bin/env bash
# Lets the installed 64-bit Wine run 32-bit programs too. Debian packs Wine's 32-bit Windows side
# with the i386 system libraries, which cannot be installed beside every 64-bit system; so the
# package is fetched and only the Windows side is taken out of it. Does nothing when it is there.
set -euo pipefail

wine=$(dirname "$(readlink -f /usr/lib/*/wine/x86_64-windows)")
target=$wine/i386-windows
[ -e "$target/ntdll.dll" ] && exit 0

run=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "$0: not root and no sudo; run this as root" >&2
        exit 1
    fi
    run=(sudo)
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Lists of both architectures in a folder of their own: the machine's own settings stay as they are.
mkdir -p "$work/lists/partial" "$work/cache/archives/partial"
apt=(apt-get -qq -o APT::Architectures::=amd64 -o APT::Architectures::=i386
     -o "Dir::State::lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=root)
version=$(dpkg-query -W -f='${Version}' libwine)
echo "fetching Wine's 32-bit Windows side" >&2
"${apt[@]}" update || true
(cd "$work" && "${apt[@]}" download "libwine:i386=$version")
dpkg -x "$work"/libwine_*_i386.deb "$work/unpacked"
"${run[@]}" mkdir -p "$target"
"${run[@]}" cp "$work"/unpacked/usr/lib/i386-linux-gnu/wine/i386-windows/* "$target/"
