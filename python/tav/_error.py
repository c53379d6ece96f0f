"""What went wrong, with the plug-in's status in decimal, hexadecimal and words."""
from __future__ import annotations

import os
import sys
from typing import Optional

SUCCESS = 0
SOFTWARE_FAULT = -388801
INVALID_PARAM = -388802
ATTRIBUTE_NOT_SUPPORTED = -388804

# Those of tavctl, so that both say the same.
_WORDS = {
    SUCCESS: "success",
    SOFTWARE_FAULT: "internal fault, or no list of devices",
    INVALID_PARAM: "invalid parameter: null, unknown or out of range",
    ATTRIBUTE_NOT_SUPPORTED: "the device does not carry this attribute",
    -52000: "out of memory",
    -52003: "there is no configuration",
    -52005: "the bridge library could not be loaded, or lacks a function",
    -52006: "a query of the system's devices failed",
    -52019: "a value of the system's devices is longer than expected",
    -313001: "bridge library: bad session, bridge, attribute or argument",
    -313002: "bridge library: buffer too small",
    -313003: "bridge library: not found",
    -313004: "bridge library: the bus cannot be read",
    -313008: "bridge library: function not available",
    -313314: "INI file: no memory for it",
    -313315: "INI file: no path given",
    -313316: "INI file: missing, not to be opened, or not to be read",
    -313317: "INI file: no such section, or no file open",
    -313318: "INI file: opened for reading only",
    -313319: "INI file: saving or storing failed",
    -313320: "INI file: not a number, or outside 32 bits",
    -313321: "INI file: no such section",
    -313322: "INI file: no such key",
    -313323: "INI file: the value does not have the expected form",
    -313324: "slot path: a function step on a path without hops",
    -313325: "text that cannot be read: a slot path, or a name that is not UTF-8",
    -313326: "listing files: no pattern",
    -313327: "listing files failed",
    -313328: "listing files: a name cannot be converted",
}

_HIGH_HALF = 0xFFFF0000
_SYSTEM_ERROR = 0x80070000
_INSTALLATION_ERROR = 0x800F0000
_INSTALLATION_CODES = 0xE0000000


def _system_words(code: int) -> str:
    if sys.platform == "win32":
        import ctypes
        return ctypes.FormatError(code)
    return os.strerror(code)


def status_words(status: int) -> str:
    """What a status of the plug-in means.

    >>> status_words(-52003)
    'there is no configuration'
    """
    known = _WORDS.get(status)
    if known is not None:
        return known
    code = status & 0xFFFF
    if status & _HIGH_HALF == _SYSTEM_ERROR:
        return f"system error: {_system_words(code)}"
    if status & _HIGH_HALF == _INSTALLATION_ERROR:
        return ("the system's device installation failed with "
                f"0x{_INSTALLATION_CODES | code:08X}")
    return "unknown status"


class Error(Exception):
    """A call of the plug-in, or what had to be done for it, has failed.

    >>> print(Error("initialise plug-in", "zotavpci.so", status=-52003))
    initialise plug-in (zotavpci.so): -52003 (0xFFFF34DD): there is no configuration
    """

    def __init__(self, operation: str, object: str = "", reason: str = "",
                 status: Optional[int] = None) -> None:
        super().__init__(operation, object, reason, status)
        self.operation = operation
        """What was being done, such as ``"initialise plug-in"``."""
        self.object = object
        """What it was done to, such as a file's path; may be empty."""
        self.status = status
        """The plug-in's status, a negative number; None where the plug-in gave none."""
        self.reason = reason or ("" if status is None else status_words(status))
        """Why it failed, in words."""

    @property
    def hexadecimal(self) -> Optional[str]:
        """The status as its 32 bits, such as ``"0xFFFA113F"``; None where there is none."""
        return None if self.status is None else f"0x{self.status & 0xFFFFFFFF:08X}"

    def __str__(self) -> str:
        what = f"{self.operation} ({self.object})" if self.object else self.operation
        status = "" if self.status is None else f"{self.status} ({self.hexadecimal}): "
        return f"{what}: {status}{self.reason}"


class PluginNotFoundError(Error):
    """There is no plug-in in the places where one is looked for; ``reason`` names them."""
