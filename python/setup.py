"""Tells the package's version, which is the product's: that of the CMakeLists.txt beside this
folder, or, in a source package, what was written into it when it was made."""
import pathlib
import re

import setuptools

HERE = pathlib.Path(__file__).resolve().parent
PLACES = ((HERE / "PKG-INFO", r"^Version: (\S+)$"),
          (HERE.parent / "CMakeLists.txt", r"^project\(zotavpci VERSION ([0-9.]+)"))


def version() -> str:
    for path, pattern in PLACES:
        if path.is_file():
            found = re.search(pattern, path.read_text(encoding="utf-8"), re.MULTILINE)
            if found:
                return found[1]
    raise SystemExit(f"{HERE}: there is no version in "
                     + " or ".join(str(path) for path, _ in PLACES))


setuptools.setup(version=version())
