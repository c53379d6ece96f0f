#!/usr/bin/env python3
"""What a running Prometheus makes of "tavctl metrics": what is there now, alerts, and a join.

    serverTest.py SOURCE-FOLDER TAVCTL
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import threading
import time

from servers import NodeExporter, Prometheus, wait_for

SOURCE, TAVCTL = pathlib.Path(sys.argv[1]), sys.argv[2]
SAMPLE = SOURCE / "samples" / "switchboxes.dump"
DESCRIPTIONS = ["--descriptions", str(SOURCE / "descriptions")]


def tavctl(*words):
    return subprocess.run([TAVCTL, *map(str, words)], check=True, capture_output=True,
                          encoding="utf-8").stdout


class Timer(threading.Thread):
    """Looks again and again, as the unit of the system does it."""

    def __init__(self, file):
        super().__init__(daemon=True)
        self._file = file
        self._machine = None
        self._end = threading.Event()
        self._one_look = threading.Lock()

    def look_at(self, dump, names):
        """Returns when the machine is in the file."""
        with self._one_look:
            self._machine = ["--dump", str(dump), "--state", str(names)]
        self._look()

    def _look(self):
        with self._one_look:
            subprocess.run([TAVCTL, "metrics", "-o", str(self._file), *self._machine,
                            *DESCRIPTIONS], check=False, stderr=subprocess.DEVNULL)

    def run(self):
        while not self._end.wait(0.5):
            self._look()

    def stop(self):
        self._end.set()
        self.join()


def quick_rules(folder):
    """The shipped alerts with all times short."""
    text = (SOURCE / "packaging/prometheus/tav-rules.yml").read_text("utf-8")
    for pattern, quick, count in ((r"for: \d+m$", "for: 1s", 4), (r"offset 10m", "offset 10s", 2),
                                  (r"> 600$", "> 6", 1)):
        text, changed = re.subn(pattern, quick, text, flags=re.M)
        assert changed == count, f"{pattern}: {changed} times"
    rules = folder / "rules.yml"
    rules.write_text(text, "utf-8")
    return rules


def with_eight_lanes(text, address):
    """A dump in which the function at an address, that runs at one lane, could run at eight."""
    for function in text.split("\n\n"):
        if not function.startswith(address):
            continue
        rows = {int(row[:2], 16): row[4:].split() for row in function.splitlines()
                if re.match(r"[0-9a-f]{2}: ", row)}
        data = bytearray(int(each, 16) for start in sorted(rows) for each in rows[start])
        at = data[0x34]
        while data[at] != 0x10:
            at = data[at + 1]
        able = at + 0x0C
        assert data[able] >> 4 == 1 and data[able + 1] & 3 == 0, "it can run at more than one"
        data[able] = data[able] & 0x0F | 0x80
        lines = [function.splitlines()[0]]
        lines += [f"{start:02x}: {data[start:start + 16].hex(' ')}"
                  for start in range(0, len(data), 16)]
        return text.replace(function, "\n".join(lines))
    raise AssertionError(f"there is no {address}")


def join_of_manual():
    page = (SOURCE / "docs/man/tavctl-metrics.1").read_text("utf-8")
    return re.search(r"^\.nf\n(.*?)^\.fi", page, re.M | re.S)[1]


def box_that_goes_is_gone(server, timer, folder):
    names, whole, part = folder / "names", folder / "whole.dump", folder / "part.dump"
    names.mkdir()
    box, card = "TAV-B3 Switch Box", "TAV-C1 Adapter Card"
    tavctl("mock", box, card, "--in", "TAV1:2", "-o", whole, *DESCRIPTIONS)
    tavctl("mock", box, "-o", part, *DESCRIPTIONS)
    tavctl("list", "--dump", whole, "--state", names, *DESCRIPTIONS)
    timer.look_at(whole, names)
    timer.start()
    of_card = 'tav_device_info{name="TAVCard1",instance="rack1"}'
    series = wait_for("the card is there", lambda: server.query(of_card))
    assert series[0][0]["model"] == card, series
    assert "TavBoxAbsent" not in server.firing()
    timer.look_at(part, names)
    swapped = time.time()
    wait_for("the card is gone", lambda: not server.query(of_card))
    assert [labels["name"] for labels, _ in server.query("tav_device_info")] == ["TAV1"]
    last = max(at for at, _ in server.query(of_card + "[5m]")[0][1])
    late = [at for at, _ in server.query('up{job="node"}[5m]')[0][1] if swapped < at <= last]
    assert len(late) <= 2, f"still there in {len(late)} scrapes"
    alerts = wait_for("its alert", lambda: server.firing().get("TavBoxAbsent"))
    assert [alert["labels"]["name"] for alert in alerts] == ["TAVCard1"], alerts
    assert alerts[0]["labels"]["place"] == "TAV1 connector 2", alerts
    timer.look_at(whole, names)
    wait_for("its end", lambda: "TavBoxAbsent" not in server.firing())


def series_of_functions_say_their_connector(server, texts):
    """As the PCI collector tells a network card, the processor's bridge, and a port above it."""
    (texts / "pci.prom").write_text("".join(
        f'{name}{{segment="0000",bus="{bus}",device="{device}",function="0"{more}}} {value}\n'
        for bus, device in (("06", "00"), ("00", "00"), ("03", "00"))
        for name, more, value in (
            ("node_pcidevice_info", ',parent_segment="0000",parent_bus="05",parent_device="02",'
             'parent_function="0",class_id="0x020000",vendor_id="0x8086",device_id="0x10d3",'
             'subsystem_vendor_id="0x0000",subsystem_device_id="0x0000",revision="0x00"', 1),
            ("node_pcidevice_current_link_width", "", 1))), "utf-8")
    joined = wait_for("the join", lambda: server.query(join_of_manual()))
    found = {(labels["bus"], labels["name"], labels["connector"]) for labels, _ in joined}
    assert found == {("06", "TAVCard1", "LEFT"), ("03", "TAV1", "1")}, joined
    assert all(labels["vendor_id"] == "0x8086" for labels, _ in joined), joined
    widths = server.query(join_of_manual().replace("_info *", "_current_link_width *", 1))
    assert len(widths) == 2, widths


def alerts_fire(server, timer, folder):
    def wait_for_alert(name):
        return wait_for(name, lambda: server.firing().get(name))

    names = folder / "sample-names"
    names.mkdir()
    tavctl("list", "--dump", SAMPLE, "--state", names, *DESCRIPTIONS)
    timer.look_at(SAMPLE, names)
    series_of_functions_say_their_connector(server, folder / "texts")
    alerts = wait_for_alert("TavUpstreamLinkDegraded")
    assert [alert["labels"]["name"] for alert in alerts] == ["TAV3"], alerts
    assert "TavLinkDegraded" not in server.firing()
    slow = folder / "slow.dump"
    slow.write_text(with_eight_lanes(SAMPLE.read_text("utf-8"), "44:00.0"), "utf-8")
    timer.look_at(slow, names)
    alerts = wait_for_alert("TavLinkDegraded")
    assert {(each["labels"]["name"], each["labels"]["port"]) for each in alerts} == {
        ("TAV3", "B1"), ("TAV3", "B2")}, alerts

    # That the machine is another one than before must be long enough ago.
    wait_for("its past", lambda: server.query('tav_device_info{name="TAV2"} offset 10s'))
    wait_for("quiet", lambda: "TavNameMoved" not in server.firing())
    tavctl("names", "rename", "TAV1", "TAV2", "--swap", "--state", names)
    alerts = wait_for_alert("TavNameMoved")
    assert {each["labels"]["name"] for each in alerts} == {"TAV1", "TAV2"}, alerts

    assert not {"TavLookFailed", "TavLookStale"} & set(server.firing())
    timer.look_at(folder / "none.dump", names)
    wait_for_alert("TavLookFailed")
    assert not server.query("tav_devices")
    timer.look_at(SAMPLE, names)
    wait_for("its end", lambda: "TavLookFailed" not in server.firing())
    assert "TavLookStale" not in server.firing()
    timer.stop()
    wait_for_alert("TavLookStale")


def main():
    os.environ.pop("TAV_PCI_DUMP", None)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        texts = folder / "texts"
        texts.mkdir()
        timer = Timer(texts / "tav.prom")
        with NodeExporter(folder, texts) as exporter, \
                Prometheus(folder, exporter, quick_rules(folder)) as server:
            try:
                box_that_goes_is_gone(server, timer, folder)
                alerts_fire(server, timer, folder)
                errors = server.query("max_over_time(node_textfile_scrape_error[10m])")
                assert [value for _, (_, value) in errors] == ["0"], errors
            finally:
                if timer.is_alive():
                    timer.stop()


main()
