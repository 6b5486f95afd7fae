#!/usr/bin/env python3
"""The reference of the headers is made without a warning, and holds every export."""

from __future__ import annotations

import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

DOXYGEN, DIRECTORY, *EXPORT_LISTS = (Path(argument) for argument in sys.argv[1:])


def make_reference(name: str) -> subprocess.CompletedProcess[str]:
    """Runs Doxygen over one directory of headers."""
    return subprocess.run([DOXYGEN, DIRECTORY / f"reference_of_{name}" / "Doxyfile"],
                          capture_output=True, text=True, check=False, timeout=120)


class ReferenceTest(unittest.TestCase):
    """Doxygen over the public headers, and over one that lacks comments."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.reference = make_reference("include")

    def test_is_made_without_a_warning(self) -> None:
        """Every function, record, field and constant has a comment."""
        self.assertEqual(self.reference.stderr, "")
        self.assertEqual(self.reference.returncode, 0)

    def test_holds_every_export_and_nothing_else(self) -> None:
        """The functions are those of the export lists, one a library."""
        tags = ElementTree.parse(DIRECTORY / "reference_of_include" / "reference.tag")
        functions = {member.findtext("name") for member in tags.iter("member")
                     if member.get("kind") == "function"}
        self.assertEqual(len(EXPORT_LISTS), 2)
        exports: set[str] = set()
        for file in EXPORT_LISTS:
            listed = re.findall(r"^[0-9]+ (\w+)$", file.read_text(encoding="utf-8"), re.MULTILINE)
            self.assertGreater(len(listed), 0)
            exports.update(listed)
        self.assertEqual(functions, exports)

    def test_misses_each_comment_that_is_not_there(self) -> None:
        """What the check is for: each gap is told with its line."""
        result = make_reference("lacking")
        self.assertNotEqual(result.returncode, 0)
        for line, name in ((13, "noSuchArgument"), (16, "withoutComment"), (20, "field")):
            self.assertRegex(result.stderr, rf"ksv_lacking\.h:{line}: .*{name}")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
