#!/usr/bin/env bash
# Runs clang-tidy over the product's own sources (not the tests) with the compile commands of a
# configured build, one file a run: over several, its analyser carries findings from one to the next.
# What was found stands at the end.
#
#   scripts/tidy.sh BUILD-FOLDER [JOBS]
set -euo pipefail
build=${1:?usage: $0 BUILD-FOLDER [JOBS]}
jobs=${2:-2}
findings=$(mktemp -d)
trap 'rm -rf "$findings"' EXIT

# How many warnings it has left out of headers that are others' is no finding.
tidy() {
    local found=$findings/${2//\//_}
    clang-tidy --quiet -p "$1" "$2" 2>&1 | grep -v '^[0-9]* warnings\? generated\.$' >"$found"
    [ "${PIPESTATUS[0]}" -eq 0 ]
}
export -f tidy
export findings

git ls-files 'source/*.cpp' 'pciBrdWrapper/*.cpp' 'pxidrivertools/*.cpp' 'quil/*.cpp' \
    'platform/*.cpp' 'pcibus/*.cpp' 'machine/*.cpp' 'zopcibrd/*.cpp' 'tavctl/*.cpp' |
    grep -v '^platform/windows/' >"$findings/files"
result=0
# shellcheck disable=SC2016 # expanded by the shell that is started
xargs -P "$jobs" -n 1 bash -c 'tidy "$0" "$1"' "$build" <"$findings/files" || result=$?
find "$findings" -type f ! -name files -size +0 -exec cat {} +
echo "clang-tidy: $(wc -l <"$findings/files") files"
exit "$result"
