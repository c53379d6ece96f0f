#!/usr/bin/env bash
# The Python package is built without the network, from the sources and from a source package made of
# them, and works where it was installed, with the plug-in that is installed in the same place.
#
#   wheelTest.sh SOURCE BUILD VERSION PYTHON
set -euo pipefail
source=$1 build=$2 version=$3 python=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export PIP_CONFIG_FILE=/dev/null PIP_NO_INDEX=1 PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore
unset PYTHONPATH TAV_PLUGIN
# A clock that a zip file can tell, and the same bytes each time.
export SOURCE_DATE_EPOCH=1000000000

fail() {
    echo "$0: $*" >&2
    exit 1
}

# What is built leaves files beside its sources.
mkdir "$work/tree" "$work/far"
cp "$source/CMakeLists.txt" "$work/tree"
cp -r "$source/python" "$work/tree"
find "$work/tree" -name __pycache__ -prune -exec rm -r {} +

# wheel FOLDER DESTINATION
wheel() {
    (cd "$work/far" && "$python" -m pip -q wheel --no-build-isolation --no-deps -w "$2" "$1")
    [ -e "$2/tav-$version-py3-none-any.whl" ] || fail "$1 gives $(ls "$2")"
}
wheel "$work/tree/python" "$work/first"
(cd "$work/tree/python" && "$python" -c 'import setuptools.build_meta as build; build.build_sdist("'"$work"'")') \
    >/dev/null 2>&1
tar -x -C "$work/far" -f "$work/tav-$version.tar.gz"
wheel "$work/far/tav-$version" "$work/second"
list() {
    "$python" -m zipfile -l "$1" | awk 'NR > 1 { print $1 }' | sort
}
list "$work"/first/*.whl >"$work/files"
list "$work"/second/*.whl | diff "$work/files" - || fail "a source package gives another wheel"
{
    (cd "$source/python" && find tav -name '*.py' && echo tav/py.typed)
    printf "tav-$version.dist-info/%s\n" METADATA RECORD WHEEL entry_points.txt top_level.txt
} | sort | diff - "$work/files" || fail "the wheel holds something else"
rm -r "$work/far/tav-$version"
if (cd "$work/far" && cp -r "$work/tree/python" alone && rm -rf alone/*.egg-info &&
    "$python" alone/setup.py --version >"$work/said" 2>&1); then
    fail "without a version there is one: $(cat "$work/said")"
fi
grep -q 'there is no version in ' "$work/said" || { cat "$work/said"; fail "that was not told"; }

# Installed: no variable tells of the plug-in.
"$python" -m venv --without-pip "$work/venv"
"$python" -m pip -q --python "$work/venv/bin/python" install "$work"/first/*.whl
cmake --install "$build" --prefix "$work/venv" >/dev/null
cd "$work/far"
cat >host.py <<END
import importlib.metadata
import sys
import tav

assert tav.find_plugin().startswith(sys.prefix), tav.find_plugin()
with tav.Bus("$source/samples/switchboxes.dump", descriptions="$source/descriptions"):
    print(importlib.metadata.version("tav"), *(device.name for device in tav.devices()))
END
told=$("$work/venv/bin/python" host.py)
[ "$told" = "$version TAV1 TAV2 TAVCard1 TAV3" ] || fail "installed, it tells: $told"

# pytest and mypy find what they look for in an installed package.
packages=$("$work/venv/bin/python" -c 'import sysconfig; print(sysconfig.get_path("purelib"))')
cat >test_host.py <<END
def test_fixture(tav_bus):
    bus = tav_bus("$source/samples/switchboxes.dump", descriptions="$source/descriptions",
                  plugin="$build/bin/zotavpci.so")
    assert len(bus.devices()) == 4
END
PYTHONPATH=$packages "$python" -m pytest -q -p no:cacheprovider >"$work/said" 2>&1 ||
    { cat "$work/said"; fail "pytest does not find the fixtures"; }
echo 'import tav; width: str = tav.devices()[0].ports["1"].link_width' >typed.py
! MYPYPATH=$packages "$python" -m mypy --cache-dir "$build/tests/python/installedTypes" typed.py >"$work/said" 2>&1 ||
    fail "mypy knows no types"
grep -q 'has type "Optional\[int\]"' "$work/said" || { cat "$work/said"; fail "mypy knows no types"; }
