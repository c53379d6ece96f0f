#!/usr/bin/env bash
# Runs clang-tidy over the product's own sources (not the tests) with the compile commands of a
# configured build, one file a run: over several, its analyser carries findings from one to the next.
#
#   scripts/tidy.sh BUILD-FOLDER [JOBS]
set -euo pipefail
build=${1:?usage: $0 BUILD-FOLDER [JOBS]}
jobs=${2:-2}
git ls-files 'source/*.cpp' 'pciBrdWrapper/*.cpp' 'pxidrivertools/*.cpp' 'quil/*.cpp' \
    'platform/*.cpp' 'pcibus/*.cpp' 'machine/*.cpp' 'zopcibrd/*.cpp' 'tavctl/*.cpp' |
    grep -v '^platform/windows/' |
    xargs -P "$jobs" -n 1 clang-tidy --quiet -p "$build"
