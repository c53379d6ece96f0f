#!/usr/bin/env python3
"""Prometheus' own checker and another reader of OpenMetrics take what "tavctl metrics" prints.

    expositionTest.py SOURCE-FOLDER TAVCTL
"""

import pathlib
import subprocess
import sys
import tempfile

from prometheus_client.openmetrics.parser import text_string_to_metric_families as open_metrics
from prometheus_client.parser import text_string_to_metric_families as prometheus

SOURCE, TAVCTL = pathlib.Path(sys.argv[1]), sys.argv[2]
DESCRIPTIONS = ["--descriptions", str(SOURCE / "descriptions")]

# Quotes and backslashes, an end of line, and a letter that is none of ASCII's.
NAMES = ('[MR00:50]\r\nModel = "a\\"b\\\\c"\r\nTerminalName = "line\\nline"\r\n'
         "[MR00:58]\r\nModel = Größe\r\nTerminalName = TAV9\r\n")
ABSENT = {('a"b\\c', "line\nline"), ("Größe", "TAV9")}


def metrics(*words, status=0):
    ran = subprocess.run([TAVCTL, "metrics", *map(str, words), *DESCRIPTIONS],
                         capture_output=True, encoding="utf-8", check=False)
    assert ran.returncode == status, f"{words}: {ran.returncode}, {ran.stderr}"
    return ran.stdout


def lint(text):
    ran = subprocess.run(["promtool", "check", "metrics"], input=text, capture_output=True,
                         encoding="utf-8", check=False)
    assert (ran.returncode, ran.stdout, ran.stderr) == (0, "", ""), ran


def samples(families):
    """The labels and values of all, but for what changes from look to look."""
    return sorted((sample.name, tuple(sorted(sample.labels.items())), sample.value)
                  for family in families for sample in family.samples
                  if "_last_look_timestamp" not in sample.name
                  and "_last_look_duration" not in sample.name)


def check(*words, status=0):
    """Both forms are taken, and tell the same."""
    text, opened = (metrics(*words, *form, status=status) for form in ([], ["--openmetrics"]))
    lint(text)
    families = list(open_metrics(opened))
    for family in families:
        assert family.documentation, family.name
        is_info = any(sample.name.endswith("_info") for sample in family.samples)
        assert family.type == ("info" if is_info or family.name in INFOS else "gauge"), family
    told = samples(families)
    assert told == samples(prometheus(text)), words
    assert len(told) == len({each[:2] for each in told}), "a series stands twice"
    return told


INFOS = {"tav_device", "tav_name_absent", "tav_connector_function"}
dumps = sorted((SOURCE / "samples").glob("*.dump"))
assert len(dumps) > 5, dumps
for dump in dumps:
    assert len(check("--dump", dump)) > 5, dump
with tempfile.TemporaryDirectory() as folder:
    (pathlib.Path(folder) / "zotavpci.ini").write_text(NAMES, "utf-8", newline="")
    of_absent = [dict(labels) for name, labels, _ in
                 check("--dump", SOURCE / "samples/switchboxes.dump", "--state", folder)
                 if name == "tav_name_absent_info"]
    assert {(each["model"], each["name"]) for each in of_absent} == ABSENT, of_absent
    assert check("--dump", pathlib.Path(folder) / "none", status=3) == \
        [("tav_last_look_success", (), 0)]
