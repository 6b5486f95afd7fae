#!/usr/bin/env python3
"""Writes what a release is made of, as SPDX 2.3 in JSON.

    sbom.py --output ksv_comm-1.0.0.spdx.json ARTEFACT...

Artefacts are the source archive (ksv_comm-VERSION.tar.gz), archives for Linux (.tar.gz) and
Windows (.zip), and Debian packages. What is in them is read from themselves; the packages that were
compiled in or built them are those of this machine, with their versions from dpkg. Made anew from
the same artefacts on the same machine, the document is the same.
"""
import argparse
import datetime
import hashlib
import io
import json
import os
import re
import subprocess
import sys
import tarfile
import zipfile
from dataclasses import dataclass
from pathlib import Path

from version import ROOT, project_version

SUPPLIER = "Organization: The ksv_comm developers"
COPYRIGHT = "The ksv_comm developers"
LICENCE = "Apache-2.0"
GCC_RUNTIME = "GPL-3.0-or-later WITH GCC-exception-3.1"
EPOCH = "SOURCE_DATE_EPOCH"


@dataclass(frozen=True)
class Foreign:
    """A Debian package that is compiled in, linked to, or builds."""

    package: str
    licence: str
    purpose: str = "LIBRARY"


CLI11 = Foreign("libcli11-dev", "BSD-3-Clause")
JSON_LIBRARY = Foreign("nlohmann-json3-dev", "MIT")
COMPILED_INTO_COMMAND = (CLI11, JSON_LIBRARY)
LINKED_ON_LINUX = (Foreign("libstdc++6", GCC_RUNTIME), Foreign("libgcc-s1", GCC_RUNTIME),
                   Foreign("libc6", "LGPL-2.1-or-later"))
LINKED_ON_WINDOWS = (Foreign("g++-mingw-w64-x86-64-posix", GCC_RUNTIME),
                     Foreign("mingw-w64-x86-64-dev", "ZPL-2.1 AND MIT"))
TOOLS = (Foreign("g++-12", "GPL-3.0-or-later", "APPLICATION"),
         Foreign("binutils", "GPL-3.0-or-later", "APPLICATION"),
         Foreign("cmake", "BSD-3-Clause", "APPLICATION"),
         Foreign("ninja-build", "Apache-2.0", "APPLICATION"),
         Foreign("python3", "PSF-2.0", "APPLICATION"))


@dataclass(frozen=True)
class File:
    """A regular file of an artefact."""

    name: str
    content: bytes


# Artefacts and their files.


def files_of_tar(content):
    with tarfile.open(fileobj=io.BytesIO(content)) as archive:
        return [File(member.name, archive.extractfile(member).read())
                for member in archive if member.isfile()]


def files_of_zip(path):
    with zipfile.ZipFile(path) as archive:
        return [File(name, archive.read(name)) for name in archive.namelist()
                if not name.endswith("/")]


def files_of_package(path):
    unpacked = subprocess.run(["dpkg-deb", "--fsys-tarfile", path], check=True,
                              stdout=subprocess.PIPE).stdout
    return files_of_tar(unpacked)


def files_of(path):
    if path.suffix == ".zip":
        files = files_of_zip(path)
    elif path.suffix == ".deb":
        files = files_of_package(path)
    else:
        files = files_of_tar(path.read_bytes())
    return sorted(files, key=lambda file: file.name)


def is_source(path):
    return re.fullmatch(r"ksv_comm-[0-9.]+\.tar\.gz", path.name) is not None


def linked_to(path):
    return LINKED_ON_WINDOWS if path.suffix == ".zip" else LINKED_ON_LINUX


def is_command(name):
    return Path(name).name in ("ksv", "ksv.exe") and Path(name).parent.name == "bin"


def is_program(name):
    """The command or the shared library: what is linked."""
    return is_command(name) or re.search(r"\.so(\.\d+)*$|\.dll$", name) is not None


def licences_in(name, path):
    """Those of a file, the library's own first. On Windows the run-time libraries are in it."""
    licences = [LICENCE]
    if is_command(name):
        licences += [foreign.licence for foreign in COMPILED_INTO_COMMAND]
    if is_program(name) and path.suffix == ".zip":
        licences += [foreign.licence for foreign in linked_to(path)]
    return list(dict.fromkeys(licences))


def all_of(licences):
    return " AND ".join(f"({licence})" if " AND " in licence else licence for licence in licences)


def type_of(name):
    if is_program(name) or Path(name).suffix in (".a", ".cmp"):
        return "BINARY"
    return "SOURCE" if Path(name).suffix in (".h", ".cmake", ".pc") else "TEXT"


# The document.


def checksum(algorithm, content):
    return {"algorithm": algorithm.upper(),
            "checksumValue": hashlib.new(algorithm, content).hexdigest()}


def identifier(*parts):
    return "SPDXRef-" + "-".join(re.sub(r"[^A-Za-z0-9.]+", "-", part) for part in parts)


def relation(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def file_element(path, file, number):
    licences = licences_in(file.name, path)
    return {"SPDXID": identifier(path.name, f"file{number}"),
            "fileName": "./" + file.name.removeprefix("./"), "fileTypes": [type_of(file.name)],
            "checksums": [checksum("sha1", file.content), checksum("sha256", file.content)],
            "licenseConcluded": all_of(licences), "licenseInfoInFiles": atoms(licences),
            "copyrightText": COPYRIGHT}


def atoms(licences):
    return sorted({atom for licence in licences for atom in licence.split(" AND ")})


def verification_code(elements):
    """SHA-1 over the sorted SHA-1 of the files, as the format wants it."""
    sums = sorted(element["checksums"][0]["checksumValue"] for element in elements)
    return hashlib.sha1("".join(sums).encode("ascii")).hexdigest()


def artefact_element(path, elements, version):
    artefact = {"SPDXID": identifier(path.name), "name": path.name, "versionInfo": version,
                "packageFileName": path.name, "supplier": SUPPLIER,
                "downloadLocation": "NOASSERTION", "filesAnalyzed": bool(elements),
                "checksums": [checksum("sha256", path.read_bytes())],
                "licenseDeclared": LICENCE, "copyrightText": COPYRIGHT,
                "primaryPackagePurpose": "SOURCE" if is_source(path) else "INSTALL"}
    licences = sorted({licence for element in elements
                       for licence in element["licenseInfoInFiles"]} or {LICENCE})
    artefact["licenseConcluded"] = all_of(licences)
    if elements:
        artefact["licenseInfoFromFiles"] = licences
        artefact["packageVerificationCode"] = {
            "packageVerificationCodeValue": verification_code(elements)}
    return artefact


def debian_version(package):
    done = subprocess.run(["dpkg-query", "-W", "-f=${db:Status-Status} ${Version}", package],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, text=True)
    status, _, version = done.stdout.partition(" ")
    if status != "installed":
        raise SystemExit(f"sbom: the package {package} is not installed here")
    return version


def foreign_element(foreign):
    version = debian_version(foreign.package)
    return {"SPDXID": identifier(foreign.package), "name": foreign.package, "versionInfo": version,
            "supplier": "Organization: Debian", "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": "NOASSERTION",
            "licenseDeclared": foreign.licence, "copyrightText": "NOASSERTION",
            "primaryPackagePurpose": foreign.purpose,
            "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": purl(foreign.package, version)}]}


def purl(package, version):
    escaped = version.replace("+", "%2B").replace(":", "%3A").replace("~", "%7E")
    return f"pkg:deb/debian/{package.replace('+', '%2B')}@{escaped}"


class Release:
    """The elements of the document, as the artefacts add to them."""

    def __init__(self, version):
        self.version = version
        self.artefacts = []
        self.files = []
        self.relations = []
        self.foreign = {}

    def add(self, path):
        is_installed = not is_source(path)
        elements = [file_element(path, file, number)
                    for number, file in enumerate(files_of(path) if is_installed else [])]
        artefact = artefact_element(path, elements, self.version)
        self.artefacts.append(artefact)
        self.files += elements
        name = artefact["SPDXID"]
        self.relations.append(relation("SPDXRef-DOCUMENT", "DESCRIBES", name))
        for element in elements:
            self.relations.append(relation(name, "CONTAINS", element["SPDXID"]))
            self.add_links(path, element)
        for tool in TOOLS if is_installed else ():
            self.relate(tool, "BUILD_TOOL_OF", name)

    def relate(self, foreign, kind, other):
        self.foreign[foreign.package] = foreign
        self.relations.append(relation(identifier(foreign.package), kind, other))

    def add_links(self, path, element):
        program = element["SPDXID"]
        links = [(foreign, "STATIC_LINK") for foreign in COMPILED_INTO_COMMAND
                 if is_command(element["fileName"])]
        if is_program(element["fileName"]):
            kind = "STATIC_LINK" if path.suffix == ".zip" else "DYNAMIC_LINK"
            links += [(foreign, kind) for foreign in linked_to(path)]
        for foreign, kind in links:
            self.foreign[foreign.package] = foreign
            self.relations.append(relation(program, kind, identifier(foreign.package)))

    def add_sources(self):
        """Each artefact that is installed is made from the source archive, where there is one."""
        sources = [a["SPDXID"] for a in self.artefacts if a["primaryPackagePurpose"] == "SOURCE"]
        for artefact in self.artefacts:
            for source in sources:
                if artefact["SPDXID"] != source:
                    self.relations.append(relation(artefact["SPDXID"], "GENERATED_FROM", source))

    def document(self, created):
        self.add_sources()
        foreign = [foreign_element(self.foreign[package]) for package in sorted(self.foreign)]
        content = {"packages": self.artefacts + foreign, "files": self.files,
                   "relationships": self.relations}
        key = hashlib.sha256(json.dumps(content, sort_keys=True).encode()).hexdigest()
        return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
                "name": f"ksv_comm-{self.version}",
                "documentNamespace": f"https://ksv-comm.example/spdx/{self.version}/{key[:32]}",
                "creationInfo": {"created": created,
                                 "creators": [SUPPLIER, f"Tool: ksv_comm-sbom-{self.version}"]},
                **content}


def time_of_release():
    """That of the last commit, unless the environment sets one: not that of the run."""
    seconds = os.environ.get(EPOCH) or subprocess.run(
        ["git", "log", "-1", "--format=%ct"], cwd=ROOT, check=True, text=True,
        stdout=subprocess.PIPE).stdout
    moment = datetime.datetime.fromtimestamp(int(seconds), datetime.timezone.utc)
    return moment.strftime("%Y-%m-%dT%H:%M:%SZ")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", type=Path, required=True)
    parser.add_argument("artefacts", nargs="+", type=Path)
    arguments = parser.parse_args()
    release = Release(project_version(ROOT))
    for path in sorted(arguments.artefacts, key=lambda path: path.name):
        release.add(path)
    document = release.document(time_of_release())
    arguments.output.write_text(json.dumps(document, indent=1) + "\n", encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
