"""What the guide and the documentation of the modules show is what happens."""
from __future__ import annotations

import doctest
import importlib
import pathlib
import pkgutil

import pytest
from conftest import PACKAGE, SOURCE

import tav


def test_guide(machine: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(SOURCE)
    failed, tried = doctest.testfile(str(PACKAGE / "README.md"), module_relative=False)
    assert tried > 10 and failed == 0


def test_documentation_of_modules() -> None:
    tried = 0
    for module in pkgutil.iter_modules(tav.__path__, "tav."):
        result = doctest.testmod(importlib.import_module(module.name))
        assert result.failed == 0
        tried += result.attempted
    assert tried >= 2


def test_guide_tells_of_every_property() -> None:
    guide = (PACKAGE / "README.md").read_text(encoding="utf-8")
    for kind in (tav.Device, tav.Bus, tav.Error):
        for name, value in vars(kind).items():
            if isinstance(value, property) and name not in ("index", "state"):
                assert f"`{name}" in guide or f".{name}`" in guide, name
