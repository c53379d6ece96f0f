#!/usr/bin/env bash
# Runs a Windows program of a build under Wine, in a prefix of that build's own.
#
#   scripts/wine-run.sh PROGRAM.exe [ARGUMENT...]
#   TAV_WINEPREFIX=FOLDER scripts/wine-run.sh --prepare
#
# The prefix is TAV_WINEPREFIX, or the folder "wine" of the build that the program stands in. A
# prefix is made by the first program that runs in it, one at a time, or by --prepare alone: that
# takes most of a minute, which may go by while something is compiled.
set -euo pipefail

if [ "$1" != --prepare ]; then
    program=$(realpath "$1")
elif [ -z "${TAV_WINEPREFIX:-}" ]; then
    echo "$0: --prepare takes TAV_WINEPREFIX, the prefix to make" >&2
    exit 2
fi
if [ -z "${TAV_WINEPREFIX:-}" ]; then
    folder=$(dirname "$program")
    while [ "$folder" != / ] && [ ! -e "$folder/CMakeCache.txt" ]; do
        folder=$(dirname "$folder")
    done
    if [ "$folder" = / ]; then
        echo "$0: $program stands in no build folder; name a prefix with TAV_WINEPREFIX" >&2
        exit 1
    fi
    TAV_WINEPREFIX=$folder/wine
fi
export WINEPREFIX=$TAV_WINEPREFIX WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
# Neither a display nor the packages that Wine offers to fetch for other kinds of programs.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe=;${WINEDLLOVERRIDES:-}" DISPLAY=
if ! command -v wine >/dev/null; then
    echo "$0: there is no wine; scripts/install-packages.sh windows installs it" >&2
    exit 127
fi
# A Windows program runs as an ordinary user: for root under Linux no file is read-only. The server
# that opens the files comes from the first program, so all of them start without that right.
wine=(wine)
# On a machine that runs no 32-bit code, the Wine whose 32-bit loader is emulated.
emulated=/usr/local/lib/wine32-emulated
if [ -e "$emulated/complete" ]; then
    wine=("$emulated/lib/wine/wine64")
    export WINESERVER=$emulated/lib/wine/wineserver
fi
run=("${wine[@]}")
if [ "$(id -u)" -eq 0 ]; then
    run=(setpriv --bounding-set=-dac_override,-dac_read_search "${wine[@]}")
fi
if [ ! -e "$WINEPREFIX/ready" ]; then
    mkdir -p "$WINEPREFIX"
    exec 9>"$WINEPREFIX/making"
    flock 9
    if [ ! -e "$WINEPREFIX/ready" ]; then
        "${run[@]}" wineboot --init >&2 9>&-
        # A library that Wine's 32-bit ones need and that an emulated loader does not put there.
        zlib=/usr/i686-w64-mingw32/lib/zlib1.dll
        system=$WINEPREFIX/drive_c/windows/syswow64
        if [ -e "$system/ntdll.dll" ] && [ ! -e "$system/zlib1.dll" ] && [ -e "$zlib" ]; then
            cp "$zlib" "$system/"
        fi
        touch "$WINEPREFIX/ready"
    fi
    exec 9>&-
fi
[ "$1" = --prepare ] && exit
# The first program in a prefix starts Wine's own services, which keep its output open for as long as
# they run: whoever waits for its end would wait for theirs. This one has none to keep.
"${run[@]}" cmd /c exit >/dev/null 2>&1 </dev/null || true
exec "${run[@]}" "$@"
