"""The whole-system cases: Python hosts see what tavctl lists, and the same names are stored."""
from __future__ import annotations

import json
import pathlib
import re
import shutil
from typing import Any, Dict, List

import pytest
from conftest import PLUGIN, SOURCE

import tav

CASES = sorted(path.name for path in (SOURCE / "tests/system/cases").iterdir())
CATEGORIES = {"PCI": tav.Category.PCI, "Expresscard": tav.Category.EXPRESSCARD,
              "SwitchboxTav": tav.Category.SWITCHBOX_TAV}


def part(case: pathlib.Path, name: str, other: str) -> pathlib.Path:
    path = case / name
    return path if path.exists() else SOURCE / (case / other).read_text().strip()


def listed(device: tav.Device) -> Dict[str, Any]:
    """A device in the words of tavctl's JSON."""
    return {"name": device.name, "model": device.model, "category": device.category,
            "address": f"0000:{device.address}", "index": device.index,
            "upstreamBus": device.upstream_bus, "linkWidthPerLabel": device.link_width_per_label,
            "ports": [{"label": port.label, "secondaryBus": port.secondary_bus,
                       "linkWidth": port.link_width, "linkSpeed": port.link_speed}
                      for port in device.ports.all]}


def expected(document: Dict[str, Any]) -> List[Dict[str, Any]]:
    devices = []
    for told in document["devices"]:
        ports = [{key: port[key] for key in ("label", "secondaryBus", "linkWidth", "linkSpeed")}
                 for port in told["ports"]]
        devices.append({key: told[key] for key in ("name", "model", "address", "index",
                                                   "upstreamBus", "linkWidthPerLabel")})
        devices[-1].update(category=CATEGORIES[told["category"]], ports=ports)
    return devices


def test_there_are_cases_of_both_kinds() -> None:
    folder = SOURCE / "tests/system/cases"
    assert len(list(folder.glob("*/expected.json"))) > 20
    assert len(list(folder.glob("*/expected-error.txt"))) >= 5


@pytest.mark.parametrize("name", CASES)
def test_case(name: str, tmp_path: pathlib.Path) -> None:
    case = SOURCE / "tests/system/cases" / name
    names = tmp_path / "zotavpci.ini"
    if (case / "names-before.ini").exists():
        shutil.copy(case / "names-before.ini", names)
    with tav.Bus(part(case, "bus.dump", "bus.path"), state=tmp_path, plugin=str(PLUGIN),
                 descriptions=part(case, "descriptions", "descriptions.path")) as bus:
        if (case / "expected.json").exists():
            found = bus.devices()
            assert [listed(device) for device in found] == expected(
                json.loads((case / "expected.json").read_text()))
            assert all(device.port_count == len(device.ports.all) for device in found)
        else:
            with pytest.raises(tav.Error) as caught:
                bus.devices()
            told = (case / "expected-error.txt").read_text()
            status = re.search(r"^  status (.*)$", told, re.MULTILINE)
            assert status and str(caught.value) == f"initialise plug-in ({PLUGIN}): {status[1]}"
    stored = case / "expected-names.ini"
    assert (names.read_text() if names.exists() else "") == stored.read_text()
