"""The notices that go along with files that contain parts of others: which, and their licences."""

import re
import textwrap

from bill import debian

WIDTH = 80


def _heading(text):
    return f"{text}\n{'=' * len(text)}\n\n"


def _paragraphs(part):
    """The licence's text from the package's copyright file."""
    text = debian.copyright_text(part.package)
    if not part.component.paragraphs:
        return text.strip("\n") + "\n"
    kept = []
    blocks = re.split(r"\n{2,}", text)
    for pattern in part.component.paragraphs:
        found = [block for block in blocks if re.match(pattern, block.split("\n")[0])]
        if not found:
            raise debian.BillError(f"{part.package}: no paragraph of its copyright file begins with "
                                   f"{pattern}")
        if pattern.startswith("License"):
            found = found[:1]
        kept += found
    return "\n\n".join(kept) + "\n"


def text(version, binaries, parts):
    """What stands in THIRD-PARTY.txt."""
    names = [binary.path.name for binary in binaries]
    inside = [part for part in parts if part.inside]
    result = _heading(f"What zotavpci {version} contains of others")
    result += textwrap.fill(
        f"The files {', '.join(names[:-1])} and {names[-1]} of this folder contain parts of the "
        "works below. They were built with Debian's packages, whose copyright files the texts "
        "come from; where one names a file of /usr/share/common-licenses, the same text stands at "
        "https://www.gnu.org/licenses.", WIDTH) + "\n\n"
    for part in inside:
        result += textwrap.fill(f"{part.name}: {part.component.licence}"
                                + (f" ({part.component.note})" if part.component.note else ""),
                                WIDTH, initial_indent="  ", subsequent_indent="    ") + "\n"
    told = {}  # one copyright file may serve several parts
    for part in inside:
        result += "\n\n" + _heading(part.name)
        result += f"Version:  {part.version}\nLicence:  {part.component.licence}\n"
        holders = [name.split("/")[1] for name in sorted(part.inside)]
        result += f"Inside:   {', '.join(holders)}\n\n"
        words = _paragraphs(part)
        if words in told:
            result += f"The text is the one of: {told[words]}\n"
        else:
            told[words] = part.name
            result += words
    return "".join(line.rstrip() + "\n" for line in result.splitlines())
