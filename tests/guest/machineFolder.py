"""The folder of a machine: what it is made of, and the files that make it up in the guest."""
import gzip
import shutil
import subprocess
import tempfile
from pathlib import Path

from guest import PROJECT, read_text, write_text

DEFAULT_STEPS = """\
boot devices.machine
check expected.json
sample NAME
off
"""

# Where things are in the guest.
DESCRIPTIONS = "usr/share/tav-manager"
STATE = "var/lib/tav-manager"
CONFIGURATION = f"""\
[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]
Path = /{DESCRIPTIONS}/
ConfigPath = /{STATE}/
"""
USER = "tester"
PASSWORDS = f"root:x:0:0::/:/bin/sh\n{USER}:x:1000:1000::/tmp:/bin/sh\n"


class MachineFolder:
    def __init__(self, path):
        self.path = path
        self.about = read_text(path / "about.txt")
        if not self.about.strip():
            raise ValueError(f"{path} does not say what it is about")
        link = path / "descriptions.path"
        self.descriptions = (PROJECT / read_text(link).strip()
                             if link.exists() else path / "descriptions")

    def steps(self):
        """Each step with its place, for messages."""
        file = self.path / "steps"
        text = (read_text(file) if file.exists()
                else DEFAULT_STEPS.replace("NAME", self.path.name))
        for number, line in enumerate(text.splitlines(), 1):
            line = line.split("#")[0].strip()
            if line:
                yield f"{file}:{number}", line

    def initramfs(self, base, state, result):
        """Writes the initial file system of a guest: `base` with this machine's files.

        `state` is the archive of the state folder that the guest before left, None without one.
        """
        with tempfile.TemporaryDirectory(prefix="guest-files-") as folder:
            root = Path(folder)
            shutil.copytree(self.descriptions, root / DESCRIPTIONS)
            root.joinpath(STATE).mkdir(parents=True)
            if state is not None:
                subprocess.run(["tar", "-xz", "-C", root / STATE], input=state, check=True)
            root.joinpath("etc").mkdir()
            write_text(root / "etc" / "tav-manager.conf", CONFIGURATION)
            write_text(root / "etc" / "passwd", PASSWORDS)
            names = sorted(str(each.relative_to(root)) for each in root.rglob("*"))
            archive = subprocess.run(
                ["cpio", "--create", "--format=newc", "--owner=0:0", "--quiet"], cwd=root,
                input="\n".join(names).encode(), stdout=subprocess.PIPE, check=True).stdout
        # The kernel unpacks one archive after the other.
        result.write_bytes(base.read_bytes() + gzip.compress(archive, 1))
