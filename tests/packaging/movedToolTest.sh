#!/usr/bin/env bash
# The installed tool finds its plug-in, and that its bridge library, wherever the folder that they were
# installed in is moved; and the sample bus and its descriptions are installed beside.
#
#   movedToolTest.sh BUILD
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" >/dev/null
list() {
    local dump
    dump=$(find "$work/$1/share/doc" -name switchboxes.dump)
    mkdir -p "$work/names-of-$1"
    env -u LD_LIBRARY_PATH "$work/$1/bin/tavctl" list --dump "$dump" \
        --descriptions "$work/$1/share/tav-manager" --state "$work/names-of-$1"
}
list installed >"$work/before"
[ "$(wc -l <"$work/before")" -eq 5 ] || { cat "$work/before"; exit 1; }
mv "$work/installed" "$work/moved"
list moved | diff "$work/before" -
