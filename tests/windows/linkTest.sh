#!/usr/bin/env bash
# Hosts are linked with the packed import library by Microsoft's rules, with every option as it is
# when nothing is said, by GNU's, and by a project that finds it by CMake's package; they run, and the
# functions are the right ones.
#
#   linkTest.sh SOURCE BUILD TARGET     TARGET is x64 or x86
set -euo pipefail

source=$1
build=$2
target=$3
here=$source/tests/windows
if [ "$target" = x64 ]; then
    microsoft=x86_64-pc-windows-msvc
    gnu=x86_64-w64-mingw32
else
    microsoft=i686-pc-windows-msvc
    gnu=i686-w64-mingw32
fi
export TAV_WINEPREFIX=$build/wine
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

"$source/scripts/package-windows.sh" "$work/package.zip" "$build"
unzip -q "$work/package.zip" -d "$work/unpacked"
package=$(echo "$work"/unpacked/*)
cd "$package/$target"

# The entry point without a run-time library is called so.
compile() {
    clang "--target=$microsoft" -std=c11 -ffreestanding -O1 -Dmain=mainCRTStartup -Wall -Wextra \
        -Werror -I "$package/include" -c "$here/linkHost.c" "$@"
}
link() {
    lld-link /nologo /entry:mainCRTStartup /subsystem:console "$@"
}
# answers PROGRAM: the program runs, and finds the libraries beside it, on a recorded bus.
answers() {
    local status=0
    TAV_PCI_DUMP=$source/samples/switchboxes.dump "$source/scripts/wine-run.sh" "./$1" || status=$?
    [ "$status" -eq 42 ] || fail "$1: ended with $status instead of 42"
}

compile -o "$work/host.obj"
link /out:microsoft.exe "$work/host.obj" zotavpci.lib
answers microsoft.exe

# With another calling convention as the host's default.
if [ "$target" = x86 ]; then
    compile -Xclang -fdefault-calling-conv=stdcall -o "$work/stdcall.obj"
    # The entry point alone has the other convention's name.
    link /alternatename:_mainCRTStartup=_mainCRTStartup@0 /out:stdcall.exe \
        "$work/stdcall.obj" zotavpci.lib
    answers stdcall.exe
fi

"$gnu-gcc-posix" -std=c11 -Wall -Wextra -Werror -I "$package/include" "$here/linkHost.c" -L . \
    -lzotavpci -o gnu.exe
answers gnu.exe

# As a project that finds the package by CMake.
cmake -S "$here/cmakeHost" -B "$work/cmake" -DCMAKE_SYSTEM_NAME=Windows \
    "-DCMAKE_C_COMPILER=$gnu-gcc-posix" "-Dzotavpci_DIR=$package/cmake" >/dev/null
cmake --build "$work/cmake" >/dev/null
cp "$work/cmake/host.exe" by-cmake.exe
answers by-cmake.exe

# The examples, which load the plug-in as they run, by their own files.
for language in c cpp; do
    compiler=$gnu-gcc-posix
    name=C
    [ "$language" = c ] || { compiler=$gnu-g++-posix && name=CXX; }
    cmake -S "$package/examples/$language" -B "$work/example-$language" \
        -DCMAKE_SYSTEM_NAME=Windows "-DCMAKE_${name}_COMPILER=$compiler" \
        -DCMAKE_EXE_LINKER_FLAGS=-static "-Dzotavpci_DIR=$package/cmake" >/dev/null
    cmake --build "$work/example-$language" >/dev/null
    cp "$work/example-$language/host.exe" "example-$language.exe"
    status=0
    TAV_PCI_DUMP=$source/samples/switchboxes.dump "$source/scripts/wine-run.sh" \
        "./example-$language.exe" zotavpci.dll >"$work/said" 2>&1 || status=$?
    [ "$status" -eq 1 ] && grep -q 'status -52003 .*no configuration' "$work/said" ||
        fail "the example in $language ends with $status: $(cat "$work/said")"
done

# The kind of import library that GNU's own tools write. On x86 Microsoft's rules refuse it, which is
# what this test is there to see.
if [ "$target" = x86 ]; then
    "$gnu-dlltool" -d "$package/include/zotavpci.def" -l "$work/old.lib"
    if link /out:"$work/old.exe" "$work/host.obj" "$work/old.lib" 2>"$work/said"; then
        fail "an import library without the marks of safe handlers was linked"
    fi
    grep -qi safeseh "$work/said" || fail "refused for another reason: $(cat "$work/said")"
fi
