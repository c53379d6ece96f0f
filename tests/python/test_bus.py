"""Recorded buses in the place of the machine's."""
from __future__ import annotations

import json
import os
import pathlib
import subprocess
import sys
from typing import Callable, List

import pytest
from conftest import DESCRIPTIONS, PLUGIN, SAMPLE, SOURCE, TAVCTL, machine_variables

import tav

SAMPLES = SOURCE / "samples"


def bus(dump: str = "switchboxes", **options: object) -> tav.Bus:
    options.setdefault("descriptions", DESCRIPTIONS)
    options.setdefault("plugin", str(PLUGIN))
    return tav.Bus(SAMPLES / f"{dump}.dump", **options)  # type: ignore[arg-type]


def names(devices: List[tav.Device]) -> List[str]:
    return [device.name for device in devices]


def test_several_buses_beside_each_other(machine: pathlib.Path) -> None:
    environment = dict(os.environ)
    with bus("one-switch") as one, bus("hot-plugged") as two:
        assert [device.address for device in two.devices()] == ["0a:00.0", "01:00.0"]
        assert [device.address for device in one.devices()] == ["01:00.0"]
        assert tav.devices() == two.devices()
        assert dict(os.environ) == environment
        with tav.Session() as session:  # this process's own
            assert session.count() == 4
    assert len(tav.devices()) == 4


def test_innermost_bus_is_in_force(machine: pathlib.Path) -> None:
    with bus("full-bus"):
        with bus("one-switch"):
            assert len(tav.devices()) == 1
        assert len(tav.devices()) == 7
    outer, inner = bus("full-bus"), bus("one-switch")
    outer.__enter__()
    inner.__enter__()
    outer.__exit__(None, None, None)
    assert len(tav.devices()) == 1
    inner.__exit__(None, None, None)
    assert len(tav.devices()) == 4


def test_names_stay_in_the_state_folder(tmp_path: pathlib.Path) -> None:
    with bus("renumbering-added", state=tmp_path) as first:
        assert first.state == tmp_path
        before = {device.address: device.name for device in first.devices()}
    with bus("renumbering-added", state=tmp_path) as second:
        assert {device.address: device.name for device in second.devices()} == before
    stored = (tmp_path / "zotavpci.ini").read_text()
    (tmp_path / "zotavpci.ini").write_text(stored.replace("= TAV1\n", "= TAV42\n"))
    with bus("renumbering-added", state=tmp_path) as third:
        assert names(third.devices())[0] == "TAV42"


def test_names_without_a_state_folder_are_gone_afterwards() -> None:
    with bus() as one:
        folder = one.state
        assert names(one.devices()) == ["TAV1", "TAV2", "TAVCard1", "TAV3"]
        stored = folder / "zotavpci.ini"
        stored.write_text(stored.read_text().replace("= TAV1\n", "= TAV42\n"))
        assert names(one.devices())[0] == "TAV42"
    assert not folder.exists() and not folder.parent.name == "tmp" and not folder.parent.exists()
    with bus() as again:
        assert names(again.devices())[0] == "TAV1"


def test_names_that_cannot_be_stored_are_told(tmp_path: pathlib.Path) -> None:
    (tmp_path / "zotavpci.loc").mkdir()  # what the names are locked by, and is no file
    with bus(state=tmp_path) as one, pytest.raises(tav.Error) as caught:
        one.devices()
    assert caught.value.operation == "initialise plug-in"
    assert caught.value.status == -388801


def test_environment_tells_other_programs() -> None:
    with bus("hot-plugged") as one:
        done = subprocess.run([TAVCTL, "list", "--json"], check=True, capture_output=True,
                              env={**os.environ, **one.environment})
        told = [device["name"] for device in json.loads(done.stdout)["devices"]]
        assert told == names(one.devices()) == ["TAV1", "TAV2"]


def test_descriptions_are_those_of_the_configuration(tmp_path: pathlib.Path,
                                                     monkeypatch: pytest.MonkeyPatch) -> None:
    for name, value in machine_variables(tmp_path).items():
        monkeypatch.setenv(name, value)
    with tav.Bus(SAMPLE) as one:
        assert len(one.devices()) == 4
    text = pathlib.Path(os.environ["TAV_MANAGER_CONF"])
    text.write_text(text.read_text().replace(f"{DESCRIPTIONS}/", f'"{DESCRIPTIONS}/"'))
    with tav.Bus(SAMPLE) as one:
        assert len(one.devices()) == 4
    assert not (tmp_path / "zotavpci.ini").exists()
    for content in ("", "no section", f"[{'x'}]\n"):
        text.write_text(content)
        with pytest.raises(tav.Error, match="find descriptions .*; name a folder with desc"):
            tav.Bus(SAMPLE)


def test_what_is_missing_is_told(tmp_path: pathlib.Path) -> None:
    with pytest.raises(tav.Error, match="open recorded bus .*gone.dump"):
        bus("gone")
    with pytest.raises(tav.Error, match="find descriptions .*PCI Hardware Descriptions"):
        bus(descriptions=tmp_path)
    with pytest.raises(tav.Error, match="use state folder .*gone"):
        bus(state=tmp_path / "gone")
    with pytest.raises(tav.PluginNotFoundError):
        bus(plugin="/nowhere/zotavpci.so")


def test_folder_that_a_configuration_cannot_name_is_refused(tmp_path: pathlib.Path) -> None:
    odd = tmp_path / "two\nlines"
    odd.mkdir()
    one = bus(state=odd)
    for _ in range(2):
        with pytest.raises(tav.Error, match="more than one line"):
            one.__enter__()
    assert tav._bus.bus_in_force() is None


def test_folders_may_have_odd_names(tmp_path: pathlib.Path) -> None:
    odd = tmp_path / 'a ; b "c" é \\ %'
    odd.mkdir()
    (odd / "descriptions").symlink_to(DESCRIPTIONS)
    with bus(state=odd, descriptions=odd / "descriptions") as one:
        assert len(one.devices()) == 4
    assert (odd / "zotavpci.ini").exists()


def test_bus_is_used_inside_of_its_block() -> None:
    one = bus("one-switch")
    uses: List[Callable[[], object]] = [one.devices, lambda: one.state, lambda: one.environment]
    for use in uses:
        with pytest.raises(ValueError, match="outside"):
            use()
    with one:
        with pytest.raises(ValueError, match="in use already"):
            one.__enter__()
        assert len(one.devices()) == 1
    with one:
        assert len(one.devices()) == 1


def test_process_that_ends_or_hangs_is_told(monkeypatch: pytest.MonkeyPatch) -> None:
    for program, told in (
            ("import os; os.abort()", "run plug-in .*: signal 6 ended its process"),
            ("import sys; print('{}'); sys.exit('broken')", "ended with status 1: broken"),
            ("print('no answer')", "ended with status 0"),
            ("print(3)", "ended with status 0"),
            ("import time; time.sleep(60)", "no answer after 0.5 seconds")):
        monkeypatch.setattr("tav._bus._HOST", program)
        with bus(timeout=0.5) as one, pytest.raises(tav.Error, match=told):
            one.devices()
    monkeypatch.setattr(sys, "executable", "/nowhere/python3")
    with bus() as one, pytest.raises(tav.Error, match="run plug-in .*nowhere"):
        one.devices()


def test_host_takes_nothing_from_the_current_folder(tmp_path: pathlib.Path,
                                                    monkeypatch: pytest.MonkeyPatch) -> None:
    (tmp_path / "json.py").write_text("raise SystemExit('the wrong one')")
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("PYTHONPATH", str(tmp_path))
    with bus("one-switch") as one:
        assert len(one.devices()) == 1


def test_forked_process_does_not_take_the_folder_away() -> None:
    with bus("one-switch") as one:
        child = os.fork()
        if child == 0:
            one.__exit__(None, None, None)
            os._exit(0)
        os.waitpid(child, 0)
        assert len(one.devices()) == 1


def test_bus_is_refused_on_windows(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(sys, "platform", "win32")
    with pytest.raises(tav.Error, match="on Windows"):
        tav.Bus("switchboxes.dump")
