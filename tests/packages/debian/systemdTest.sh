#!/usr/bin/env bash
# The units that ship under the system that they are for: installed they stand still; a machine on
# which the commands of docs/fleet.md are given writes the metrics of its live bus as a user without
# rights, the collector of Debian's own node_exporter reads them, and Debian's Prometheus collects and
# judges them.
#
#   systemdTest.sh PACKAGES SOURCE
#
# PACKAGES is the folder that scripts/package-debian.sh filled. Takes the network, for what Debian's own
# packages are.
set -euo pipefail
packages=$(realpath "$1")
source=$(realpath "$2")
here=$source/tests/packages/debian
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")

fail() {
    echo "$0: $*" >&2
    exit 1
}

# The guide's commands in "sh": packages are installed while there is a network, the rest is run on the
# booted machine, where what asks is asked until it has an answer.
awk '/^```/ { inside = ($0 == "```sh") ; next } inside' "$source/docs/fleet.md" >"$work/commands"
grep '^sudo apt-get install' "$work/commands" | sed 's/^sudo //' >"$work/install.sh"
[ "$(wc -l <"$work/install.sh")" -ge 2 ] || fail "the guide installs nothing"
{
    echo 'sudo() { "$@"; }'
    echo 'answered() {'
    echo '    for try in $(seq 200); do'
    echo '        said=$(eval "$1" 2>&1) && { echo "ran: $1"; return; }'
    echo '        sleep 1'
    echo '    done'
    echo '    echo "never true: $1: $said"'
    echo '}'
    grep -v '^sudo apt-get install' "$work/commands" | while IFS= read -r line; do
        printf 'answered %q\n' "$line"
    done
} >"$work/guide.sh"
commands=$(grep -c '^answered ' "$work/guide.sh")

# What the machine does, on its second serial port.
cat >"$work/tell.service" <<'UNIT'
[Unit]
After=tav-metrics.timer prometheus-node-exporter.service
[Service]
Type=oneshot
ExecStart=/tell.sh
StandardOutput=file:/dev/ttyS1
StandardError=file:/dev/ttyS1
[Install]
WantedBy=multi-user.target
UNIT
cp "$here/tellMetrics.sh" "$work/tell.sh"
cat >"$work/hook.sh" <<'HOOK'
#!/bin/sh
set -e
cp "$2"/zotavpci_*.deb "$2"/tavctl_*.deb "$3/install.sh" "$1/tmp/"
chroot "$1" sh -ec 'cd /tmp; . ./install.sh; rm *.deb install.sh'
for unit in "$1"/lib/systemd/system/tav-*; do
    # "static" for what is started by another unit.
    state=$(chroot "$1" systemctl is-enabled "${unit##*/}" || true)
    case $state in disabled | static) ;; *) echo "${unit##*/} is $state"; exit 1 ;; esac
done
echo "127.0.0.1 localhost" >"$1/etc/hosts" # as Debian's installer leaves it
cp "$3/tell.sh" "$3/guide.sh" "$1/"
cp "$3/tell.service" "$1/etc/systemd/system/"
chroot "$1" systemctl enable tell.service
tar -C "$1" --exclude=./var/cache/apt --exclude=./var/lib/apt/lists --one-file-system -cf - . |
    tar -C "$3/system" -xf -
HOOK
chmod +x "$work/hook.sh" "$work/tell.sh"
mkdir "$work/system"
mmdebstrap --quiet --variant=apt --format=null \
    --include=systemd,systemd-sysv,udev,curl,procps,python3 --aptopt='APT::Install-Recommends "false"' \
    --customize-hook="$work/hook.sh \"\$1\" $packages $work" "$codename" - >"$work/log" 2>&1 ||
    { cat "$work/log" >&2; fail "the units are not as they should be"; }
mkdir -p "$work"/system/{dev,proc,sys,run}
mke2fs -q -t ext4 -d "$work/system" "$work/disk" 1500M >/dev/null
rm -rf "$work/system"

: >"$work/empty"
GUEST_TIMEOUT=600 GUEST_APPEND="root=/dev/nvme0n1 rw" "$source/scripts/guest-boot.sh" \
    "$work/empty" "$source/samples/machines/switchboxes.machine" -serial "file:$work/told" \
    -drive "file=$work/disk,format=raw,if=none,id=disk" -device nvme,drive=disk,serial=1,bus=pcie.0,addr=10 \
    -m 1024 >"$work/console" || true
tr -d '\r' <"$work/told" >"$work/lines"
for line in 'tav_devices 4' 'tav_last_look_success 1' 'tav_upstream_link_degraded{name="TAV3"} 1' \
    'node_textfile_scrape_error 0' 'result success' 'mode 644' 'others may not write' 'end'; do
    grep -qxF "$line" "$work/lines" || {
        cat "$work/console" "$work/lines" >&2
        fail "the booted machine does not tell: $line"
    }
done
[ "$(grep -c '^ran: ' "$work/lines")" = "$commands" ] || {
    grep -E '^(ran|never true): ' "$work/lines" >&2
    fail "not every command of the guide's does what it says"
}
echo "the timer writes the metrics of a booted machine, and the collector reads them"
