#!/usr/bin/env bash
# A file for x86 that says that it has no handlers of exceptions on the stack has no instruction that
# would register one: fs:0 is where the list of them begins. tablesTest.cpp sees the mark itself.
#
#   marksTest.sh SOURCE BUILD x86
set -euo pipefail

build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# tablesOf FILE: where the tables of C++ exceptions begin. They lie behind the code, in its section, and
# some look like the instructions sought. The file itself has no symbols; those taken from it tell.
tablesOf() {
    i686-w64-mingw32-nm -n "$1.debug" | awk '
        $3 == ".gcc_except_table" { if (tables == "") tables = $1; next }
        tables != "" && $2 ~ /^[tT]$/ { behind = $3 }
        END {
            if (behind != "") print "code behind the tables: " behind >"/dev/stderr"
            if (tables == "" || behind != "") exit 1
            print "0x" tables
        }' || { echo "$0: cannot tell where the code of $1 ends" >&2; return 1; }
}

# handlers FILE [OPTION]: the instructions that have to do with the list.
handlers() {
    i686-w64-mingw32-objdump -d --no-show-raw-insn "${@:2}" "$1" >"$work/code"
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
    tables=$(tablesOf "$build/bin/$file")
    found=$(handlers "$build/bin/$file" --stop-address="$tables")
    if [ -n "$found" ]; then
        printf '%s: %s registers a handler on the stack:\n%s\n' "$0" "$file" "$found" >&2
        exit 1
    fi
done
