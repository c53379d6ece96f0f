#!/usr/bin/env bash
# A machine without Wine fails the tests of Windows programs; it does not pass them by.
#
#   withoutWineTest.sh SOURCE PROGRAM.exe
set -euo pipefail

source=$1
program=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Everything that the script needs but Wine.
for tool in bash realpath dirname mkdir flock touch id setpriv env; do
    ln -s "$(command -v "$tool")" "$work/$tool"
done
status=0
PATH=$work TAV_WINEPREFIX=$work/prefix "$source/scripts/wine-run.sh" "$program" \
    >"$work/output" 2>"$work/error" || status=$?
if [ "$status" -ne 127 ] || ! grep -q "there is no wine" "$work/error"; then
    echo "$0: status $status instead of 127; it said: $(cat "$work/error")" >&2
    exit 1
fi
