"""TAV hardware on the PCI bus, as the plug-in zotavpci reports it to its hosts.

::

    import tav

    for device in tav.devices():
        print(device.name, device.model, list(device.ports))
"""
from __future__ import annotations

from typing import List, Optional

from tav._attribute import Attribute, Category
from tav._bus import Bus, bus_in_force
from tav._device import Device, Port, Ports
from tav._error import Error, PluginNotFoundError, status_words
from tav._finding import find_plugin
from tav._session import Session

__all__ = ["Attribute", "Bus", "Category", "Device", "Error", "PluginNotFoundError", "Port",
           "Ports", "Session", "devices", "find_plugin", "status_words"]


def devices(plugin: Optional[str] = None) -> List[Device]:
    """The devices that are there now, in the plug-in's order.

    The plug-in is initialised, asked and finalised, unless a :class:`Session` is open, whose list
    it is then. Inside the ``with`` block of a :class:`Bus` these are the devices of the recorded
    bus; ``plugin`` counts for this machine's own.

    Names are stored, as every host stores them: the user must be allowed to write to the folder of
    the terminal names.

    Raises :class:`Error`.
    """
    bus = bus_in_force()
    if bus is not None:
        return bus.devices()
    with Session(plugin) as session:
        return session.devices()
