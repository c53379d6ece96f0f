#!/usr/bin/env bash
# The version stands in one place, CMakeLists.txt, and everything that tells one tells that.
#
#   oneVersionTest.sh SOURCE BUILD VERSION
set -euo pipefail
source=$1
build=$2
version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$0: $*" >&2
    exit 1
}

# No other file writes a number like it. The history of versions does, and what is made from it.
main=${version%%.*}
grep -rnIE --exclude-dir=.git --exclude-dir=build --exclude-dir=.cache \
    "(^|[^0-9.])$main\.[0-9]+\.[0-9]+([^0-9.]|\.?$)" "$source" |
    grep -vE "^$source/(CHANGELOG.md|debian/changelog):" >"$work/written" || true
expected="$source/CMakeLists.txt:[0-9]*:project(zotavpci VERSION $version LANGUAGES C CXX"
grep -q "^$expected\$" "$work/written" || fail "CMakeLists.txt does not tell the version $version"
grep -v "^$expected\$" "$work/written" >"$work/stray" || true
[ ! -s "$work/stray" ] || fail "the version is written elsewhere too:"$'\n'"$(cat "$work/stray")"

# tell WHAT TEXT EXPECTED
tell() {
    [ "$2" = "$3" ] || fail "$1 tells $2 instead of $3"
}
cmake --install "$build" --prefix "$work/installed" >/dev/null
tavctl=$work/installed/bin/tavctl
tell "tavctl --version" "$("$tavctl" --version)" "tavctl $version"
tell "tavctl --version --json" "$("$tavctl" --version --json)" \
    "{\"version\":1,\"program\":\"tavctl\",\"programVersion\":\"$version\"}"
tell "a recording" "$("$tavctl" record --dump "$source/samples/switchboxes.dump" | head -n 1 |
    cut -d ' ' -f 1-5)" "# Recorded by tavctl $version"
pages=0
while read -r page; do
    tell "$page" "$(sed -n 's/^\.TH .* "\(tavctl [^"]*\)" "TAV Manager"$/\1/p' "$page")" \
        "tavctl $version"
    ! grep -n '@[A-Z_]*@' "$page" || fail "$page: a value is missing"
    pages=$((pages + 1))
done < <(find "$work/installed/share/man" -type f)
tell "the manual" "$pages pages" "$(find "$source/docs/man" -type f | wc -l) pages"
file=$(find "$work/installed" -name zotavpci.pc)
tell "$file" "$(sed -n 's/^Version: //p' "$file")" "$version"
file=$(find "$work/installed" -name zotavpciConfigVersion.cmake)
tell "$file" "$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")$/\1/p' "$file")" "$version"
