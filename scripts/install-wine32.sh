#!/usr/bin/env bash
# Lets the installed 64-bit Wine run 32-bit programs too. Debian packs Wine's 32-bit sides with the
# i386 system libraries, which cannot be installed beside every 64-bit system; so the packages are
# fetched and only what is needed is taken out of them.
#
# Where the processor runs 32-bit code, the Windows side is enough. A machine may be a guest that
# cannot (a paravirtualised one without 32-bit segments): there Wine's 32-bit loader comes too, with
# an emulator of user programs that runs it, in a folder of their own that scripts/wine-run.sh uses
# when it is there. Does nothing when what is needed is there.
set -euo pipefail

wine=$(dirname "$(readlink -f /usr/lib/*/wine/x86_64-windows)")
windows_side=$wine/i386-windows
emulated=/usr/local/lib/wine32-emulated

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Whether this machine runs 32-bit code itself: tried with a program of three instructions.
runs_32_bit_code() {
    printf '.globl _start\n_start: mov $1, %%eax\nxor %%ebx, %%ebx\nint $0x80\n' |
        as --32 -o "$work/exit.o" - && ld -m elf_i386 -o "$work/exit" "$work/exit.o" || return
    "$work/exit" 2>/dev/null
}

emulate=no
runs_32_bit_code || emulate=yes
if [ -e "$windows_side/ntdll.dll" ] && [ -e "$windows_side/zlib1.dll" ]; then
    [ $emulate = no ] && exit 0
    [ -e "$emulated/complete" ] && exit 0
fi

run=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "$0: not root and no sudo; run this as root" >&2
        exit 1
    fi
    run=(sudo)
fi

# Lists of both architectures in a folder of their own: the machine's own settings stay as they are.
mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/sources"
cp /etc/apt/sources.list "$work/sources.list" 2>/dev/null || touch "$work/sources.list"
cp /etc/apt/sources.list.d/* "$work/sources/" 2>/dev/null || true
apt=(apt-get -qq -o APT::Architectures::=amd64 -o APT::Architectures::=i386
     -o "Dir::State::lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=root
     -o "Dir::Etc::sourcelist=$work/sources.list" -o "Dir::Etc::sourceparts=$work/sources")

release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
if [ $emulate = yes ] && [ -n "$release" ]; then
    # The emulator must know MAP_FIXED_NOREPLACE (8.1 or newer), or Wine looks for free addresses
    # for a minute at each start. The release may have an older one; its backports have a newer.
    # shellcheck disable=SC2016  # apt's own placeholders
    apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' |
        awk -v release="$release" '$2 == release && $3 == "main" && !seen++ {
            print "deb " $1 " " release "-backports main" }' >>"$work/sources.list"
fi

version=$(dpkg-query -W -f='${Version}' libwine)
echo "fetching Wine's 32-bit side" >&2
"${apt[@]}" update || true
cd "$work"
"${apt[@]}" download "libwine:i386=$version"
dpkg -x libwine_*_i386.deb "$work/unpacked"
if [ ! -e "$windows_side/ntdll.dll" ]; then
    "${run[@]}" mkdir -p "$windows_side"
    "${run[@]}" cp unpacked/usr/lib/i386-linux-gnu/wine/i386-windows/* "$windows_side/"
fi
# A library of the compiler's that Wine's own need, and that the package only points to.
if [ ! -e "$windows_side/zlib1.dll" ] && [ -e /usr/i686-w64-mingw32/lib/zlib1.dll ]; then
    "${run[@]}" cp /usr/i686-w64-mingw32/lib/zlib1.dll "$windows_side/"
fi
[ $emulate = no ] && exit 0

echo "this machine runs no 32-bit code: fetching an emulator for it" >&2
"${apt[@]}" download libc6:i386 "wine32:i386=$version"
"${apt[@]}" -t "$release-backports" download qemu-user
emulator=$(dpkg-deb -f qemu-user_*.deb Version)
if dpkg --compare-versions "$emulator" lt 1:8.1; then
    echo "$0: qemu-user $emulator is too old to run Wine; 8.1 or newer is needed" >&2
    exit 1
fi
dpkg -x wine32_*.deb unpacked
dpkg -x qemu-user_*.deb emulator

# The places in which Wine's loaders look for each other, and a script where the 32-bit one stands.
mkdir -p new/lib/wine new/lib/i386-linux-gnu/wine new/share new/system
ln -s /usr/share/wine new/share/wine
dpkg -x libc6_*.deb new/system
cp emulator/usr/bin/qemu-i386 new/
cp unpacked/usr/lib/wine/wine new/lib/wine/wine32
cp -R unpacked/usr/lib/i386-linux-gnu/wine/i386-unix new/lib/i386-linux-gnu/wine/
ln -s "$windows_side" new/lib/i386-linux-gnu/wine/i386-windows
ln -s "$(dirname "$wine")" "new/lib/$(basename "$(dirname "$wine")")"
cp /usr/lib/wine/wine64 new/lib/wine/
ln -s /usr/lib/wine/wineserver64 new/lib/wine/wineserver
cat >new/lib/wine/wine <<SCRIPT
#!/bin/sh
# Wine's 32-bit loader, emulated. Wine starts its own path again for each program it starts: the
# name given with -0 brings it back here.
WINELOADERNOEXEC=1
export WINELOADERNOEXEC
exec $emulated/qemu-i386 -L $emulated/system -0 $emulated/lib/wine/wine \\
    $emulated/lib/wine/wine32 "\$@"
SCRIPT
chmod 755 new new/lib/wine/wine
touch new/complete
"${run[@]}" rm -rf "$emulated"
"${run[@]}" cp -R new "$emulated"
