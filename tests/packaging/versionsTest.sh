#!/usr/bin/env bash
# A build that asks for a version gets the product of that main number, not older than asked for, and
# no other.
#
#   versionsTest.sh BUILD
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")
IFS=. read -r major minor patch <<<"$version"

# finds VERSION
finds() {
    cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES NONE)
find_package(zotavpci $1 REQUIRED)
if(NOT zotavpci_VERSION VERSION_EQUAL "$version")
    message(FATAL_ERROR "found \${zotavpci_VERSION}")
endif()
END
    rm -rf "$work/build"
    cmake -S "$work" -B "$work/build" "-Dzotavpci_DIR=$build" >"$work/said" 2>&1
}

for wanted in "" "$major" "$major.$minor" "$version"; do
    finds "$wanted" || { cat "$work/said"; echo "$version is not found for \"$wanted\""; exit 1; }
done
for refused in $((major - 1)) $((major + 1)) "$major.$((minor + 1))" "$major.$minor.$((patch + 1))"; do
    ! finds "$refused" || { echo "$version is found for \"$refused\""; exit 1; }
    grep -q 'compatible with requested' "$work/said" || { cat "$work/said"; exit 1; }
done
