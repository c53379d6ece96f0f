#!/usr/bin/env bash
# Packs a build for Windows, unpacks the archive elsewhere and follows its README there.
#
#   packageTest.sh SOURCE BUILD TARGET     TARGET is x64 or x86
set -euo pipefail

source=$1
build=$2
target=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

"$source/scripts/package-windows.sh" "$work/package.zip" "$build"
mkdir "$work/unpacked"
unzip -q "$work/package.zip" -d "$work/unpacked"
cd "$work/unpacked"
folders=(*)
[ "${#folders[@]}" -eq 1 ] || fail "not one folder at the top: ${folders[*]}"
cd "${folders[0]}"

{
    printf '%s\n' README.txt cmake/zotavpciConfig{,Version}.cmake docs/{descriptions,fleet,hosts,rack}.md \
        include/{tavHost.h,tavLibrary.h,tavPlugin.h,zopcibrd.h,zotavpci.def} samples/switchboxes.dump \
        "$target"/{THIRD-PARTY.txt,tavctl.exe,zopcibrd.dll,zotavpci.dll,zotavpci.lib}
    (cd "$source" && find "descriptions/PCI Hardware Descriptions" -name '*.ini' &&
        find docs/schema -name '*.json' && find examples -type f ! -path 'examples/python/*')
} | LC_ALL=C sort >"$work/expected"
find . -type f | sed 's|^\./||' | LC_ALL=C sort >"$work/found"
diff -u "$work/expected" "$work/found" || fail "the archive does not hold what it should"

unzip -Z1 "$work/package-symbols.zip" | LC_ALL=C sort >"$work/symbols"
printf '%s\n' "${folders[0]}-symbols/$target"/{tavctl.exe,zopcibrd.dll,zotavpci.dll}.debug |
    diff -u - "$work/symbols" || fail "the archive of symbols does not hold what it should"

# The list of exports names the library, and what the header declares.
{
    echo "LIBRARY zotavpci.dll"
    echo EXPORTS
    grep -o 'TAVPLUGIN_CALL tavPlugin_[a-zA-Z0-9]*(' include/tavPlugin.h |
        sed 's/TAVPLUGIN_CALL \(.*\)(/    \1/'
} | diff -u - <(tr -d '\r' <include/zotavpci.def) || fail "zotavpci.def is not the header's"

# Every line of every text ends as Windows has it, and nothing is left to fill in.
while read -r file; do
    case $file in *.exe | *.dll | *.lib) continue ;; esac
    lines=$(wc -l <"$file")
    [ "$lines" -gt 0 ] || fail "$file: no lines"
    [ "$(grep -c $'\r$' "$file")" -eq "$lines" ] || fail "$file: lines without CR LF"
    ! grep -q '@[A-Z_]*@' "$file" || fail "$file: a value is missing"
done <"$work/found"

# The notices are of all that is inside, by the bill of the same files, and hold the licences.
"$source/scripts/make-sbom.py" "$build" -o "$work/bill.spdx.json"
"$source/tests/packaging/checkBill.py" "$work/bill.spdx.json" --files "$target" \
    --notices "$target/THIRD-PARTY.txt"

# The README's first command, to the letter, and what it says of it.
cd "$target"
command=$(sed -n 's/\r$//; s/^  \(tavctl list --dump .*\)/\1/p' ../README.txt)
[ -n "$command" ] || fail "the README has no first command"
read -r -a words <<<"${command//\\/\\\\}"
export TAV_WINEPREFIX=$build/wine
"$source/scripts/wine-run.sh" ./tavctl.exe "${words[@]:1}" --json >"$work/listed"
devices=$(grep -o '"index":' "$work/listed" | wc -l)
[ "$devices" -eq 4 ] || fail "$devices devices instead of 4: $(cat "$work/listed")"
[ -s zotavpci.ini ] || fail "no stored names beside the tool"
for name in TAV1 TAV2 TAV3 TAVCard1; do
    grep -q "\"name\":\"$name\"" "$work/listed" || fail "no device is called $name"
done
