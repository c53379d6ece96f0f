"""The life of the plug-in's list of devices in a process."""
from __future__ import annotations

import ctypes
import os
import pathlib
import signal
import threading
from typing import Callable, List

import pytest
from conftest import PLUGIN, PROGRAMS

import tav
from tav import Attribute

NAMES = ["TAV1", "TAV2", "TAVCard1", "TAV3"]
NO_LIST = -388801


def count_or_status() -> int:
    count = ctypes.c_uint32()
    status = ctypes.CDLL(str(PLUGIN)).tavPlugin_getDeviceCount(ctypes.byref(count))
    return int(status) if status < 0 else count.value


def names(devices: List[tav.Device]) -> List[str]:
    return [device.name for device in devices]


def exit_status_of_child(work: Callable[[], bool]) -> int:
    child = os.fork()
    if child == 0:
        signal.alarm(30)  # a child that hangs is one that fails
        status = 3
        try:
            status = 0 if work() else 1
        finally:
            os._exit(status)
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def test_devices_leave_no_list_behind(machine: pathlib.Path) -> None:
    assert names(tav.devices()) == NAMES
    assert count_or_status() == NO_LIST


def test_last_session_releases_the_list(machine: pathlib.Path) -> None:
    with tav.Session() as first:
        second = tav.Session(str(PLUGIN))
        first.close()
        first.close()
        assert count_or_status() == 4
        assert names(second.devices()) == names(tav.devices()) == NAMES
        assert second.count() == 4
        assert second.plugin == str(PLUGIN)
        second.close()
        assert count_or_status() == NO_LIST
        uses: List[Callable[[], object]] = [
            first.count, first.devices, lambda: first.integer(0, Attribute.BUS_NUMBER),
            lambda: first.text(0, Attribute.MODEL_NAME)]
        for use in uses:
            with pytest.raises(ValueError, match="closed"):
                use()


def test_sessions_share_the_list_as_it_was_made(machine: pathlib.Path,
                                                monkeypatch: pytest.MonkeyPatch) -> None:
    with tav.Session():
        monkeypatch.setenv("TAV_PCI_DUMP", str(PLUGIN))  # no bus
        assert names(tav.devices()) == NAMES
    with pytest.raises(tav.Error):
        tav.devices()


def test_list_of_another_host_in_the_process_stays(machine: pathlib.Path) -> None:
    other = ctypes.CDLL(str(PLUGIN))
    assert other.tavPlugin_initialize() == 0
    try:
        with tav.Session() as session:
            assert session.count() == 4
        assert count_or_status() == 4
    finally:
        other.tavPlugin_finalize()
    with tav.Session():
        pass
    assert count_or_status() == NO_LIST


def test_links_to_one_file_are_one_plugin(machine: pathlib.Path, tmp_path: pathlib.Path) -> None:
    link = tmp_path / "link.so"
    link.symlink_to(PLUGIN)
    with tav.Session(str(link)), tav.Session():
        pass
    assert count_or_status() == NO_LIST


def test_failing_initialise_leaves_nothing_and_may_be_repeated(
        machine: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    with monkeypatch.context() as missing:
        missing.setenv("TAV_MANAGER_CONF", str(machine / "missing.conf"))
        for _ in range(2):
            with pytest.raises(tav.Error) as caught:
                tav.Session()
            assert caught.value.status == -52003
            assert caught.value.hexadecimal == "0xFFFF34DD"
            assert caught.value.reason == "there is no configuration"
            assert caught.value.operation == "initialise plug-in"
            assert caught.value.object == str(PLUGIN)
        assert count_or_status() == NO_LIST
    assert names(tav.devices()) == NAMES
    assert count_or_status() == NO_LIST


def test_attributes_that_no_device_carries_are_none(machine: pathlib.Path) -> None:
    with tav.Session() as session:
        assert session.integer(0, Attribute.RESERVED_9) is None
        assert session.integer(0, Attribute.RESERVED_A) is None
        assert session.text(0, Attribute.RESERVED_TEXT_2) is None
        assert session.text(0, Attribute.RESERVED_TEXT_3) is None
        assert session.integer(2, Attribute.UPSTREAM_PORT_BUS) is None
        assert session.integer(0, Attribute.LINK_WIDTH_PER_LABEL) is None
        assert session.integer(0, Attribute.PORT_LINK_WIDTH, 2) is None
        assert session.integer(3, Attribute.PORT_LINK_WIDTH, 6) == 16
        assert session.text(3, Attribute.CONNECTOR_LABEL, 6) == "C4"


@pytest.mark.parametrize("device, attribute, element", [
    (4, Attribute.BUS_NUMBER, 0), (0, Attribute.MODEL_NAME, 0), (0, 0x01000D00, 0),
    (0, Attribute.BUS_NUMBER, 1), (0, Attribute.PORT_SECONDARY_BUS, 3),
    (-1, Attribute.BUS_NUMBER, 0), (2**32, Attribute.BUS_NUMBER, 0),
    (0, Attribute.PORT_SECONDARY_BUS, 256), (0, Attribute.PORT_SECONDARY_BUS, -1),
    (0, 2**32 + Attribute.BUS_NUMBER, 0)])
def test_what_is_out_of_range_is_an_error(machine: pathlib.Path, device: int, attribute: int,
                                          element: int) -> None:
    with tav.Session() as session:
        with pytest.raises(tav.Error) as caught:
            session.integer(device, attribute, element)
    assert caught.value.status == -388802
    assert str(caught.value).startswith(f"read attribute (device {device}, attribute ")


def test_many_threads_may_use_sessions(machine: pathlib.Path) -> None:
    found: List[List[str]] = []

    def use() -> None:
        for _ in range(10):
            found.append(names(tav.devices()))

    threads = [threading.Thread(target=use) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert found == [NAMES] * 80
    assert count_or_status() == NO_LIST


def test_forked_process_goes_on_and_disturbs_nobody(machine: pathlib.Path) -> None:
    with tav.Session() as session:
        def child() -> bool:
            listed = names(session.devices()) == NAMES
            session.close()
            return listed and count_or_status() == NO_LIST and names(tav.devices()) == NAMES
        assert exit_status_of_child(child) == 0
        assert names(session.devices()) == NAMES


def test_fork_waits_for_threads_in_the_plugin(machine: pathlib.Path) -> None:
    stop = threading.Event()

    def use() -> None:
        while not stop.is_set():
            tav.devices()

    thread = threading.Thread(target=use)
    thread.start()
    try:
        # Whenever it is forked, the child's plug-in is at rest and its lock is free.
        assert [exit_status_of_child(lambda: names(tav.devices()) == NAMES)
                for _ in range(10)] == [0] * 10
    finally:
        stop.set()
        thread.join(60)
    assert not thread.is_alive()


def test_open_session_does_not_disturb_the_end_of_the_process(
        run_host: Callable[..., List[str]]) -> None:
    assert run_host("import tav; session = tav.Session(); print(session.count())") == ["4"]


def test_what_is_no_plugin_is_told(tmp_path: pathlib.Path) -> None:
    text = tmp_path / "zotavpci.so"
    text.write_text("no library")
    with pytest.raises(tav.Error, match="load plug-in .*file too short") as caught:
        tav.Session(str(text))
    assert caught.value.status is None and caught.value.hexadecimal is None
    with pytest.raises(tav.Error, match="load plug-in .*tavPlugin_initialize"):
        tav.Session(str(PROGRAMS / "zopcibrd.so"))
    with pytest.raises(tav.PluginNotFoundError, match="find plug-in .*there is no /nowhere/it.so"):
        tav.Session("/nowhere/it.so")
