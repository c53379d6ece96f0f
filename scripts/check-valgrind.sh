#!/usr/bin/env bash
# Runs the product whole under valgrind's memcheck: tavctl's listing of the sample machine, twice on
# one state folder, so that names are given and found again, and a whole-system case with the runner
# that starts tavctl. Fails on any error and on memory that is definitely or indirectly lost.
# Nothing of the product is suppressed; valgrind.supp names one reading of the run-time linker's.
#
#   scripts/check-valgrind.sh BINARIES
set -euo pipefail
if [ $# -ne 1 ]; then
    echo "usage: $0 BINARIES" >&2
    exit 2
fi
binaries=$1
cd "$(dirname "$0")/.."
state=$(mktemp -d)
trap 'rm -rf "$state"' EXIT

check() {
    valgrind --quiet --tool=memcheck --trace-children=yes --error-exitcode=99 \
        --leak-check=full --show-leak-kinds=definite,indirect \
        --errors-for-leak-kinds=definite,indirect --suppressions=scripts/valgrind.supp "$@"
}

runs=0
for words in "list --json" list "names check" "explain"; do
    # shellcheck disable=SC2086 # several words
    check "$binaries/tavctl" $words --dump samples/switchboxes.dump --descriptions descriptions \
        --state "$state" >"$state/output"
    runs=$((runs + 1))
done
check "$binaries/test_system" --gtest_filter='*.sample_machine:*.names_kept:*.bad_number' >"$state/output"
cases=$(sed -n 's/.*\[  PASSED  \] \([0-9]*\) test.*/\1/p' "$state/output")
if [ "${cases:-0}" -eq 0 ]; then
    cat "$state/output" >&2
    echo "$0: no whole-system case was run" >&2
    exit 1
fi
echo "figure: $runs commands of tavctl under valgrind without an error or a leak"
echo "figure: $cases whole-system cases under valgrind without an error or a leak"
