"""Recorded buses, for tests.

What only they need of Python is imported as they use it: other hosts start faster without.
"""
from __future__ import annotations

import os
import sys
from types import TracebackType
from typing import TYPE_CHECKING, Any, Dict, List, Optional, Type, Union

from tav._device import Device
from tav._error import Error
from tav._finding import find_plugin

if TYPE_CHECKING:
    import pathlib

PathLike = Union[str, "os.PathLike[str]"]

DUMP_VARIABLE = "TAV_PCI_DUMP"
CONFIGURATION_VARIABLE = "TAV_MANAGER_CONF"
_MACHINE_CONFIGURATION = "/etc/tav-manager.conf"
_SECTION = "SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion"
_DESCRIPTIONS = "PCI Hardware Descriptions"

# The child finds this very package, and takes nothing else from where it was started.
_HOST = "import sys; sys.path.insert(0, sys.argv[1]); from tav._host import main; main()"

_in_force: "List[Bus]" = []


def bus_in_force() -> Optional[Bus]:
    """The innermost bus whose ``with`` block runs."""
    return _in_force[-1] if _in_force else None


def _configured_descriptions() -> str:
    """The folder that this machine's configuration tells."""
    import configparser
    name = os.environ.get(CONFIGURATION_VARIABLE) or _MACHINE_CONFIGURATION
    parser = configparser.RawConfigParser(strict=False, delimiters=("=",),
                                          comment_prefixes=(";", "#"))
    try:
        with open(name, encoding="utf-8", errors="surrogateescape") as file:
            parser.read_file(file)
        return parser.get(_SECTION, "Path").strip('"')
    except (OSError, configparser.Error) as error:
        told = str(error).splitlines()[0]
        raise Error("find descriptions", name,
                    f"{told}; name a folder with descriptions=...") from error


def _configuration(descriptions: str, state: str) -> str:
    lines = [f"[{_SECTION}]"]
    for name, folder in (("Path", descriptions), ("ConfigPath", state)):
        if any(character in folder for character in "\r\n\0"):
            raise Error("use folder", repr(folder), "its name has more than one line")
        lines.append(f'{name}="{os.path.join(folder, "")}"')
    return "\n".join(lines) + "\n"


def _require(operation: str, path: str, is_there: bool) -> None:
    if not is_there:
        raise Error(operation, path, "there is no such thing")


def _remove(folder: pathlib.Path) -> None:
    import shutil
    shutil.rmtree(folder, ignore_errors=True)


class Bus:
    """A recorded bus in the place of this machine's, for tests.

    ::

        with tav.Bus("switchboxes.dump", descriptions="descriptions") as bus:
            bus.devices()   # of the recorded bus
            tav.devices()   # the same, so that code under test needs no argument

    Each time the plug-in is asked, it runs in a process of its own, so a bus is read afresh, as
    after a restart of the machine; any number of buses may be used beside each other, and this
    process's own plug-in and environment stay as they are. A :class:`tav.Session` is this process's
    own and knows nothing of it.

    dump
        The file that ``tavctl record``, ``tavctl mock`` or ``lspci -xxx`` wrote, or a folder that
        stands for ``/sys``.
    descriptions
        The folder that holds ``PCI Hardware Descriptions``. Without it, that of this machine's
        configuration.
    state
        The folder where terminal names are stored. Without it, a temporary one: every name is new
        then, and stays until the ``with`` block ends.
    plugin
        See :func:`tav.find_plugin`.
    timeout
        Seconds that the plug-in may take.

    Linux only: on Windows a bus is recorded for the bridges alone.
    """

    def __init__(self, dump: PathLike, descriptions: Optional[PathLike] = None,
                 state: Optional[PathLike] = None, plugin: Optional[str] = None,
                 timeout: float = 60.0) -> None:
        if sys.platform == "win32":
            raise Error("use recorded bus", os.fspath(dump),
                        "a process on Windows cannot be told of one as a whole")
        self._dump = os.path.abspath(dump)
        _require("open recorded bus", self._dump, os.path.exists(self._dump))
        self._descriptions = os.path.abspath(
            _configured_descriptions() if descriptions is None else descriptions)
        _require("find descriptions", os.path.join(self._descriptions, _DESCRIPTIONS),
                 os.path.isdir(os.path.join(self._descriptions, _DESCRIPTIONS)))
        self._given_state = None if state is None else os.path.abspath(state)
        if self._given_state is not None:
            _require("use state folder", self._given_state, os.path.isdir(self._given_state))
        self._plugin = find_plugin(plugin)
        self._timeout = timeout
        self._folder: Optional[pathlib.Path] = None
        self._process = -1

    def _require_entered(self) -> pathlib.Path:
        if self._folder is None:
            raise ValueError("the bus is used outside of its with block")
        return self._folder

    @property
    def state(self) -> pathlib.Path:
        """The folder where the terminal names are stored."""
        import pathlib
        folder = self._require_entered()
        return folder / "names" if self._given_state is None else pathlib.Path(self._given_state)

    @property
    def environment(self) -> Dict[str, str]:
        """Variables that tell another program's process of this bus: hand them to
        ``subprocess.run(..., env={**os.environ, **bus.environment})``."""
        folder = self._require_entered()
        return {DUMP_VARIABLE: self._dump,
                CONFIGURATION_VARIABLE: str(folder / "tav-manager.conf")}

    def __enter__(self) -> Bus:
        import pathlib
        import tempfile
        if self._folder is not None:
            raise ValueError("the bus is in use already")
        folder = self._folder = pathlib.Path(tempfile.mkdtemp(prefix="tav-bus-"))
        self._process = os.getpid()
        try:
            (folder / "names").mkdir()
            text = _configuration(self._descriptions, str(self.state))
            (folder / "tav-manager.conf").write_text(text, encoding="utf-8",
                                                     errors="surrogateescape")
        except BaseException:
            self._folder = None
            _remove(folder)
            raise
        _in_force.append(self)
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], value: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        if self in _in_force:
            _in_force.remove(self)
        folder, self._folder = self._folder, None
        # The folder of a process that was forked is still its parent's.
        if folder is not None and self._process == os.getpid():
            _remove(folder)

    def devices(self) -> List[Device]:
        """The devices of the recorded bus, as :func:`tav.devices` gives them.

        Raises :class:`tav.Error`, as :class:`tav.Session` does, and when the process that runs the
        plug-in ends early or takes too long.
        """
        answer = self._ask_host()
        if "error" in answer:
            raise Error(*answer["error"])
        return [Device(record) for record in answer["devices"]]

    def _ask_host(self) -> Dict[str, Any]:
        import json
        import subprocess
        package = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
        command = [sys.executable, "-I", "-S", "-c", _HOST, package, self._plugin]
        try:
            host = subprocess.run(command, env={**os.environ, **self.environment},
                                  stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  errors="backslashreplace", timeout=self._timeout, check=False)
        except subprocess.TimeoutExpired as error:
            raise Error("run plug-in", self._plugin,
                        f"no answer after {self._timeout:g} seconds") from error
        except OSError as error:
            raise Error("run plug-in", sys.executable or "Python", str(error)) from error
        try:
            answer = json.loads(host.stdout)
        except ValueError:
            answer = None
        if host.returncode != 0 or not isinstance(answer, dict):
            lines = host.stderr.strip().splitlines()
            how = (f"signal {-host.returncode} ended its process" if host.returncode < 0
                   else f"its process ended with status {host.returncode}")
            raise Error("run plug-in", self._plugin, ": ".join([how, *lines[-1:]]))
        return answer
