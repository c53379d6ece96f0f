#!/usr/bin/env bash
# What a host loads is small: the libraries carry of the run-time what they need and no more.
#
#   sizeTest.sh SOURCE-FOLDER BUILD-FOLDER TARGET
set -euo pipefail
build=$2 most=600000
for library in zotavpci.dll zopcibrd.dll; do
    size=$(stat -c %s "$build/bin/$library")
    # A library without its code would be small, too.
    if [ "$size" -gt $most ] || [ "$size" -lt 100000 ]; then
        echo "$library has $size bytes; expected at most $most. $build/maps/$library.map says of what"
        exit 1
    fi
    # The parts of the run-time that came with a path of the standard library, or with a stream.
    if grep -qE 'libstdc\+\+\.a\((locale_init|fstream-inst|cp-demangle)\.o\)' \
        "$build/maps/$library.map"; then
        echo "$library has streams, locales or the demangler of the run-time inside"
        exit 1
    fi
done
