#!/usr/bin/env bash
# Builds the initial file system of a guest: a static busybox, the programs named, each with the
# shared libraries that it loads, and a script of the caller's that the kernel starts as /init.
#
#   scripts/guest-initramfs.sh OUT.cpio.gz INIT-SCRIPT [FILE...]
#
# FILE is a program or library of this machine (lands under its own path), or FROM=TO: FROM lands
# as TO in the guest. When /init runs nothing is mounted but its own root; /init is responsible
# for /proc, /sys and /dev and for switching the machine off.
set -euo pipefail

fail() {
    echo "$0: $*" >&2
    exit 1
}

[ $# -ge 2 ] || { echo "usage: $0 OUT.cpio.gz INIT-SCRIPT [FILE | FROM=TO]..." >&2; exit 2; }
out=$1 init=$2
shift 2

for tool in busybox cpio gzip ldd; do
    command -v "$tool" >/dev/null || fail "$tool is missing (scripts/install-packages.sh guest)"
done
[ -f "$init" ] || fail "no init script $init"

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
chmod 755 "$root" # it becomes the guest's "/", which ordinary users may enter as well
mkdir -p "$root"/{bin,dev,proc,sys,tmp,etc}
chmod 1777 "$root/tmp"

# Puts a file at a path of the guest, following links: the guest gets the file, not the link.
place() {
    [ -f "$1" ] || fail "no file $1"
    mkdir -p "$root/$(dirname "$2")"
    cp -L "$1" "$root/$2"
}

# The libraries and the loader that a dynamic program names; none for a static program or data.
libraries() {
    ldd "$1" 2>/dev/null | sed -nE 's/^\s*(.* => )?(\/[^ ]+) \(0x[0-9a-f]+\)$/\2/p'
}

place "$(command -v busybox)" bin/busybox
[ -z "$(libraries "$root/bin/busybox")" ] || fail "busybox is not static (install busybox-static)"
"$root/bin/busybox" --list | while read -r applet; do
    [ "$applet" = busybox ] || ln -s busybox "$root/bin/$applet"
done

for file in "$@"; do
    from=${file%%=*} to=${file#*=}
    place "$from" "$to"
    missing=$(ldd "$from" 2>/dev/null | grep 'not found' || true)
    [ -z "$missing" ] || fail "$from lacks a library: $missing"
    for library in $(libraries "$from"); do
        place "$library" "$library"
    done
done

place "$init" init
chmod 755 "$root/init"

# Owned by root in the guest and without dates, so equal contents give an equal archive.
find "$root" -exec touch -h -d @0 {} +
(cd "$root" && find . -print0 | LC_ALL=C sort -z |
    cpio --null --create --format=newc --owner=0:0 --reproducible --quiet) | gzip -n -1 >"$out"
