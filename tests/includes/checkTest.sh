#!/usr/bin/env bash
# The check of includes against folders that it must refuse, and one that it must not.
#
#   checkTest.sh CHECK
set -euo pipefail
check=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# expect ENDING TEXT: the check ends with this status and prints this line.
expect() {
    local status=0
    "$check" "$folder" >"$folder/said" 2>&1 || status=$?
    if [ "$status" -ne "$1" ] || ! grep -qxF -- "$2" "$folder/said"; then
        echo "expected status $1 and: $2"
        echo "got status $status and:"
        cat "$folder/said"
        exit 1
    fi
}

expect 1 'platform: no file of this room was found'

# Each room with an empty header.
rooms='include platform pcibus machine quil pxidrivertools zopcibrd pciBrdWrapper source
       tavctl/words tavctl/bus tavctl/options tavctl/description tavctl/host tavctl/match
       tavctl/recordings tavctl/view
       tavctl/list tavctl/where tavctl/tree tavctl/draw tavctl/names tavctl/record tavctl/lint tavctl/explain
       tavctl/describe tavctl/mock tavctl/monitor tavctl/metrics tavctl/report tavctl/completion tavctl'
for room in $rooms; do
    mkdir -p "$folder/$room"
    : >"$folder/$room/own.h"
done
mkdir -p "$folder/platform/linux"
: >"$folder/platform/linux/side.h"
: >"$folder/platform/inputFile.h"
expect 0 '0 includes in 34 files, none of them upward'

# include FROM TO: one include, in a file of that name.
include() {
    printf '#include "%s"\n' "$2" >"$folder/$1"
}

include tavctl/describe/own.h tavctl/explain/own.h
include tavctl/mock/own.h tavctl/lint/own.h
include tavctl/metrics/own.h tavctl/list/own.h
include platform/linux/side.h platform/own.h
include pcibus/own.h platform/inputFile.h
expect 0 '5 includes in 34 files, none of them upward'

refuse() {
    include "$1" "$2"
    expect 1 "$1:1: $2 $3"
    : >"$folder/$1"
}
refuse platform/own.h pcibus/own.h 'is not below platform'
refuse tavctl/words/own.h tavctl/own.h 'is not below tavctl/words'
refuse tavctl/explain/own.h tavctl/describe/own.h 'is not below tavctl/explain'
refuse tavctl/lint/own.h tavctl/mock/own.h 'is not below tavctl/lint'
refuse tavctl/list/own.h tavctl/metrics/own.h 'is not below tavctl/list'
refuse quil/own.h platform/linux/side.h "is platform/linux's own"
refuse pcibus/own.h platform/own.h 'is more of the system than pcibus may use'
refuse source/own.h tests/own.h "is no file of the product's"
refuse source/own.h own.h "is no file of the product's"
refuse source/own.h quil/gone.h 'is not there'

mkdir "$folder/tavctl/elsewhere"
: >"$folder/tavctl/elsewhere/own.h"
expect 1 'tavctl/elsewhere/own.h: stands in no room that is known here'
