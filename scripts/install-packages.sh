#!/usr/bin/env bash
# Installs the Debian packages that the named groups need, and nothing when all are there already.
# Where apt is not the package manager it names them and leaves the rest to the reader.
#
#   scripts/install-packages.sh GROUP...
set -euo pipefail

declare -A packages=(
    [build]="g++ cmake ninja-build libboost-dev libcli11-dev nlohmann-json3-dev libfmt-dev"
    [test]="libgtest-dev pciutils binutils graphviz mandoc zsh fish pkg-config python3 python3-jsonschema mono-mcs mono-runtime python3-pytest python3-pip python3-venv python3-setuptools python3-wheel mypy flake8 systemd"
    [fleet]="prometheus prometheus-node-exporter python3 python3-prometheus-client systemd ansible-core sqlite3"
    [report]="chromium chromium-driver python3-selenium"
    [check]="valgrind"
    [coverage]="gcovr python3"
    [lint]="clang clang-format clang-tidy"
    [fuzz]="clang libclang-rt-14-dev"
    [bench]="libbenchmark-dev libinih-dev libsimpleini-dev libglib2.0-dev pkg-config pciutils valgrind"
    [windows]="g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix clang lld llvm googletest wine wine64 libz-mingw-w64 python3 zip unzip wixl msitools"
    [package]="debhelper dpkg-dev dh-python pybuild-plugin-pyproject python3 python3-setuptools python3-wheel"
    [clean]="mmdebstrap apt-utils e2fsprogs lintian qemu-system-x86 linux-image-cloud-amd64"
    [guest]="qemu-system-x86 linux-image-cloud-amd64 busybox-static cpio pciutils python3 libudev1"
)
packages[test]+=" ${packages[fleet]} ${packages[report]}"

if [ $# -eq 0 ]; then
    echo "usage: $0 GROUP...   (groups: ${!packages[*]})" >&2
    exit 2
fi

wanted=()
for group in "$@"; do
    if [ -z "${packages[$group]+set}" ]; then
        echo "$0: no package group \"$group\" (groups: ${!packages[*]})" >&2
        exit 2
    fi
    read -r -a names <<<"${packages[$group]}"
    wanted+=("${names[@]}")
done

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    echo "$0: apt is not the package manager here; make sure that these are installed" \
         "(Debian's names): ${wanted[*]}" >&2
    exit 0
fi

missing=()
for name in "${wanted[@]}"; do
    if [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" != installed ]; then
        missing+=("$name")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

run=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "$0: not root and no sudo; install these as root: ${missing[*]}" >&2
        exit 1
    fi
    run=(sudo)
fi
# What is installed here is for tests, which start what they need themselves: no package's service
# starts now, or with the machine.
policy=/usr/sbin/policy-rc.d
if [ ! -e "$policy" ]; then
    printf '#!/bin/sh\nexit 101\n' | "${run[@]}" tee "$policy" >/dev/null
    trap '"${run[@]}" rm -f "$policy"' EXIT
    "${run[@]}" chmod 755 "$policy"
fi
echo "installing: ${missing[*]}" >&2
"${run[@]}" apt-get update -qq
"${run[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
for name in "${missing[@]}"; do
    case $name in prometheus*) "${run[@]}" update-rc.d "$name" disable ;; esac
done
