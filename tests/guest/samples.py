"""Recorded buses of guests as the project keeps them: a sample each, and a whole-system case on it."""
import json
import re
import shutil

from guest import PROJECT, read_text, write_text

CASES = PROJECT / "tests" / "system" / "cases"

# What lies beyond the first 256 bytes says nothing about what is where, and would be most of the
# text.
EXTENDED_ROW = re.compile(r"^[0-9a-f]{3,}: .*\n", re.MULTILINE)


def dump_file(name):
    return PROJECT / "samples" / (name + ".dump")


class Sample:
    """A bus that has been checked, with what was found on it; `listed` is all that tavctl prints of
    the dump.
    """

    def __init__(self, machine, dump, listed, names_before, names):
        self.machine = machine
        self.dump = EXTENDED_ROW.sub("", dump)
        self.listed = listed
        self.names_before = names_before
        self.names = names
        self.title = ""  # what is odd about this bus among those of the machine

    def case_files(self, name):
        """The files of the whole-system case, by their names."""
        files = {
            "about.txt": (self.title + "\n\n" if self.title else "") + self.machine.about,
            "bus.path": str(dump_file(name).relative_to(PROJECT)) + "\n",
            "descriptions.path": str(self.machine.descriptions.relative_to(PROJECT)) + "\n",
            "expected.json": json.dumps(self.listed, indent=2, ensure_ascii=False) + "\n",
            "expected-names.ini": self.names or "",
        }
        if self.names_before is not None:
            files["names-before.ini"] = self.names_before
        return files

    def write(self, name):
        write_text(dump_file(name), self.dump)
        folder = CASES / name
        if folder.exists():
            shutil.rmtree(folder)
        folder.mkdir()
        for file, text in self.case_files(name).items():
            write_text(folder / file, text)


def kept_case(name):
    """What stands in the project, in the form of Sample.case_files; empty without a case."""
    return {file.name: read_text(file) for file in CASES.joinpath(name).glob("*")}
