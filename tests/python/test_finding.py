"""Where the plug-in is looked for."""
from __future__ import annotations

import pathlib
import sys
import sysconfig
from typing import Callable, List

import pytest
from conftest import PLUGIN

import tav
from tav._finding import default_places


@pytest.fixture(autouse=True)
def _nothing_named(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.delenv("TAV_PLUGIN", raising=False)


def made(path: pathlib.Path) -> str:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.touch()
    return str(path)


def test_argument_is_taken_before_the_variable(tmp_path: pathlib.Path,
                                               monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("TAV_PLUGIN", made(tmp_path / "named.so"))
    assert tav.find_plugin() == str(tmp_path / "named.so")
    assert tav.find_plugin(str(PLUGIN)) == str(PLUGIN)
    monkeypatch.chdir(tmp_path)
    assert tav.find_plugin("named.so") == str(tmp_path / "named.so")


def test_named_file_that_is_not_there_is_not_replaced(tmp_path: pathlib.Path,
                                                      monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(sys, "prefix", str(tmp_path))
    made(tmp_path / "lib/zotavpci/zotavpci.so")
    monkeypatch.setenv("TAV_PLUGIN", str(tmp_path / "gone.so"))
    with pytest.raises(tav.PluginNotFoundError, match="there is no .*gone.so$"):
        tav.find_plugin()
    monkeypatch.setenv("TAV_PLUGIN", "")
    assert tav.find_plugin() == str(tmp_path / "lib/zotavpci/zotavpci.so")


def test_isolated_python_does_not_take_the_variable(run_host: Callable[..., List[str]],
                                                    monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("TAV_PLUGIN", str(PLUGIN))
    program = f"import sys; sys.path.insert(0, {str(pathlib.Path(tav.__file__).parents[1])!r})\n" \
        "import tav\ntry: print(tav.find_plugin())\nexcept tav.Error as error: print(error)"
    assert run_host(program) == [str(PLUGIN)]
    assert str(PLUGIN) not in run_host(program, "-I")[0]


def test_places_below_the_prefixes(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    multiarch = sysconfig.get_config_var("MULTIARCH")
    monkeypatch.setattr(sys, "prefix", str(tmp_path))
    places = default_places()
    assert f"/usr/lib/{multiarch}/zotavpci/zotavpci.so" in places
    assert places.index("/usr/local/lib/zotavpci/zotavpci.so") < places.index(
        "/usr/lib/zotavpci/zotavpci.so")
    for folder in ("lib", "lib64", f"lib/{multiarch}"):  # each is taken before the last one
        expected = made(tmp_path / folder / "zotavpci/zotavpci.so")
        assert tav.find_plugin() == expected


def test_failure_names_every_place(monkeypatch: pytest.MonkeyPatch,
                                   tmp_path: pathlib.Path) -> None:
    monkeypatch.setattr("tav._finding.default_places", lambda: ["/nowhere/a.so", "/nowhere/b.so"])
    with pytest.raises(tav.PluginNotFoundError) as caught:
        tav.find_plugin()
    assert str(caught.value) == "find plug-in: there is no /nowhere/a.so, no /nowhere/b.so"


def test_on_windows_it_is_in_the_path(tmp_path: pathlib.Path,
                                      monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(sys, "platform", "win32")
    monkeypatch.setattr(sys, "prefix", str(tmp_path / "python"))
    monkeypatch.setenv("PATH", f"{tmp_path / 'first'}::.:{tmp_path / 'x64'}")
    expected = made(tmp_path / "x64/zotavpci.dll")
    assert tav.find_plugin() == expected
    # Neither an empty entry nor the current folder is a place for a library.
    made(tmp_path / "here/zotavpci.dll")
    monkeypatch.chdir(tmp_path / "here")
    assert tav.find_plugin() == expected
