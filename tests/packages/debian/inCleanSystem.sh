#!/usr/bin/env bash
# What is done with the packages in a clean system while it stands; cleanSystemTest.sh makes it.
#
#   inCleanSystem.sh ROOT WORK VERSION
#
# WORK: "now" and "next", repositories; "init", the booted machine's first program; "host", a host's
# project; gets "disk" and "expected".
set -euo pipefail
root=$1 work=$2 version=$3
state=/var/lib/tav-manager
descriptions=/etc/tav-manager/descriptions
sample=/usr/share/doc/tavctl/examples/switchboxes.dump

fail() {
    echo "$0: $*" >&2
    exit 1
}

inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# as USER COMMAND...: as an ordinary user, with the groups that he has.
as() {
    local user=$1
    shift
    inside setpriv --reuid "$user" --regid "$(inside id -g "$user")" --init-groups \
        env HOME="/home/$user" PATH=/usr/bin:/bin "$@" </dev/null
}

# apt reads REPOSITORY from now on, beside Debian's.
use() {
    rm -rf "$root/srv/packages"
    cp -r "$work/$1" "$root/srv/packages"
    echo 'deb [trusted=yes] file:/srv/packages ./' >"$root/etc/apt/sources.list.d/packages.list"
    inside apt-get -q update -o Dir::Etc::sourcelist=sources.list.d/packages.list \
        -o Dir::Etc::sourceparts=- -o APT::Get::List-Cleanup=0 >/dev/null
}

apt() {
    inside apt-get -q -y --no-install-recommends -o Dpkg::Options::=--force-unsafe-io "$@" \
        >"$root/tmp/apt.log" 2>&1 </dev/null || { cat "$root/tmp/apt.log" >&2; fail "apt-get $*"; }
}

# What stands in the system, but for what apt and dpkg write about themselves, and adduser's copies of
# what was before.
standing() {
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp \
        -o -path ./srv -o -path ./var/cache -o -path ./var/log -o -path ./var/lib/apt \
        -o -path ./var/lib/dpkg -o -path ./etc/apt -o -path ./run -o -path './etc/*-' \) -prune -o -print |
        LC_ALL=C sort)
}

expect() {
    [ "$1" = "$2" ] || fail "$3: \"$1\" instead of \"$2\""
}

# --- installed and purged again, the system is what it was ---
apt install adduser mount python3 # whose own files stay; the booted machine mounts
standing >"$work/before"
cp "$root/etc/group" "$work/group"
use now
apt install tavctl libzotavpci-dev python3-tav zotavpci-doc
expect "$(inside stat -c '%U:%G %a' $state)" "root:tav 2775" "the folder of the names"
expect "$(as nobody tavctl --version)" "tavctl $version" "the tool's version"
inside dpkg --audit | diff - /dev/null || fail "packages are half installed"
touch "$root$state/zotavpci.ini" "$root$state/zotavpci.loc" "$root$state/zotavpci.ini.before"
apt purge tavctl libzotavpci-dev python3-tav zotavpci-doc zotavpci
apt autoremove --purge
standing | diff -u "$work/before" - || fail "purging leaves something, or takes too much"
diff -u "$work/group" "$root/etc/group" || fail "the group is left"
echo "installed and purged again, the system is what it was"

# --- ordinary users: two who may store names, one who may not ---
apt install tavctl
for user in alice bob carol; do
    inside adduser --quiet --disabled-password --gecos "" "$user"
done
for user in alice bob; do
    inside adduser --quiet "$user" tav
done
cp "$work/init" "$root/listLiveBus.sh"
# The disk of the machine that is booted: this system without what is mounted in it.
cp -ax "$root" "$work/system"
rm -rf "$work"/system/{dev,proc,sys,srv,var/cache/apt,var/lib/apt/lists}
mkdir -p "$work"/system/{dev,proc,sys}
rm -f "$work/disk"
mke2fs -q -t ext4 -d "$work/system" "$work/disk" 700M >/dev/null
rm -rf "$work/system"

list=(tavctl list --dump "$sample" --state "$state/")
as carol "${list[@]:0:4}" >"$work/listed" 2>"$work/said"
expect "$(grep -c '^TAV' "$work/listed")" 4 "devices of the sample"
expect "$(grep -c '^TAV[^ ]*\*' "$work/listed")" 4 "names that are not stored"
[ ! -e "$root$state/zotavpci.ini" ] || fail "looking has stored names"
as alice "${list[@]}" >"$work/expected"
expect "$(inside stat -c '%U:%G %a' $state/zotavpci.ini)" "alice:tav 664" "the names"
as bob tavctl names rename TAV3 TAV7 --dump "$sample" --state "$state" >/dev/null
expect "$(inside stat -c '%G %a' $state/zotavpci.ini)" "tav 664" "the names that bob has saved"
as alice "${list[@]}" | grep -q '^TAV7 ' || fail "alice does not see what bob renamed"
as carol "${list[@]}" >"$work/listed" 2>"$work/said"
grep -q '^TAV7 ' "$work/listed" || fail "carol does not see the names"
expect "$(cat "$work/said")" "tavctl: nothing is stored ($state: Permission denied)" "what carol is told"
# The same is expected of the booted machine: of alice, then of carol; and nothing is wrong.
{
    cat "$work/expected" "$work/expected" "$work/said"
    echo "tavctl: no problem with 4 names in $state/zotavpci.ini"
} >"$work/expected.both"
mv "$work/expected.both" "$work/expected"
echo "members of the group share names, and everybody sees them"

# --- the manual and completion ---
apt install man-db bash-completion
as carol man tavctl-list | grep -q 'tavctl list' || fail "there is no manual page"
as carol man 5 tavctl-json >/dev/null || fail "there is no manual page of the documents"
completed=$(as carol bash -c '. /usr/share/bash-completion/bash_completion
    _completion_loader tavctl
    COMP_WORDS=(tavctl li) COMP_CWORD=1 COMP_LINE="tavctl li" COMP_POINT=9
    $(complete -p tavctl | sed "s/.*-F \([^ ]*\).*/\1/") tavctl li tavctl
    echo "${COMPREPLY[@]}"')
[[ " $completed " == *" list "* ]] || fail "bash completes \"li\" to \"$completed\""
echo "manual pages and completion are there"

# --- hosts are built ---
apt install libzotavpci-dev g++ cmake make pkg-config
cp -r "$work/host" "$root/home/alice/host"
as alice cmake -S /home/alice/host -B /home/alice/by-cmake >/dev/null
as alice cmake --build /home/alice/by-cmake >/dev/null
as alice sh -c 'gcc -std=c11 $(pkg-config --cflags zotavpci) \
    -DPLUGIN="\"$(pkg-config --variable=plugin zotavpci)\"" /home/alice/host/host.c -ldl \
    -o /home/alice/by-pkg-config'
cp "$work/switchboxes.dump" "$root/home/alice/"
for host in by-cmake/host_c by-cmake/host_cpp by-pkg-config; do
    as alice env TAV_PCI_DUMP=/home/alice/switchboxes.dump "/home/alice/$host" >"$work/hosted" ||
        fail "$host fails"
    expect "$(grep -c '^TAV-' "$work/hosted")" 4 "devices that $host finds"
done
echo "hosts are built with CMake and pkg-config"

# --- from nothing to a test of a host that passes, without hardware ---
apt purge tavctl libzotavpci-dev zotavpci
apt autoremove --purge
rm -rf "${root:?}$state"
begin=$SECONDS
apt install tavctl libzotavpci-dev python3-tav python3-pytest
installed=$((SECONDS - begin))
# As the guide to hosts says it.
as carol python3 -m pytest /usr/share/doc/libzotavpci-dev/examples/python >"$work/tested" 2>&1 ||
    { cat "$work/tested" >&2; fail "the test of a host in Python fails"; }
grep -q ' 1 passed' "$work/tested" || { cat "$work/tested" >&2; fail "no test was run"; }
echo "figure: from nothing to a test of a host that passes: $((SECONDS - begin)) s," \
    "$installed of them for apt"
as alice "${list[@]}" >/dev/null
as bob tavctl names rename TAV3 TAV7 --dump "$sample" --state "$state" >/dev/null

# --- upgraded: names and configuration stay ---
echo "; an administrator's" >>"$root/etc/tav-manager.conf"
echo "; an engineer's" >>"$root$descriptions/tav-b3-switch-box.ini"
cp "$root$descriptions/tav-w7-wide-switch-box.ini" "$root$descriptions/own.ini"
sed -i 's/TAV-W7 Wide Switch Box/Box of our own/; s/1B36/1B37/I' "$root$descriptions/own.ini"
echo "somebody's" >"$root$state/notes.txt"
chmod 2750 "$root$state"
inside dpkg-statoverride --add root tav 2750 $state
sha256sum "$root$state/zotavpci.ini" "$root$state/notes.txt" "$root/etc/tav-manager.conf" \
    "$root$descriptions/tav-b3-switch-box.ini" "$root$descriptions/own.ini" >"$work/kept"
use next
apt upgrade
expect "$(as alice tavctl --version)" "tavctl $version" "the upgraded tool's version"
for package in tavctl zotavpci libzotavpci-dev python3-tav; do
    expect "$(inside dpkg-query -W -f '${Version}' "$package")" "$version+next" "$package"
done
sha256sum --quiet -c "$work/kept" || fail "the upgrade has changed what is not its own"
grep -q "the next version's" "$root$descriptions/tav-c1-adapter-card.ini" ||
    fail "what nobody has edited is not upgraded"
expect "$(inside stat -c '%U:%G %a' $state)" "root:tav 2750" "what an administrator has decided"
echo "names and configuration outlive an upgrade"

# --- removed and purged: what is somebody's own stays ---
apt remove tavctl libzotavpci-dev python3-tav zotavpci
sha256sum --quiet -c "$work/kept" || fail "removing has changed what is not its own"
[ ! -e "$root/usr/bin/tavctl" ] || fail "the tool is still there"
apt install tavctl
as alice "${list[@]}" | grep -q '^TAV7 ' || fail "installed again, it has other names"
apt purge tavctl zotavpci
(cd "$root" && find etc var/lib/tav-manager usr/lib usr/share -xdev \( -path '*tav-manager*' \
    -o -path '*zotavpci*' -o -path '*tavctl*' \) ! -type d | LC_ALL=C sort) |
    diff -u - <(printf '%s\n' etc/tav-manager/descriptions/own.ini var/lib/tav-manager/notes.txt) ||
    fail "purging leaves something, or takes what is somebody's"
grep -q '^tav:.*:alice,bob$' "$root/etc/group" || fail "purging takes a group that has members"
echo "purging leaves what is somebody's own, and nothing else"
