"""Fixtures for tests of what uses TAV hardware: ``tav_bus`` and ``tav_machine``.

pytest finds them by itself where this package is installed. In the project's settings of pytest
may stand ``tav_plugin`` (see :func:`tav.find_plugin`), ``tav_descriptions`` (the folder that holds
``PCI Hardware Descriptions``) and ``tav_tavctl`` (the program; else that of ``PATH``).
"""
from __future__ import annotations

import contextlib
import os
import pathlib
from typing import Any, Callable, Iterator, Optional, Sequence, Union

import pytest

from tav._bus import Bus, PathLike
from tav._mock import mock


def pytest_addoption(parser: pytest.Parser) -> None:
    """The settings."""
    parser.addini("tav_plugin", "the plug-in's file (zotavpci.so)")
    parser.addini("tav_descriptions", 'the folder that holds "PCI Hardware Descriptions"')
    parser.addini("tav_tavctl", "the program tavctl")


def _setting(request: pytest.FixtureRequest, name: str) -> Optional[str]:
    value = str(request.config.getini(name))
    if not value:
        return None
    # A name without a folder is looked for in PATH; others count from the file of the settings.
    if name == "tav_tavctl" and os.path.basename(value) == value:
        return value
    return str(request.config.rootpath / value)


@pytest.fixture
def tav_bus(request: pytest.FixtureRequest, tmp_path: pathlib.Path) -> Iterator[Callable[..., Bus]]:
    """``tav_bus(dump)`` puts a recorded bus in the place of this machine's, until the test ends.

    It takes what :class:`tav.Bus` takes, and gives one. Called again it puts another bus in force,
    as after a restart of the machine with other hardware in it: terminal names are stored in one
    folder for the whole test, unless ``state`` names another.
    """
    with contextlib.ExitStack() as open_buses:
        def use(dump: PathLike, **options: Any) -> Bus:
            if "state" not in options:
                state = tmp_path / "tav-names"
                state.mkdir(exist_ok=True)
                options["state"] = state
            options.setdefault("plugin", _setting(request, "tav_plugin"))
            options.setdefault("descriptions", _setting(request, "tav_descriptions"))
            return open_buses.enter_context(Bus(dump, **options))
        yield use


@pytest.fixture
def tav_machine(request: pytest.FixtureRequest, tmp_path: pathlib.Path,
                tav_bus: Callable[..., Bus]) -> Callable[..., Bus]:
    """``tav_machine("TAV-B3 Switch Box")`` puts a machine with boxes of these models in the place
    of this one, until the test ends.

    ``inside`` names connectors, such as ``"TAV1:2"``, that the last of the models are plugged into.
    ``dump`` makes it a recorded machine instead. Further arguments are those of :class:`tav.Bus`,
    and that is what it gives. The bus is made by ``tavctl mock``.
    """
    def use(*models: str, inside: Union[str, Sequence[str]] = (), dump: Optional[PathLike] = None,
            **options: Any) -> Bus:
        if (dump is None) == (not models):
            raise ValueError("a machine is either a dump or at least one model")
        if dump is None:
            options.setdefault("descriptions", _setting(request, "tav_descriptions"))
            number = sum(1 for _ in tmp_path.glob("tav-machine-*.dump")) + 1
            dump = tmp_path / f"tav-machine-{number}.dump"
            mock(_setting(request, "tav_tavctl") or "tavctl", models,
                 [inside] if isinstance(inside, str) else inside, options["descriptions"], dump)
        elif inside:
            raise ValueError("what is plugged into what, the dump tells")
        return tav_bus(dump, **options)
    return use
