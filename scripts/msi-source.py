#!/usr/bin/env python3
"""Writes what an installer for Windows is made from: the source for wixl, the statements for
msibuild, and the code of the package.

    scripts/msi-source.py TEMPLATES STAGED TARGET VERSION FILE_VERSION OUTPUT

STAGED is the tree of the archive for Windows, in which wixl is to run; TARGET is x64 or x86. VERSION
is the installer's, FILE_VERSION that of the programs in it. OUTPUT.wxs, OUTPUT.sql and OUTPUT.code
are written.

Every code comes from what it stands for, so the same files give the same installer: a component has
the code of its place, which must stay the same in every version; a product that of its version and
target; a package that of every byte in it, since Windows takes two packages of one code for one.
"""
import hashlib
import pathlib
import re
import sys
import uuid
from xml.sax.saxutils import quoteattr

# Never to be changed: with another one no installer would find what an older one has installed.
SPACE = uuid.UUID("7f0d9c5e-3b86-4f2a-9d14-6a1ce2b85f70")

KEPT = "descriptions/"


def code(text):
    return "{" + str(uuid.uuid5(SPACE, text)).upper() + "}"


class Names:
    """Names in a folder as tables hold them: "SHORT|Long", where the long one is not short."""

    def __init__(self):
        self.taken = set()

    def of(self, name):
        stem, _, suffix = name.rpartition(".") if "." in name else (name, "", "")
        if re.fullmatch(r"[A-Za-z0-9_-]{1,8}\.?[A-Za-z0-9_-]{0,3}", name) and len(stem) <= 8:
            return name
        plain = re.sub("[^A-Z0-9_-]", "", stem.upper())
        for number in range(1, 1000):
            end = "~" + str(number)
            short = plain[:8 - len(end)] + end + ("." + suffix[:3].upper() if suffix else "")
            if short not in self.taken:
                self.taken.add(short)
                return short + "|" + name
        raise SystemExit(f"{name}: no short name is left")


class Tree:
    """The folders and files below one folder, as elements, with what the tables need to know."""

    def __init__(self, prefix, place, below, win64):
        self.prefix, self.place, self.below, self.win64 = prefix, place, below, win64
        self.components = []
        self.folders = {}

    def identifier(self, path):
        """A key that says what it is of, and differs where names are alike: keys are short."""
        plain = re.sub("[^A-Za-z0-9]", "_", path.name)[:40]
        return f"{self.prefix}{plain}.{uuid.uuid5(SPACE, path.as_posix()).hex[:8]}"

    def elements(self, folder, root, indent):
        names, lines = Names(), []
        pad = " " * indent
        for entry in sorted(folder.iterdir(), key=lambda entry: entry.name):
            path = entry.relative_to(root)
            name, key = quoteattr(names.of(entry.name)), self.identifier(path)
            if entry.is_dir():
                self.folders[path.as_posix()] = "Folder." + key
                lines.append(f'{pad}<Directory Id="Folder.{key}" Name={name}>')
                lines += self.elements(entry, root, indent + 2)
                lines.append(f"{pad}</Directory>")
                continue
            # Windows goes by the file that stands for its component: one each, so that each is
            # repaired, or kept, by itself.
            guid = code(f"component/{self.place}/{path.as_posix()}")
            self.components.append((key, path))
            source = quoteattr(self.below + path.as_posix())
            lines += [f'{pad}<Component Id="Part.{key}" Guid="{guid}" Win64="{self.win64}">',
                      f'{pad}  <File Id="{key}" Name={name} Source={source} KeyPath="yes"/>',
                      f"{pad}</Component>"]
        return lines


def filled(template, values):
    def value(match):
        name = match.group(1)
        return code("component/" + name[5:]) if name.startswith("GUID:") else values[name]
    return re.sub("@([A-Z0-9_]+|GUID:[a-z]+)@", value, template.read_text(encoding="utf-8"))


def statements(text):
    lines = [line for line in text.splitlines() if not line.startswith("--")]
    paragraphs = re.split(r"\n\s*\n", "\n".join(lines))
    return [" ".join(paragraph.split()) for paragraph in paragraphs if paragraph.strip()]


def main():
    templates, staged, target, version, file_version, output = sys.argv[1:]
    templates, staged = pathlib.Path(templates), pathlib.Path(staged)
    program = Tree("p.", target, "", "yes" if target == "x64" else "no")
    data = Tree("d.", "data", KEPT, "no")
    program_elements = program.elements(staged, staged, 10)
    data_elements = data.elements(staged / KEPT, staged / KEPT, 10)
    keys = [key for key, _ in program.components + data.components]
    if len(keys) != len(set(keys)):
        raise SystemExit("two files would have one key")
    programs = [key for key, path in program.components if path.suffix in (".exe", ".dll")]
    tool = next(key for key, path in program.components if path.name == "tavctl.exe")

    values = {
        "TARGET": target,
        "VERSION": version,
        "PRODUCT_CODE": code(f"product/{target}/{version}"),
        "UPGRADE_CODE": code(f"upgrade/{target}"),
        "PROGRAM_FILES": "ProgramFiles64Folder" if target == "x64" else "ProgramFilesFolder",
        "PROGRAM": "\n".join(program_elements),
        "DESCRIPTIONS": "\n".join(data_elements),
        "COMPONENTS": "\n".join(f'      <ComponentRef Id="Part.{key}"/>' for key in keys),
        "TOOL_FOLDER": program.folders[target],
        "TOOL_COMPONENT": "Part." + tool,
        "VERSIONS": "\n\n".join(
            f"UPDATE `File` SET `Version` = '{file_version}.0', `Language` = '1033'\n"
            f"WHERE `File` = '{key}'\n\nDELETE FROM `MsiFileHash` WHERE `File_` = '{key}'"
            for key in programs),
        "KEPT": "\n\n".join(
            f"UPDATE `Component` SET `Attributes` = 144 WHERE `Component` = 'Part.{key}'"
            for key, _ in data.components),
    }
    source = filled(templates / "installer.wxs.in", values)
    sql = statements(filled(templates / "installer.sql.in", values))

    digest = hashlib.sha256((source + "\n".join(sql)).encode())
    for path in sorted(path for path in staged.rglob("*") if path.is_file()):
        digest.update(b"%d" % path.stat().st_mtime + hashlib.sha256(path.read_bytes()).digest())
    for suffix, text in ((".wxs", source), (".sql", "".join(line + "\n" for line in sql)),
                         (".code", code("package/" + digest.hexdigest()) + "\n")):
        pathlib.Path(output + suffix).write_text(text, encoding="utf-8")


main()
