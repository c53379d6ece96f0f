"""What a build folder's programs and libraries are made of: their objects, the headers that these
include, the members of archives that the linker took, and the libraries that are loaded."""

import functools
import hashlib
import os
import pathlib
import re
import struct
import subprocess

from bill.debian import BillError

NAMES = ("tavctl", "zotavpci", "zopcibrd")
MACHINES = {0x8664: "windows-x64", 0x014C: "windows-x86"}


def run(*command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True,
                          check=True, env={"PATH": "/usr/bin:/bin", "LC_ALL": "C"}).stdout


def cached(build, name):
    """The value of a variable of the build's."""
    text = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    match = re.search(rf"^{name}:[A-Z]*=(.*)$", text, re.MULTILINE)
    if match is None:
        raise BillError(f"{build}: {name} is not set")
    return match[1]


def system_of(data):
    """Which system's file this is."""
    if data[:4] == b"\x7fELF":
        return "linux-x86_64" if data[18:20] == b"\x3e\x00" else "linux"
    header = struct.unpack_from("<I", data, 0x3C)[0]
    return MACHINES[struct.unpack_from("<H", data, header + 4)[0]]


class Binary:
    """One file that ships."""

    def __init__(self, build, path, shipped=None):
        self.path = path
        data = (shipped or path).read_bytes()
        self.system = system_of(data)
        self.name = f"{self.system}/{path.name}"
        self.sha1 = hashlib.sha1(data).hexdigest()
        self.sha256 = hashlib.sha256(data).hexdigest()
        self.role = path.name.split(".")[0]
        self.build = build
        self.headers = set()  # of others, that its objects include
        self.linked = set()  # archives and objects of others that are inside
        self.needed = {}  # libraries that the system loads for it; the file, where that is known

    @property
    def is_for_windows(self):
        return self.system.startswith("windows")


def _objects(build, output):
    """The objects that a file is linked from."""
    objects = []
    for line in run("ninja", "-C", build, "-t", "query", output).splitlines():
        if line.startswith("  outputs:"):
            break
        name = line.strip()
        if name.endswith((".o", ".obj")) and not name.startswith("|"):
            objects.append(name)
    return objects


def _includes(build):
    """Of each object, the files that its compiler read."""
    includes, current = {}, None
    for line in run("ninja", "-C", build, "-t", "deps").splitlines():
        if line.startswith("    "):
            current.append(line.strip())
        elif ": #deps " in line:
            current = includes.setdefault(line.split(": #deps ")[0], [])
    return includes


def _members(text):
    """Archives of which the linker took members."""
    text = text.partition("\nMemory Configuration")[0].partition("\nDiscarded input sections")[0]
    return set(re.findall(r"^([^\s(][^(\n]*\.a)\([^)\n]*\)", text, re.MULTILINE))


def _soname(path):
    match = re.search(r"\(SONAME\).*\[(.*)\]", run("readelf", "-d", path))
    return match[1] if match else path.name


def _needed(binary, loads):
    if binary.is_for_windows:
        return dict.fromkeys(re.findall(r"DLL Name: (\S+)", run("objdump", "-p", binary.path)))
    wanted = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", binary.path))
    files = {}
    for name in loads:
        if ".so" in pathlib.Path(name).name:
            real = (binary.build / name).resolve()
            with real.open("rb") as stream:
                if stream.read(4) == b"\x7fELF":  # and no script of the linker's
                    files[_soname(real)] = real
    missing = [name for name in wanted if name not in files]
    if missing:
        raise BillError(f"{binary.path}: {missing[0]} is in no line of the linker's map")
    return {name: files[name] for name in wanted}


@functools.lru_cache(maxsize=None)
def _others(build, own, name):
    """The true name of a file that is not the project's own, else None."""
    real = os.path.realpath(os.path.join(build, name))
    return None if real.startswith(own) else real


def _build_id(path):
    match = re.search(r"Build ID: ([0-9a-f]+)", run("readelf", "-n", path))
    return match[1] if match else None


def _shipped(path, folder):
    """What became of a build's file in the folder that it is shipped in: the same without symbols."""
    found = [file for file in folder.rglob(path.name)
             if file.is_file() and file.open("rb").read(4) == b"\x7fELF"]
    if len(found) != 1:
        raise BillError(f"{folder}: {path.name} is there {len(found)} times instead of once")
    if _build_id(path) is None or _build_id(found[0]) != _build_id(path):
        raise BillError(f"{found[0]} is not what was linked as {path}")
    return found[0]


def binaries_of(build, shipped=None):
    """Every file of a build that ships, in order of names; as they are in the build, or in a folder
    below which they stand as they ship."""
    build = pathlib.Path(build).resolve()
    own = (cached(build, "CMAKE_HOME_DIRECTORY") + "/", f"{build}/")
    includes = _includes(build)
    result = []
    for name in NAMES:
        paths = [path for ending in ("", ".so", ".exe", ".dll")
                 if (path := build / "bin" / (name + ending)).is_file()]
        if len(paths) != 1:
            raise BillError(f"{build}: {name} is not built")
        binary = Binary(build, paths[0], shipped and _shipped(paths[0], pathlib.Path(shipped)))
        for each in _objects(build, f"bin/{paths[0].name}"):
            if each not in includes:
                if each.endswith(".rc.obj") or each.endswith(".rc.res"):
                    continue
                raise BillError(f"{build / each}: nobody knows what it includes; build it anew")
            for header in includes[each]:
                binary.headers.add(_others(build, own, header))
        map_file = build / "maps" / f"{paths[0].name}.map"
        if not map_file.is_file():
            raise BillError(f"{map_file} is not there; link {paths[0].name} anew")
        text = map_file.read_text(encoding="utf-8", errors="replace")
        loads = re.findall(r"^LOAD (.+)$", text, re.MULTILINE)
        members = _members(text) | {load for load in loads if load.endswith((".o", ".obj"))}
        for member in members:
            binary.linked.add(_others(build, own, member))
        binary.headers.discard(None)
        binary.linked.discard(None)
        binary.needed = _needed(binary, loads)
        result.append(binary)
    return result
