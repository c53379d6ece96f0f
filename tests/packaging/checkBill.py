#!/usr/bin/env python3
"""Checks a bill of materials: that it is an SPDX 2.3 document, and that it is of these files.

    checkBill.py BILL.spdx.json [--files FOLDER] [--notices THIRD-PARTY.txt]

--files      the files of the bill are those of the folder, by name and content
--notices    that text names every part that is inside the files, and no other, with its licence
"""

import argparse
import hashlib
import json
import pathlib
import re
import sys

ID = re.compile(r"SPDXRef-[A-Za-z0-9.-]+$")
TIME = re.compile(r"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z$")
LICENCES = {"BSL-1.0", "BSD-3-Clause", "MIT", "GPL-3.0-or-later", "GPL-2.0-only", "LGPL-2.1-or-later",
            "ZPL-2.1", "Apache-2.0"}
EXCEPTIONS = {"GCC-exception-3.1", "Linux-syscall-note", "LLVM-exception"}
RELATIONSHIPS = {"DESCRIBES", "CONTAINS", "STATIC_LINK", "DYNAMIC_LINK", "BUILD_DEPENDENCY_OF",
                 "RUNTIME_DEPENDENCY_OF"}
HEXADECIMAL = {"SHA1": 40, "SHA256": 64}

faults = []


def hold(is_so, text):
    if not is_so:
        faults.append(text)


def require(thing, name, *members):
    """The members that SPDX demands, each with a value."""
    for member in members:
        hold(thing.get(member) not in (None, "", []), f"{name}: {member} is missing")


def is_expression(text):
    for part in text.split(" AND "):
        licence, _, exception = part.partition(" WITH ")
        if licence not in LICENCES or (exception and exception not in EXCEPTIONS):
            return False
    return True


def check_document(bill):
    require(bill, "document", "spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace",
            "creationInfo", "packages", "files", "relationships")
    hold(bill["spdxVersion"] == "SPDX-2.3", "not of version 2.3")
    hold(bill["dataLicense"] == "CC0-1.0", "the document's own licence must be CC0-1.0")
    hold(bill["SPDXID"] == "SPDXRef-DOCUMENT", "the document is called otherwise")
    hold(re.match(r"[a-z]+:[^#\s]+$", bill["documentNamespace"]), "the name space is no address")
    hold(TIME.match(bill["creationInfo"]["created"]), "no time of creation")
    for creator in bill["creationInfo"]["creators"]:
        hold(re.match(r"(Person|Organization|Tool): ", creator), f"no creator: {creator}")


def check_packages(bill):
    for package in bill["packages"]:
        name = package.get("name")
        require(package, name, "name", "SPDXID", "downloadLocation", "licenseConcluded",
                "licenseDeclared", "copyrightText")
        hold(isinstance(package.get("filesAnalyzed"), bool), f"{name}: filesAnalyzed")
        hold(package["filesAnalyzed"] == ("packageVerificationCode" in package),
             f"{name}: a code of files is told when these are looked at, and only then")
        declared = package["licenseDeclared"]
        hold(declared in ("NONE", "NOASSERTION") or is_expression(declared), f"{name}: {declared}")
        for reference in package.get("externalRefs", []):
            require(reference, name, "referenceCategory", "referenceType", "referenceLocator")
            hold(re.match(r"pkg:deb/debian/[a-z0-9.+-]+@[^@\s:]+\?arch=[a-z0-9]+$",
                          reference["referenceLocator"]), f"{name}: {reference['referenceLocator']}")
    product = bill["packages"][0]
    hold(product["name"] == "zotavpci", "the product is not the first package")
    hold(product["licenseDeclared"] == "NONE" and "no licence" in product["licenseComments"],
         "the product's licence, which is none, is not told")
    sums = sorted(checksum(file, "SHA1") for file in bill["files"])
    hold(product["packageVerificationCode"]["packageVerificationCodeValue"]
         == hashlib.sha1("".join(sums).encode()).hexdigest(), "the code of the files is wrong")


def checksum(file, algorithm):
    return next(each["checksumValue"] for each in file["checksums"]
                if each["algorithm"] == algorithm)


def check_files(bill, folder):
    for file in bill["files"]:
        name = file.get("fileName")
        require(file, name, "fileName", "SPDXID", "checksums", "licenseConcluded",
                "licenseInfoInFiles", "copyrightText")
        hold(name.startswith("./"), f"{name}: not named from the top")
        for algorithm, digits in HEXADECIMAL.items():
            hold(re.match(f"[0-9a-f]{{{digits}}}$", checksum(file, algorithm)), f"{name}: {algorithm}")
        if folder is not None:
            content = (folder / pathlib.PurePosixPath(name).name).read_bytes()
            hold(hashlib.sha256(content).hexdigest() == checksum(file, "SHA256"),
                 f"{name}: the file is another")
    hold(len(bill["files"]) % 3 == 0, "not three files of each system")


def check_relationships(bill):
    things = [bill] + bill["packages"] + bill["files"]
    identifiers = [thing["SPDXID"] for thing in things]
    for each in identifiers:
        hold(ID.match(each), f"no identifier: {each}")
        hold(identifiers.count(each) == 1, f"two things are called {each}")
    named = set()
    for each in bill["relationships"]:
        require(each, "relationship", "spdxElementId", "relationshipType", "relatedSpdxElement")
        ends = (each["spdxElementId"], each["relatedSpdxElement"])
        hold(each["relationshipType"] in RELATIONSHIPS, each["relationshipType"])
        for end in ends:
            hold(end in identifiers, f"nothing is called {end}")
        named.update(ends)
    for each in identifiers:
        hold(each in named, f"{each} has to do with nothing")
    told = [json.dumps(each, sort_keys=True) for each in bill["relationships"]]
    hold(len(set(told)) == len(told), "a relationship is told twice")


def check_notices(bill, path):
    packages = {package["SPDXID"]: package for package in bill["packages"]}
    inside = {each["relatedSpdxElement"] for each in bill["relationships"]
              if each["relationshipType"] == "STATIC_LINK"}
    expected = {packages[each]["name"]: packages[each] for each in inside}
    text = path.read_bytes().decode("utf-8").replace("\r\n", "\n")
    sections = re.split(r"^(.+)\n=+\n\n(?=Version: )", text, flags=re.MULTILINE)
    told = dict(zip(sections[1::2], sections[2::2]))
    hold(set(told) == set(expected),
         f"{path}: told of are {sorted(told)}, and inside are {sorted(expected)}")
    for name, words in told.items():
        package = expected.get(name, {})
        hold(f"Version:  {package.get('versionInfo')}\n" in words, f"{name}: another version")
        hold(f"Licence:  {package.get('licenseDeclared')}\n" in words, f"{name}: another licence")
        other = re.search(r"^The text is the one of: (.*)$", words, re.MULTILINE)
        full = told.get(other[1], "") if other else words
        hold(re.search(r"WITHOUT\s+ANY\s+WARRANTY|WITHOUT\s+WARRANTY|``?AS\s+IS''?", full,
                       re.IGNORECASE), f"{name}: no licence's text")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("bill", type=pathlib.Path)
    parser.add_argument("--files", type=pathlib.Path)
    parser.add_argument("--notices", type=pathlib.Path)
    arguments = parser.parse_args()
    bill = json.loads(arguments.bill.read_text(encoding="utf-8"))
    check_document(bill)
    check_packages(bill)
    check_files(bill, arguments.files)
    check_relationships(bill)
    if arguments.notices is not None:
        check_notices(bill, arguments.notices)
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
