"""Prometheus and its node_exporter on this machine's own loopback, for as long as a test runs."""

import json
import pathlib
import shutil
import socket
import subprocess
import time
import urllib.parse
import urllib.request

LIMIT = 60  # seconds for anything that must come


def wait_for(what, ask):
    """The first answer that is true."""
    end = time.monotonic() + LIMIT
    while True:
        answer = ask()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"waited {LIMIT} s in vain: {what}")
        time.sleep(0.1)


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Server:
    """A program that serves HTTP; ends with the block."""

    def __init__(self, folder, name, words, ready):
        """Words may have PORT in them; ready is the path that answers when it serves."""
        program = shutil.which(name)
        assert program, f"there is no {name}; scripts/install-packages.sh fleet"
        self._name, self._words, self._ready = program, words, ready
        self._log = pathlib.Path(folder) / f"{name}.log"
        self._process = None
        self.port = None

    def __enter__(self):
        for _ in range(5):  # somebody else may take the port first
            self.port = _free_port()
            words = [word.replace("PORT", str(self.port)) for word in self._words]
            with open(self._log, "ab") as log:
                self._process = subprocess.Popen([self._name, *words], stdout=log, stderr=log,
                                                 stdin=subprocess.DEVNULL)
            wait_for(f"{self._name} serves", lambda: self._ended() or self._answers())
            if not self._ended():
                return self
        raise AssertionError(f"{self._name} ends:\n{self._log.read_text()}")

    def __exit__(self, *_):
        self._process.terminate()
        try:
            self._process.wait(20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()

    def _ended(self):
        return self._process.poll() is not None

    def _answers(self):
        try:
            self.get(self._ready)
            return True
        except OSError:
            return False

    def get(self, path):
        with urllib.request.urlopen(f"http://127.0.0.1:{self.port}{path}", timeout=10) as answer:
            return answer.read().decode()


class NodeExporter(Server):
    def __init__(self, folder, texts):
        super().__init__(folder, "prometheus-node-exporter",
                         ["--web.listen-address=127.0.0.1:PORT", "--collector.disable-defaults",
                          "--collector.textfile", f"--collector.textfile.directory={texts}"],
                         "/metrics")


class Prometheus(Server):
    def __init__(self, folder, exporter, rules):
        config = folder / "prometheus.json"  # which is YAML, too
        config.write_text(json.dumps({
            "global": {"scrape_interval": "1s", "evaluation_interval": "1s"},
            "rule_files": [str(rules)],
            "scrape_configs": [{"job_name": "node", "static_configs": [
                {"targets": [f"127.0.0.1:{exporter.port}"], "labels": {"instance": "rack1"}}]}],
        }), "utf-8")
        super().__init__(folder, "prometheus",
                         [f"--config.file={config}", f"--storage.tsdb.path={folder / 'data'}",
                          "--web.listen-address=127.0.0.1:PORT"], "/-/ready")

    def _api(self, path, **parameters):
        answer = json.loads(self.get(f"/api/v1/{path}?{urllib.parse.urlencode(parameters)}"))
        assert answer["status"] == "success", answer
        return answer["data"]

    def query(self, expression):
        """The series of an expression: labels with a value, or with samples."""
        return [(series["metric"], series.get("values") or series["value"])
                for series in self._api("query", query=expression)["result"]]

    def firing(self):
        """The alerts that fire now, by name."""
        found = {}
        for alert in self._api("alerts")["alerts"]:
            if alert["state"] == "firing":
                found.setdefault(alert["labels"]["alertname"], []).append(alert)
        return found
