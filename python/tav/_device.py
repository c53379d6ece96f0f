"""What the plug-in tells of a device, as plain values that stay when the plug-in is gone."""
from __future__ import annotations

from typing import Iterator, Mapping, Optional, Tuple, TypedDict

from tav._attribute import Category


class PortRecord(TypedDict):
    """A port's values as they travel from process to process."""

    label: str
    secondary_bus: int
    link_width: Optional[int]
    link_speed: Optional[int]


class DeviceRecord(TypedDict):
    """A device's values, likewise."""

    index: int
    name: str
    model: str
    category: int
    bus: int
    device: int
    function: int
    upstream_bus: Optional[int]
    port_count: int
    link_width_per_label: Optional[int]
    ports: "list[PortRecord]"


class Port:
    """A labelled connector of a device. It does not change."""

    __slots__ = ("_index", "_record")

    def __init__(self, index: int, record: PortRecord) -> None:
        self._index = index
        self._record = record

    @property
    def index(self) -> int:
        """The port's number at its device, counted from 0."""
        return self._index

    @property
    def label(self) -> str:
        """The label printed at the connector."""
        return self._record["label"]

    @property
    def secondary_bus(self) -> int:
        """Number of the bus below the port, 0 to 255: what is plugged in stands there."""
        return self._record["secondary_bus"]

    @property
    def link_width(self) -> Optional[int]:
        """Lanes of the port; None when the model gives no link width."""
        return self._record["link_width"]

    @property
    def link_speed(self) -> Optional[int]:
        """Link speed as a generation: 1 is 2.5 GT/s, 2 is 5 GT/s and so on; None when the model
        gives no link width."""
        return self._record["link_speed"]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Port):
            return NotImplemented
        return (self._index, self._record) == (other._index, other._record)

    def __hash__(self) -> int:
        return hash((self._index, self.label, self.secondary_bus))

    def __repr__(self) -> str:
        return f"<tav.Port {self.label!r} secondary_bus={self.secondary_bus}>"


class Ports(Mapping[str, Port]):
    """A device's ports by label, in the order of the labels.

    A description may give one label to several ports: the first has it here, and ``all`` has every
    port.
    """

    __slots__ = ("_all", "_by_label")

    def __init__(self, ports: Tuple[Port, ...]) -> None:
        self._all = ports
        self._by_label: "dict[str, Port]" = {}
        for port in ports:
            self._by_label.setdefault(port.label, port)

    @property
    def all(self) -> Tuple[Port, ...]:
        """Every port in the plug-in's order."""
        return self._all

    def __getitem__(self, label: str) -> Port:
        return self._by_label[label]

    def __iter__(self) -> Iterator[str]:
        return iter(self._by_label)

    def __len__(self) -> int:
        return len(self._by_label)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Ports):
            return NotImplemented
        return self._all == other._all

    def __hash__(self) -> int:
        return hash(self._all)

    def __repr__(self) -> str:
        return f"<tav.Ports {', '.join(port.label for port in self._all)}>"


class Device:
    """A device as it was when the plug-in was asked. It does not change, may be handed to other
    threads and processes, and needs the plug-in no more."""

    __slots__ = ("_record", "_ports")

    def __init__(self, record: DeviceRecord) -> None:
        self._record = record
        self._ports = Ports(tuple(Port(index, port) for index, port in enumerate(record["ports"])))

    @property
    def index(self) -> int:
        """The device's number in the plug-in's list, counted from 0."""
        return self._record["index"]

    @property
    def name(self) -> str:
        """The terminal name, which stays the same across restarts."""
        return self._record["name"]

    @property
    def model(self) -> str:
        """The model's name, from its description."""
        return self._record["model"]

    @property
    def category(self) -> int:
        """What kind of device it is: a :class:`tav.Category`."""
        value = self._record["category"]
        try:
            return Category(value)
        except ValueError:
            return value

    @property
    def bus(self) -> int:
        """Number of the bus where the device answers now, 0 to 255."""
        return self._record["bus"]

    @property
    def device(self) -> int:
        """Device number on that bus, 0 to 31."""
        return self._record["device"]

    @property
    def function(self) -> int:
        """Function number, 0 to 7."""
        return self._record["function"]

    @property
    def address(self) -> str:
        """Bus, device and function as lspci writes them: ``"01:00.0"``."""
        return f"{self.bus:02x}:{self.device:02x}.{self.function:x}"

    @property
    def upstream_bus(self) -> Optional[int]:
        """Bus number of the bridge that is the device's upstream port; None for a device without
        one, or whose upstream port stands on bus 0."""
        return self._record["upstream_bus"]

    @property
    def port_count(self) -> int:
        """How many labelled ports are present. The interface reaches the first 256 of them."""
        return self._record["port_count"]

    @property
    def link_width_per_label(self) -> Optional[int]:
        """Lanes that stand behind each connector label; None when the model gives none."""
        return self._record["link_width_per_label"]

    @property
    def ports(self) -> Ports:
        """The ports by label, in order."""
        return self._ports

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Device):
            return NotImplemented
        return self._record == other._record

    def __hash__(self) -> int:
        return hash((self.index, self.name, self.address))

    def __reduce__(self) -> "tuple[type[Device], tuple[DeviceRecord]]":
        return (Device, (self._record,))

    def __repr__(self) -> str:
        return f"<tav.Device {self.name!r} {self.model!r} at {self.address}>"
