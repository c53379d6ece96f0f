#!/usr/bin/env bash
# The list of changes begins with the version that is built, and is of the form that packages read:
# versions descend, each with its day, and each has something to tell in lines of text.
#
#   changelogTest.sh CHANGELOG.md VERSION
set -euo pipefail
file=$1
version=$2

fail() {
    echo "$file: $*" >&2
    exit 1
}

mapfile -t headings < <(grep '^## ' "$file")
[ "${#headings[@]}" -gt 0 ] || fail "there is no version"
[[ ${headings[0]} =~ ^"## $version ("[0-9]{4}-[0-9]{2}-[0-9]{2}")"$ ]] ||
    fail "begins with \"${headings[0]}\", and the version is $version"
for heading in "${headings[@]}"; do
    [[ $heading =~ ^"## "([0-9]+\.[0-9]+\.[0-9]+)" ("([0-9]{4}-[0-9]{2}-[0-9]{2})")"$ ]] ||
        fail "expected \"## VERSION (YYYY-MM-DD)\", got \"$heading\""
    date -d "${BASH_REMATCH[2]}" >/dev/null || fail "no day: ${BASH_REMATCH[2]}"
done
printf '%s\n' "${headings[@]}" | cut -d ' ' -f 2 | sort -crV || fail "versions do not descend"
awk '/^## /{if (NR > 1 && heading && !told) exit 1; heading = 1; told = 0} /^- /{told = 1}
     END{exit !told}' "$file" || fail "a version has nothing to tell"
awk 'length > 100 {exit 1}' "$file" || fail "a line is longer than 100 characters"
