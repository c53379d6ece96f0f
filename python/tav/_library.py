"""The plug-in's five functions, called from one thread at a time."""
from __future__ import annotations

import ctypes
import os
import threading
from typing import Dict, List, Optional

from tav._attribute import ELEMENTS, TEXT_SIZE
from tav._error import ATTRIBUTE_NOT_SUPPORTED, INVALID_PARAM, Error

_LARGEST = 0xFFFFFFFF


class Library:
    """One loaded plug-in, which all sessions of this process share.

    The plug-in has one list of devices for the whole process: the first session makes it and the
    last one releases it. A list that somebody else in this process has made is used and left to
    them.
    """

    def __init__(self, path: str) -> None:
        self.path = path
        self.lock = threading.RLock()
        self._sessions = 0
        self._is_ours = False
        try:
            library = ctypes.CDLL(path)
        except OSError as error:
            raise Error("load plug-in", path, str(error)) from error
        try:
            self._initialize = library.tavPlugin_initialize
            self._finalize = library.tavPlugin_finalize
            self._count = library.tavPlugin_getDeviceCount
            self._integer = library.tavPlugin_getDeviceAttributeI32
            self._text = library.tavPlugin_getDeviceAttributeUTF8
        except AttributeError as error:
            raise Error("load plug-in", path, str(error)) from error
        u32, i32 = ctypes.c_uint32, ctypes.c_int32
        self._initialize.argtypes = []
        self._initialize.restype = i32
        self._finalize.argtypes = []
        self._finalize.restype = None
        self._count.argtypes = [ctypes.POINTER(u32)]
        self._count.restype = i32
        self._integer.argtypes = [u32, u32, ctypes.POINTER(i32)]
        self._integer.restype = i32
        self._text.argtypes = [u32, u32, ctypes.c_char_p]
        self._text.restype = i32

    def enter(self) -> None:
        """One session more."""
        with self.lock:
            if self._sessions == 0:
                self._is_ours = self._count(ctypes.byref(ctypes.c_uint32())) < 0
                if self._is_ours:
                    status = int(self._initialize())
                    if status < 0:
                        raise Error("initialise plug-in", self.path, status=status)
            self._sessions += 1

    def leave(self) -> None:
        """One session less."""
        with self.lock:
            self._sessions -= 1
            if self._sessions == 0 and self._is_ours:
                self._finalize()

    def count(self) -> int:
        """How many devices there are."""
        value = ctypes.c_uint32()
        with self.lock:
            status = int(self._count(ctypes.byref(value)))
        if status < 0:
            raise Error("count devices", self.path, status=status)
        return value.value

    def integer(self, device: int, attribute: int, element: int) -> Optional[int]:
        """An integer attribute; None where the device does not carry it."""
        number = _indexed(device, attribute, element)
        value = ctypes.c_int32()
        with self.lock:
            status = int(self._integer(device, number, ctypes.byref(value)))
        return value.value if _is_carried(status, device, number) else None

    def text(self, device: int, attribute: int, element: int) -> Optional[str]:
        """A text attribute; None where the device does not carry it."""
        number = _indexed(device, attribute, element)
        buffer = ctypes.create_string_buffer(TEXT_SIZE)
        with self.lock:
            status = int(self._text(device, number, buffer))
        if not _is_carried(status, device, number):
            return None
        return buffer.value.decode("utf-8", "backslashreplace")


def _indexed(device: int, attribute: int, element: int) -> int:
    if (not 0 <= device <= _LARGEST or not 0 <= attribute <= _LARGEST
            or not 0 <= element < ELEMENTS):
        # These would reach the plug-in as other numbers than the caller's.
        raise Error("read attribute", f"device {device}, attribute {attribute}, element {element}",
                    status=INVALID_PARAM)
    return attribute | element


def _is_carried(status: int, device: int, number: int) -> bool:
    if status == ATTRIBUTE_NOT_SUPPORTED:
        return False
    if status < 0:
        raise Error("read attribute", f"device {device}, attribute 0x{number:08X}", status=status)
    return True


_libraries: Dict[str, Library] = {}
_libraries_lock = threading.RLock()
_held: List[Library] = []


def library_of(path: str) -> Library:
    """The plug-in at a path, loaded once."""
    key = os.path.realpath(path)
    with _libraries_lock:
        library = _libraries.get(key)
        if library is None:
            library = _libraries[key] = Library(path)
        return library


# A fork waits until no thread is in the plug-in. The child then has a list of its own, and sessions
# that are as open there as they were here.
def _before_fork() -> None:
    _libraries_lock.acquire()
    for library in _libraries.values():
        library.lock.acquire()
        _held.append(library)


def _after_fork() -> None:
    while _held:
        _held.pop().lock.release()
    _libraries_lock.release()


if hasattr(os, "register_at_fork"):
    os.register_at_fork(before=_before_fork, after_in_parent=_after_fork,
                        after_in_child=_after_fork)
