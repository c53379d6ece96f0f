#!/usr/bin/env bash
# The Debian packages as they are installed: into a small system that has nothing else of ours, from a
# repository made of them, used there by ordinary users, upgraded, removed and purged; and that very
# system booted as a machine of its own, which lists its live bus.
#
#   cleanSystemTest.sh PACKAGES SOURCE
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

# repository FOLDER: makes it one that apt reads.
repository() {
    (cd "$1" && apt-ftparchive packages . >Packages)
}

mkdir "$work/now" "$work/next"
cp "$packages"/*.deb "$work/now"
rm -f "$work"/now/*-dbgsym_*
[ "$(find "$work/now" -name '*.deb' | wc -l)" -eq 5 ] || fail "there are not five packages"
repository "$work/now"

# The next version: the same files but for a description, and other numbers.
version=$(dpkg-deb -f "$(find "$work/now" -name 'tavctl_*.deb')" Version)
for package in "$work"/now/*.deb; do
    dpkg-deb -R "$package" "$work/unpacked"
    sed -i "s/$version/$version+next/" "$work/unpacked/DEBIAN/control"
    description=$work/unpacked/etc/tav-manager/descriptions/tav-c1-adapter-card.ini
    [ ! -e "$description" ] || echo "; the next version's" >>"$description"
    dpkg-deb --root-owner-group -b "$work/unpacked" "$work/next" >/dev/null
    rm -rf "$work/unpacked"
done
repository "$work/next"

cp "$here/listLiveBus.sh" "$work/init"
cp -r "$source/tests/packaging/host" "$work/host"
cp "$source/samples/switchboxes.dump" "$work/"
mmdebstrap --quiet --variant=apt --format=null \
    --customize-hook="$here/inCleanSystem.sh \"\$1\" $work $version" "$codename" - >"$work/log" 2>&1 ||
    { cat "$work/log" >&2; fail "the packages do not hold what they should"; }
cat "$work/log"

# The system's disk beside the boxes of the sample; disks have no bridges, so the buses' numbers stay.
: >"$work/empty"
GUEST_APPEND="root=/dev/nvme0n1 rw init=/listLiveBus.sh" "$source/scripts/guest-boot.sh" \
    "$work/empty" "$source/samples/machines/switchboxes.machine" -serial "file:$work/listed" \
    -drive "file=$work/disk,format=raw,if=none,id=disk" -device nvme,drive=disk,serial=1,bus=pcie.0,addr=10 \
    >"$work/console" || true
tr -d '\r' <"$work/listed" | diff -u "$work/expected" - ||
    { cat "$work/console" >&2; fail "the booted machine lists something else"; }
echo "the booted machine lists its live bus"
