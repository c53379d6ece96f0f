#!/usr/bin/env bash
# The bill of a build tells which header-only library is in which file: those that were included, and
# no other that is installed. It fails where it cannot say what something is.
#
#   smallBillTest.sh SOURCE C++-COMPILER
set -euo pipefail
source=$1
export CXX=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

# build OTHER: a small build, with a header more in its plug-in.
build() {
    cmake -S "$source/tests/packaging/smallBuild" -B "$work/build" -G Ninja \
        -DPRODUCT_SOURCE="$source" -DOTHER="$1" >/dev/null
    cmake --build "$work/build" >/dev/null
}
bill() {
    "$source/scripts/make-sbom.py" "$work/build" -o "$work/bill.json"
}
# inside FILE: the header-only libraries that the bill tells of.
inside() {
    python3 - "$work/bill.json" "$1" <<'END'
import json, sys
bill = json.load(open(sys.argv[1], encoding="utf-8"))
names = {each["SPDXID"]: each["name"] for each in bill["packages"]}
file = next(each["SPDXID"] for each in bill["files"] if each["fileName"].endswith("/" + sys.argv[2]))
print(",".join(sorted(names[each["relatedSpdxElement"]] for each in bill["relationships"]
                      if each["relationshipType"] == "STATIC_LINK" and each["spdxElementId"] == file
                      and each["comment"] == "Inside: headers")))
END
}
expect() {
    local told
    told=$(inside "$1")
    [ "$told" = "$2" ] || fail "$1 has \"$told\" inside instead of \"$2\""
}

export SOURCE_DATE_EPOCH=1790000000
build ""
bill
"$source/tests/packaging/checkBill.py" "$work/bill.json" --files "$work/build/bin"
expect tavctl "Boost,JSON for Modern C++"
expect zotavpci.so "Boost"
expect zopcibrd.so ""
grep -q '"versionInfo": "1.2.3"' "$work/bill.json" || fail "the version is not the build's"
grep -q '"created": "2026-09-21T14:13:20Z"' "$work/bill.json" || fail "the time is not the one told"
! grep -q '{fmt}\|CLI11' "$work/bill.json" || fail "a library that nobody includes is told of"

build fmt/core.h
bill
expect zotavpci.so "Boost,GNU C++ library (libstdc++),{fmt}"

# Something installed that nobody has looked at the licence of.
build gtest/gtest_prod.h
! bill 2>"$work/said" || fail "the bill has an unknown library"
grep -q 'gtest_prod.h .* is of no part that is known' "$work/said" || fail "$(cat "$work/said")"

# A licence that the package no longer states.
cd "$source/scripts"
python3 -B - <<'END'
import dataclasses
from bill import components, debian, parts
part = parts.Part(components.FMT, "libfmt-dev")
part.check_licence()
part.component = dataclasses.replace(components.FMT, evidence=("an entirely different licence",))
try:
    part.check_licence()
except debian.BillError:
    pass
else:
    raise SystemExit("a licence is stated that the package does not have")
END
