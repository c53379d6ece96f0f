#!/usr/bin/env python3
"""Reads the tables of an installer for Windows, and fails where they contradict each other or what
the installer should be. Windows trusts them, and Wine passes over much of them.

    tests/packages/msiTables.py FILE.msi TARGET VERSION STAGED

STAGED is the tree of the archive for Windows, of which every file must be in the installer.
"""
import os
import pathlib
import re
import struct
import subprocess
import sys

# Users may change what is in the folder of the names, and files that are made there later.
RIGHTS = "D:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;BU)"
# By these an installer finds what older ones have installed: never to be changed.
UPGRADE_CODES = {"x64": "{BEE296BF-FA08-59A9-A9B8-51921C0C1D8E}",
                 "x86": "{B0678229-B828-5B9A-8215-4CB7FC33F5C6}"}
REGISTRY_KEY, PERMANENT, NEVER_OVERWRITE, WIDE = 4, 16, 128, 256

faults = []


def expect(holds, text):
    if not holds:
        faults.append(text)


def rows(installer, table):
    text = subprocess.run(["msiinfo", "export", installer, table], check=True, capture_output=True,
                          encoding="utf-8").stdout
    names, _, _, *lines = text.replace("\r", "").split("\n")
    return [dict(zip(names.split("\t"), line.split("\t"))) for line in lines if line]


def keyed(found, key):
    result = {row[key]: row for row in found}
    expect(len(result) == len(found), f"{key}: a key stands twice")
    return result


def file_version(content):
    """What Windows takes for the version of a program."""
    at = content.find(b"\xbd\x04\xef\xfe")
    if at < 0:
        return ""
    high, low = struct.unpack_from("<II", content, at + 8)
    return f"{high >> 16}.{high & 0xffff}.{low >> 16}.{low & 0xffff}"


def check_names(entries, what):
    """Names of one folder: "SHORT|Long", where the long one is not short itself."""
    shorts = [name.partition("|")[0].upper() for name in entries]
    expect(len(shorts) == len(set(shorts)), f"{what}: two entries have one short name")
    for name in shorts:
        expect(re.fullmatch(r"[A-Z0-9_~-]{1,8}(\.[A-Z0-9_~-]{1,3})?", name),
               f"{what}: {name} is not a short name")


def main():
    installer, target, version, staged = sys.argv[1:]
    staged = pathlib.Path(staged)
    tables = {name: rows(installer, name) for name in (
        "Property", "Component", "Directory", "File", "Feature", "FeatureComponents", "CreateFolder",
        "Registry", "RegLocator", "AppSearch", "Environment", "MsiLockPermissionsEx", "MsiFileHash",
        "InstallExecuteSequence", "CustomAction", "Upgrade", "LaunchCondition", "Media")}
    summary = subprocess.run(["msiinfo", "suminfo", installer], check=True, capture_output=True,
                             encoding="utf-8", env={**os.environ, "LC_ALL": "C"}).stdout

    properties = {name: row["Value"] for name, row in keyed(tables["Property"], "Property").items()}
    for name, value in {"ProductName": f"zotavpci ({target})", "ProductVersion": version,
                        "Manufacturer": "zotavpci team", "ALLUSERS": "1",
                        "UpgradeCode": UPGRADE_CODES[target]}.items():
        expect(properties.get(name) == value, f"{name} is {properties.get(name)} instead of {value}")
    secure = set(properties["SecureCustomProperties"].split(";"))
    for row in tables["AppSearch"]:
        expect(row["Property"] in secure, f"{row['Property']} is lost where rights are asked for")
    # Without package 5.0 Windows passes over the rights; a package for x86 must not ask for x64.
    expect("Version: 500 " in summary, "the summary is not one of version 5.0")
    platform = "x64" if target == "x64" else "Intel"
    expect(f"Template: {platform};1033" in summary, "the summary names another platform")

    components = keyed(tables["Component"], "Component")
    keyed(tables["Component"], "ComponentId")
    directories = keyed(tables["Directory"], "Directory")
    files = keyed(tables["File"], "File")
    hashes = keyed(tables["MsiFileHash"], "File_")
    registry = keyed(tables["Registry"], "Registry")

    def place(directory):
        row = directories[directory]
        if row["Directory_Parent"] in ("", "TARGETDIR"):
            return directory
        return place(row["Directory_Parent"]) + "/" + row["DefaultDir"].rpartition("|")[2]

    # Every reference leads somewhere.
    for row in tables["Directory"]:
        expect(row["Directory_Parent"] in {*directories, ""}, f"{row['Directory']}: no parent")
    for name, row in components.items():
        expect(re.fullmatch(r"\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\}", row["ComponentId"]),
               f"{name}: {row['ComponentId']} is no code")
        expect(row["Directory_"] in directories, f"{name}: no folder")
        keys = registry if int(row["Attributes"]) & REGISTRY_KEY else files
        expect(row["KeyPath"] in {*keys, ""}, f"{name}: nothing is {row['KeyPath']}")
        if row["KeyPath"] in keys:
            expect(keys[row["KeyPath"]]["Component_"] == name, f"{name}: the key is another's")
    owned = [row["Component_"] for row in tables["FeatureComponents"]]
    expect(sorted(owned) == sorted(components), "not every component belongs to the feature once")
    for table in ("File", "Registry", "Environment", "CreateFolder"):
        for row in tables[table]:
            expect(row["Component_"] in components, f"{table}: no component {row['Component_']}")
    expect({row["Signature_"] for row in tables["AppSearch"]}
           == {row["Signature_"] for row in tables["RegLocator"]}, "searches and places differ")
    sequences = sorted(int(row["Sequence"]) for row in tables["File"])
    expect(sequences == list(range(1, len(files) + 1)), "the files are not numbered")
    expect([row["LastSequence"] for row in tables["Media"]] == [str(len(files))], "files are left out")

    # Names, sizes, versions and sums of the files, which are all there.
    folders = {}
    for row in tables["Directory"]:
        if row["Directory_Parent"] not in ("", "TARGETDIR"):
            folders.setdefault(row["Directory_Parent"], []).append(row["DefaultDir"])
    for row in tables["File"]:
        folders.setdefault(components[row["Component_"]]["Directory_"], []).append(row["FileName"])
    for folder, entries in folders.items():
        check_names(entries, folder)
    program = "ProgramFiles64Folder" if target == "x64" else "ProgramFilesFolder"
    found = {}
    for name, row in files.items():
        path = (place(components[row["Component_"]]["Directory_"]) + "/"
                + row["FileName"].rpartition("|")[2])
        found[path] = row
    wanted = {f"{program}/TAV Manager/{path.relative_to(staged).as_posix()}": path
              for path in staged.rglob("*") if path.is_file()}
    descriptions = staged / "descriptions"
    wanted |= {f"CommonAppDataFolder/TAV Manager/{path.relative_to(descriptions).as_posix()}": path
               for path in descriptions.rglob("*") if path.is_file()}
    expect(sorted(found) == sorted(wanted), f"other files: {sorted(set(found) ^ set(wanted))}")
    for path in set(found) & set(wanted):
        row, content = found[path], wanted[path].read_bytes()
        expect(int(row["FileSize"]) == len(content), f"{path}: size")
        expect(row["Version"] == file_version(content), f"{path}: version \"{row['Version']}\"")
        expect((row["File"] in hashes) == (row["Version"] == ""), f"{path}: sum and version")

    # What belongs to the laboratory is neither overwritten nor removed; the rest is. The
    # configuration is one of 32 bits for both targets.
    for name, row in components.items():
        data = place(row["Directory_"]).startswith("CommonAppDataFolder/")
        wide = 0 if data or target == "x86" else WIDE
        kept = PERMANENT + NEVER_OVERWRITE if data and row["KeyPath"] in files else 0
        marks = {"Configuration": REGISTRY_KEY, "Names": PERMANENT}.get(name, wide + kept)
        expect(int(row["Attributes"]) == marks, f"{name}: marks {row['Attributes']}, not {marks}")
    key = r"SOFTWARE\Quorvane\TAV Manager\CurrentVersion"
    expect(sorted((row["Root"], row["Key"], row["Name"], row["Value"]) for row in registry.values())
           == [("2", key, name, f"[CONFIGURED{name.upper()}]") for name in ("ConfigPath", "Path")],
           "other values in the registry")
    # 2: a value as it is; 16 would be the 64-bit view.
    expect({row["Type"] for row in tables["RegLocator"]} == {"2"}, "searches in another view")

    # Rights, which Wine does not give.
    expect([(row["LockObject"], row["Table"], row["SDDLText"], row["Condition"])
            for row in tables["MsiLockPermissionsEx"]]
           == [("NamesFolder", "CreateFolder", RIGHTS, "NOT NamesConfigured OR REINSTALL")],
           "other rights")
    expect([row["Directory_"] for row in tables["CreateFolder"]] == ["NamesFolder"],
           "other folders")
    expect([(row["Name"], row["Component_"]) for row in tables["Environment"]]
           == [("=-*PATH", row["Component_"]) for row in tables["File"]
               if row["FileName"] == "tavctl.exe"], "other variables")

    # What comes after what.
    order = {row["Action"]: int(row["Sequence"]) for row in tables["InstallExecuteSequence"]}
    expect(len(order) == len(set(order.values())), "two actions at one place")
    standard = ("FindRelatedProducts", "AppSearch", "LaunchConditions", "CostInitialize",
                "CostFinalize", "SetNamesConfigured", "SetConfiguredConfigPath", "InstallValidate",
                "InstallInitialize", "RemoveExistingProducts", "ProcessComponents",
                "RemoveRegistryValues",
                "RemoveEnvironmentStrings", "RemoveFiles", "RemoveFolders", "CreateFolders",
                "InstallFiles", "WriteRegistryValues", "WriteEnvironmentStrings", "RegisterProduct",
                "PublishProduct", "InstallFinalize")
    places = [order.get(action, 0) for action in standard]
    expect(0 not in places and places == sorted(places), f"another order: {places}")
    for row in tables["CustomAction"]:
        expect(row["Type"] == "51", f"{row['Action']} does more than to set a property")
        expect(order.get(row["Action"], 0) > order["CostFinalize"],
               f"{row['Action']}: no folders yet")

    # An older product is removed, a newer one refused.
    upgrades = {row["ActionProperty"]: row for row in tables["Upgrade"]}
    older, newer = upgrades["WIX_UPGRADE_DETECTED"], upgrades["WIX_DOWNGRADE_DETECTED"]
    expect({row["UpgradeCode"] for row in tables["Upgrade"]} == {properties["UpgradeCode"]},
           "upgrades of another product")
    expect((older["VersionMin"], older["VersionMax"]) == ("", version)
           and not int(older["Attributes"]) & 2, "older versions are not removed")
    expect((newer["VersionMin"], newer["VersionMax"], newer["Attributes"]) == (version, "", "2"),
           "newer versions are not found")
    expect([(row["Condition"], bool(row["Description"])) for row in tables["LaunchCondition"]]
           == [("NOT WIX_DOWNGRADE_DETECTED", True)], "newer versions are not refused")

    for fault in faults:
        print(f"{installer}: {fault}", file=sys.stderr)
    sys.exit(1 if faults else 0)


main()
