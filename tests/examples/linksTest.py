#!/usr/bin/env python3
"""Links of the documents lead somewhere, and the list of rooms in CONTRIBUTING.md is the one that
includes are checked by.

    linksTest.py SOURCE-FOLDER
"""

import importlib.util
import pathlib
import re
import sys

sys.dont_write_bytecode = True
LINK = re.compile(r"!?\[[^]]*\]\(([^)\s]+)\)")


def anchors(path):
    """What "#..." may name in a document."""
    text = re.sub(r"^```.*?^```", "", path.read_text(encoding="utf-8"), flags=re.DOTALL | re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def link_faults(root, path):
    for target in LINK.findall(path.read_text(encoding="utf-8")):
        if re.match(r"[a-z]+:", target):
            continue
        file, _, anchor = target.partition("#")
        place = path.parent / file if file else path
        if not place.exists():
            yield f"{path.relative_to(root)}: {target} is not there"
        elif anchor and anchor not in anchors(place):
            yield f"{path.relative_to(root)}: {target}: no such heading"


def room_faults(root):
    spec = importlib.util.spec_from_file_location("check", root / "scripts" / "check-includes.py")
    check = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(check)
    text = (root / "CONTRIBUTING.md").read_text(encoding="utf-8")
    told = set(re.findall(r"`([A-Za-z/]+)/`", text))
    rooms = set(check.RANKS)
    for room in sorted(rooms):
        if room not in told and room.removeprefix("tavctl/") not in told:
            yield f"CONTRIBUTING.md does not tell of the room {room}"
    table = text.partition("| room |")[2].partition("\n\n")[0]
    for room in sorted(set(re.findall(r"`([A-Za-z/]+)/`", table))):
        if room not in rooms and f"tavctl/{room}" not in rooms:
            yield f"CONTRIBUTING.md tells of the room {room}, which there is not"


def main():
    root = pathlib.Path(sys.argv[1])
    documents = [path for folder in ("", "docs", "tests", "tests/guest", "fuzz")
                 for path in sorted((root / folder).glob("*.md"))]
    faults = [fault for path in documents for fault in link_faults(root, path)]
    faults += room_faults(root)
    links = sum(len(LINK.findall(path.read_text(encoding="utf-8"))) for path in documents)
    if links < 20:
        faults.append(f"only {links} links were found")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
