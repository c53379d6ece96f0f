"""The bill of materials as an SPDX 2.3 document."""

import datetime
import hashlib
import uuid

from bill import debian
from bill.parts import identifier

NO_LICENCE = ("The owner has chosen no licence yet. Nothing is granted; whoever wants to use, copy or "
              "pass on the product asks the owner.")


def _package(name, spdx_id, version, declared, comment=None, **more):
    package = {
        "name": name, "SPDXID": spdx_id, "versionInfo": version, "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False, "licenseConcluded": "NOASSERTION", "licenseDeclared": declared,
        "copyrightText": "NOASSERTION", **more}
    if comment:
        package["comment"] = comment
    if version is None:
        del package["versionInfo"]
    return package


def _debian_package(part):
    name = part.package.split(":")[0]
    architecture = debian.architecture(part.package)
    # In a version every mark but these is written as its number.
    version = "".join(c if c.isalnum() or c in "-._~" else f"%{ord(c):02X}" for c in part.version)
    extra = {
        "externalRefs": [{
            "referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
            "referenceLocator": f"pkg:deb/debian/{name}@{version}?arch={architecture}"}],
        "sourceInfo": f"Debian's package {name}",
        "licenseComments": f"Found in the package's copyright file, /usr/share/doc/{name}/copyright."
                           + (f" {part.component.note[0].upper()}{part.component.note[1:]}."
                              if part.component.note else "")}
    return _package(part.name, identifier("Package", part.name, name), part.version,
                    part.component.licence, **extra)


def _product(version, binaries):
    code = hashlib.sha1("".join(sorted(each.sha1 for each in binaries)).encode()).hexdigest()
    return {
        "name": "zotavpci", "SPDXID": "SPDXRef-Package-zotavpci", "versionInfo": version,
        "supplier": "Organization: zotavpci team", "downloadLocation": "NOASSERTION",
        "filesAnalyzed": True,
        "packageVerificationCode": {"packageVerificationCodeValue": code},
        "licenseInfoFromFiles": ["NONE"], "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NONE", "licenseComments": NO_LICENCE,
        "copyrightText": "Copyright (C) zotavpci team", "primaryPackagePurpose": "LIBRARY"}


def _file(binary):
    return {
        "fileName": f"./{binary.name}", "SPDXID": identifier("File", binary.name),
        "fileTypes": ["BINARY"],
        "checksums": [{"algorithm": "SHA1", "checksumValue": binary.sha1},
                      {"algorithm": "SHA256", "checksumValue": binary.sha256}],
        "licenseConcluded": "NOASSERTION", "licenseInfoInFiles": ["NONE"],
        "copyrightText": "NOASSERTION"}


def _needed_packages(binaries):
    """The libraries that the system loads: packages by their identifiers, and who needs which."""
    packages, links = {}, []
    files = {str(path) for binary in binaries for path in binary.needed.values() if path}
    owners = debian.owners(sorted(files)) if files else {}
    for binary in binaries:
        for library, path in sorted(binary.needed.items()):
            if path is None:
                spdx_id = identifier("Library", library.upper())
                packages[spdx_id] = _package(library.upper(), spdx_id, None, "NOASSERTION",
                                             "A part of Windows.")
            else:
                owner = owners[str(path)]
                name = owner.split(":")[0]
                spdx_id = identifier("Library", library, name)
                packages[spdx_id] = _package(library, spdx_id, debian.version(owner), "NOASSERTION",
                                             f"Debian's package {name}, or what stands in its place "
                                             "where the product runs.")
            links.append((identifier("File", binary.name), "DYNAMIC_LINK", spdx_id))
    return packages, links


def _loaded(binaries):
    """What is loaded by name as the product runs."""
    by_place = {(binary.system, binary.role): identifier("File", binary.name) for binary in binaries}
    for system, role in sorted(by_place):
        for needed, user in (("zotavpci", "tavctl"), ("zopcibrd", "zotavpci")):
            if role == needed:
                yield (by_place[system, needed], "RUNTIME_DEPENDENCY_OF", by_place[system, user])


def document(version, binaries, parts, seconds):
    """The document, the same for the same files."""
    packages, links = _needed_packages(binaries)
    links += _loaded(binaries)
    comments = {}
    links.append(("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package-zotavpci"))
    for binary in binaries:
        links.append(("SPDXRef-Package-zotavpci", "CONTAINS", identifier("File", binary.name)))
    for part in parts:
        package = _debian_package(part)
        packages[package["SPDXID"]] = package
        for name, what in part.inside.items():
            link = (identifier("File", name), "STATIC_LINK", package["SPDXID"])
            comments[link] = "Inside: " + ", ".join(sorted(what))
            links.append(link)
        for name in part.built_with - set(part.inside):
            links.append((package["SPDXID"], "BUILD_DEPENDENCY_OF", identifier("File", name)))
    relationships = []
    for link in sorted(set(links)):
        relationship = dict(zip(("spdxElementId", "relationshipType", "relatedSpdxElement"), link))
        if link in comments:
            relationship["comment"] = comments[link]
        relationships.append(relationship)
    content = "".join(f"{each.name} {each.sha256}\n" for each in binaries)
    created = datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"zotavpci-{version}",
        "documentNamespace": "urn:uuid:" + str(uuid.uuid5(uuid.NAMESPACE_OID, content)),
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Organization: zotavpci team", f"Tool: make-sbom-{version}"]},
        "packages": [_product(version, binaries)] + [packages[key] for key in sorted(packages)],
        "files": [_file(binary) for binary in binaries],
        "relationships": relationships}
