#!/usr/bin/env python3
"""Every file has a licence in REUSE.toml or in itself, and docs/licences.md tells of each fact
where it comes from.

    licences_test.py PROJECT

`reuse lint` says more of the former; it is not asked for here, since the Debian package is of a
release that does not know REUSE.toml.
"""
import fnmatch
import re
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
PROJECT = Path(sys.argv[1]).resolve()
sys.path.insert(0, str(PROJECT / "charsets"))
import toml_subset  # noqa: E402

IDENTIFIER = "SPDX-License-Identifier"
LICENCES = PROJECT / "LICENSES"
FACTS = PROJECT / "charsets" / "facts"
SOURCES = {"glibc": r"(?:/usr/share/i18n/charmaps/\S+\.gz, Debian package locales"
                    r"|iconv \S+, Debian package libc6) (\S+) \(glibc\)",
           "ICU": r"ICU (\S+), converter \S+",
           "Perl": r"Perl (\S+), encoding \S+ of its module Encode",
           "Python": r"Python (\S+), codec \S+"}


def tracked_files():
    """Those of the repository, or of an unpacked archive of it."""
    listed = subprocess.run(["git", "-C", PROJECT, "ls-files"], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True, check=False)
    if listed.returncode == 0:
        return [name for name in listed.stdout.splitlines() if (PROJECT / name).exists()]
    return [str(path.relative_to(PROJECT)) for path in PROJECT.rglob("*")
            if path.is_file() and not path.is_relative_to(PROJECT / "build")]


def expression_of(pattern):
    """`**` stands for any path, `*` for a part of a name."""
    parts = (".*" if part == "**" else "[^/]*" if part == "*" else re.escape(part)
             for part in re.split(r"(\*\*|\*)", pattern))
    return re.compile("".join(parts))


class Annotations:
    def __init__(self):
        self.all = []
        for table in toml_subset.load(PROJECT / "REUSE.toml")["annotations"]:
            paths = table["path"] if isinstance(table["path"], list) else [table["path"]]
            self.all.append(([expression_of(path) for path in paths], table))

    def of(self, name):
        """What holds for a file: the last one that has it."""
        found = [table for paths, table in self.all if any(path.fullmatch(name) for path in paths)]
        return found[-1] if found else None


class Licences(unittest.TestCase):
    def setUp(self):
        self.annotations = Annotations()

    def licence_of(self, name):
        annotation = self.annotations.of(name)
        if annotation is None:
            return None
        self.assertNotEqual(annotation["SPDX-FileCopyrightText"], "")
        return annotation[IDENTIFIER]

    def test_every_file_has_one(self):
        files = [name for name in tracked_files() if not name.startswith("LICENSES/")]
        self.assertGreater(len(files), 1000)
        self.assertEqual([name for name in files if self.licence_of(name) is None], [])

    def test_a_file_outside_all_folders_has_none(self):
        self.assertIsNone(self.licence_of("elsewhere/file.cpp"))

    def test_of_facts_is_the_one_of_facts(self):
        self.assertEqual(self.licence_of("charsets/facts/gbk.txt"), "CC0-1.0")
        self.assertEqual(self.licence_of("kit/judge/language_models.inc"), "CC0-1.0")
        self.assertEqual(self.licence_of("kit/judge/generate_models.py"), "Apache-2.0")
        self.assertEqual(self.licence_of("CMakeLists.txt"), "Apache-2.0")

    def test_each_is_there_as_a_text_and_no_other(self):
        named = {table[IDENTIFIER] for _, table in self.annotations.all}
        self.assertEqual({path.stem for path in LICENCES.iterdir()}, named)
        self.assertEqual((PROJECT / "LICENSE").read_bytes(),
                         (LICENCES / "Apache-2.0.txt").read_bytes())


class PageOfLicences(unittest.TestCase):
    def setUp(self):
        self.rows = [[cell.strip() for cell in line.strip("|").split("|")]
                     for line in (PROJECT / "docs" / "licences.md").read_text().splitlines()
                     if line.startswith("|")]

    def sources_of(self, name):
        """What the rows that have a fact file give as its source."""
        return [row[1] for row in self.rows
                if any(fnmatch.fnmatchcase(name, pattern)
                       for pattern in re.findall(r"`([^`/]+\.txt)`", row[0]))]

    def versions_of(self, source):
        return [row[1] for row in self.rows if row[0].startswith(f"{source}:")]

    def test_tells_of_each_fact_file_where_it_comes_from(self):
        files = sorted(FACTS.glob("*.txt"))
        self.assertGreater(len(files), 40)
        for file in files:
            origins = re.findall(r"^# origin: (.*)$", file.read_text(encoding="utf-8"),
                                 re.MULTILINE)
            self.assertEqual(len(origins), 1, file)
            sources = [source for source, form in SOURCES.items()
                       if re.fullmatch(form, origins[0])]
            self.assertEqual(self.sources_of(file.name), sources, file.name)
            version = re.fullmatch(SOURCES[sources[0]], origins[0]).group(1)
            self.assertIn(version, self.versions_of(sources[0])[0], file.name)

    def test_names_no_fact_file_that_is_not_there(self):
        files = [file.name for file in FACTS.glob("*.txt")]
        for row in self.rows:
            if row[-1] in SOURCES:
                for pattern in re.findall(r"`([^`]+)`", row[0]):
                    self.assertTrue(fnmatch.filter(files, pattern), pattern)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
