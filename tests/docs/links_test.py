#!/usr/bin/env python3
"""Links that lead nowhere are found, and the pages of the sources have none.

    links_test.py PROJECT
"""

from __future__ import annotations

import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(sys.argv[1]).resolve()
sys.path.insert(0, str(PROJECT / "docs" / "site"))

import links  # noqa: E402


class LinksTest(unittest.TestCase):
    """Pages in a directory of their own."""

    def setUp(self) -> None:
        self._directory = tempfile.TemporaryDirectory()
        self.addCleanup(self._directory.cleanup)
        self._room = Path(self._directory.name)

    def _faults(self, kind: str, **pages: str) -> list[str]:
        for name, text in pages.items():
            (self._room / f"{name}.{kind}").write_text(text, encoding="utf-8")
        read = links.markdown_page if kind == "md" else links.html_page
        faults = links.Checker(f".{kind}", read).faults(sorted(self._room.glob(f"*.{kind}")))
        return [fault.removeprefix(f"{self._room}/") for fault in faults]

    def test_pages_and_places_that_are_there_are_no_faults(self) -> None:
        self.assertEqual(self._faults("md", a="# The `ole` job\n[b](b.md#two-words) [up](#the-ole-job)",
                                      b="## Two words\n[site](https://example.org/x#y)"), [])

    def test_a_page_that_is_not_there_is_a_fault(self) -> None:
        self.assertEqual(self._faults("md", a="[b](missing.md)"), ["a.md: missing.md is not there"])

    def test_a_place_that_is_not_there_is_a_fault(self) -> None:
        self.assertEqual(self._faults("md", a="[b](b.md#three)", b="# Two"),
                         ["a.md: b.md#three has no such place"])

    def test_a_heading_that_comes_twice_has_two_places(self) -> None:
        self.assertEqual(self._faults("md", a="# Two\n# Two\n[1](#two) [2](#two-1) [3](#two-2)"),
                         ["a.md: #two-2 has no such place"])

    def test_code_holds_no_links(self) -> None:
        self.assertEqual(self._faults("md", a="```\n[b](no.md)\n```\n`[c](no.md)`"), [])

    def test_the_same_holds_of_html(self) -> None:
        self.assertEqual(self._faults("html", a='<a href="b.html#x">b</a><a href="b.html#y">b</a>'
                                                '<img src="no.png">', b='<p id="x">'),
                         ["a.html: b.html#y has no such place", "a.html: no.png is not there"])

    def test_the_pages_of_the_sources_lead_somewhere(self) -> None:
        files = links.markdown_files(PROJECT)
        self.assertGreater(len(files), 20)
        faults = links.Checker(".md", links.markdown_page).faults(files)
        self.assertEqual(list(faults), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
