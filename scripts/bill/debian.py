"""Asks Debian's package manager: which package a file came with, its version, its copyright file."""

import functools
import pathlib
import subprocess


class BillError(Exception):
    """Something that the bill is to tell cannot be found out."""


def owners(paths):
    """The package of each file, by the file's name."""
    found = {}
    # Folders below / are links into /usr, and packages may name either.
    names = {name: path for path in paths
             for name in (path, path.removeprefix("/usr") if path.startswith("/usr/lib") else path)}
    waiting = sorted(names)
    while waiting:
        part, waiting = waiting[:400], waiting[400:]
        said = subprocess.run(["dpkg", "-S", *part], capture_output=True, text=True, check=False,
                              env={"PATH": "/usr/bin:/bin", "LC_ALL": "C"})
        for line in said.stdout.splitlines():
            packages, _, name = line.partition(": ")
            if name in names and not packages.startswith("diversion "):
                found.setdefault(names[name], packages.split(", ")[0])
    missing = sorted(set(paths) - set(found))
    if missing:
        raise BillError(f"no package has {missing[0]}")
    return found


@functools.lru_cache(maxsize=None)
def _asked(package, field):
    said = subprocess.run(["dpkg-query", "-W", "-f", f"${{{field}}}", package],
                          capture_output=True, text=True, check=True)
    return said.stdout


def version(package):
    return _asked(package, "Version")


def architecture(package):
    return _asked(package, "Architecture")


@functools.lru_cache(maxsize=None)
def copyright_text(package):
    path = pathlib.Path("/usr/share/doc", package.split(":")[0], "copyright")
    try:
        return path.read_text(encoding="utf-8", errors="replace")
    except OSError as error:
        raise BillError(f"the licence of {package} is not there: {error}") from error
