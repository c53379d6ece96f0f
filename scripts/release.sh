#!/usr/bin/env bash
# Gathers what a release is of what "make package package-windows package-msi" made: packages,
# installers, archives, the list of changes, a bill of materials of the very files, and checksums.
# Everything must be of one version and of what is committed.
#
#   scripts/release.sh FOLDER
set -euo pipefail
[ $# -eq 1 ] || { echo "usage: $0 FOLDER" >&2; exit 2; }
folder=$(realpath -m "$1")
cd "$(dirname "$0")/.."

fail() {
    echo "$0: $*" >&2
    exit 1
}

version=$(sed -n 's/^project(zotavpci VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -z "$(git status --porcelain)" ] || fail "there are changes that are not committed"
grep -m 1 '^## ' CHANGELOG.md | grep -qF "## $version (" || fail "CHANGELOG.md says nothing of $version"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
rm -rf "$folder"
mkdir -p "$folder"

# same WHAT FOUND: it is of the release's version.
same() {
    [ "$2" = "$version" ] || fail "$1 is of version $2, the release of $version"
}

for package in build/packages/*.deb; do
    same "$package" "$(dpkg-deb -f "$package" Version)"
    dpkg-deb -x "$package" "$work/installed"
    cp "$package" "$folder"
done
cp build/packages/*.dsc build/packages/*.tar.xz "$folder"
same "the packages' tavctl" "$("$work/installed/usr/bin/tavctl" --version | sed 's/^tavctl //')"
for target in x64 x86; do
    installer=build/zotavpci-$version-$target.msi
    [ -f "$installer" ] || fail "there is no $installer"
    same "$installer" "$(msiinfo export "$installer" Property | tr -d '\r' |
        sed -n 's/^ProductVersion\t//p')"
    cp "$installer" "$folder"
done
for archive in windows windows-symbols; do
    top=$(unzip -Z1 "build/zotavpci-$archive.zip" | sed 's|/.*||' | sort -u)
    same "build/zotavpci-$archive.zip" "$(sed 's/^zotavpci-\([0-9.]*\)-.*/\1/' <<<"$top")"
    cp "build/zotavpci-$archive.zip" "$folder/zotavpci-$version-$archive.zip"
done
cp CHANGELOG.md "$folder"

# Of the files in the packages and in the archive, which are those of the installers too.
built=$(find "build/debian/zotavpci-$version" -maxdepth 1 -name 'obj-*')
scripts/make-sbom.py "$built=$work/installed/usr" build/windows-x64 build/windows-x86 \
    -o "$folder/zotavpci-$version.spdx.json"
same "the bill of materials" "$(python3 -c 'import json, sys
print(next(each["versionInfo"] for each in json.load(open(sys.argv[1]))["packages"]
           if each["name"] == "zotavpci"))' "$folder/zotavpci-$version.spdx.json")"

(cd "$folder" && find . -type f -printf '%P\n' | LC_ALL=C sort | xargs -d '\n' sha256sum) >"$work/sums"
mv "$work/sums" "$folder/SHA256SUMS"
(cd "$folder" && sha256sum --quiet -c SHA256SUMS)
cat "$folder/SHA256SUMS"
