#!/usr/bin/env bash
# Records the PCI bus of an emulated machine: boots it, runs "lspci -n -xxxx" in it as root, and
# writes that text to a file. The dumps below samples/ are made this way.
#
#   scripts/record-guest.sh OUT.dump MACHINE [QEMU-ARGUMENT...]
#
# MACHINE, further arguments and the environment: see scripts/guest-boot.sh. When the guest does
# not boot, prints nothing, or its text arrives damaged, the script fails, shows the guest's
# console on standard error and leaves OUT.dump as it was.
set -euo pipefail

[ $# -ge 2 ] || { echo "usage: $0 OUT.dump MACHINE [QEMU-ARGUMENT...]" >&2; exit 2; }
out=$1 machine=$2
shift 2
scripts=$(dirname "$(readlink -f "$0")")
"$scripts/install-packages.sh" guest

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The text leaves by the second serial port, where no message of the kernel can fall into it, and
# in raw mode, where the line discipline does not turn line feeds into CR LF.
cat >"$work/init" <<'INIT'
#!/bin/sh
export PATH=/bin:/usr/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
stty -F /dev/ttyS1 raw
if lspci -n -xxxx >/tmp/bus; then
    { echo "=== bus ==="; cat /tmp/bus; echo "=== end $(md5sum </tmp/bus) ==="; } >/dev/ttyS1
fi
poweroff -f
INIT

"$scripts/guest-initramfs.sh" "$work/guest.cpio.gz" "$work/init" "$(command -v lspci)=/bin/lspci"

status=0
"$scripts/guest-boot.sh" "$work/guest.cpio.gz" "$machine" -serial "file:$work/port" "$@" \
    >"$work/console" 2>&1 || status=$?

fail() {
    {
        echo "--- the guest's console ---"
        cat "$work/console"
        echo "--- end of the console ---"
        echo "$0: $*"
    } >&2
    exit 1
}

case $status in
    0) ;;
    124 | 137) fail "the guest did not end in time" ;;
    *) fail "the guest ended with status $status" ;;
esac
grep -q '^=== bus ===$' "$work/port" || fail "the guest printed no bus"
grep -q '^=== end .* ===$' "$work/port" || fail "the guest's text breaks off"

sed -n '/^=== bus ===$/,/^=== end /{/^=== /!p}' "$work/port" >"$work/bus"
sent=$(sed -n 's/^=== end \(.*\) ===$/\1/p' "$work/port")
[ "$(md5sum <"$work/bus")" = "$sent" ] || fail "the guest's text arrived damaged"
grep -q '^00: ' "$work/bus" || fail "the guest's bus has no functions"

cp "$work/bus" "$out"
