#!/usr/bin/env python3
"""Writes what the product is made of, from what builds really link.

    make-sbom.py BUILD[=SHIPPED]... -o FILE.spdx.json   a bill of materials, as SPDX 2.3
    make-sbom.py BUILD --third-party -o FILE            notices for what a build contains of others

A build is a folder with tavctl, the plug-in and the bridge library built in it, for Linux or for
Windows. Its files ship as they are, or as they stand below the folder SHIPPED, without symbols. Headers are taken from what the compiler read, archives from the linker's map, and both are
looked up in Debian's package manager. The same builds give the same bytes; the bill is as old as
SOURCE_DATE_EPOCH says, or the last commit where nothing says so.
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True

from bill import spdx, thirdParty  # noqa: E402
from bill.build import binaries_of, cached  # noqa: E402
from bill.debian import BillError  # noqa: E402
from bill.parts import parts_of  # noqa: E402


def seconds():
    said = os.environ.get("SOURCE_DATE_EPOCH")
    if said is None:
        here = pathlib.Path(__file__).parent
        said = subprocess.run(["git", "-C", here, "log", "-1", "--format=%ct"],
                              capture_output=True, text=True, check=False).stdout
    return int(said.strip() or 0)


def written(arguments):
    places = [build.partition("=") for build in arguments.builds]
    builds = [pathlib.Path(build) for build, _, _ in places]
    versions = {cached(build, "CMAKE_PROJECT_VERSION") for build in builds}
    if len(versions) != 1:
        raise BillError(f"the builds are of several versions: {', '.join(sorted(versions))}")
    binaries = sorted((binary for build, _, shipped in places
                       for binary in binaries_of(build, shipped)),
                      key=lambda binary: binary.name)
    if len({binary.name for binary in binaries}) != len(binaries):
        raise BillError("two builds are for the same system")
    parts = parts_of(binaries)
    version = versions.pop()
    if arguments.third_party:
        text = thirdParty.text(version, binaries, parts)
        return text.replace("\n", "\r\n") if binaries[0].is_for_windows else text
    bill = spdx.document(version, binaries, parts, seconds())
    return json.dumps(bill, indent=2, ensure_ascii=False) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("builds", nargs="+", metavar="BUILD[=SHIPPED]")
    parser.add_argument("--third-party", action="store_true", help="write notices, not a bill")
    parser.add_argument("-o", "--output", required=True, metavar="FILE")
    arguments = parser.parse_args()
    if arguments.third_party and len(arguments.builds) != 1:
        parser.error("--third-party takes one build")
    try:
        text = written(arguments)
    except (BillError, OSError, subprocess.CalledProcessError) as error:
        print(f"make-sbom: {error}", file=sys.stderr)
        return 1
    # In one step: two installs of one build may write the same notices at once.
    new = pathlib.Path(f"{arguments.output}.{os.getpid()}")
    new.write_text(text, encoding="utf-8", newline="")
    new.replace(arguments.output)
    return 0


if __name__ == "__main__":
    sys.exit(main())
