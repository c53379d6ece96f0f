"""Buses that ``tavctl mock`` makes."""
from __future__ import annotations

import os
import pathlib
import shutil
import subprocess
from typing import List, Optional, Sequence

from tav._bus import PathLike
from tav._error import Error

_SECONDS = 60


def mock(tavctl: str, models: Sequence[str], inside: Sequence[str],
         descriptions: Optional[PathLike], dump: pathlib.Path) -> None:
    """Makes a bus with boxes of these models, the last of them in these places, as a dump."""
    program = shutil.which(tavctl)
    if program is None:
        raise Error("make a bus", tavctl,
                    "there is no such program; the setting tav_tavctl names it")
    arguments: List[str] = []
    for place in inside:
        arguments += ["--in", place]
    if descriptions is not None:
        arguments += ["--descriptions", os.fspath(descriptions)]
    command = [program, "mock", *arguments, "-o", os.fspath(dump), "--", *models]
    try:
        made = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              errors="backslashreplace", timeout=_SECONDS, check=False)
    except subprocess.TimeoutExpired as error:
        raise Error("make a bus", program, f"no answer after {_SECONDS} seconds") from error
    except OSError as error:
        raise Error("make a bus", program, str(error)) from error
    if made.returncode == 0:
        return
    said = made.stderr.strip()
    if "unknown command" in said:
        raise Error("make a bus", program, 'this tavctl has no command "mock"; a newer one has')
    raise Error("make a bus", program, said or f"it ended with status {made.returncode}")
