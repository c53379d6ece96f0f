"""The fixtures, in tests that pytest runs in a process of its own."""
from __future__ import annotations

import os
import pathlib
import stat

import pytest
from conftest import DESCRIPTIONS, PACKAGE, PLUGIN, SAMPLE, SOURCE, TAVCTL

import tav
from tav._mock import mock

# Stands for tavctl: writes down how it was called, and gives the sample.
STAND_IN = """#!/bin/sh
printf '%s\\n' "$@" >>"$0.called"
while [ "$1" != -o ]; do shift; done
cp {sample} "$2"
"""


@pytest.fixture
def project(pytester: pytest.Pytester, monkeypatch: pytest.MonkeyPatch) -> pytest.Pytester:
    """A project with settings, and a stand-in for tavctl in its folder "bin"."""
    monkeypatch.setenv("PYTHONPATH", str(PACKAGE))
    monkeypatch.delenv("TAV_PLUGIN", raising=False)
    pytester.makeini(f"[pytest]\naddopts = -p tav.pytest_plugin -p no:cacheprovider\n"
                     f"tav_plugin = {PLUGIN}\ntav_descriptions = descriptions\n"
                     "tav_tavctl = bin/tavctl\n")
    (pytester.path / "descriptions").symlink_to(DESCRIPTIONS)
    script(pytester.path / "bin/tavctl", STAND_IN.format(sample=SAMPLE))
    return pytester


def script(path: pathlib.Path, text: str) -> None:
    path.parent.mkdir(exist_ok=True)
    path.write_text(text)
    path.chmod(path.stat().st_mode | stat.S_IXUSR)


def passes(project: pytest.Pytester, *tests: str) -> None:
    project.makepyfile("import pytest\nimport tav\n" + "\n".join(tests))
    project.runpytest_subprocess().assert_outcomes(passed=len(tests))


def test_bus_is_in_force_until_the_test_ends(project: pytest.Pytester) -> None:
    first, swapped = (SOURCE / f"samples/renumbering-{name}.dump" for name in ("first", "swapped"))
    passes(project, f"""
def test_names_stay(tav_bus):
    tav_bus({str(first)!r})
    before = {{device.name for device in tav.devices()}}
    assert before == {{"TAV1", "TAV2", "TAVCard1"}}
    bus = tav_bus({str(swapped)!r})
    assert [device.address for device in bus.devices() if device.name == "TAV2"] == ["0b:00.0"]
    assert tav.devices() == bus.devices()
    assert (bus.state / "zotavpci.ini").exists()
""", f"""
def test_options_are_those_of_a_bus(tav_bus, tmp_path):
    state = tmp_path / "own"
    state.mkdir()
    assert tav_bus({str(first)!r}, state=state).state == state
    with pytest.raises(tav.PluginNotFoundError):
        tav_bus({str(first)!r}, plugin="/nowhere.so")
""", """
def test_nothing_is_in_force():
    with pytest.raises(tav.PluginNotFoundError):
        tav.devices("/nowhere.so")
""")


def test_machine_is_made_of_models(project: pytest.Pytester) -> None:
    passes(project, """
def test_machine(tav_machine):
    bus = tav_machine("TAV-B3 Switch Box", "TAV-C1 Adapter Card", inside="TAV1:2")
    assert len(tav.devices()) == 4
    tav_machine("TAV-B3 Switch Box", inside=["TAV1:1", "TAV1:2"], descriptions="descriptions")
    assert len(tav.devices()) == 4
""")
    called = (project.path / "bin/tavctl.called").read_text().splitlines()
    dumps = [word for word in called if word.endswith(".dump")]
    assert dumps[0] != dumps[1]
    assert called == ["mock", "--in", "TAV1:2", "--descriptions",
                      str(project.path / "descriptions"), "-o", dumps[0], "--",
                      "TAV-B3 Switch Box", "TAV-C1 Adapter Card",
                      "mock", "--in", "TAV1:1", "--in", "TAV1:2", "--descriptions", "descriptions",
                      "-o", dumps[1], "--", "TAV-B3 Switch Box"]


def test_machine_is_made_by_the_tool(project: pytest.Pytester) -> None:
    ini = project.path / "tox.ini"
    ini.write_text(ini.read_text().replace("bin/tavctl", str(TAVCTL)))
    passes(project, """
def test_machine(tav_machine):
    box, card = tav_machine("TAV-B3 Switch Box", "TAV-C1 Adapter Card", inside="TAV1:2").devices()
    assert (box.name, box.model) == ("TAV1", "TAV-B3 Switch Box")
    assert (card.name, card.model) == ("TAVCard1", "TAV-C1 Adapter Card")
    assert card.bus == box.ports["2"].secondary_bus
    with pytest.raises(tav.Error, match="no connector .*LEFT"):
        tav_machine("TAV-B3 Switch Box", "TAV-C1 Adapter Card", inside="TAV1:LEFT")
""")


def test_machine_is_a_dump(project: pytest.Pytester) -> None:
    passes(project, f"""
def test_machine(tav_machine):
    assert len(tav_machine(dump={str(SAMPLE)!r}).devices()) == 4
    with pytest.raises(ValueError, match="either a dump or at least one model"):
        tav_machine()
    with pytest.raises(ValueError, match="either a dump or at least one model"):
        tav_machine("TAV-B3 Switch Box", dump={str(SAMPLE)!r})
    with pytest.raises(ValueError, match="the dump tells"):
        tav_machine(dump={str(SAMPLE)!r}, inside="TAV1:2")
""")
    assert not (project.path / "bin/tavctl.called").exists()


# The first is what this very tavctl says of a command that it has not got.
@pytest.mark.parametrize("program, told", [
    (f'#!/bin/sh\nshift\nexec {TAVCTL} unheard-of "$@"\n',
     'this tavctl has no command "mock"; a newer one has'),
    ("#!/bin/sh\necho 'tavctl: no such model' >&2\nexit 1\n", "tavctl: no such model"),
    ("#!/bin/sh\nexit 3\n", "it ended with status 3"),
    ("no program\0", "Exec format error")])
def test_failing_tool_is_told(tmp_path: pathlib.Path, program: str, told: str) -> None:
    script(tmp_path / "bin/tavctl", program)
    with pytest.raises(tav.Error) as caught:
        mock(str(tmp_path / "bin/tavctl"), ["TAV-B3 Switch Box"], [], None, tmp_path / "a.dump")
    assert caught.value.operation == "make a bus" and told in str(caught.value)


def test_tool_that_hangs_is_told(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    script(tmp_path / "bin/tavctl", "#!/bin/sh\nexec sleep 60\n")
    monkeypatch.setattr("tav._mock._SECONDS", 0.2)
    with pytest.raises(tav.Error, match="no answer after 0.2 seconds"):
        mock(str(tmp_path / "bin/tavctl"), ["TAV-B3 Switch Box"], [], None, tmp_path / "a.dump")


def test_tool_that_is_not_there_is_told(tmp_path: pathlib.Path) -> None:
    with pytest.raises(tav.Error, match="there is no such program; the setting tav_tavctl"):
        mock("no-such-tavctl", ["TAV-B3 Switch Box"], [], None, tmp_path / "a.dump")


def test_tool_is_found_in_the_path(project: pytest.Pytester,
                                   monkeypatch: pytest.MonkeyPatch) -> None:
    ini = project.path / "tox.ini"
    ini.write_text(ini.read_text().replace("bin/tavctl", "tavctl"))
    monkeypatch.setenv("PATH", f"{project.path}/bin{os.pathsep}{os.environ['PATH']}")
    passes(project, """
def test_machine(tav_machine):
    tav_machine("TAV-B3 Switch Box")
""")
    assert (project.path / "bin/tavctl.called").exists()
