#!/usr/bin/env bash
# A file for x86 that says that it has no handlers of exceptions on the stack has no instruction that
# would register one: fs:0 is where the list of them begins. tablesTest.cpp sees the mark itself.
#
#   marksTest.sh SOURCE BUILD x86
set -euo pipefail

build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# handlers FILE: the instructions that have to do with the list. There are tables among the code, which
# look like instructions too, but hardly like these.
handlers() {
    i686-w64-mingw32-objdump -d --no-show-raw-insn "$1" >"$work/code"
    [ "$(wc -l <"$work/code")" -gt 3 ] || { echo "$0: no code in $1" >&2; exit 1; }
    grep -E '\b(mov|push|pop|xchg)l? .*%fs:(0x0\b|\()' "$work/code" || true
}

# It would see one.
cat >"$work/registers.c" <<'END'
#include <windows.h>
long answer(EXCEPTION_POINTERS* pointers);
int registers(int value) {
    __try1(answer);
    value = value * value;
    __except1;
    return value;
}
END
i686-w64-mingw32-gcc-posix -O2 -c "$work/registers.c" -o "$work/registers.obj"
[ -n "$(handlers "$work/registers.obj")" ] || { echo "$0: a handler goes unseen" >&2; exit 1; }

for file in zotavpci.dll zopcibrd.dll tavctl.exe; do
    found=$(handlers "$build/bin/$file")
    if [ -n "$found" ]; then
        printf '%s: %s registers a handler on the stack:\n%s\n' "$0" "$file" "$found" >&2
        exit 1
    fi
done
