#!/usr/bin/env bash
# The public headers in the hands of Microsoft's compilers, as Clang stands in for them: every
# language level, every target, every default calling convention, all warnings. And GCC on this
# system.
#
#   headerTest.sh SOURCE
set -euo pipefail

source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

# Uses whatever a header has that only shows in use. Both are included twice.
cat >"$work/use.c" <<'END'
#include "include/tavPlugin.h"
#include "include/tavPlugin.h"
#include "zopcibrd/zopcibrd.h"
#include "zopcibrd/zopcibrd.h"
int32_t use(uint32_t index);
int32_t use(uint32_t index) {
    char text[TAVPLUGIN_TEXT_SIZE];
    int32_t(TAVPLUGIN_CALL * initialize)(void) = tavPlugin_initialize;
    int32_t(ZOPCIBRD_CALL * openSession)(uint32_t, uint32_t*) = ZoPciBrd_OpenSession;
    uint32_t count = 0;
    int32_t sum = initialize() + openSession(0, &count) + tavPlugin_getDeviceCount(&count);
    sum += tavPlugin_getDeviceAttributeI32(0, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, index),
                                           &sum);
    sum += tavPlugin_getDeviceAttributeUTF8(0, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, 1), text);
    tavPlugin_finalize();
    return sum;
}
END
cp "$work/use.c" "$work/use.cpp"

# All that is left out: nobody asks of the headers to be C++98 as well.
silent=(-Wno-c++98-compat -Wno-c++98-compat-pedantic)

# compile COMPILER OPTION... FILE: without a word.
compile() {
    "$@" -I "$source" >"$work/said" 2>&1 || fail "$*: $(cat "$work/said")"
    [ ! -s "$work/said" ] || fail "$*: $(cat "$work/said")"
}

for target in x86_64 i686 aarch64; do
    conventions=(cdecl)
    [ "$target" != i686 ] || conventions=(cdecl stdcall fastcall vectorcall)
    for convention in "${conventions[@]}"; do
        microsoft=(clang "--target=$target-pc-windows-msvc" -ffreestanding -Weverything -Werror)
        [ "$target" != i686 ] || microsoft+=(-Xclang "-fdefault-calling-conv=$convention")
        compile "${microsoft[@]}" -std=c11 -c "$work/use.c" -o "$work/$target-$convention.obj"
        for level in 14 20; do
            compile "${microsoft[@]}" "${silent[@]}" "-std=c++$level" -fsyntax-only "$work/use.cpp"
        done
    done
done

# Whatever a host's default is, it asks for the names that the libraries export.
wanted="_ZoPciBrd_OpenSession _tavPlugin_finalize _tavPlugin_getDeviceAttributeI32"
wanted+=" _tavPlugin_getDeviceAttributeUTF8 _tavPlugin_getDeviceCount _tavPlugin_initialize "
for convention in cdecl stdcall fastcall vectorcall; do
    asked=$(llvm-nm --undefined-only --format=just-symbols "$work/i686-$convention.obj" |
        LC_ALL=C sort | tr '\n' ' ')
    [ "$asked" = "$wanted" ] || fail "$convention: the host asks for $asked"
done

for level in c11 c17; do
    compile gcc "-std=$level" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only \
        "$work/use.c"
done
for level in 14 17 20; do
    compile g++ "-std=c++$level" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast \
        -Werror -fsyntax-only "$work/use.cpp"
done
