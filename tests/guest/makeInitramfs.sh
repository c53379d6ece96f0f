#!/usr/bin/env bash
# Makes the initial file system of the guests: the agent, and what is tried in them.
#
#   tests/guest/makeInitramfs.sh OUT.cpio.gz PROGRAM-FOLDER
set -euo pipefail
out=$1 programs=$2
here=$(dirname "$(readlink -f "$0")")
stripped=$(mktemp -d)
trap 'rm -rf "$stripped"' EXIT
# Nobody debugs in there, and a guest has little memory.
files=()
for file in tavctl zotavpci.so zopcibrd.so busReport residentHost; do
    strip --strip-debug -o "$stripped/$file" "$programs/$file"
    files+=("$stripped/$file=/opt/tav/$file")
done
# A driver of network cards, which the kernel has not within; those of disks and terminals it has.
kernel=${GUEST_KERNEL:-$(find /boot -maxdepth 1 -name 'vmlinuz-*-cloud-amd64' | sort -V | tail -n 1)}
driver=/lib/modules/${kernel#*/vmlinuz-}/kernel/drivers/net/vmxnet3/vmxnet3.ko
if [ ! -e "$driver" ] && [ -e "$driver.xz" ]; then
    xz -dc "$driver.xz" >"$stripped/vmxnet3.ko"
    driver=$stripped/vmxnet3.ko
fi
# Loaded by its name alone, so no program lists it among what it needs.
udev=$(ldconfig -p | sed -nE 's/^\s*libudev\.so\.1 \(.*x86-64.*\) => (.*)$/\1/p' | head -n 1)
[ -n "$udev" ] || { echo "$0: there is no libudev.so.1" >&2; exit 1; }
"$here/../../scripts/guest-initramfs.sh" "$out" "$here/agent.sh" \
    "$(command -v lspci)=/bin/lspci" "$driver=/lib/vmxnet3.ko" "$udev" "${files[@]}"
