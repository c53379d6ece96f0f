#!/usr/bin/env bash
# Hosts in C and C++ find the product as their builds do, by CMake's package and by pkg-config's file,
# and load the plug-in from where these say.
#
#   consumerTest.sh PLACE SOURCE BUILD C-COMPILER C++-COMPILER
#
# PLACE: build      the build folder
#        prefix     where "cmake --install" put it
#        moved      the same, moved afterwards
#        multiarch  below a folder named after the machine, moved too
set -euo pipefail
place=$1
source=$2
build=$3
export CC=$4 CXX=$5
here=$source/tests/packaging
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0 $place: $*" >&2
    exit 1
}

prefix=$work/installed
libraries=lib
case $place in
build) ;;
multiarch)
    libraries=lib/machine-linux-gnu
    cmake -S "$here/multiarch" -B "$work/multiarch" -DCMAKE_INSTALL_LIBDIR=$libraries \
        -DPRODUCT_SOURCE="$source" -DPRODUCT_BUILD="$build" >/dev/null
    cmake --install "$work/multiarch" --prefix "$prefix" >/dev/null
    ;;
*)
    cmake --install "$build" --prefix "$prefix" >/dev/null
    libraries=$(cd "$prefix" && find . -name zotavpci.so -printf '%h\n')
    libraries=${libraries#./}
    libraries=${libraries%/zotavpci}
    ;;
esac
if [ "$place" != build ]; then
    if [ "$place" != prefix ]; then
        mkdir "$work/else where"
        mv "$prefix" "$work/else where/moved"
        prefix=$work/"else where"/moved
    fi
    cmake_folder=$prefix/$libraries/cmake/zotavpci
    pkg_config_folder=$prefix/$libraries/pkgconfig
    plugin=$prefix/$libraries/zotavpci/zotavpci.so
    # Nothing that was written remembers another folder.
    ! grep -rIl -e "$source" -e "$build" "$cmake_folder" "$pkg_config_folder" ||
        fail "these name a folder of the build"
else
    cmake_folder=$build
    pkg_config_folder=$build
    plugin=$build/bin/zotavpci.so
fi

mkdir "$work/names"
cat >"$work/tav-manager.conf" <<END
[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]
Path = $source/descriptions/
ConfigPath = $work/names/
END
export TAV_MANAGER_CONF=$work/tav-manager.conf TAV_PCI_DUMP=$source/samples/switchboxes.dump

# expect_devices HOST: it lists what the sample bus has.
expect_devices() {
    "$1" | diff - <(printf '%s\n' 'TAV-B3 Switch Box' 'TAV-B3 Switch Box' 'TAV-C1 Adapter Card' \
        'TAV-W7 Wide Switch Box') || fail "$1 does not list the devices of the sample bus"
}

# expect_example FILE: an example told of all devices, and of all ports.
expect_example() {
    for name in TAV1 TAV2 TAVCard1 TAV3; do
        grep -q "^$name: TAV-" "$1" || fail "no $name: $(cat "$1")"
    done
    [ "$(grep -c '^  port ' "$1")" -eq 15 ] || fail "not 15 ports: $(cat "$1")"
    grep -q '^  port C4: bus 45, x16' "$1" || fail "no port C4: $(cat "$1")"
}

cmake -S "$here/host" -B "$work/by-cmake" -DCMAKE_BUILD_TYPE=Release \
    "-Dzotavpci_DIR=$cmake_folder" >/dev/null
cmake --build "$work/by-cmake" >/dev/null
for language in c cpp; do
    expect_devices "$work/by-cmake/host_$language"
    strings "$work/by-cmake/host_$language" | grep -qxF "$plugin" ||
        fail "the host in $language loads another plug-in than $plugin"
done

# The examples as they are: built by their own files, from where they are installed.
examples=$source/examples
[ ! -e "$prefix/share/doc/zotavpci" ] || examples=$prefix/share/doc/zotavpci/examples/hosts
for language in c cpp; do
    cmake -S "$examples/$language" -B "$work/example-$language" \
        "-Dzotavpci_DIR=$cmake_folder" >/dev/null
    cmake --build "$work/example-$language" >/dev/null
    "$work/example-$language/host" >"$work/listed" || fail "the example in $language fails"
    expect_example "$work/listed"
    status=0
    TAV_MANAGER_CONF=/nonexistent "$work/example-$language/host" >"$work/listed" 2>&1 || status=$?
    [ "$status" -eq 1 ] && grep -q 'status -52003 .*no configuration' "$work/listed" ||
        fail "the example in $language ends with $status: $(cat "$work/listed")"
done
mkdir "$work/example-csharp"
cp "$examples/csharp/host.exe.config" "$work/example-csharp/"
mcs -warnaserror "-out:$work/example-csharp/host.exe" "$examples/csharp/Host.cs"
LD_LIBRARY_PATH=$(dirname "$plugin") mono "$work/example-csharp/host.exe" >"$work/listed" ||
    fail "the example in csharp fails"
expect_example "$work/listed"
status=0
mono "$work/example-csharp/host.exe" >"$work/listed" 2>&1 || status=$?
[ "$status" -eq 1 ] && grep -q '^DllNotFoundException: ' "$work/listed" ||
    fail "the example in csharp ends with $status without the plug-in: $(cat "$work/listed")"

export PKG_CONFIG_PATH=$pkg_config_folder
told=$(pkg-config --variable=plugin zotavpci)
[ "$(realpath "${told//\\/}")" = "$(realpath "$plugin")" ] || fail "pkg-config tells of $told"
[ -e "$(pkg-config --variable=plugindir zotavpci | tr -d '\\')/zopcibrd.so" ] ||
    fail "no bridge library in the folder that pkg-config tells of"
[ -z "$(pkg-config --libs zotavpci)" ] || fail "pkg-config would have the plug-in linked"
[ "$(pkg-config --modversion zotavpci)" = \
    "$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")" ] ||
    fail "pkg-config tells another version"
flags=()
eval "flags=($(pkg-config --cflags zotavpci))"
warnings=(-Wall -Wextra -Wpedantic -Werror)
"$CC" -std=c11 "${warnings[@]}" "${flags[@]}" "-DPLUGIN=\"${told//\\/}\"" "$here/host/host.c" \
    -o "$work/host_c" -ldl
"$CXX" -std=c++11 "${warnings[@]}" "${flags[@]}" "-DPLUGIN=\"${told//\\/}\"" "$here/host/host.cpp" \
    -o "$work/host_cpp" -ldl
expect_devices "$work/host_c"
expect_devices "$work/host_cpp"
