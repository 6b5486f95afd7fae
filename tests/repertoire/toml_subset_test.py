#!/usr/bin/env python3
"""What the reader of descriptions takes, and what it refuses."""

from __future__ import annotations

import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "charsets"))
import toml_subset  # noqa: E402


def read(text: str) -> dict:
    return toml_subset.Reader(text).document()


class TomlSubset(unittest.TestCase):
    def test_reads_texts_numbers_and_truths(self) -> None:
        self.assertEqual(read('name = "JIS X # 0208"\nwidth=2 # bytes\nmark = \'"\'\nread = true\nwrite = false'),
                         {"name": "JIS X # 0208", "width": 2, "mark": '"', "read": True, "write": False})

    def test_reads_lists_and_tables_over_several_lines(self) -> None:
        self.assertEqual(read('table = [\n  { codes = "00-7F", pairs = [ "1 2",\n"3 4", ] },\n'
                              '  # none\n  {},\n]\none_way = []\n'),
                         {"table": [{"codes": "00-7F", "pairs": ["1 2", "3 4"]}, {}],
                          "one_way": []})

    def test_reads_tables_under_a_heading(self) -> None:
        self.assertEqual(read('name = "a"\n[[table]]\ncodes = "1"\n[[table]]\nSPDX-Id = 3\n'),
                         {"name": "a", "table": [{"codes": "1"}, {"SPDX-Id": 3}]})

    def test_refuses_what_is_written_otherwise_and_names_the_line(self) -> None:
        for text, reason in (
                ('name "a"', 'line 1: "a" instead of ='),
                ('name = "a"\nname = "b"', "line 2: name a second time"),
                ("name = 'a", "line 1: 'a"),
                ('name = "a', 'line 1: "a'),
                ('name = "a\\n"', 'line 1: "a\\n"'),
                ("width = 0x10", "line 1: 0x10 instead of a value"),
                ("width = 010", "line 1: 010 instead of a value"),
                ("\nwidth =", "line 2: the end instead of a value"),
                ('table = ["a" "b"]', 'line 1: "b" instead of , or ]'),
                ('table = ["a",\n', "line 2: the end instead of a value"),
                ("[table]\n", "line 1: table instead of ["),
                ("= 1", "line 1: = instead of a key")):
            with self.subTest(text), self.assertRaises(ValueError) as raised:
                read(text)
            self.assertEqual(str(raised.exception), reason)

    @unittest.skipIf(sys.version_info < (3, 11), "this Python has no reader to compare with")
    def test_reads_every_file_of_ours_as_python_reads_it(self) -> None:
        import tomllib
        files = [*(ROOT / "charsets" / "rules").rglob("*.toml"), *ROOT.glob("*.toml")]
        self.assertGreater(len(files), 100)
        for file in files:
            with file.open("rb") as opened:
                self.assertEqual(toml_subset.load(file), tomllib.load(opened), file)


if __name__ == "__main__":
    unittest.main()
