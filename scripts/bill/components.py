"""Which part of somebody else's a file belongs to, and under which licence that part is.

A licence is stated here and must be found in the copyright file of the Debian package that the file
came with: when a package changes its licence, nothing is stated any more and the bill fails.
"""

import dataclasses
import re


@dataclasses.dataclass(frozen=True)
class Component:
    name: str
    licence: str  # SPDX's expression
    evidence: tuple  # each is found in the copyright file, blanks and lines aside
    # The paragraphs of the copyright file that are of this part, by their first lines; the whole
    # file where none is named.
    paragraphs: tuple = ()
    # Whether its headers hold code that comes into what is compiled, and not declarations alone.
    code_in_headers: bool = True
    note: str = ""


BOOST = Component(
    "Boost", "BSL-1.0", ("Boost Software License - Version 1.0",),
    (r"Files: \*$", r"License: BSL-1\.0$"))
CLI11 = Component(
    "CLI11", "BSD-3-Clause", ("Redistributions in binary form must reproduce the above",),
    (r"Files: \*$", r"License: BSD-3-clause$"))
NLOHMANN = Component(
    "JSON for Modern C++", "MIT", ("Permission is hereby granted, free of charge",),
    (r"Files: \*$", r"Files: include/", r"License: Expat$"))
FMT = Component(
    "{fmt}", "MIT", ("Permission is hereby granted, free of charge",
                     "Optional exception to the license"),
    (r"Files: \*$", r"License: Expat with embedded exception$"),
    note="with an exception: what is embedded in compiled programs needs no notice")
LIBSTDCXX = Component(
    "GNU C++ library (libstdc++)", "GPL-3.0-or-later WITH GCC-exception-3.1",
    ("GCC Runtime Library Exception",),
    note="the exception lets programs compiled with it be under any licence")
LIBGCC = Component(
    "GCC run-time library (libgcc)", "GPL-3.0-or-later WITH GCC-exception-3.1",
    ("GCC Runtime Library Exception",), code_in_headers=False,
    note="the exception lets programs compiled with it be under any licence")
WINPTHREADS = Component(
    "winpthreads", "MIT AND BSD-3-Clause",
    ("Files: mingw-w64-libraries/winpthreads/*", "License: expat", "BSD-3-clause-Lockless"),
    code_in_headers=False)
MINGW = Component(
    "mingw-w64 run-time", "ZPL-2.1", ("License: ZPL-2.1", "License: public-domain"),
    code_in_headers=False,
    note="parts are in the public domain or under licences alike; its copyright file names them")
GLIBC = Component(
    "GNU C library", "LGPL-2.1-or-later", ("GNU Lesser General Public License",),
    code_in_headers=False,
    note="the start files that every program is linked with; the library itself is loaded")
CLANG = Component(
    "Clang's headers", "Apache-2.0 WITH LLVM-exception", ("LLVM Exceptions",),
    code_in_headers=False)
LINUX = Component(
    "Linux headers", "GPL-2.0-only WITH Linux-syscall-note", ("GPL-2",), code_in_headers=False)

# By a file's package and its full name; the first that fits names the part.
FILES = [(re.compile(pattern), component) for pattern, component in (
    (r" /usr/include/boost/", BOOST),
    (r" /usr/include/CLI/", CLI11),
    (r" /usr/include/nlohmann/", NLOHMANN),
    (r" /usr/include/fmt/", FMT),
    (r"/include/(.*/)?c\+\+/|/libstdc\+\+[^/]*$", LIBSTDCXX),
    (r"/lib(win)?pthread\.a$|mingw.*/pthread[^/]*\.h$", WINPTHREADS),
    (r"mingw-w64/include/|w64-mingw32/(lib|include)/", MINGW),
    (r"/lib/gcc/", LIBGCC),
    (r"/lib/clang/[^/]*/include/", CLANG),
    (r"^linux-libc-dev[: ]", LINUX),
    (r"^libc6(-dev)?[: ]", GLIBC),
)]


def component_of(package, path):
    """The part that a file of a package is of; None for one that is not known here."""
    name = f"{package} {path}"
    return next((component for pattern, component in FILES if pattern.search(name)), None)
