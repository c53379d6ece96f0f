#!/usr/bin/env -S python3 -B
"""Runs the system on one emulated machine, a folder of machines/ (see README.md there).

    runMachine.py [--record] --programs FOLDER --initramfs FILE MACHINE-FOLDER

With --record the buses that the machine's "sample" steps name become samples and whole-system
cases, provided that everything before them went well. Exit status: 0, or 1 with the failed step and
the guest's console on standard error.
"""
import argparse
import sys
from pathlib import Path

from guest import GuestError
from machineFolder import MachineFolder
from steps import Steps


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--record", action="store_true")
    arguments.add_argument("--programs", type=Path, required=True)
    arguments.add_argument("--initramfs", type=Path, required=True)
    arguments.add_argument("machine", type=Path)
    options = arguments.parse_args()
    machine = MachineFolder(options.machine.resolve())
    with Steps(machine, options.programs, options.initramfs, options.record) as steps:
        for place, line in machine.steps():
            print(f"{machine.path.name}: {line}", flush=True)
            try:
                steps.take(line)
            except (GuestError, OSError, ValueError) as error:
                print(f"\n{place}: {line}\n{error}", file=sys.stderr)
                return 1
        if steps.checks == 0:
            print(f"{machine.path}: nothing is checked", file=sys.stderr)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
