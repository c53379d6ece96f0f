#!/usr/bin/env bash
# Builds and runs the tests of the rooms that the files changed since the last commit belong to, and
# of the rooms above those: what the change can break on this system. Without a change it takes the
# last commit's. Left to `make test`: emulated machines, Windows, and what tries the product's bounds
# (the tests of reliability, and lists of gigabytes).
#
#   scripts/quick.sh BUILD-FOLDER [JOBS]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?usage: $0 BUILD-FOLDER [JOBS]}
jobs=${2:-2}

# From the bottom up; a room may use those before it. The Python package comes first: what it meets of
# the product are the five functions alone, whose own tests are in plugin.
rooms=(python platform pcibus machine quil pxidrivertools zopcibrd pciBrdWrapper source plugin hostkit
    tavctl system examples)

changed=$(git diff --name-only HEAD; git ls-files --others --exclude-standard)
[ -n "$changed" ] || changed=$(git show --format= --name-only HEAD)

declare -A wanted=()
# want ROOM: the room and those above it.
want() {
    local room above=
    for room in "${rooms[@]}"; do
        [ "$room" = "$1" ] && above=yes
        [ -n "$above" ] && wanted[$room]=yes
    done
    return 0
}
while read -r file; do
    case $file in
        *.md | docs/* | packaging/* | bench/* | fuzz/* | tests/guest/* | tests/windows/* | \
            tests/faults/* | tests/hostile/*) ;;
        python/* | tests/python/*) wanted[python]=yes ;;
        tests/support/* | tests/CMakeLists.txt | cmake/* | CMakeLists.txt | include/*) want platform ;;
        descriptions/* | samples/*) want plugin ;;
        tests/*/*)
            room=${file#tests/}
            wanted[${room%%/*}]=yes
            ;;
        */*) want "${file%%/*}" ;;
    esac
done <<<"$changed"

programs=()
names=()
for room in "${rooms[@]}"; do
    [ -n "${wanted[$room]:-}" ] || continue
    names+=("$room")
    case $room in
        python) programs+=(zotavpci zopcibrd tavctl) ;;
        pciBrdWrapper)
            programs+=(test_pciBrdWrapper{,MissingSymbol,NotALibrary,NoLibrary})
            names+=(pciBrdWrapper{MissingSymbol,NotALibrary,NoLibrary})
            ;;
        tavctl)
            programs+=(test_tavctl{,Bridges})
            names+=(tavctlBridges)
            ;;
        *) programs+=("test_$room") ;;
    esac
done
if [ ${#names[@]} -eq 0 ]; then
    echo "quick: no room with quick tests was changed; run make test" >&2
    exit 1
fi
echo "quick: ${names[*]}"
cmake --build "$build" -j "$jobs" --target "${programs[@]}"
ctest --test-dir "$build" -j "$jobs" --output-on-failure --no-tests=error --progress \
    -R "^($(IFS='|'; echo "${names[*]}"))/" -E /AbsurdLists
