"""What the tests of the Python package stand on: the built plug-in, and the project's samples."""
from __future__ import annotations

import os
import pathlib
import subprocess
import sys
from typing import Callable, Dict, List

import pytest

pytest_plugins = ["pytester"]

SOURCE = pathlib.Path(__file__).resolve().parents[2]
PACKAGE = SOURCE / "python"
PROGRAMS = pathlib.Path(os.environ.get("TAV_TEST_PROGRAMS", SOURCE / "build/release/bin"))
PLUGIN = PROGRAMS / "zotavpci.so"
TAVCTL = PROGRAMS / "tavctl"
SAMPLE = SOURCE / "samples/switchboxes.dump"
DESCRIPTIONS = SOURCE / "descriptions"
KEY = "SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion"


def machine_variables(folder: pathlib.Path, dump: pathlib.Path = SAMPLE) -> Dict[str, str]:
    """Tell a process of a machine of its own, whose names are stored in the folder."""
    configuration = folder / "machine.conf"
    configuration.write_text(f"[{KEY}]\nPath = {DESCRIPTIONS}/\nConfigPath = {folder}/\n")
    return {"TAV_PCI_DUMP": str(dump), "TAV_MANAGER_CONF": str(configuration),
            "TAV_PLUGIN": str(PLUGIN)}


@pytest.fixture
def machine(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> pathlib.Path:
    """The sample machine is this process's; the folder has its names."""
    for name, value in machine_variables(tmp_path).items():
        monkeypatch.setenv(name, value)
    return tmp_path


@pytest.fixture
def run_host(machine: pathlib.Path) -> Callable[..., List[str]]:
    """Runs a program of Python's on the sample machine in a process of its own; the lines that it
    prints. It must end well."""
    def run(program: str, *options: str) -> List[str]:
        environment = {**os.environ, "PYTHONPATH": str(PACKAGE)}
        done = subprocess.run([sys.executable, *options, "-c", program], env=environment, text=True,
                              capture_output=True, timeout=60, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout.splitlines()
    return run
