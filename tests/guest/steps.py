"""The steps that a machine goes through, a method each; README.md says what each is for."""
import base64
import difflib
import json
import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

import busViews
import samples
from guest import PROJECT, Guest, GuestError, read_text, write_text
from machineFolder import STATE, USER

NAME_FILE = f"/{STATE}/zotavpci.ini"
PLUGIN = "/opt/tav/zotavpci.so"
MONITOR_OUTPUT = "/tmp/monitor"
TOLD_SECONDS = 60


class Steps:
    def __init__(self, machine, programs, initramfs, record):
        self.machine = machine
        self.programs = programs
        self.base = initramfs
        self.record = record
        self.checks = 0
        self.guest = None
        self.state = None  # the archive of the state folder, from boot to boot
        self.last_check = None
        self.resident = False
        self.monitor_lines = 0  # of the monitor's, that were asked for
        self.changed = None  # when something was last plugged or pulled
        self.work = tempfile.TemporaryDirectory(prefix="machine-")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.guest is not None:
            self.guest.close()
        self.work.cleanup()

    def take(self, line):
        word, _, rest = line.partition(" ")
        step = getattr(self, "step_" + word, None)
        if step is None:
            raise GuestError(f"there is no step {word}")
        if word != "boot" and self.guest is None:
            raise GuestError("no guest is running")
        step(rest.strip())

    def _work_file(self, name):
        return Path(self.work.name, name)

    def _expected(self, name):
        return self._devices(read_text(self.machine.path / name))

    def _devices(self, text):
        """A listing with just what is worked out by hand: every name in it must be stored."""
        devices = json.loads(text)["devices"]
        for device in devices:
            if not device.pop("stored", True):
                raise self.guest.error(f"{device['name']} is not stored")
            # What a host does not get from the plug-in.
            for name in ("slotPath", "upstreamLink"):
                device.pop(name, None)
            for port in device["ports"]:
                for name in ("negotiatedWidth", "negotiatedSpeed", "possibleWidth",
                             "possibleSpeed", "degraded", "occupied"):
                    port.pop(name, None)
        return {"devices": devices}

    def _same(self, expected, actual, what):
        if expected == actual:
            return
        expected, actual = (
            each.split("\n") if isinstance(each, str) else
            each if isinstance(each, list) else
            json.dumps(each, indent=1, sort_keys=True).splitlines() for each in (expected, actual))
        raise self.guest.error("\n".join(
            [what, *difflib.unified_diff(expected, actual, "expected", "actual", lineterm="", n=8)]))

    # --- power ---

    def step_boot(self, rest):
        if self.guest is not None:
            raise GuestError("a guest is running already")
        words = rest.split()
        parts = [word for word in words if word.endswith(".machine")]
        kernel_words = [word for word in words if word not in parts]
        machine = self._work_file("machine")
        write_text(machine, "".join(read_text(self.machine.path / part) for part in parts))
        initramfs = self._work_file("initramfs")
        self.machine.initramfs(self.base, self.state, initramfs)
        self.guest = Guest(initramfs, machine, " ".join(kernel_words))
        self.last_check = None
        self.resident = False

    def step_off(self, _):
        self.state = base64.b64decode(self.guest.output(f"tar -cz -C /{STATE} . | base64"))
        self.guest.power_off()
        self.guest.close()
        self.guest = None

    # --- what there is to be seen ---

    def step_check(self, rest):
        file, _, user = rest.partition(" ")
        if user not in ("", "user"):
            raise GuestError(f"not \"{user}\" but \"user\" or nothing")
        expected = self._expected(file)
        names_before = self._names()
        for run in ("first", "second"):
            listed = self._run_as(user, "tavctl list --json")
            if listed.status != 0 or listed.errors:
                raise self.guest.error(f"tavctl in the guest, {run} run: exit status "
                                       f"{listed.status}\n{listed.output}{listed.errors}")
            self._same(expected, self._devices(listed.output), f"{run} listing in the guest")
        names = self._names()
        dump = self.guest.output("lspci -n -xxxx")
        file = self._work_file("bus.dump")
        write_text(file, dump)
        copy = self._copied_sysfs()
        recorded = [self._check_recorded(bus, expected, names_before, names)
                    for bus in (file, copy)]
        self._check_views(file, copy)
        self._check_links(*recorded)
        self.last_check = samples.Sample(self.machine, dump, recorded[0], names_before, names)
        self.checks += 1

    def _copied_sysfs(self):
        """A folder on the host that stands for the guest's /sys, with what a user may read there."""
        answer = self._run_as("user", busViews.COPY_COMMAND)
        if answer.status != 0 or answer.errors:
            raise self.guest.error(f"copying /sys: exit status {answer.status}\n{answer.errors}")
        folder = self._work_file("sys")
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        subprocess.run(["tar", "-xz", "-C", folder], input=base64.b64decode(answer.output),
                       check=True)
        return folder

    def _check_recorded(self, bus, expected, names_before, names):
        """Answers what is listed of a recording, in full."""
        with tempfile.TemporaryDirectory(prefix="state-") as state:
            name_file = Path(state, "zotavpci.ini")
            if names_before is not None:
                write_text(name_file, names_before)
            listed = self._host("tavctl", "list", "--json", "--dump", bus, "--descriptions",
                                self.machine.descriptions, "--state", state)
            self._same(expected, self._devices(listed), f"listing of {bus.name}, recorded")
            self._same(names, read_text(name_file) if name_file.exists() else None,
                       f"names after listing {bus.name}, recorded, against the guest's")
            return json.loads(listed)

    def _check_views(self, *recorded):
        lspci = busViews.seen_by_lspci(self.guest.output(busViews.LSPCI_COMMAND))
        if not lspci:
            raise self.guest.error("the guest's bus has no functions")
        self._same(lspci, busViews.seen_by_kernel(self.guest.output(busViews.SYSFS_COMMAND)),
                   "lspci and the kernel differ about the bus")
        for user in ("", "user"):
            seen = self._run_as(user, "busReport /sys")
            self._same(lspci, (seen.output + seen.errors).splitlines(),
                       f"the live bus, read as {user or 'root'}, is not lspci's")
        for bus in recorded:
            self._same(lspci, self._host("busReport", bus).splitlines(),
                       f"{bus.name}, recorded, is not lspci's")

    def _check_links(self, *recorded):
        """How the links run is the same for everybody, and what lspci sees."""
        links = busViews.links_by_bus(self.guest.output(busViews.LSPCI_COMMAND))
        listings = list(recorded)
        for user in ("", "user"):
            answer = self._run_as(user, "tavctl list --json")
            if answer.status != 0:
                raise self.guest.error(f"tavctl for {user or 'root'}: {answer.errors}")
            listings.append(json.loads(answer.output))
        for listing in listings:
            listed = busViews.links_of_listing(listing)
            self._same([[what, bus, *links.get(bus, (None, None))] for what, bus, _, _ in listed],
                       [list(each) for each in listed], "the links as they run")

    def step_names(self, rest):
        self._same(read_text(self.machine.path / rest), self._names(),
                   "the name file")

    def step_bridges(self, rest):
        count = len(self.guest.output(
            "ls /sys/bus/pci/devices/*/secondary_bus_number").splitlines())
        if count < int(rest):
            raise self.guest.error(f"{count} bridges")

    def step_sample(self, rest):
        if self.last_check is None:
            raise GuestError("a sample needs a check before it")
        name, _, title = rest.partition(" ")
        self.last_check.title = title
        if self.record:
            self.last_check.write(name)
            return
        self.step_recorded(f"samples/{name}.dump")
        self._same(samples.kept_case(name), self.last_check.case_files(name),
                   f"the case {name} is not this machine any more (make record-guests)")

    def step_recorded(self, rest):
        # Compared as it is read: another kernel may leave other values in registers that nothing
        # here looks at.
        self._same(self._host("busReport", PROJECT / rest),
                   self._host("busReport", self._work_file("bus.dump")),
                   f"{rest} is not this machine any more")

    # --- commands in the guest ---

    def step_run(self, rest):
        self.guest.output(rest)

    def step_say(self, rest):
        self._compare_answer("", rest)

    def step_user(self, rest):
        self._compare_answer("user", rest)

    def step_where(self, rest):
        what, arrow, expected = rest.partition(" -> ")
        if not arrow:
            raise GuestError("a where step is WHAT -> LINE")
        if self.last_check is None:
            raise GuestError("where needs a check before it, for the copy of /sys")
        # Without the names of vendors, which are the machine's own.
        command = ["tavctl", "where", what, "--pci-ids", "/dev/null"]
        for user in ("", "user"):
            answer = self._run_as(user, " ".join(command))
            self._same([expected, "exit status 0"],
                       (answer.output + answer.errors + f"exit status {answer.status}").splitlines(),
                       f"{what} for {user or 'root'}")
        # A path is one of the machine at hand.
        if what.startswith("/sys"):
            return
        with tempfile.TemporaryDirectory(prefix="state-") as state:
            write_text(Path(state, "zotavpci.ini"), self.last_check.names)
            told = self._host(*command, "--dump", self._work_file("sys"), "--descriptions",
                              self.machine.descriptions, "--state", state)
        self._same([expected], told.splitlines(), f"{what} on the copied /sys")

    def _compare_answer(self, user, rest):
        file, _, command = rest.partition(" ")
        answer = self._run_as(user, command)
        self._same(read_text(self.machine.path / file),
                   f"{answer.output}{answer.errors}exit status {answer.status}\n", command)

    # --- plugging ---

    def step_stop(self, _):
        self.guest.command("stop")

    def step_go(self, _):
        self.guest.command("cont")
        self.changed = time.monotonic()

    def step_plug(self, rest):
        self.guest.plug(rest)
        self.changed = time.monotonic()

    def step_pull(self, rest):
        self.guest.pull(rest)
        self.changed = time.monotonic()

    def step_await(self, rest):
        condition, address = rest.split()
        device = f"/sys/bus/pci/devices/0000:{address}"
        self.guest.await_success({"working": f"[ -e {device}/driver ]",
                                  "gone": f"[ ! -e {device} ]"}[condition])

    # --- a host that stays ---

    def step_host(self, rest):
        word, _, file = rest.partition(" ")
        if not self.resident:
            self.guest.output(
                "mkfifo /tmp/host.in /tmp/host.out; exec 3<>/tmp/host.in 4<>/tmp/host.out; "
                f"residentHost {PLUGIN} <&3 >&4 2>/dev/console &")
            self.resident = True
        # No host's answer takes a minute; without the limit a dead one would never answer.
        answer = self.guest.output(
            f"echo {word} >&3; read -r -t 60 answer <&4; echo \"$answer\"").rstrip("\n")
        if word == "list":
            try:
                actual = self._devices(answer)
            except ValueError as error:
                raise self.guest.error(f"the resident host answers: {answer}") from error
            self._same(self._expected(file), actual, "listing of the resident host")
        else:
            self._same({"initialize": "0", "finalize": "done"}[word], answer, "the resident host")

    # --- a monitor that stays ---

    def step_monitor(self, rest):
        word, _, text = rest.partition(" ")
        if word == "start":
            self.monitor_lines = 0
            self.changed = None
            self.guest.output(f"tavctl monitor --pci-ids /dev/null >{MONITOR_OUTPUT} 2>&1 & "
                              "monitor=$!")
        elif word == "tells":
            self._await_told(text)
        elif word == "stop":
            self.guest.output("kill $monitor; wait $monitor")
            self._await_told(text)
        else:
            raise GuestError(f"not \"{word}\" but \"start\", \"tells\" or \"stop\"")

    def _await_told(self, text):
        """The monitor's next line, which must have the text."""
        end = time.monotonic() + TOLD_SECONDS
        while True:
            lines = self.guest.output(f"cat {MONITOR_OUTPUT}").splitlines()[self.monitor_lines:]
            if lines:
                break
            if time.monotonic() > end:
                raise self.guest.error(f"the monitor never told: {text}")
            time.sleep(0.02)
        self.monitor_lines += 1
        if text not in lines[0]:
            raise self.guest.error(f"the monitor tells: {lines[0]}")
        after = "" if self.changed is None else \
            f", {time.monotonic() - self.changed:.2f} s after the last change"
        print(f"{self.machine.path.name}: told{after}: {lines[0]}", flush=True)

    # --- helpers ---

    def _run_as(self, user, command):
        if user:
            command = f"su {USER} -c '{command}'"
        return self.guest.run(command)

    def _names(self):
        answer = self.guest.run(f"[ ! -e {NAME_FILE} ] || echo there")
        return self.guest.output(f"cat {NAME_FILE}") if answer.output else None

    def _host(self, program, *arguments):
        """What a program prints on the host; it must succeed and have no complaints."""
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("TAV_MANAGER_CONF", "TAV_PCI_DUMP")}
        ran = subprocess.run([self.programs / program, *arguments], capture_output=True, text=True,
                             env=environment, check=False)
        if ran.returncode != 0 or ran.stderr:
            raise self.guest.error(f"{program} on the host: exit status {ran.returncode}\n"
                                   f"{ran.stdout}{ran.stderr}")
        return ran.stdout
