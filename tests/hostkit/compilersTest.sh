#!/usr/bin/env bash
# The headers for hosts, by way of the examples: in every language level that they promise, with all
# warnings, without exceptions and types at run time; by the build's compilers, and by Clang and by
# GCC where they are installed.
#
#   compilersTest.sh SOURCE C-COMPILER C++-COMPILER
set -euo pipefail
source=$1
c_compilers=("$2")
cpp_compilers=("$3")
for each in gcc clang; do
    ! command -v "$each" >/dev/null || c_compilers+=("$each")
done
for each in g++ clang++; do
    ! command -v "$each" >/dev/null || cpp_compilers+=("$each")
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# compile COMMAND...: without a word.
compile() {
    "$@" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -O2 -I "$source/include" \
        '-DPLUGIN="zotavpci.so"' -c -o "$work/host.o" >"$work/said" 2>&1 ||
        { echo "$0: $*: $(cat "$work/said")" >&2; exit 1; }
    [ ! -s "$work/said" ] || { echo "$0: $*: $(cat "$work/said")" >&2; exit 1; }
}

# Twice, for hosts of several files.
printf '#include <tavHost.h>\n#include <tavHost.h>\n' >"$work/twice.cpp"
printf '#include <tavLibrary.h>\n#include <tavLibrary.h>\nextern int host;\n' >"$work/twice.c"
for compiler in "${c_compilers[@]}"; do
    for level in 11 17; do
        compile "$compiler" "-std=c$level" "$source/examples/c/host.c"
        compile "$compiler" "-std=c$level" "$work/twice.c"
    done
done
for compiler in "${cpp_compilers[@]}"; do
    for level in 17 20; do
        for file in "$work/twice.cpp" "$source/examples/cpp/host.cpp"; do
            compile "$compiler" "-std=c++$level" "$file"
            compile "$compiler" "-std=c++$level" -fno-exceptions -fno-rtti -Wold-style-cast "$file"
        done
    done
    # What the example was made of last needs neither memory nor exceptions.
    ! nm -C "$work/host.o" | grep -E ' U (operator new|operator delete|malloc|__cxa_throw)' ||
        { echo "$0: $compiler: the header asks for memory or raises" >&2; exit 1; }
done
