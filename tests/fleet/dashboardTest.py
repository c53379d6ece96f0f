#!/usr/bin/env python3
"""The shipped dashboard has what Grafana demands of one, and asks only for what there is.

    dashboardTest.py SOURCE-FOLDER TAVCTL
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

source, tavctl = pathlib.Path(sys.argv[1]), sys.argv[2]
dashboard = json.loads((source / "packaging/grafana/tav-dashboard.json").read_text("utf-8"))
faults = []


def expect(holds, fault):
    if not holds:
        faults.append(fault)


def has(value, members, where):
    for name, kind in members.items():
        expect(name in value and isinstance(value[name], kind) and
               not (kind is int and isinstance(value[name], bool)),
               f"{where}: {name} is missing or no {kind}")


def variables_in(value):
    """The names of dashboard variables that texts anywhere in it use."""
    text = json.dumps(value)
    return {a or b for a, b in re.findall(r"\$(?:\{(\w+)\}|([A-Za-z]\w*))", text)}


# The whole.
has(dashboard, {"title": str, "uid": str, "schemaVersion": int, "version": int, "panels": list,
                "tags": list, "time": dict, "timepicker": dict, "templating": dict,
                "annotations": dict, "links": list, "editable": bool, "timezone": str,
                "refresh": str}, "dashboard")
expect("id" in dashboard and dashboard["id"] is None, "an imported dashboard's id must be null")
expect(re.fullmatch(r"[A-Za-z0-9_-]{1,40}", dashboard["uid"]), "uid is none")
expect(16 <= dashboard["schemaVersion"] <= 41, "schemaVersion is not of the form with gridPos")
has(dashboard["time"], {"from": str, "to": str}, "time")
has(dashboard["annotations"], {"list": list}, "annotations")

# Variables: each is used, and no other is.
variables = dashboard["templating"]["list"]
for variable in variables:
    has(variable, {"name": str, "type": str, "refresh": int, "hide": int}, "variable")
    expect(variable["type"] in ("datasource", "query"), f"{variable['name']}: unknown type")
names = [variable["name"] for variable in variables]
expect(len(names) == len(set(names)), "two variables have one name")
used = variables_in(dashboard["panels"]) | variables_in(variables)
expect(used == set(names), f"variables {sorted(names)} are there and {sorted(used)} are used")

# Panels.
ids = [panel.get("id") for panel in dashboard["panels"]]
expect(len(ids) == len(set(ids)), "two panels have one id")
cells = {}
queries = []
for panel in dashboard["panels"]:
    where = f"panel \"{panel.get('title')}\""
    has(panel, {"id": int, "type": str, "title": str, "description": str, "gridPos": dict,
                "datasource": dict, "targets": list, "fieldConfig": dict, "options": dict}, where)
    expect(panel["type"] in ("stat", "table", "timeseries"), f"{where}: unknown type")
    expect(panel["id"] > 0, f"{where}: its id is none")
    has(panel["fieldConfig"], {"defaults": dict, "overrides": list}, where)
    place = panel["gridPos"]
    has(place, {name: int for name in "xywh"}, where)
    expect(0 <= place["x"] and 1 <= place["w"] and place["x"] + place["w"] <= 24,
           f"{where}: stands outside of the 24 columns")
    for x in range(place["x"], place["x"] + place["w"]):
        for y in range(place["y"], place["y"] + place["h"]):
            expect(cells.setdefault((x, y), where) == where,
                   f"{where} and {cells[(x, y)]} stand in one place")
    expect(panel["targets"], f"{where}: asks nothing")
    refs = [target.get("refId") for target in panel["targets"]]
    expect(len(refs) == len(set(refs)), f"{where}: two queries have one refId")
    for target in panel["targets"]:
        has(target, {"expr": str, "refId": str, "datasource": dict}, where)
        expect(target["datasource"] == {"type": "prometheus", "uid": "${datasource}"},
               f"{where}: asks another data source")
        queries.append(target["expr"])

# What is asked for is told, with these labels.
told = subprocess.run([tavctl, "metrics", "--dump", source / "samples/switchboxes.dump",
                       "--descriptions", source / "descriptions"],
                      check=True, capture_output=True, encoding="utf-8").stdout
metrics = set(re.findall(r"^# TYPE (\w+) ", told, re.M))
labels = {"instance", "job", "Time", "Value", "__name__"}
labels.update(re.findall(r"[{,](\w+)=\"", told), ["place"])
asked = {name for query in queries for name in re.findall(r"\btav_\w+", query)}
asked.update(name for variable in variables
             for name in re.findall(r"\btav_\w+", variable.get("definition", "")))
expect(asked <= metrics, f"asks for {sorted(asked - metrics)}, which nobody tells")
for panel in dashboard["panels"]:
    for change in panel.get("transformations", []):
        options = change["options"]
        named = {name for part in ("excludeByName", "indexByName", "renameByName")
                 for name in options[part]}
        expect(named <= labels, f"{panel['title']}: has columns {sorted(named - labels)}")
    for target in panel["targets"]:
        named = set(re.findall(r"\{\{(\w+)\}\}", target.get("legendFormat", "")))
        expect(named <= labels, f"{panel['title']}: a legend has {sorted(named - labels)}")

# What is shown of it: each thing that the dashboard is for.
for metric in ("tav_device_info", "tav_name_absent_info", "tav_link_degraded",
               "tav_upstream_link_degraded", "tav_connector_function_info"):
    expect(metric in asked, f"does not show {metric}")

# Queries are queries, as the rules of an alert would have to be.
with tempfile.TemporaryDirectory() as folder:
    rules = pathlib.Path(folder) / "queries.json"
    rules.write_text(json.dumps({"groups": [{"name": "dashboard", "rules": [
        {"record": f"query:{number}", "expr": query.replace("$instance", ".*")}
        for number, query in enumerate(queries)]}]}), "utf-8")
    checked = subprocess.run(["promtool", "check", "rules", rules], capture_output=True,
                             encoding="utf-8", check=False)
    expect(checked.returncode == 0 and f"{len(queries)} rules found" in checked.stdout,
           checked.stdout + checked.stderr)

for fault in faults:
    print(fault, file=sys.stderr)
print(f"{len(dashboard['panels'])} panels, {len(queries)} queries")
sys.exit(1 if faults else 0)
