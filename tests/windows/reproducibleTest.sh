#!/usr/bin/env bash
# The same sources give the same bytes, wherever they are and whenever they are built: files linked
# again later and elsewhere, a source compiled in another folder, archives packed again.
# scripts/check-reproducible.sh builds everything twice, which takes longer.
#
#   reproducibleTest.sh SOURCE BUILD TARGET     TARGET is x64 or x86
set -euo pipefail

source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CCACHE_DISABLE=1
mkdir -p "$work/bin" "$work/lib"

fail() {
    echo "$0: $*" >&2
    exit 1
}

# Linked as the build does, but in a folder that has all of the build's but what is written.
for entry in "$build"/*; do
    case ${entry##*/} in bin | lib) ;; *) ln -s "$entry" "$work/" ;; esac
done
cd "$work"
for file in zotavpci.dll zopcibrd.dll tavctl.exe; do
    ninja -C "$build" -t commands "bin/$file" | grep -- "-o bin/$file" >command
    [ "$(wc -l <command)" -eq 1 ] || fail "$file is not linked by one command"
    sed -i "s#cd $build/bin#cd $work/bin#g" command
    bash -e command
    cmp "$build/bin/$file" "bin/$file" || fail "$file is another one when it is linked again"
    cmp "$build/bin/$file.debug" "bin/$file.debug" || fail "the symbols of $file are others"
done
cd "$build"

# compiled SOURCE BUILD OBJECT: one source there, as the build compiles it.
compile=$(python3 - compile_commands.json "$source/source/tavPlugin.cpp" <<'END'
import json, re, sys
for entry in json.load(open(sys.argv[1])):
    if entry["file"] == sys.argv[2]:
        print(re.sub(r"^\S*ccache ", "", entry["command"]))
END
)
[ -n "$compile" ] || fail "tavPlugin.cpp is not compiled"
object=$(sed 's/.* -o \(\S*\) .*/\1/' <<<"$compile")
elsewhere=$work/a-folder/of-another-length
mkdir -p "$elsewhere/build/windows/$(dirname "$object")"
(cd "$source" && tar -c include platform pcibus machine quil pxidrivertools pciBrdWrapper \
    zopcibrd source) | tar -x -C "$elsewhere"
ln -s "$build/headers" "$elsewhere/build/windows/headers"
mkdir -p "$work/here/$(dirname "$object")"
(cd "$build" && bash -c "${compile/-o /-o $work/here/}")
(cd "$elsewhere/build/windows" &&
    bash -c "$(sed "s#$build#$elsewhere/build/windows#g; s#$source#$elsewhere#g" <<<"$compile")")
cmp "$work/here/$object" "$elsewhere/build/windows/$object" ||
    fail "a source compiled in another folder gives another object"

"$source/scripts/package-windows.sh" "$work/1.zip" "$build"
sleep 2 # what an archive can tell apart
"$source/scripts/package-windows.sh" "$work/2.zip" "$build"
cmp "$work/1.zip" "$work/2.zip" || fail "the archive is another one when it is packed again"
cmp "$work/1-symbols.zip" "$work/2-symbols.zip" || fail "the archive of symbols is another one"
