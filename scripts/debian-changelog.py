#!/usr/bin/env python3
"""Prints CHANGELOG.md as Debian's tools want a package's changelog, newest version first.

    scripts/debian-changelog.py CHANGELOG.md MAINTAINER VERSION [SUFFIX]

MAINTAINER is "Name <address>". VERSION is the product's: the newest heading must be of it, so that no
package goes out whose changes nobody has written down. SUFFIX is put behind the newest version, for
packages that are made to be tried.

Headings read "## VERSION (YYYY-MM-DD)", groups "### Plug-in", changes "- text", with further lines
indented. Marks of Markdown are left out.
"""
import datetime
import email.utils
import re
import sys
import textwrap


def releases(text):
    """(version, date, [(group, [change])]) of each heading."""
    found = []
    for line in text.splitlines():
        if heading := re.fullmatch(r"## (\d+\.\d+\.\d+) \((\d{4}-\d\d-\d\d)\)", line):
            found.append((heading[1], datetime.date.fromisoformat(heading[2]), []))
        elif line.startswith("## "):
            sys.exit(f'read the changelog: "{line}" is not "## VERSION (YYYY-MM-DD)"')
        elif not found:
            continue
        elif line.startswith("### "):
            found[-1][2].append((line[4:], []))
        elif line.startswith("- "):
            if not found[-1][2]:
                found[-1][2].append(("", []))
            found[-1][2][-1][1].append(line[2:])
        elif line.startswith("  ") and found[-1][2] and found[-1][2][-1][1]:
            found[-1][2][-1][1][-1] += " " + line.strip()
    return found


def plain(text):
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", text)
    return text.replace("`", "").replace("**", "")


def entry(version, date, groups, maintainer):
    lines = [f"zotavpci ({version}) unstable; urgency=medium", ""]
    for group, changes in groups:
        if group:
            lines += [f"  [ {plain(group)} ]"]
        for change in changes:
            lines += textwrap.wrap(plain(change), 78, initial_indent="  * ",
                                   subsequent_indent="    ", break_on_hyphens=False)
        lines += [""]
    noon = datetime.datetime.combine(date, datetime.time(12), datetime.timezone.utc)
    return "\n".join(lines + [f" -- {maintainer}  {email.utils.format_datetime(noon)}", ""])


def main(arguments):
    if len(arguments) not in (3, 4):
        sys.exit(__doc__)
    path, maintainer, version = arguments[:3]
    suffix = arguments[3] if len(arguments) == 4 else ""
    with open(path, encoding="utf-8") as file:
        found = releases(file.read())
    if not found or found[0][0] != version:
        newest = found[0][0] if found else "none"
        sys.exit(f"read the changelog: its newest version is {newest}, the product's is {version}")
    entries = [entry(version + (suffix if not index else ""), date, groups, maintainer)
               for index, (version, date, groups) in enumerate(found)]
    print("\n".join(entries), end="")


main(sys.argv[1:])
