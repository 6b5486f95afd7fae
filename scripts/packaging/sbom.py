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
EPOCH = "SOURCE_DATE_EPOCH"
LICENCES_PAGE = ROOT / "docs" / "licences.md"
FACTS_LICENCE = "CC0-1.0"
# A licence in a table of the page; what else stands there is prose.
LICENCE_NAME = re.compile(r"\b(?:[A-Za-z]+-)+[0-9]+(?:\.[0-9]+)?(?:-[A-Za-z]+)*"
                          r"(?: WITH [A-Za-z0-9.-]+)?|\bMIT\b")


@dataclass(frozen=True)
class Foreign:
    """What others made that is compiled in, linked to, builds, or was a source of facts. What is
    shipped has a row on the page of licences, which begins with this text."""

    package: str
    row: str = ""
    purpose: str = "LIBRARY"


COMPILED_INTO_COMMAND = (Foreign("libcli11-dev", "CLI11"),
                         Foreign("nlohmann-json3-dev", "JSON for Modern C++"))
# By the names under which programs ask the system for them.
SYSTEM_LIBRARIES = {b"libstdc++.so.6": Foreign("libstdc++6"), b"libgcc_s.so.1": Foreign("libgcc-s1"),
                    b"libc.so.6": Foreign("libc6"),
                    b"libutf8proc.so.2": Foreign("libutf8proc2", "utf8proc")}
LINKED_IN_ON_LINUX = (Foreign("libstdc++-12-dev", "libstdc++ and libgcc"),
                      Foreign("libgcc-12-dev", "libstdc++ and libgcc"))
LINKED_INTO_COMMAND_ON_LINUX = (Foreign("libutf8proc-dev", "utf8proc"),)
LINKED_IN_ON_WINDOWS = (Foreign("g++-mingw-w64-x86-64-posix", "libstdc++ and libgcc"),
                        Foreign("mingw-w64-x86-64-dev", "the run-time library of MinGW-w64"))
TOOLS = tuple(Foreign(package, purpose="APPLICATION")
              for package in ("g++-12", "binutils", "cmake", "ninja-build", "python3"))
TOOLS_FOR_WINDOWS = (Foreign("g++-mingw-w64-x86-64-posix", "libstdc++ and libgcc"),
                     *(Foreign(package, purpose="APPLICATION") for package in
                       ("binutils-mingw-w64-x86-64", "cmake", "ninja-build", "python3")))
SOURCES_OF_FACTS = (("glibc", "glibc:"), ("Python", "Python: its codecs"))


def cells_of(row):
    """Those of the one line of a table on the page that has a cell which begins so."""
    lines = LICENCES_PAGE.read_text(encoding="utf-8").splitlines()
    tables = [[cell.strip() for cell in line.strip("|").split("|")]
              for line in lines if line.startswith("|")]
    found = [cells for cells in tables if any(cell.startswith(row) for cell in cells)]
    if len(found) != 1:
        raise SystemExit(f"sbom: {LICENCES_PAGE.name} has {len(found)} rows for {row}")
    return found[0]


def licences_of(foreign):
    """As the page has them; of what is not shipped nothing is asserted."""
    return LICENCE_NAME.findall(cells_of(foreign.row)[-1]) if foreign.row else []


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


def is_for_windows(path):
    return path.suffix == ".zip"


def is_command(name):
    return Path(name).name in ("ksv", "ksv.exe") and Path(name).parent.name == "bin"


def is_program(name):
    """The command or the shared library: what is linked."""
    return is_command(name) or re.search(r"\.so(\.\d+)*$|\.dll$", name) is not None


def is_fact(name):
    return Path(name).parent.name == "charset"


def libraries_asked_for(file):
    """What a program for Linux takes from the system."""
    return [foreign for name, foreign in SYSTEM_LIBRARIES.items() if name + b"\0" in file.content]


def runtime_in(file, path):
    """The run-time libraries that a program has inside, since it does not ask for the system's."""
    if is_for_windows(path):
        return list(LINKED_IN_ON_WINDOWS)
    has_its_own = SYSTEM_LIBRARIES[b"libstdc++.so.6"] not in libraries_asked_for(file)
    return list(LINKED_IN_ON_LINUX) if has_its_own else []


def foreign_in(file, path):
    """What others made that is in a file."""
    foreign = list(COMPILED_INTO_COMMAND) if is_command(file.name) else []
    if is_command(file.name) and not is_for_windows(path):
        foreign += LINKED_INTO_COMMAND_ON_LINUX
    return foreign + (runtime_in(file, path) if is_program(file.name) else [])


def licences_in(file, path):
    """Those of a file, the library's own first."""
    licences = [FACTS_LICENCE if is_fact(file.name) else LICENCE]
    for foreign in foreign_in(file, path):
        licences += licences_of(foreign)
    return list(dict.fromkeys(licences))


def type_of(name):
    if is_program(name) or Path(name).suffix in (".a", ".cmp", ".pack"):
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
    licences = licences_in(file, path)
    return {"SPDXID": identifier(path.name, f"file{number}"),
            "fileName": "./" + file.name.removeprefix("./"), "fileTypes": [type_of(file.name)],
            "checksums": [checksum("sha1", file.content), checksum("sha256", file.content)],
            "licenseConcluded": " AND ".join(licences), "licenseInfoInFiles": licences,
            "copyrightText": COPYRIGHT}


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
    artefact["licenseConcluded"] = " AND ".join(licences)
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
            "licenseDeclared": " AND ".join(licences_of(foreign)) or "NOASSERTION",
            "copyrightText": "NOASSERTION",
            "primaryPackagePurpose": foreign.purpose,
            "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": purl(foreign.package, version)}]}


def purl(package, version):
    escaped = version.replace("+", "%2B").replace(":", "%3A").replace("~", "%7E")
    return f"pkg:deb/debian/{package.replace('+', '%2B')}@{escaped}"


def facts_element(name, row):
    """Facts in which no copyright is claimed, whatever the licence of what they were read from."""
    cells = cells_of(row)
    return {"SPDXID": identifier("facts", name), "name": name, "versionInfo": cells[1],
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": FACTS_LICENCE, "copyrightText": "NONE",
            "licenseDeclared": " AND ".join(LICENCE_NAME.findall(cells[-1])),
            "primaryPackagePurpose": "OTHER",
            "comment": f"The source of facts only ({LICENCES_PAGE.name}): {cells[0]}"}


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
        files = files_of(path) if is_installed else []
        elements = [file_element(path, file, number) for number, file in enumerate(files)]
        artefact = artefact_element(path, elements, self.version)
        self.artefacts.append(artefact)
        self.files += elements
        name = artefact["SPDXID"]
        self.relations.append(relation("SPDXRef-DOCUMENT", "DESCRIBES", name))
        for file, element in zip(files, elements):
            self.relations.append(relation(name, "CONTAINS", element["SPDXID"]))
            self.add_links(path, file, element["SPDXID"])
        if any(is_fact(element["fileName"]) for element in elements):
            for facts, _ in SOURCES_OF_FACTS:
                self.relations.append(relation(name, "GENERATED_FROM", identifier("facts", facts)))
        if is_installed:
            for tool in TOOLS_FOR_WINDOWS if is_for_windows(path) else TOOLS:
                self.foreign[tool.package] = tool
                self.relations.append(relation(identifier(tool.package), "BUILD_TOOL_OF", name))

    def add_links(self, path, file, name):
        links = [(foreign, "STATIC_LINK") for foreign in foreign_in(file, path)]
        if is_program(file.name) and not is_for_windows(path):
            links += [(foreign, "DYNAMIC_LINK") for foreign in libraries_asked_for(file)]
        for foreign, kind in links:
            self.foreign[foreign.package] = foreign
            self.relations.append(relation(name, kind, identifier(foreign.package)))

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
        facts = [facts_element(*source) for source in SOURCES_OF_FACTS]
        content = {"packages": self.artefacts + foreign + facts, "files": self.files,
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
