#!/usr/bin/env bash
# Records every machine anew: its buses become samples and whole-system cases once all that the
# machine's steps demand has been met. What a folder expects is written by hand, not by this.
#
#   tests/guest/recordAll.sh PROGRAM-FOLDER
set -euo pipefail
programs=$1
here=$(dirname "$(readlink -f "$0")")
initramfs=$(mktemp --suffix=.cpio.gz)
trap 'rm -f "$initramfs"' EXIT
"$here/makeInitramfs.sh" "$initramfs" "$programs"
for machine in "$here"/machines/*/; do
    "$here/runMachine.py" --record --programs "$programs" --initramfs "$initramfs" "$machine"
done
