"""A guest: an emulated machine that runs agent.sh, and what can be done to it from outside.

The machine's console is a log; commands go over the second serial port, hardware is plugged and
pulled over QEMU's monitor.
"""
import base64
import gzip
import json
import os
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]

# Ends a machine that hangs; nothing here takes as long on one that works.
WATCHDOG_SECONDS = 180


def read_text(path):
    """A file's text with its line ends as they are."""
    return path.read_bytes().decode()


def write_text(path, text):
    path.write_bytes(text.encode())


class GuestError(Exception):
    """Something in or about the guest is not as it should be; ends with the guest's console."""


class Answer:
    """What a command in the guest came to."""

    def __init__(self, status, output, errors):
        self.status = status
        self.output = output
        self.errors = errors


class Guest:
    """A running machine; leaving its "with" block ends it by force."""

    def __init__(self, initramfs, machine, kernel_words=""):
        self.port = self.monitor = None
        self.folder = tempfile.TemporaryDirectory(prefix="guest-")
        self.console_file = Path(self.folder.name, "console")
        port_file = Path(self.folder.name, "port")
        monitor_file = Path(self.folder.name, "monitor")
        with open(self.console_file, "wb") as console:
            # A session of its own, so that the whole of it can be ended.
            self.process = subprocess.Popen(
                [PROJECT / "scripts" / "guest-boot.sh", initramfs, machine,
                 "-serial", f"unix:{port_file},server=on,wait=off",
                 "-qmp", f"unix:{monitor_file},server=on,wait=off"],
                stdin=subprocess.DEVNULL, stdout=console, stderr=subprocess.STDOUT,
                start_new_session=True,
                env=os.environ | {"GUEST_APPEND": kernel_words, "GUEST_TIMEOUT": "900"})
        try:
            self.monitor = self._open(monitor_file)
            self._hear_monitor()
            self.command("qmp_capabilities")
            self.port = self._open(port_file)
            while self._hear() != "=== ready":
                pass
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends the machine if it still runs. The last thing to do with it."""
        for connection in (self.port, self.monitor):
            if connection is not None:
                try:
                    connection.close()
                except OSError:
                    pass
        if self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()
        self.folder.cleanup()

    def error(self, what):
        """The exception to raise for what went wrong."""
        console = self.console_file.read_text(encoding="utf-8", errors="replace")
        return GuestError(f"{what}\n--- the guest's console ---\n{console}"
                          "--- end of the console ---")

    def _open(self, path):
        end = time.monotonic() + WATCHDOG_SECONDS
        while time.monotonic() < end:
            connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            connection.settimeout(WATCHDOG_SECONDS)
            try:
                connection.connect(str(path))
            except (FileNotFoundError, ConnectionRefusedError):
                connection.close()
                if self.process.poll() is not None:
                    raise self.error("the machine did not start") from None
                time.sleep(0.05)
                continue
            with connection:
                return connection.makefile("rw", encoding="utf-8", newline="\n")
        raise self.error("the machine opened no port")

    # --- the agent ---

    def run(self, command):
        """Runs a line of shell in the guest's first process."""
        if "\n" in command:
            raise ValueError("a command is one line")
        self._say(command)
        first = self._hear()
        if not first.startswith("=== status "):
            raise self.error(f"the guest answers: {first}")
        return Answer(int(first.split()[2]), self._hear_text("=== errors"),
                      self._hear_text("=== end"))

    def output(self, command):
        """What a command prints that must succeed and have no complaints."""
        answer = self.run(command)
        if answer.status != 0 or answer.errors:
            raise self.error(f"in the guest, {command}: exit status {answer.status}\n"
                             f"{answer.output}{answer.errors}")
        return answer.output

    def await_success(self, command):
        """Repeats a command until it succeeds."""
        end = time.monotonic() + WATCHDOG_SECONDS
        while self.run(command).status != 0:
            if time.monotonic() > end:
                raise self.error(f"in the guest this never came true: {command}")
            time.sleep(0.1)

    def power_off(self):
        """Switches the machine off and waits for its end."""
        self._say("poweroff -f")
        try:
            status = self.process.wait(WATCHDOG_SECONDS)
        except subprocess.TimeoutExpired as error:
            raise self.error("the machine did not switch off") from error
        if status != 0:
            raise self.error(f"the machine ended with status {status}")

    def _say(self, line):
        try:
            self.port.write(line + "\n")
            self.port.flush()
        except OSError as error:
            raise self.error(f"the guest does not listen: {error}") from error

    def _hear(self):
        try:
            line = self.port.readline()
        except (OSError, UnicodeDecodeError) as error:
            raise self.error(f"the guest does not answer: {error}") from error
        if not line.endswith("\n"):
            raise self.error("the guest went away")
        return line.rstrip("\r\n")

    def _hear_text(self, end):
        lines = []
        while (line := self._hear()) != end:
            lines.append(line)
        try:
            return gzip.decompress(base64.b64decode("".join(lines), validate=True)).decode()
        except (ValueError, OSError, EOFError) as error:
            raise self.error(f"the guest's answer arrived damaged: {error}") from error

    # --- the monitor ---

    def command(self, name, **arguments):
        """A command of QEMU's monitor; answers what it returns."""
        self.monitor.write(json.dumps({"execute": name, "arguments": arguments}) + "\n")
        self.monitor.flush()
        while True:
            answer = self._hear_monitor()
            if "return" in answer:
                return answer["return"]
            if "error" in answer:
                raise self.error(f"monitor, {name} {arguments}: {answer['error']['desc']}")

    def _hear_monitor(self):
        try:
            line = self.monitor.readline()
        except OSError as error:
            raise self.error(f"the monitor does not answer: {error}") from error
        if not line:
            raise self.error("the monitor went away")
        return json.loads(line)

    def plug(self, device):
        """Plugs a device, written as QEMU's option: "e1000e,bus=port1"."""
        driver, *properties = device.split(",")
        self.command("device_add", driver=driver, **dict(each.split("=", 1) for each in properties))

    def pull(self, port):
        """Takes away by surprise whatever is plugged into a port on bus 0, say "04.0".

        The monitor's own way of unplugging asks the kernel first. But the emulated slot drops its
        device at once when its power is cut. So the power is cut from outside while the processor
        stands still, and is back on before it goes on: all that the kernel sees is a slot that has
        become empty.
        """
        device, function = (int(part, 16) for part in port.split("."))
        self.command("stop")
        selected = self._in(4, ADDRESS_PORT)
        function_base = 1 << 31 | device << 11 | function << 8
        control = function_base + self._capability(function_base, PCI_EXPRESS) + SLOT_CONTROL
        before = self._config(2, control)
        self._set_config(2, control, before | SLOT_POWER_OFF)
        self._set_config(2, control, before)
        self._out(4, ADDRESS_PORT, selected)
        self.command("cont")

    def _capability(self, function_base, wanted):
        at = self._config(1, function_base + 0x34)
        while at:
            if self._config(1, function_base + at) == wanted:
                return at
            at = self._config(1, function_base + at + 1)
        raise self.error(f"no capability {wanted:#x} at {function_base:#x}")

    def _config(self, size, address):
        self._out(4, ADDRESS_PORT, address & ~3)
        return self._in(size, DATA_PORT + (address & 3))

    def _set_config(self, size, address, value):
        self._out(4, ADDRESS_PORT, address & ~3)
        self._out(size, DATA_PORT + (address & 3), value)

    def _in(self, size, port):
        return int(self._line(f"i /{SIZE_LETTERS[size]} {port:#x}").split("=")[1], 16)

    def _out(self, size, port, value):
        self._line(f"o /{SIZE_LETTERS[size]} {port:#x} {value:#x}")

    def _line(self, line):
        """A line of the monitor for people; answers what it prints."""
        return self.command("human-monitor-command", **{"command-line": line})


# The configuration space of bus 0, through the two I/O ports of old.
ADDRESS_PORT = 0xCF8
DATA_PORT = 0xCFC
SIZE_LETTERS = {1: "b", 2: "h", 4: "w"}
PCI_EXPRESS = 0x10
SLOT_CONTROL = 0x18
SLOT_POWER_OFF = 0x0700  # power controller off, power indicator off
