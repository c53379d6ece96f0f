"""The numbers of the plug-in's C interface (tavPlugin.h)."""
from __future__ import annotations

import enum


class Attribute(enum.IntEnum):
    """An attribute of a device, for :meth:`tav.Session.integer` and :meth:`tav.Session.text`."""

    DEVICE_CATEGORY = 0x01000100
    BUS_NUMBER = 0x01000200
    DEVICE_NUMBER = 0x01000300
    FUNCTION_NUMBER = 0x01000400
    UPSTREAM_PORT_BUS = 0x01000500
    PORT_COUNT = 0x01000600
    PORT_SECONDARY_BUS = 0x01000700
    """Takes the number of a port."""
    LINK_WIDTH_PER_LABEL = 0x01000800
    RESERVED_9 = 0x01000900
    """Known to the plug-in, and carried by no device."""
    RESERVED_A = 0x01000A00
    """Known to the plug-in, and carried by no device."""
    PORT_LINK_WIDTH = 0x01000B00
    """Takes the number of a port."""
    PORT_LINK_SPEED = 0x01000C00
    """Takes the number of a port."""
    MODEL_NAME = 0x02000100
    RESERVED_TEXT_2 = 0x02000200
    """Known to the plug-in, and carried by no device."""
    RESERVED_TEXT_3 = 0x02000300
    """Known to the plug-in, and carried by no device."""
    CONNECTOR_LABEL = 0x02000400
    """Takes the number of a port."""
    TERMINAL_NAME = 0x02000500


class Category(enum.IntEnum):
    """What kind of device it is."""

    PCI = 10
    EXPRESSCARD = 11
    SWITCHBOX_TAV = 12


TEXT_SIZE = 256
"""Size in bytes of a text buffer, with the zero at its end."""

ELEMENTS = 256
"""How many elements of an attribute can be told apart."""
