#!/usr/bin/env bash
# The packed symbols belong to the packed files, which have none: each file names its symbols and
# their checksum, and an address in it leads to the function and the line.
#
#   symbolsTest.sh SOURCE BUILD TARGET     TARGET is x64 or x86
set -euo pipefail

source=$1
build=$2
target=$3
triplet=x86_64-w64-mingw32
[ "$target" = x64 ] || triplet=i686-w64-mingw32
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

"$source/scripts/package-windows.sh" "$work/package.zip" "$build"
for archive in package package-symbols; do
    unzip -q -j "$work/$archive.zip" "*/$target/*" -d "$work/files"
done
cd "$work/files"

for file in zotavpci.dll zopcibrd.dll tavctl.exe; do
    "$triplet-nm" "$file" >names 2>&1 || true
    grep -q 'no symbols' names || fail "$file has symbols: $(head -3 names)"
    # The name, filled up with zeros to four bytes, and the sum in four more, the lowest first.
    "$triplet-objcopy" --dump-section .gnu_debuglink=link "$file" copy
    python3 - "$file.debug" link <<'END' || fail "$file does not lead to its symbols"
import sys, zlib
symbols, link = sys.argv[1], open(sys.argv[2], "rb").read()
name = link.split(b"\0")[0]
place = len(name) // 4 * 4 + 4
checksum = int.from_bytes(link[place:place + 4], "little")
expected = zlib.crc32(open(symbols, "rb").read())
if name.decode() != symbols or checksum != expected:
    sys.exit(f"{name} with {checksum:08x} instead of {symbols} with {expected:08x}")
END
done

# export LIBRARY NAME: the address of an exported function, in hexadecimal digits.
export_address() {
    python3 - "$1" "$2" <<'END'
import re, subprocess, sys
tables = subprocess.run(["objdump", "-p", sys.argv[1]], capture_output=True, text=True).stdout
base = int(re.search(r"^ImageBase\s+(\w+)", tables, re.M).group(1), 16)
names = tables[tables.index("[Ordinal/Name Pointer] Table"):]
number = re.search(r"\[\s*(\d+)\].*\b" + sys.argv[2] + r"$", names, re.M).group(1)
place = re.search(r"\[\s*" + number + r"\] \+base\[\s*\d+\]\s+(\w+) Export RVA", tables).group(1)
print(f"{base + int(place, 16):x}")
END
}

# leads LIBRARY FUNCTION SOURCE: asked of the library itself, which leads to its symbols, and of
# these, both give the function and a line of its source.
leads() {
    local address asked
    address=$(export_address "$1" "$2")
    for asked in "$1" "$1.debug"; do
        "$triplet-addr2line" -f -e "$asked" "0x$address" >said
        [ "$(sed 's/^_//; q' said)" = "$2" ] || fail "$asked: $address is $(cat said)"
        grep -qxE "/zotavpci/$3:[1-9][0-9]*" said || fail "$asked: $address is in $(cat said)"
    done
    "$triplet-nm" "$1.debug" >names
    grep -qiE "^0*$address T _?$2$" names || fail "nm does not know $2"
}
leads zotavpci.dll tavPlugin_getDeviceCount source/tavPlugin.cpp
leads zopcibrd.dll ZoPciBrd_OpenSession zopcibrd/exports.cpp

# Neither folder of the build's is in any of them.
for file in *.dll *.exe *.debug; do
    ! grep -qaF -e "$source/" -e "$build/" "$file" || fail "$file names a folder of the build's"
done
