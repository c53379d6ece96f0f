"""A host's use of the plug-in, from initialising to finalising."""
from __future__ import annotations

from types import TracebackType
from typing import List, Optional, Type

from tav._attribute import ELEMENTS, Attribute
from tav._device import Device, DeviceRecord, PortRecord
from tav._error import Error, SOFTWARE_FAULT
from tav._finding import find_plugin
from tav._library import library_of


class Session:
    """Keeps the plug-in's list of devices while it is open.

    ::

        with tav.Session() as session:
            print(session.devices())

    Opening the first session of a process loads the plug-in, which searches the bus and gives
    names; closing the last one releases the list. Further sessions in between share the list as it
    was made, so a device that was plugged in later is found when all of them were closed.

    Any thread may use a session: calls wait for each other, because the plug-in wants to be called
    by one thread at a time. A process that was forked goes on with the open sessions it inherited,
    and neither process disturbs the other.

    Raises :class:`tav.Error` when the plug-in cannot be loaded or initialised.
    """

    def __init__(self, plugin: Optional[str] = None) -> None:
        self._library = library_of(find_plugin(plugin))
        self._library.enter()
        self._is_open = True

    @property
    def plugin(self) -> str:
        """The path of the plug-in's file."""
        return self._library.path

    def close(self) -> None:
        """Ends the session. Harmless when it was closed before."""
        with self._library.lock:
            if self._is_open:
                self._is_open = False
                self._library.leave()

    def __enter__(self) -> Session:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], value: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def _require_open(self) -> None:
        if not self._is_open:
            raise ValueError("the session is closed")

    def count(self) -> int:
        """How many devices there are."""
        with self._library.lock:
            self._require_open()
            return self._library.count()

    def integer(self, device: int, attribute: int, element: int = 0) -> Optional[int]:
        """An integer attribute of a device, both counted from 0; None where the device does not
        carry it. ``element`` is the number of a port."""
        with self._library.lock:
            self._require_open()
            return self._library.integer(device, attribute, element)

    def text(self, device: int, attribute: int, element: int = 0) -> Optional[str]:
        """A text attribute of a device, likewise."""
        with self._library.lock:
            self._require_open()
            return self._library.text(device, attribute, element)

    def devices(self) -> List[Device]:
        """Every device with all that the plug-in tells of it, in the plug-in's order."""
        return [Device(record) for record in self.records()]

    def records(self) -> List[DeviceRecord]:
        """The same as plain values."""
        with self._library.lock:
            return [self._record(device) for device in range(self.count())]

    def _number(self, device: int, attribute: Attribute, element: int = 0) -> int:
        value = self.integer(device, attribute, element)
        if value is None:
            raise Error("read attribute", f"device {device}, attribute 0x{attribute:08X}",
                        "the device must carry it and does not", SOFTWARE_FAULT)
        return value

    def _words(self, device: int, attribute: Attribute, element: int = 0) -> str:
        value = self.text(device, attribute, element)
        if value is None:
            raise Error("read attribute", f"device {device}, attribute 0x{attribute:08X}",
                        "the device must carry it and does not", SOFTWARE_FAULT)
        return value

    def _record(self, device: int) -> DeviceRecord:
        port_count = self._number(device, Attribute.PORT_COUNT)
        return {
            "index": device,
            "name": self._words(device, Attribute.TERMINAL_NAME),
            "model": self._words(device, Attribute.MODEL_NAME),
            "category": self._number(device, Attribute.DEVICE_CATEGORY),
            "bus": self._number(device, Attribute.BUS_NUMBER),
            "device": self._number(device, Attribute.DEVICE_NUMBER),
            "function": self._number(device, Attribute.FUNCTION_NUMBER),
            "upstream_bus": self.integer(device, Attribute.UPSTREAM_PORT_BUS),
            "port_count": port_count,
            "link_width_per_label": self.integer(device, Attribute.LINK_WIDTH_PER_LABEL),
            "ports": [self._port(device, port) for port in range(min(port_count, ELEMENTS))],
        }

    def _port(self, device: int, port: int) -> PortRecord:
        return {
            "label": self._words(device, Attribute.CONNECTOR_LABEL, port),
            "secondary_bus": self._number(device, Attribute.PORT_SECONDARY_BUS, port),
            "link_width": self.integer(device, Attribute.PORT_LINK_WIDTH, port),
            "link_speed": self.integer(device, Attribute.PORT_LINK_SPEED, port),
        }
