#!/usr/bin/env python3
"""What the generators of charsets/ make of descriptions, and what they refuse."""

from __future__ import annotations

import hashlib
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

GENERATOR = Path(__file__).resolve().parents[2] / "charsets" / "generate.py"

SUBSET = 'name = "{name}"\nwidth = 1\nlanguage = ""\ntable = [{table}]\n{more}'
CHARSET = 'name = "{name}"\ncodec = "SAME"\nmembers = {members}\n'
ASCII = '{ codes = "00-7F", characters = "00" }'


class GenerateTest(unittest.TestCase):
    """Each test describes one small directory."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.output = self.root / "charset"

    def describe(self, path: str, text: str) -> None:
        """Writes a description or a fact file."""
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def subset(self, name: str, table: str = ASCII, more: str = "") -> None:
        """Describes a one-byte set."""
        self.describe(f"rules/subsets/{name.lower()}.toml",
                      SUBSET.format(name=name, table=table, more=more))

    def charset(self, name: str, members: list[str]) -> None:
        """Describes a charset."""
        self.describe(f"rules/charsets/{name.lower()}.toml",
                      CHARSET.format(name=name, members=members))

    def run_generator(self) -> subprocess.CompletedProcess[str]:
        """Runs the generator over what has been described."""
        return subprocess.run(
            [sys.executable, "-B", GENERATOR, self.output, "--descriptions", self.root],
            capture_output=True, text=True, check=False)

    def assert_refused(self, reason: str) -> None:
        """Nothing is written, and the message tells why."""
        result = self.run_generator()
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(reason, result.stderr)
        self.assertFalse(self.output.exists())

    def pairs(self, table: str) -> list[str]:
        """The lines of a table that was made."""
        text = (self.output / f"{table}.txt").read_bytes().decode("utf-16")
        return [line for line in text.split("\r\n") if line and not line.startswith("<")]

    def test_makes_rule_files_tables_and_compiled_tables(self) -> None:
        self.subset("Plain")
        self.charset("Example", ["plain"])
        self.assertEqual(self.run_generator().returncode, 0)
        self.assertEqual({path.name for path in self.output.iterdir()},
                         {"example.xml", "set.plain.xml", "plain.txt", "plain.cmp", "charsets.pack"})
        compiled = (self.output / "plain.cmp").read_bytes()
        self.assertEqual(len(compiled), 0x80 * 8)
        self.assertEqual(compiled[0x41 * 8:0x42 * 8], bytes([0x41, 0, 0, 0, 0x41, 0, 0, 0]))

    def test_removes_files_that_no_description_makes(self) -> None:
        self.subset("Plain")
        self.charset("Example", ["plain"])
        self.run_generator()
        (self.output / "old.xml").write_text("", encoding="ascii")
        self.run_generator()
        self.assertFalse((self.output / "old.xml").exists())

    def test_keeps_the_order_of_sources_and_limits_each_byte(self) -> None:
        self.subset("Plain", '{ pairs = ["41 0042"] }, '
                    '{ codes = "21-22", bytes = ["21-23"], characters = "2000" }')
        self.charset("Example", ["plain"])
        self.assertEqual(self.run_generator().returncode, 0)
        self.assertEqual(self.pairs("plain"), ["0041 0042", "0021 2000", "0022 2001"])

    def test_refuses_a_range_whose_ends_are_not_codes(self) -> None:
        self.subset("Plain", '{ codes = "20-22", bytes = ["21-23"], characters = "2000" }')
        self.charset("Example", ["plain"])
        self.assert_refused("20: byte 20 is outside its range")

    def test_counts_codes_whose_bytes_have_gaps_in_order(self) -> None:
        self.describe("rules/subsets/wide.toml",
                      'name = "Wide"\nwidth = 2\nlanguage = ""\ntable = [{ codes = "2122-2222", '
                      'bytes = ["21-22", "21-23"], characters = "E000" }]\n')
        self.charset("Example", ["wide"])
        self.assertEqual(self.run_generator().returncode, 0)
        self.assertEqual(self.pairs("wide"),
                         ["2122 E000", "2123 E001", "2221 E002", "2222 E003"])

    def test_refuses_charsets_that_share_an_id(self) -> None:
        # a * 1 + c * 2 = c * 1 + b * 2
        self.subset("Plain")
        self.charset("ac", ["plain"])
        self.charset("cb", ["plain"])
        self.assert_refused("share the id")

    def test_refuses_subsets_that_share_an_id(self) -> None:
        self.subset("ac")
        self.subset("cb", '{ codes = "80-81", characters = "80" }')
        self.charset("Example", ["ac", "cb"])
        self.assert_refused("share the id")

    def test_refuses_an_id_that_a_fixed_name_has(self) -> None:
        # 4000 + 100 * 1 + 100 * 2 + 100 * 3 + 100 * 4 = 5000, the id of ChineseGBK
        self.subset("Plain")
        self.charset("dddd", ["plain"])
        self.assert_refused("share the id 5000")

    def test_refuses_a_code_with_two_characters(self) -> None:
        self.subset("Plain", '{ pairs = ["41 0041", "41 0042"] }')
        self.charset("Example", ["plain"])
        self.assert_refused("has two characters")

    def test_refuses_a_code_wider_than_its_set(self) -> None:
        self.subset("Plain", '{ pairs = ["100 0041"] }')
        self.charset("Example", ["plain"])
        self.assert_refused("needs more than 1 bytes")

    def test_refuses_surrogates(self) -> None:
        self.subset("Plain", '{ pairs = ["41 D800"] }')
        self.charset("Example", ["plain"])
        self.assert_refused("is no character")

    def test_refuses_a_one_way_line_for_a_character_with_a_code(self) -> None:
        self.subset("Plain", more='one_way = ["more"]')
        self.describe("rules/one_way/more.toml", 'table = [{ pairs = ["41 0042"] }]')
        self.charset("Example", ["plain"])
        self.assert_refused("already has a code")

    def test_refuses_a_one_way_line_that_hides_a_later_member(self) -> None:
        self.subset("Plain", more='one_way = ["more"]')
        self.describe("rules/one_way/more.toml", 'table = [{ pairs = ["5C 00A5"] }]')
        self.subset("Other", '{ pairs = ["A5 00A5"] }')
        self.charset("Example", ["plain", "other"])
        self.assert_refused("come back as another character, or are listed and do not: ['00A5']")

    def test_refuses_a_list_of_characters_not_read_back_that_is_too_long(self) -> None:
        self.subset("Plain")
        self.describe("rules/charsets/example.toml",
                      CHARSET.format(name="Example", members=["plain"]) +
                      'not_read_back = ["41"]\n')
        self.assert_refused("or are listed and do not: ['0041']")

    def test_refuses_a_set_without_a_table_beside_others(self) -> None:
        self.subset("Plain")
        self.describe("rules/subsets/all.toml", 'name = "All"\nwidth = 4\nlanguage = ""\n')
        self.charset("Example", ["plain", "all"])
        self.assert_refused("must be the only member")

    def test_refuses_an_unknown_codec_and_an_unknown_key(self) -> None:
        self.subset("Plain", more="tabel = []")
        self.charset("Example", ["plain"])
        self.assert_refused("keys")
        self.subset("Plain")
        self.describe("rules/charsets/example.toml",
                      'name = "Example"\ncodec = "NONE"\nmembers = ["plain"]\n')
        self.assert_refused("no codec NONE")

    def test_refuses_facts_that_were_changed(self) -> None:
        digest = hashlib.sha256(b"41 0041\n").hexdigest()
        self.describe("facts/some.txt", f"# sha256: {digest}\n\n41 0041\n")
        self.subset("Plain", '{ facts = "some.txt" }')
        self.charset("Example", ["plain"])
        self.assertEqual(self.run_generator().returncode, 0)
        self.assertEqual(self.pairs("plain"), ["0041 0041"])
        self.describe("facts/some.txt", f"# sha256: {digest}\n\n41 0042\n")
        result = self.run_generator()
        self.assertIn("do not have the sha256", result.stderr)

    def test_takes_the_facts_whose_bytes_are_in_range_and_moves_their_codes(self) -> None:
        lines = "A1A1 3000\nA140 4E00\n41A1 4E01\nA2FE 4E02\n8EA1A1A1 4E03\n"
        self.describe("facts/some.txt",
                      f"# sha256: {hashlib.sha256(lines.encode()).hexdigest()}\n\n{lines}")
        self.describe("rules/subsets/pairs.toml",
                      'name = "Pairs"\nwidth = 2\nlanguage = ""\ntable = [{ facts = "some.txt", '
                      'bytes = ["A1-A2", "A1-FE"], add = "-8080" }]\n')
        self.charset("Example", ["pairs"])
        self.assertEqual(self.run_generator().returncode, 0)
        self.assertEqual(self.pairs("pairs"), ["2121 3000", "227E 4E02"])


class GenerateSjisTest(unittest.TestCase):
    """The library's own mapping, from sets of a few codes."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.output = self.root / "sjis_tables.h"
        for name, width, pairs in (("jis_x0201latin", 1, ["41 0041"]),
                                   ("jis_x0201kana", 1, ["B1 FF71", "31 FF71"]),
                                   ("jis_x0208-1990", 2, ["2422 3042"])):
            self.describe(name, width, pairs)

    def describe(self, name: str, width: int, pairs: list[str]) -> None:
        """Describes one of the three sets that the mapping is made of."""
        file = self.root / "rules/subsets" / f"{name}.toml"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f'name = "{name}"\nwidth = {width}\nlanguage = ""\n'
                        f"table = [{{ pairs = {pairs} }}]\n", encoding="utf-8")

    def run_generator(self) -> subprocess.CompletedProcess[str]:
        """Runs the generator over the three sets."""
        return subprocess.run(
            [sys.executable, "-B", GENERATOR.with_name("generate_sjis.py"), self.output,
             "--descriptions", self.root],
            capture_output=True, text=True, check=False)

    def assert_refused(self, reason: str) -> None:
        """Nothing is written, and the message tells why."""
        result = self.run_generator()
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(reason, result.stderr)
        self.assertFalse(self.output.exists())

    def test_writes_codes_and_characters(self) -> None:
        self.assertEqual(self.run_generator().stderr, "")
        text = self.output.read_text(encoding="ascii")
        for number in ("0x3042,", "0x82A0,", "0xFF71,", "0xB1,", "0x8145,"):
            self.assertIn(number, text)
        self.assertNotIn("0x31,", text, "a katakana code below A1")

    def test_refuses_a_character_of_two_codes(self) -> None:
        self.describe("jis_x0208-1990", 2, ["2422 3042", "2423 3042"])
        self.assert_refused("3042 cannot stand for 82A1")

    def test_refuses_a_character_that_is_only_to_be_written(self) -> None:
        self.describe("jis_x0208-1990", 2, ["2422 00B7"])
        self.assert_refused("00B7 cannot stand for 8145")

    def test_refuses_a_character_of_more_than_16_bits(self) -> None:
        self.describe("jis_x0208-1990", 2, ["2422 20BB7"])
        self.assert_refused("82A0 cannot stand for 20BB7")


class ReadmeTest(unittest.TestCase):
    """What the README shows is what the tests use."""

    def test_shows_the_example_that_the_tests_install(self) -> None:
        readme = (GENERATOR.parent / "README.md").read_text(encoding="utf-8")
        for file in (Path(__file__).parent / "example").iterdir():
            with self.subTest(file.name):
                self.assertIn(f"\n{file.read_text(encoding='utf-8')}```", readme)


if __name__ == "__main__":
    unittest.main()
