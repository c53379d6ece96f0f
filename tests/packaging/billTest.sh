#!/usr/bin/env bash
# The bill of what was built is whole, of these very files, and the same each time it is written.
#
#   billTest.sh SOURCE BUILD
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SOURCE_DATE_EPOCH=1790000000
"$source/scripts/make-sbom.py" "$build" -o "$work/first.json"
"$source/scripts/make-sbom.py" "$build" -o "$work/second.json"
cmp "$work/first.json" "$work/second.json"
"$source/scripts/make-sbom.py" "$build" --third-party -o "$work/THIRD-PARTY.txt"
"$source/tests/packaging/checkBill.py" "$work/first.json" --files "$build/bin" \
    --notices "$work/THIRD-PARTY.txt"
for name in Boost CLI11 '{fmt}' 'JSON for Modern C++' libc.so.6 libstdc++.so.6; do
    grep -qF "\"name\": \"$name\"" "$work/first.json" || { echo "the bill lacks $name"; exit 1; }
done
