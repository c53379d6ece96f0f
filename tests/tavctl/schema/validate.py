#!/usr/bin/env python3
"""Validates what every command prints with --json, on every sample, by the schemas of docs/schema.

    validate.py TAVCTL SOURCE-FOLDER [--freeze]

Every member that is printed must be one that the schema tells of, and every form of every schema
must come up. The members of a version never change: version-1.txt beside this program holds what
each is and means, and only grows. --freeze adds the members that are new.
"""

import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import warnings

import jsonschema

warnings.filterwarnings("ignore", category=DeprecationWarning)  # newer ones have another way

FROZEN = pathlib.Path(__file__).with_name("version-1.txt")


def load_schemas(folder):
    schemas = {}
    for path in sorted(folder.glob("*.schema.json")):
        schemas[path.name] = json.loads(path.read_text(encoding="utf-8"))
        jsonschema.Draft7Validator.check_schema(schemas[path.name])
    return schemas


def closed(schema):
    """The schema, with every member refused that it does not tell of."""
    if isinstance(schema, list):
        return [closed(each) for each in schema]
    if not isinstance(schema, dict):
        return schema
    result = {name: closed(each) for name, each in schema.items()}
    if "properties" in schema and isinstance(schema["properties"], dict):
        result["additionalProperties"] = False
    return result


def members(name, schema, schemas, path="", seen=()):
    """Each member of a document, as "path: types: meaning"."""
    if "$ref" in schema:
        target = schema["$ref"]
        if target in seen:
            return
        file, _, place = target.partition("#/definitions/")
        owner = file or name
        yield from members(owner, schemas[owner]["definitions"][place], schemas, path,
                           seen + (target,))
        return
    if "anyOf" in schema:
        for each in schema["anyOf"]:
            if each != {"type": "null"}:
                yield from members(name, each, schemas, path, seen)
        return
    if path:
        kind = schema.get("type", schema.get("enum", schema.get("const")))
        yield f"{path}: {json.dumps(kind)}: {schema.get('description', '')}"
    for member, each in schema.get("properties", {}).items():
        yield from members(name, each, schemas, f"{path}.{member}", seen)
    if "items" in schema:
        yield from members(name, schema["items"], schemas, path + "[]", seen)


def all_members(schemas):
    lines = []
    for name, schema in schemas.items():
        if name != "common.schema.json":
            short = name.removesuffix(".schema.json")
            lines += [short + line for line in members(name, schema, schemas)]
    return lines


def hold_meaning(schemas, freeze):
    frozen = FROZEN.read_text(encoding="utf-8").splitlines() if FROZEN.exists() else []
    now = all_members(schemas)
    faults = [f"gone or of another meaning: {line}" for line in frozen if line not in now]
    new = [line for line in now if line not in frozen]
    if freeze:
        FROZEN.write_text("\n".join(frozen + new) + "\n", encoding="utf-8")
    else:
        faults += [f"not frozen yet, --freeze does so: {line}" for line in new]
    return faults


class Runs:
    """Runs of tavctl, each validated by a schema."""

    def __init__(self, tavctl, source, schemas):
        self.tavctl = tavctl
        self.source = source
        self.faults = []
        self.used = set()
        self.validators = {}
        store = {name: closed(schema) for name, schema in schemas.items()}
        for name, schema in store.items():
            resolver = jsonschema.RefResolver(name, schema, store=store)
            self.validators[name] = jsonschema.Draft7Validator(schema, resolver=resolver)

    def run(self, schema, *words, errors=False):
        """The document; of standard error where a failure is meant."""
        ran = subprocess.run([self.tavctl, *map(str, words)], capture_output=True, text=True,
                             encoding="utf-8", check=False)
        text = ran.stderr if errors else ran.stdout
        shown = " ".join(map(str, words))
        try:
            document = json.loads(text.splitlines()[-1] if errors else text)
        except (ValueError, IndexError):
            self.faults.append(f"{shown}: no JSON document: {text[:200]!r} {ran.stderr[:200]!r}")
            return None
        self.validate(schema, shown, document)
        return document

    def validate(self, schema, shown, document):
        self.used.add(schema)
        if next(iter(document)) != "version":
            self.faults.append(f"{shown}: does not begin with its version")
        for error in self.validators[schema + ".schema.json"].iter_errors(document):
            place = "/".join(map(str, error.absolute_path))
            self.faults.append(f"{shown}: {schema}: {place}: {error.message[:300]}")

    def run_lines(self, schema, *words):
        """The documents of a command that prints one in each line."""
        ran = subprocess.run([self.tavctl, *map(str, words)], capture_output=True, text=True,
                             encoding="utf-8", check=False)
        shown = " ".join(map(str, words))
        if ran.returncode != 0:
            self.faults.append(f"{shown}: exit status {ran.returncode}: {ran.stderr[:200]!r}")
        documents = [json.loads(line) for line in ran.stdout.splitlines()]
        for document in documents:
            self.validate(schema, shown, document)
        return documents

    def on_bus(self, dump, descriptions, folder):
        bus = ["--json", "--dump", dump, "--descriptions", descriptions]
        state = ["--state", folder]
        listed = self.run("list", "list", *bus, *state)
        self.run("list", "list", "--all", *bus)
        tree = self.run("tree", "tree", *bus)
        self.run("explain", "explain", *bus)
        self.run("names", "names", *bus, *state)
        self.run("names", "names", "--stored", *bus, *state)
        self.run("names-check", "names", "check", *bus, *state)
        self.run("names-preview", "names", "preview", *bus, *state)
        self.run("lint", "lint", "--json", "--descriptions", descriptions, "--against", dump)
        told = self.run_lines("monitor", "monitor", "--for", "0", *bus, *state)
        if not told or told[-1]["event"] != "ended":
            self.faults.append(f"monitor on {dump} does not tell its end")
        for function in functions_in(tree or {"domains": []}):
            self.run("where", "where", function["address"], *bus)
        for device in (listed or {"devices": []})["devices"]:
            self.run("describe", "describe", device["address"], *bus)
            for port in device["ports"]:
                self.run("where", "where", f"{device['name']}:{port['label']}", *bus)

    def of_names(self, dump, descriptions, folder):
        options = ["--json", "--dump", dump, "--descriptions", descriptions, "--state", folder]
        saved = pathlib.Path(folder, "saved.ini")
        (pathlib.Path(folder) / "zotavpci.ini").write_text(
            "[MR00:00,20]\nModel = TAV-B3 Switch Box\nTerminalName = TAV1\n"
            "[MR00:77]\nModel = Gone\nTerminalName = TAV1\n[Nowhere]\nModel = X\n",
            encoding="utf-8")
        self.run("list", "list", *options)
        self.run("names-check", "names", "check", *options)
        self.run("error", "names", "rename", "TAV1", "TAV9", *options, errors=True)
        (pathlib.Path(folder) / "zotavpci.ini").unlink()
        self.run("list", "list", *options)
        self.run("names-change", "names", "backup", saved, *options)
        self.run("names-change", "names", "rename", "TAV1", "TAV9", *options)
        self.run("names-change", "names", "rename", "TAV9", "TAV2", "--swap", *options)
        self.run("names-change", "names", "forget", "TAV9", "--force", *options)
        self.run("names-change", "names", "undo", *options)
        self.run("names-change", "names", "restore", saved, "--force", *options)
        empty = pathlib.Path(folder, "empty.dump")
        empty.write_text("", encoding="utf-8")
        self.run("names-preview", "names", "preview", "--new-dump", empty, *options)

    def of_many(self, folder):
        lab = pathlib.Path(folder, "lab")
        lab.mkdir()
        for name in ("switchboxes", "conventional-bridges"):
            shutil.copy(self.source / "samples" / f"{name}.dump", lab)
        (lab / "notes.txt").write_text("no bus\n", encoding="utf-8")
        (lab / "switchboxes.ini").write_text(
            "[MR00:77]\nModel = Gone\nTerminalName = TAV1\n", encoding="utf-8")
        options = ["--json", "--descriptions", self.source / "descriptions"]
        self.run("list-machines", "list", *options, "--dump", lab)
        self.run("names-preview-machines", "names", "preview", *options, "--dump", lab,
                 "--new-descriptions", self.source / "descriptions")
        self.run("lint", "lint", *options, "--against", lab)

    def of_failures(self, folder):
        broken = pathlib.Path(folder, "PCI Hardware Descriptions")
        broken.mkdir()
        (broken / "a.ini").write_text("[UpstreamTAV]\nModel = A\n", encoding="utf-8")
        dump = self.source / "samples" / "switchboxes.dump"
        options = ["--json", "--dump", dump, "--descriptions", folder]
        self.run("error", "list", *options, errors=True)
        self.run("error", "tree", "TAV9", "--json", "--dump", dump, "--descriptions",
                 self.source / "descriptions", errors=True)
        self.run("error", "list", "--json", "--nonsense", errors=True)
        self.run("error", "list", "--json", "--dump", "/nonexistent", errors=True)
        self.run("lint", "lint", "--json", "--descriptions", folder)
        self.run("lint-rules", "lint", "--rules", "--json")
        self.run("version", "--version", "--json")


def functions_in(tree):
    """Every function of a tree document."""
    waiting = [function for domain in tree["domains"] for root in domain["rootBuses"]
               for function in root["functions"]]
    while waiting:
        function = waiting.pop()
        yield function
        waiting += function.get("functions", [])


def main():
    tavctl, source = sys.argv[1], pathlib.Path(sys.argv[2])
    schemas = load_schemas(source / "docs" / "schema")
    faults = hold_meaning(schemas, "--freeze" in sys.argv[3:])
    runs = Runs(tavctl, source, schemas)
    dumps = sorted((source / "samples").glob("*.dump"))
    if not dumps:
        faults.append("there are no samples")
    cases = [(dump, source / "descriptions") for dump in dumps if dump.name != "full-bus.dump"]
    for case in sorted((source / "tests" / "system" / "cases").iterdir()):
        if (case / "bus.dump").exists() and (case / "descriptions").is_dir() \
                and (case / "expected.json").exists():
            cases.append((case / "bus.dump", case / "descriptions"))
    for dump, descriptions in cases:
        with tempfile.TemporaryDirectory(prefix="schema-") as folder:
            runs.on_bus(dump, descriptions, folder)
    with tempfile.TemporaryDirectory(prefix="schema-") as folder:
        runs.of_names(source / "samples" / "switchboxes.dump", source / "descriptions", folder)
    with tempfile.TemporaryDirectory(prefix="schema-") as folder:
        runs.of_failures(folder)
    with tempfile.TemporaryDirectory(prefix="schema-") as folder:
        runs.of_many(folder)
    faults += runs.faults
    unused = {name.removesuffix(".schema.json") for name in schemas} - runs.used - {"common"}
    faults += [f"nothing was printed by the schema {name}" for name in sorted(unused)]
    for fault in faults:
        print(fault)
    print(f"{len(cases)} buses, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
