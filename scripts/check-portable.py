#!/usr/bin/env python3
"""Fails when a source of the product needs GNU's compiler or library.

    scripts/check-portable.py SOURCE-FOLDER HEADER-FOLDER [ROOM...]

The product is built with GCC, for Windows too, but only platform/ may use what other compilers for
Windows, Microsoft's first of all, do not have. Two things tell, without any of these compilers:

  words     names that only GNU's compilers and POSIX' libraries know, in every file
  compiling every source of the rooms, or of all, is read by Clang for 64-bit Windows, with warnings
            of every extension as errors, and with a library whose iterators of std::array and
            std::string_view are classes, as Microsoft's are, where GNU's are pointers

HEADER-FOLDER has the libraries of headers only, as a configured build for Windows has them in
headers/. Prints what is wrong, or how many files were looked at.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOMS = ["include", "pcibus", "machine", "quil", "pxidrivertools", "zopcibrd", "pciBrdWrapper",
         "source", "tavctl"]
ENDINGS = {".h", ".c", ".cpp"}

# Microsoft's compiler has these too. Attributes in [[gnu::...]] are left alone: C++ has compilers pass
# over those that they do not know.
SHARED_BUILTINS = "LINE|FILE|FUNCTION|bit_cast|is_constant_evaluated"
WORDS = re.compile(
    rf"\b(?:__builtin_(?!(?:{SHARED_BUILTINS})\b)\w+|__sync_\w+|__atomic_\w+|__attribute__|"
    r"__extension__|__u?int128(?:_t)?|__typeof__|typeof|__asm__|__restrict__|__PRETTY_FUNCTION__|"
    r"__gnu_cxx|__cxxabiv1|ssize_t|off_t|strn?casecmp|strdup|strtok_r|localtime_r|gmtime_r|"
    r"v?asprintf|getline_r|fseeko|ftello|fdopen|fileno)\b|"
    r"#\s*pragma\s+GCC|#\s*include\s*<(?:bits/|ext/|sys/|cxxabi\.h|unistd\.h|strings\.h|"
    r"dirent\.h|fcntl\.h|pthread\.h)")

# Comments and literals; a comment stands for a space.
SKIPPED = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.DOTALL)

COMPILER = ["clang++", "--target=x86_64-w64-mingw32", "-std=c++20", "-nostdinc++",
            "-D_WIN32_WINNT=0x0601", '-DTAVCTL_VERSION=""', "-Wall", "-Wextra", "-Wpedantic",
            "-Wgnu", "-Wvla", "-Werror"]
LIBRARY_COMPILER = "x86_64-w64-mingw32-g++-posix"

# Compiled once for all sources. What is missing from a source is not asked here. Nothing that brings
# std::quoted along, which would be taken for the tool's own.
COMMON = ["algorithm", "array", "charconv", "functional", "map", "memory", "optional", "set", "span",
          "string", "string_view", "unordered_map", "vector"]
COMMON_OF_TOOL = ["fmt/core.h"]


def without_comments(text):
    """The text with its line ends, but without comments and literals."""
    return SKIPPED.sub(lambda match: " " + "\n" * match.group().count("\n"), text)


def find_words(root, files):
    """The lines that hold a word which only GNU's side knows."""
    found = []
    for file in files:
        lines = without_comments((root / file).read_text(encoding="utf-8")).split("\n")
        for number, line in enumerate(lines, 1):
            for match in WORDS.finditer(line):
                found.append(f"{file}:{number}: {match.group().strip()} is GNU's or POSIX' own")
    return found


def replaced(text, changes, name):
    """The text with each change made as often as it is expected."""
    for pattern, change, times in changes:
        text, count = re.subn(pattern, change, text)
        if count != times:
            sys.exit(f"{name}: {pattern} was found {count} times instead of {times}")
    return text


def write_class_iterators(library, folder):
    """Writes <array> and <string_view> with classes for iterators."""
    of = "__gnu_cxx::__normal_iterator<{}value_type*, {}>"
    changes = {
        "string_view": [
            (r"using const_iterator\s*= const value_type\*;",
             f"using const_iterator = {of.format('const ', 'basic_string_view')};", 1),
            (r"(constexpr const_iterator\s+\w+\(\) const noexcept\s*\{ return) (this->[^;]*);",
             r"\1 const_iterator(\2);", 4),
            (r"compare\(end\(\) - __xlen", "compare(data() + size() - __xlen", 1)],
        "array": [
            (r"typedef value_type\*\s+iterator;",
             f"typedef {of.format('', 'array')} iterator;", 1),
            (r"typedef const value_type\*\s+const_iterator;",
             f"typedef {of.format('const ', 'array')} const_iterator;", 1)]}
    for name, of_name in changes.items():
        text = (library / name).read_text(encoding="utf-8")
        (folder / name).write_text("#include <bits/stl_iterator.h>\n" +
                                   replaced(text, of_name, library / name), encoding="utf-8")


def library_folder():
    """Where the library that Clang reads has its headers."""
    asked = subprocess.run([LIBRARY_COMPILER, "-print-file-name=include/c++"], check=True,
                           capture_output=True, text=True)
    folder = pathlib.Path(asked.stdout.strip())
    if not folder.is_dir():
        sys.exit(f"{LIBRARY_COMPILER} has no library of C++: {folder}")
    return folder


def compile_sources(root, headers, sources):
    """What Clang has to say of each source."""
    library = library_folder()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_class_iterators(library, folder)
        command = [*COMPILER, "-I", str(root)]
        for place in [folder, library, library / "x86_64-w64-mingw32", headers]:
            command += ["-isystem", str(place)]
        common = folder / "common.h"
        tool = any(source.startswith("tavctl/") for source in sources)
        common.write_text("".join(f"#include <{header}>\n" for header in
                                  COMMON + (COMMON_OF_TOOL if tool else [])), encoding="utf-8")
        subprocess.run([*command, "-x", "c++-header", str(common), "-o", f"{common}.pch"],
                       check=True)

        def said(source):
            done = subprocess.run(
                [*command, "-include-pch", f"{common}.pch", "-fsyntax-only", source], cwd=root,
                capture_output=True, text=True, check=False)
            return done.stderr if done.returncode != 0 else ""

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return [text for text in pool.map(said, sources) if text]


def main():
    """Runs both checks."""
    if len(sys.argv) < 3 or not set(sys.argv[3:]) <= set(ROOMS):
        sys.exit(f"usage: {sys.argv[0]} SOURCE-FOLDER HEADER-FOLDER [ROOM...]")
    root, headers = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    files = sorted(str(file.relative_to(root)) for room in ROOMS
                   for file in (root / room).rglob("*") if file.suffix in ENDINGS)
    rooms = sys.argv[3:] or ROOMS
    sources = [file for file in files if file.endswith(".cpp") and file.split("/")[0] in rooms]
    if not sources:
        sys.exit("no sources were found")
    found = find_words(root, files) + compile_sources(root, headers, sources)
    if found:
        sys.exit("\n".join(found))
    print(f"{len(files)} files, {len(sources)} of them compiled, none of them needs GNU's compiler")


if __name__ == "__main__":
    main()
