#!/usr/bin/env bash
# The picture of the README is what "tavctl draw" draws of the sample machine: the same boxes, words
# and colours in the same order. Where they stand depends on the fonts of the machine that drew it.
#
#   pictureTest.sh TAVCTL SOURCE             compares
#   pictureTest.sh TAVCTL SOURCE --rewrite   draws the picture anew
set -euo pipefail
tavctl=$1
source=$2
picture=$source/docs/switchboxes.svg
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# On a machine in use: the names are stored.
mkdir "$work/names"
options=(--dump "$source/samples/switchboxes.dump" --descriptions "$source/descriptions"
    --state "$work/names")
"$tavctl" list "${options[@]}" >/dev/null
"$tavctl" draw "${options[@]}" --pci-ids "$source/tests/examples/pci.ids" -o "$work/now.svg"
if [ "${3:-}" = --rewrite ]; then
    cp "$work/now.svg" "$picture"
    exit 0
fi

# content SVG: every element in a line, without numbers of places and without the version of what
# placed them.
content() {
    tr '\n' ' ' <"$1" | sed 's/></>\n</g; s/> *</>\n</g' |
        sed -E '/^<!--/d; s/ (x|y|d|points|width|height|viewBox|transform)="[^"]*"//g'
}
content "$picture" >"$work/told"
content "$work/now.svg" | diff "$work/told" -
[ "$(grep -c '<text' "$work/told")" -gt 30 ] || { echo "the picture shows next to nothing"; exit 1; }
