#!/usr/bin/env bash
# Builds the Debian packages, and the source package that they can be built from again. Takes the
# committed sources; the same ones give the same bytes wherever and whenever they are built.
#
#   scripts/package-debian.sh FOLDER [JOBS]
#
# FOLDER gets the packages, and loses what it had of other packages.
#
# PACKAGE_SUFFIX  put behind the version, for packages that are made to be tried
# PACKAGE_WORK    where to build, to look at afterwards (default: a temporary folder)
set -euo pipefail

[ $# -ge 1 ] || { echo "usage: $0 FOLDER [JOBS]" >&2; exit 2; }
folder=$(realpath -m "$1")
jobs=${2:-2}
cd "$(dirname "$0")/.."

version=$(sed -n 's/^project(zotavpci VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || { echo "$0: CMakeLists.txt names no version" >&2; exit 1; }
if [ -n "$(git status --porcelain)" ]; then
    echo "$0: what is not committed is not in the packages:" >&2
    git status --short >&2
fi

if [ -n "${PACKAGE_WORK:-}" ]; then
    work=$(realpath -m "$PACKAGE_WORK")
else
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
fi
source=$work/zotavpci-$version
rm -rf "$source"
mkdir -p "$source"
git archive HEAD | tar -x -C "$source"
maintainer=$(sed -n 's/^Maintainer: //p' debian/control)
scripts/debian-changelog.py CHANGELOG.md "$maintainer" "$version" "${PACKAGE_SUFFIX:-}" \
    >"$source/debian/changelog"

# Neither what git names this machine nor its own settings go into a package, nor do programs that a
# user has put before the system's, such as another Python.
log=$work/build.log
if ! (cd "$source" && umask 022 && env -u CFLAGS -u CXXFLAGS -u LDFLAGS LC_ALL=C.UTF-8 TZ=UTC \
    PATH=/usr/sbin:/usr/bin:/sbin:/bin dpkg-buildpackage -us -uc "-j$jobs" >"$log" 2>&1); then
    cat "$log" >&2
    echo "$0: dpkg-buildpackage failed" >&2
    exit 1
fi
mkdir -p "$folder"
find "$folder" -maxdepth 1 -type f \( -name '*.deb' -o -name '*.dsc' -o -name '*.tar.xz' \
    -o -name '*.changes' -o -name '*.buildinfo' \) -delete
find "$work" -maxdepth 1 -type f ! -name build.log -exec mv -t "$folder" {} +
