#!/usr/bin/env python3
"""Fails when an include of the product runs upward, sideways or out of the product.

    scripts/check-includes.py [SOURCE-FOLDER]

A room may include what is its own or stands below it in LAYERS, so no circle can form. Prints the
offending includes, one a line, or how many were looked at.
"""

import pathlib
import re
import sys

COMMANDS = [f"tavctl/{name}" for name in ("list", "where", "tree", "draw", "names", "record", "lint",
                                          "explain", "describe", "mock", "monitor", "metrics",
                                          "report", "completion")]

# From the bottom up. Rooms of one layer do not include each other.
LAYERS = [
    ["include"],
    ["platform"],
    ["pcibus"],
    ["machine"],
    ["quil"],
    ["pxidrivertools"],
    ["zopcibrd"],
    ["pciBrdWrapper"],
    ["source"],
    ["tavctl/words"],
    ["tavctl/bus"],
    ["tavctl/options"],
    ["tavctl/description"],
    ["tavctl/host"],
    ["tavctl/match"],
    ["tavctl/recordings"],
    ["tavctl/view"],
    COMMANDS,
    ["tavctl"],
]

# What one room of a layer may include of another all the same.
BESIDE = {("tavctl/describe", "tavctl/explain"), ("tavctl/mock", "tavctl/lint"),
          ("tavctl/metrics", "tavctl/list"), ("tavctl/report", "tavctl/list")}

# The reader of buses stands alone but for these.
PCIBUS_MAY = {"platform/entryType.h", "platform/folderReader.h", "platform/inputFile.h",
              "platform/pathBelow.h", "platform/pciIds.h"}

# Only the sides themselves may include what is one system's own.
SIDES = ("platform/linux/", "platform/windows/")

RANKS = {room: rank for rank, rooms in enumerate(LAYERS) for room in rooms}
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')
ENDINGS = {".h", ".c", ".cpp"}


def room_of(name):
    """The room of a file named from the source folder, or None."""
    parts = name.split("/")
    if parts[0] == "tavctl" and len(parts) > 2:
        inner = "/".join(parts[:2])
        return inner if inner in RANKS else None
    return parts[0] if len(parts) > 1 and parts[0] in RANKS else None


def fault(includer, included, root):
    """What is wrong with an include, or None."""
    of, target = room_of(includer), room_of(included)
    if target is None:
        return "is no file of the product's"
    if not (root / included).is_file():
        return "is not there"
    for side in SIDES:
        if included.startswith(side) and not includer.startswith(side):
            return f"is {side.rstrip('/')}'s own"
    if of == target or (of, target) in BESIDE:
        return None
    if RANKS[target] >= RANKS[of]:
        return f"is not below {of}"
    if of == "pcibus" and included not in PCIBUS_MAY:
        return "is more of the system than pcibus may use"
    return None


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])
    tops = sorted({room.split("/")[0] for room in RANKS})
    files = sorted(path for top in tops for path in (root / top).rglob("*")
                   if path.suffix in ENDINGS)
    faults = []
    seen = set()
    count = 0
    for path in files:
        name = path.relative_to(root).as_posix()
        room = room_of(name)
        if room is None:
            faults.append(f"{name}: stands in no room that is known here")
            continue
        seen.add(room)
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if match is None:
                continue
            count += 1
            reason = fault(name, match[1], root)
            if reason is not None:
                faults.append(f"{name}:{number}: {match[1]} {reason}")
    faults += [f"{room}: no file of this room was found" for room in RANKS if room not in seen]
    for each in faults:
        print(each, file=sys.stderr)
    if faults:
        return 1
    print(f"{count} includes in {len(files)} files, none of them upward")
    return 0


if __name__ == "__main__":
    sys.exit(main())
