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
mkdir -p "$work/bin" "$work/lib" "$work/maps"

fail() {
    echo "$0: $*" >&2
    exit 1
}

# Linked as the build does, but in a folder that has all of the build's but what is written.
for entry in "$build"/*; do
    case ${entry##*/} in bin | lib | maps) ;; *) ln -s "$entry" "$work/" ;; esac
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

# A source as the build compiles it, and in a folder of another name. There it is compiled once more as
# a compiler cache does, which names everything from where it is.
compile=$(python3 - compile_commands.json "$source/source/cPciTavFilesystem.cpp" <<'END'
import json, re, sys
for entry in json.load(open(sys.argv[1])):
    if entry["file"] == sys.argv[2]:
        print(re.sub(r"^\S*ccache ", "", entry["command"]))
END
)
[ -n "$compile" ] || fail "cPciTavFilesystem.cpp is not compiled"
object=$(sed 's/.* -o \(\S*\) .*/\1/' <<<"$compile")
(cd "$build" && bash -c "${compile/ -o $object / -o $work/here.obj }")

elsewhere=$work/a-folder/of-another-length
mkdir -p "$elsewhere/build/windows"
(cd "$source" && tar -c include platform pcibus machine quil pxidrivertools pciBrdWrapper \
    zopcibrd source) | tar -x -C "$elsewhere"
ln -s "$build/headers" "$elsewhere/build/windows/headers"
cd "$elsewhere/build/windows"
there=$(sed "s#$build#$PWD#g; s#$source#$elsewhere#g" <<<"$compile")
from_here=$(sed "s#\(-I\|-isystem\|-c\) *$PWD/#\1 #g; s#\(-I\|-isystem\|-c\) *$elsewhere#\1 ../..#g" \
    <<<"$there")
[ "$there" != "$from_here" ] || fail "every name is from the build folder already"
for command in "$there" "$from_here"; do
    bash -c "${command/ -o $object / -o $work/there.obj }"
    cmp "$work/here.obj" "$work/there.obj" ||
        fail "a source compiled in another folder gives another object: $command"
done

"$source/scripts/package-windows.sh" "$work/1.zip" "$build"
sleep 2 # what an archive can tell apart
"$source/scripts/package-windows.sh" "$work/2.zip" "$build"
cmp "$work/1.zip" "$work/2.zip" || fail "the archive is another one when it is packed again"
cmp "$work/1-symbols.zip" "$work/2-symbols.zip" || fail "the archive of symbols is another one"
