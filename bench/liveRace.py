#!/usr/bin/env -S python3 -B
"""Races `tavctl list` against `lspci -n` on the live bus of emulated machines, which list nothing
recorded but what firmware and kernel found.

    liveRace.py [--rounds N] --programs FOLDER --initramfs FILE MACHINE-FOLDER...

In each round both run the same number of times in a row; a row of the table has the best of the
rounds. Exit status: 0, or 1 when a command fails.
"""
import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "guest"))
from guest import Guest, GuestError  # noqa: E402
from machineFolder import MachineFolder  # noqa: E402
from tempfile import TemporaryDirectory  # noqa: E402

RUNS = 10  # in a row: the clock in a guest counts in hundredths of a second


def seconds(guest, command):
    """What one run takes, of several in a row."""
    answer = guest.output(
        "read -r start _ </proc/uptime; n=0; "
        f"while [ $n -lt {RUNS} ]; do {command} >/dev/null || exit 1; n=$((n+1)); done; "
        "read -r end _ </proc/uptime; echo $start $end")
    start, end = answer.split()
    return (float(end) - float(start)) / RUNS


def race(folder, options):
    machine = MachineFolder(folder.resolve())
    with TemporaryDirectory() as work:
        initramfs = Path(work, "initramfs")
        machine.initramfs(options.initramfs, None, initramfs)
        # An emulator translates code anew wherever it is loaded, which would be most of the time.
        with Guest(initramfs, machine.path / "devices.machine", "pci=nomsi norandmaps") as guest:
            functions = len(guest.output("lspci -n").splitlines())
            guest.output("tavctl list")  # gives the names
            rounds = [(seconds(guest, "tavctl list"), seconds(guest, "lspci -n"),
                       seconds(guest, "tavctl --version")) for _ in range(options.rounds)]
    ours, peer, nothing = (min(column) for column in zip(*rounds))
    print(f"| {machine.path.name}, {functions} functions | {ours * 1000:.1f} ms "
          f"| {peer * 1000:.1f} ms | {peer / ours:.2f} | {nothing * 1000:.1f} ms |", flush=True)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--rounds", type=int, default=5)
    arguments.add_argument("--programs", type=Path, required=True)
    arguments.add_argument("--initramfs", type=Path, required=True)
    arguments.add_argument("machines", type=Path, nargs="+")
    options = arguments.parse_args()
    print("| live machine | tavctl list | lspci -n | ratio | tavctl --version |\n"
          "|---|---|---|---|---|", flush=True)
    try:
        for folder in options.machines:
            race(folder, options)
    except (GuestError, OSError, ValueError) as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
