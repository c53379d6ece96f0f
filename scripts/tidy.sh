#!/usr/bin/env bash
# Runs clang-tidy over the product's own sources (not the tests) with the compile commands of a
# configured build.
#
#   scripts/tidy.sh BUILD-FOLDER [JOBS]
set -euo pipefail
build=${1:?usage: $0 BUILD-FOLDER [JOBS]}
jobs=${2:-2}
git ls-files 'source/*.cpp' 'pciBrdWrapper/*.cpp' 'pxidrivertools/*.cpp' 'quil/*.cpp' \
    'platform/*.cpp' 'pcibus/*.cpp' 'zopcibrd/*.cpp' 'tavctl/*.cpp' |
    grep -v '^platform/windows/' |
    xargs -P "$jobs" -n 4 clang-tidy --quiet -p "$build"
