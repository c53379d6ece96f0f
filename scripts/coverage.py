#!/usr/bin/env python3
"""Says which of the product's lines and branches the tests ran.

    scripts/coverage.py BUILD-FOLDER LIST

BUILD-FOLDER was configured with ZOTAVPCI_COVERAGE and its tests were run. Prints a line for each room
of the product and their total, and writes the whole of it into BUILD-FOLDER/report: index.html
page by page, coverage.json for programs. LIST names the lines that no test runs, each with the
reason (its own head tells its form). Fails when too few lines ran, when a line that did not run is not
on the list, and when a line on the list did run or is no longer there.
"""

import collections
import json
import pathlib
import subprocess
import sys

# What is shipped. Branches that only an exception takes are not counted: each call has one.
ROOMS = ["include", "source", "pciBrdWrapper", "pxidrivertools", "quil", "platform", "pcibus",
         "machine", "zopcibrd", "tavctl"]
LEAST_LINES = 95.0


class Tally:
    """How much of something ran."""

    def __init__(self):
        self.all = 0
        self.ran = 0

    def add(self, count):
        self.all += 1
        self.ran += count > 0

    def merge(self, other):
        self.all += other.all
        self.ran += other.ran

    def share(self):
        return 100.0 * self.ran / self.all if self.all else 100.0

    def text(self):
        return f"{self.ran:6} of {self.all:6}  {self.share():5.1f} %"


def gather(build, report, root):
    """Has gcovr read every counter below the build folder; returns its files."""
    report.mkdir(exist_ok=True)
    data = report / "coverage.json"
    filters = [argument for room in ROOMS for argument in ("--filter", f"{root}/{room}/")]
    subprocess.run(
        ["gcovr", "--root", str(root), *filters, "--exclude-throw-branches",
         "--exclude-unreachable-branches", "--json", str(data), "--json-pretty",
         "--html-details", str(report / "index.html"), str(build)],
        check=True, cwd=report)
    return json.loads(data.read_text(encoding="utf-8"))["files"]


def read_list(path):
    """The listed lines: (file, text) and where on the list each stands."""
    listed = collections.defaultdict(list)
    reason = False
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            reason = False
        elif not line.startswith(" "):
            reason = True
        else:
            file, separator, text = line.strip().partition(": ")
            if not separator or not reason:
                sys.exit(f"{path}:{number}: expected a reason and below it "
                         f'"    file: text of the line", got "{line}"')
            listed[file, text.strip()].append(number)
    return listed


def main():
    if len(sys.argv) != 3:
        sys.exit(f"usage: {sys.argv[0]} BUILD-FOLDER LIST")
    root = pathlib.Path(__file__).resolve().parent.parent
    build = pathlib.Path(sys.argv[1]).resolve()
    list_path = pathlib.Path(sys.argv[2])
    report = build / "report"

    listed = read_list(list_path)
    lines = {room: Tally() for room in ROOMS}
    branches = {room: Tally() for room in ROOMS}
    missed = collections.defaultdict(list)
    for file in gather(build, report, root):
        name = file["file"]
        room = name.split("/")[0]
        source = (root / name).read_text(encoding="utf-8").splitlines()
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            lines[room].add(line["count"])
            for branch in line["branches"]:
                branches[room].add(branch["count"])
            if line["count"] == 0:
                number = line["line_number"]
                missed[name, source[number - 1].strip()].append(number)

    print(f"{'room':16}{'lines':>16}{'':11}{'branches':>16}")
    total_lines, total_branches = Tally(), Tally()
    for room in ROOMS:
        if lines[room].all:
            print(f"{room:16}{lines[room].text()}   {branches[room].text()}")
            total_lines.merge(lines[room])
            total_branches.merge(branches[room])
    print(f"{'total':16}{total_lines.text()}   {total_branches.text()}")

    problems = []
    unlisted = sum(max(0, len(found) - len(listed[key])) for key, found in list(missed.items()))
    for (name, text), numbers in sorted(missed.items()):
        if len(numbers) > len(listed[name, text]):
            where = ", ".join(str(number) for number in numbers)
            problems.append(f"{name}:{where}: not run by any test and not listed in {list_path}"
                            f" ({len(listed[name, text])} of {len(numbers)} are): {text}")
    for (name, text), numbers in sorted(listed.items()):
        for number in numbers[len(missed.get((name, text), [])):]:
            problems.append(f"{list_path}:{number}: listed, but it was run, or is no longer there: "
                            f"{name}: {text}")
    if total_lines.share() < LEAST_LINES:
        problems.append(f"{total_lines.share():.1f} % of the lines ran; {LEAST_LINES:g} % must")
    entries = sum(len(numbers) for numbers in listed.values())
    print(f"\n{total_lines.all - total_lines.ran} lines did not run; {entries} are listed with their "
          f"reasons in {list_path}, {unlisted} are not")
    print(f"the whole report: {report / 'index.html'}")
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
