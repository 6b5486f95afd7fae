#!/usr/bin/env python3
"""That the scripts of scripts/packaging find what is wrong, on trees and archives made up for it, and
that the lists of the packages agree with those of the project.

    packaging_test.py DIRECTORY_OF_SCRIPTS
"""
import hashlib
import io
import re
import sys
import tarfile
import tempfile
import unittest
import zipfile
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
SCRIPTS = Path(sys.argv.pop(1)).resolve()
PROJECT = SCRIPTS.parent
sys.path[:0] = [str(SCRIPTS / "packaging"), str(PROJECT / "charsets")]
import check_installed
import debian_symbols
import sbom
import toml_subset
import version


class MadeUpTree(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="ksv packaging")
        self.addCleanup(scratch.cleanup)
        self.root = Path(scratch.name)

    def write(self, path, content):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content if isinstance(content, bytes) else content.encode("utf-8"))
        return file

    def program(self, text):
        file = self.write("bin/program", "#!/bin/sh\n" + text)
        file.chmod(0o755)
        return str(file)


class Versions(MadeUpTree):
    def write_tree(self, project="1.2.3", changelog="1.2.3", debian="1.2.3"):
        self.write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.22)\n"
                                     f"project(ksv_comm VERSION {project} LANGUAGES C)\n")
        self.write("CHANGELOG.md", f"# Changelog\n\n## {changelog} – 2026-01-02\n\n"
                                   "## 1.0.0 – 2025-01-02\n")
        self.write("debian/changelog", f"ksv-comm ({debian}) unstable; urgency=low\n\n"
                                       "ksv-comm (1.0.0) unstable; urgency=low\n")

    def test_agree_when_each_place_has_the_newest(self):
        self.write_tree()
        says = self.program("echo ksv 1.2.3\n")
        self.assertEqual(version.disagreements(self.root, [says]), [])

    def test_agree_where_only_the_packaging_is_newer(self):
        self.write_tree(debian="1.2.3+deb4")
        self.assertEqual(version.disagreements(self.root), [])

    def test_of_other_releases_are_told_by_their_place(self):
        for place, others in (("CHANGELOG.md", {"changelog": "1.2.2"}),
                              ("debian/changelog", {"debian": "1.2.2"})):
            self.write_tree(**others)
            self.assertEqual(version.disagreements(self.root),
                             [f"{place} has 1.2.2, CMakeLists.txt 1.2.3"])

    def test_of_another_command_are_told(self):
        self.write_tree()
        self.assertEqual(version.disagreements(self.root, [self.program("echo ksv 1.2.4\n")]),
                         ["ksv --version has 1.2.4, CMakeLists.txt 1.2.3"])

    def test_must_have_a_date_to_count_as_released(self):
        self.write_tree()
        self.write("CHANGELOG.md", "# Changelog\n\n## 1.2.3\n")
        with self.assertRaisesRegex(version.VersionError, "CHANGELOG.md names no version"):
            version.disagreements(self.root)


class DebianSymbols(MadeUpTree):
    def write_tree(self, exports):
        self.write("CMakeLists.txt", "project(ksv_comm VERSION 1.2.3 LANGUAGES C)\n"
                                     "set(KSV_ABI_VERSION 0)\n")
        self.write("include/exports.list", "# ksv_a.h\n" + exports)

    def test_are_sorted_and_keep_the_version_that_first_had_them(self):
        self.write_tree("7 two\n8 one\n")
        known = "libksv_comm.so.0 libksv0 #MINVER#\n two@Base 1.0.0\n"
        self.assertEqual(debian_symbols.symbols_text(self.root, known),
                         "libksv_comm.so.0 libksv0 #MINVER#\n"
                         "* Build-Depends-Package: libksv-dev\n one@Base 1.2.3\n two@Base 1.0.0\n")

    def test_that_are_gone_are_an_error(self):
        self.write_tree("8 one\n")
        with self.assertRaisesRegex(debian_symbols.SymbolsError, "no longer exported: two"):
            debian_symbols.symbols_text(self.root, "x x x\n one@Base 1.0.0\n two@Base 1.0.0\n")


class DebianCopyright(unittest.TestCase):
    """REUSE.toml says file by file which licence there is, debian/copyright the same."""

    def licences_in_reuse(self):
        tables = toml_subset.load(PROJECT / "REUSE.toml")["annotations"]
        return {path.replace("**", "*"): table["SPDX-License-Identifier"] for table in tables
                for path in ([table["path"]] if isinstance(table["path"], str) else table["path"])}

    def licences_in_debian(self):
        text = (PROJECT / "debian" / "copyright").read_text(encoding="utf-8")
        stanzas = re.findall(r"^Files:((?: [^\n]*\n)+).*?^License: (\S+)", text,
                             re.MULTILINE | re.DOTALL)
        return {path: licence for paths, licence in stanzas for path in paths.split()}

    def test_names_the_files_that_have_another_licence(self):
        others = {path: licence for path, licence in self.licences_in_reuse().items()
                  if licence != "Apache-2.0"}
        self.assertEqual(self.licences_in_debian(), {"*": "Apache-2.0", **others})
        self.assertGreater(len(others), 10)


class Sbom(MadeUpTree):
    def setUp(self):
        super().setUp()
        versions = mock.patch.object(sbom, "debian_version", lambda package: "1:2+3")
        versions.start()
        self.addCleanup(versions.stop)

    def tar(self, name, files):
        path = self.root / name
        with tarfile.open(path, "w:gz") as archive:
            for file, content in files.items():
                member = tarfile.TarInfo(file)
                member.size = len(content)
                archive.addfile(member, io.BytesIO(content))
        return path

    def zip(self, name, files):
        path = self.root / name
        with zipfile.ZipFile(path, "w") as archive:
            for file, content in files.items():
                archive.writestr(file, content)
        return path

    def document(self, *artefacts):
        release = sbom.Release("1.2.3")
        for artefact in artefacts:
            release.add(artefact)
        return release.document("2026-01-02T03:04:05Z")

    def archives(self):
        return (self.tar("ksv_comm-1.2.3.tar.gz", {"ksv_comm-1.2.3/a.cpp": b"int a;\n"}),
                self.tar("ksv_comm-1.2.3-linux-x86_64.tar.gz",
                         {"t/bin/ksv": b"\x7fELF", "t/lib/libksv_comm.so.0.1.2.3": b"\x7fELF\0libstdc++.so.6\0libc.so.6\0",
                          "t/share/ksv_comm/charset/a.cmp": b"\0"}),
                self.zip("ksv_comm-1.2.3-windows-amd64.zip",
                         {"t/bin/ksv.exe": b"MZ", "t/bin/ksv_comm.dll": b"MZ2"}))

    def licences(self, document):
        return {element["fileName"]: element["licenseConcluded"] for element in document["files"]}

    def test_has_each_installed_file_with_its_sum(self):
        document = self.document(*self.archives())
        sums = {element["fileName"]: element["checksums"][1] for element in document["files"]}
        self.assertEqual(len(sums), 5)
        self.assertEqual(sums["./t/bin/ksv"], {
            "algorithm": "SHA256", "checksumValue": hashlib.sha256(b"\x7fELF").hexdigest()})

    def test_names_what_is_compiled_into_a_program(self):
        licences = self.licences(self.document(*self.archives()))
        self.assertEqual(licences["./t/bin/ksv"], "Apache-2.0 AND BSD-3-Clause AND MIT AND "
                                                  "Unicode-DFS-2015 AND GPL-3.0-or-later WITH GCC-exception-3.1")
        self.assertEqual(licences["./t/lib/libksv_comm.so.0.1.2.3"], "Apache-2.0")
        self.assertEqual(licences["./t/bin/ksv_comm.dll"],
                         "Apache-2.0 AND GPL-3.0-or-later WITH GCC-exception-3.1 AND ZPL-2.1 AND MIT")
        self.assertEqual(licences["./t/share/ksv_comm/charset/a.cmp"], "CC0-1.0")

    def test_relates_only_what_it_has(self):
        document = self.document(*self.archives())
        known = {element["SPDXID"] for kind in ("packages", "files") for element in document[kind]}
        known.add("SPDXRef-DOCUMENT")
        for relationship in document["relationships"]:
            self.assertLessEqual({relationship["spdxElementId"],
                                  relationship["relatedSpdxElement"]}, known)
        self.assertEqual(len(known), len(document["packages"]) + len(document["files"]) + 1)

    def test_says_what_artefacts_come_from(self):
        made = {(relationship["spdxElementId"], relationship["relatedSpdxElement"])
                for relationship in self.document(*self.archives())["relationships"]
                if relationship["relationshipType"] == "GENERATED_FROM"}
        linux = "SPDXRef-ksv-comm-1.2.3-linux-x86-64.tar.gz"
        self.assertEqual(made, {
            (linux, "SPDXRef-ksv-comm-1.2.3.tar.gz"),
            ("SPDXRef-ksv-comm-1.2.3-windows-amd64.zip", "SPDXRef-ksv-comm-1.2.3.tar.gz"),
            (linux, "SPDXRef-facts-glibc"), (linux, "SPDXRef-facts-Python")})

    def test_tells_what_a_program_has_inside_from_what_it_asks_for(self):
        kinds = {}
        for relationship in self.document(*self.archives())["relationships"]:
            if relationship["relatedSpdxElement"].startswith("SPDXRef-libstdc"):
                kinds[relationship["relatedSpdxElement"]] = relationship["relationshipType"]
        self.assertEqual(kinds, {"SPDXRef-libstdc-12-dev": "STATIC_LINK",
                                 "SPDXRef-libstdc-6": "DYNAMIC_LINK"})

    def test_verifies_a_package_by_the_sum_over_its_files(self):
        packages = {package["name"]: package
                    for package in self.document(*self.archives())["packages"]}
        sums = sorted(hashlib.sha1(content).hexdigest() for content in (b"MZ", b"MZ2"))
        self.assertEqual(
            packages["ksv_comm-1.2.3-windows-amd64.zip"]["packageVerificationCode"],
            {"packageVerificationCodeValue": hashlib.sha1("".join(sums).encode()).hexdigest()})

    def test_is_the_same_when_it_is_made_again(self):
        archives = self.archives()
        self.assertEqual(self.document(*archives), self.document(*archives))


class Installed(MadeUpTree):
    def test_command_that_changes_nothing_is_found(self):
        passes_on = self.program('case $1 in --version) echo ksv 1.2.3;; *) cat;; esac\n')
        with mock.patch.object(check_installed, "project_version", lambda root: "1.2.3"):
            with self.assertRaisesRegex(check_installed.Difference, "UTF-8 to Shift_JIS"):
                check_installed.check_command([passes_on])

    def test_command_that_fails_is_told_with_its_words(self):
        fails = self.program("echo no such thing >&2; exit 3\n")
        with self.assertRaisesRegex(check_installed.Difference, "ended with 3: no such thing"):
            check_installed.check_command([fails])

    def test_library_that_is_nowhere_is_told(self):
        with self.assertRaisesRegex(check_installed.Difference, "in 0 folders"):
            check_installed.check_consumer(self.root)


if __name__ == "__main__":
    unittest.main()
