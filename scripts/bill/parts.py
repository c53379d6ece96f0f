"""The parts of others that builds contain, each with the package that it came with."""

import dataclasses
import re

from bill import debian
from bill.components import component_of


@dataclasses.dataclass
class Part:
    """A part of somebody else's as one package has it."""

    component: object
    package: str
    inside: dict = dataclasses.field(default_factory=dict)  # of a binary: archives and headers
    built_with: set = dataclasses.field(default_factory=set)  # binaries; declarations alone

    @property
    def version(self):
        return debian.version(self.package)

    @property
    def name(self):
        return self.component.name

    def check_licence(self):
        text = " ".join(debian.copyright_text(self.package).split())
        for phrase in self.component.evidence:
            if " ".join(phrase.split()).lower() not in text.lower():
                raise debian.BillError(
                    f"{self.package}: its copyright file does not say \"{phrase}\", and "
                    f"{self.component.name} is stated to be under {self.component.licence}")


def parts_of(binaries):
    """Every part that one of the binaries contains or was built with, in order of names."""
    files = sorted({path for binary in binaries for path in binary.headers | binary.linked})
    owners = debian.owners(files)
    parts = {}
    for binary in binaries:
        for path in sorted(binary.headers | binary.linked):
            component = component_of(owners[path], path)
            if component is None:
                raise debian.BillError(f"{path} ({owners[path]}) is of no part that is known; "
                                       "scripts/bill/components.py lists them")
            key = (component.name, owners[path])
            part = parts.setdefault(key, Part(component, owners[path]))
            if path in binary.linked:
                part.inside.setdefault(binary.name, set()).add(path.rsplit("/", 1)[1])
            elif component.code_in_headers:
                part.inside.setdefault(binary.name, set()).add("headers")
            else:
                part.built_with.add(binary.name)
    result = [parts[key] for key in sorted(parts)]
    for part in result:
        part.check_licence()
    return result


def identifier(*words):
    """A name of SPDX's for a thing."""
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]+", "-", "-".join(words)).strip("-")
