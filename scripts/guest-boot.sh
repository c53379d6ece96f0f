#!/usr/bin/env bash
# Boots a machine of emulated PCI devices and waits until it switches itself off. Its first serial
# port, with the kernel's messages, is standard output.
#
#   scripts/guest-boot.sh INITRAMFS MACHINE [QEMU-ARGUMENT...]
#
# MACHINE is a file of QEMU arguments, one or more words a line (samples/machines/*.machine): "#"
# starts a comment, blanks separate words, there is no quoting. Further arguments go to QEMU as
# they stand, for example a monitor to plug devices with.
#
# GUEST_KERNEL   the kernel to boot (default: the newest Debian cloud kernel below /boot)
# GUEST_APPEND   more words for the kernel's command line
# GUEST_TIMEOUT  seconds until the machine is ended by force (default 120)
#
# Exit status: QEMU's, or 124 when the time ran out. It is no proof that the guest did its work;
# let the guest say so on a port.
set -euo pipefail

fail() {
    echo "$0: $*" >&2
    exit 1
}

[ $# -ge 2 ] || { echo "usage: $0 INITRAMFS MACHINE [QEMU-ARGUMENT...]" >&2; exit 2; }
initramfs=$1 machine=$2
shift 2

command -v qemu-system-x86_64 >/dev/null ||
    fail "qemu-system-x86_64 is missing (scripts/install-packages.sh guest)"
[ -r "$initramfs" ] || fail "cannot read the initramfs $initramfs"
[ -r "$machine" ] || fail "cannot read the machine $machine"

kernel=${GUEST_KERNEL:-}
if [ -z "$kernel" ]; then
    kernel=$(find /boot -maxdepth 1 -name 'vmlinuz-*-cloud-amd64' | sort -V | tail -n 1)
    [ -n "$kernel" ] || fail "no cloud kernel below /boot (scripts/install-packages.sh guest)"
fi
[ -r "$kernel" ] || fail "cannot read the kernel $kernel"

read -r -d '' -a devices < <(sed 's/#.*//' "$machine") || true

# Software emulation: hardware virtualisation is not to be had everywhere, least of all where
# the machine at hand is itself a guest. On a panic the kernel reboots, which here means to end.
exec timeout --foreground --kill-after=5 "${GUEST_TIMEOUT:-120}" \
    qemu-system-x86_64 -machine q35 -accel tcg -m 256 -nodefaults -display none -no-reboot \
    -kernel "$kernel" -initrd "$initramfs" \
    -append "console=ttyS0 quiet panic=-1 ${GUEST_APPEND:-}" \
    -serial stdio "${devices[@]}" "$@" </dev/null
