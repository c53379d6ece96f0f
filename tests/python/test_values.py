"""Devices, ports and errors as values."""
from __future__ import annotations

import errno
import pickle

import pytest

import tav
from tav._device import DeviceRecord

RECORD: DeviceRecord = {
    "index": 1, "name": "TAV2", "model": "Box", "category": 11, "bus": 0x1b, "device": 3,
    "function": 7, "upstream_bus": 27, "port_count": 3, "link_width_per_label": 4,
    "ports": [{"label": "A", "secondary_bus": 29, "link_width": 8, "link_speed": 3},
              {"label": "B", "secondary_bus": 30, "link_width": None, "link_speed": None},
              {"label": "A", "secondary_bus": 31, "link_width": 16, "link_speed": 4}]}


def test_every_attribute_is_a_property() -> None:
    device = tav.Device(RECORD)
    assert (device.index, device.name, device.model) == (1, "TAV2", "Box")
    assert device.category is tav.Category.EXPRESSCARD
    assert (device.bus, device.device, device.function) == (0x1b, 3, 7)
    assert device.address == "1b:03.7"
    assert (device.upstream_bus, device.link_width_per_label, device.port_count) == (27, 4, 3)
    port = device.ports["B"]
    assert (port.index, port.label, port.secondary_bus) == (1, "B", 30)
    assert port.link_width is None and port.link_speed is None
    for kind in (tav.Device, tav.Port, tav.Ports, tav.Error):
        for name, value in vars(kind).items():
            assert name.startswith("_") or isinstance(value, type) or value.__doc__, name


def test_ports_are_a_mapping_in_order() -> None:
    ports = tav.Device(RECORD).ports
    assert list(ports) == ["A", "B"] and len(ports) == 2
    assert ports["A"].secondary_bus == 29
    assert [port.secondary_bus for port in ports.all] == [29, 30, 31]
    assert "C" not in ports and ports.get("C") is None
    with pytest.raises(KeyError):
        ports["C"]


def test_values_are_equal_and_travel() -> None:
    device = tav.Device(RECORD)
    copy = pickle.loads(pickle.dumps(device))
    assert copy == device and hash(copy) == hash(device)
    assert copy.ports == device.ports and hash(copy.ports) == hash(device.ports)
    assert copy.ports["A"] == device.ports["A"] != device.ports["B"]
    assert len({copy.ports["A"], device.ports["A"]}) == 1
    renamed = RECORD.copy()
    renamed["name"] = "TAV3"
    other = tav.Device(renamed)
    assert other != device and device != "TAV2" and device.ports != "A"
    assert device.ports["A"] != "A"


def test_values_do_not_change() -> None:
    device = tav.Device(RECORD)
    for value, name in ((device, "name"), (device.ports["A"], "label"), (device.ports, "all")):
        with pytest.raises(AttributeError):
            setattr(value, name, "X")


def test_values_show_themselves() -> None:
    device = tav.Device(RECORD)
    assert repr(device) == "<tav.Device 'TAV2' 'Box' at 1b:03.7>"
    assert repr(device.ports) == "<tav.Ports A, B, A>"
    assert repr(device.ports["B"]) == "<tav.Port 'B' secondary_bus=30>"


def test_category_of_a_newer_plugin_is_a_number() -> None:
    record = RECORD.copy()
    record["category"] = 13
    assert tav.Device(record).category == 13


def test_error_tells_status_and_words() -> None:
    error = tav.Error("count devices", "zotavpci.so", status=-388801)
    assert str(error) == ("count devices (zotavpci.so): -388801 (0xFFFA113F): "
                          "internal fault, or no list of devices")
    assert str(pickle.loads(pickle.dumps(error))) == str(error)
    assert str(tav.Error("find", reason="there is none")) == "find: there is none"
    assert issubclass(tav.PluginNotFoundError, tav.Error)


@pytest.mark.parametrize("status, words", [
    (0x80070000 + errno.EACCES - 2**32, "system error: Permission denied"),
    (0x800F020B - 2**32, "the system's device installation failed with 0xE000020B"),
    (-1, "unknown status"), (-313005, "unknown status")])
def test_words_of_other_statuses(status: int, words: str) -> None:
    assert tav.status_words(status) == words
