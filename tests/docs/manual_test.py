#!/usr/bin/env python3
"""The manual pages say what the command's help and the headers say, and show what happens.

    manual_test.py COMMAND PAGES CHARSET_DIRECTORY PROJECT
"""

from __future__ import annotations

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from typed_commands import Terminal, commands_of

COMMAND, PAGES, CHARSETS, PROJECT = (Path(argument).resolve() for argument in sys.argv[1:5])
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "ENVIRONMENT", "FILES",
            "EXAMPLES", "SEE ALSO"]
LIBRARY_SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "EXAMPLES", "SEE ALSO"]
OPTION = re.compile(r"(?<![\w-])(--?[a-z][a-z-]*)")
ESCAPES = {"\\-": "-", "\\(aq": "'", "\\(ga": "`", "\\(ha": "^", "\\(ti": "~", "\\&": "",
           "\\e": "\\"}


def plain(roff: str) -> str:
    """Roff as its reader sees it."""
    text = re.sub(r"\\f[BIR]", "", roff)
    text = re.sub(r"\\\[u([0-9A-F]+)\]", lambda code: chr(int(code[1], 16)), text)
    return re.sub(r"\\(?:-|\(aq|\(ga|\(ha|\(ti|&|e)", lambda sign: ESCAPES[sign[0]], text)


def sections(page: Path) -> dict[str, str]:
    parts = re.split(r"^\.SH (.+)$", page.read_text(encoding="utf-8"), flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def help_of(*words: str) -> str:
    return subprocess.run([COMMAND, *words, "--help"], check=True, capture_output=True, text=True,
                          timeout=60).stdout


def options_of_help(text: str) -> set[str]:
    """Those of the lines that are set in below "Options:"."""
    block = text.partition("\nOptions:\n")[2].partition("\n\n")[0]
    return {name for line in block.splitlines() if line.startswith("  -")
            for name in OPTION.findall(line[:32].split("  ")[1].split(" ")[0])}


def options_of_page(text: str) -> set[str]:
    """Those of the lines behind ".TP"."""
    terms = re.findall(r"^\.TP\n(.*)$", text, re.MULTILINE)
    return {name for term in terms for name in OPTION.findall(plain(term))}


def jobs() -> list[str]:
    return re.findall(r"^  (\w+) ", help_of().partition("\n\n")[2].partition("\n\n")[2],
                      re.MULTILINE)


def calls_of(job: str) -> list[list[str]]:
    parts = re.findall(r"^  (\w+) ", help_of(job).partition("Subcommands:")[2], re.MULTILINE)
    return [[job, part] for part in parts] or [[job]]


class CommandPages(unittest.TestCase):
    """A page a job."""

    def test_there_is_one_for_the_command_and_each_job(self) -> None:
        expected = {"ksv.1", *(f"ksv-{job}.1" for job in jobs())}
        self.assertGreater(len(expected), 9)
        self.assertEqual({page.name for page in PAGES.glob("*.1")}, expected)

    def test_they_have_the_usual_sections_with_something_in_each(self) -> None:
        for page in PAGES.glob("*.1"):
            with self.subTest(page.name):
                found = sections(page)
                self.assertEqual(list(found), SECTIONS)
                self.assertTrue(all(text.strip() for text in found.values()))

    def test_they_have_the_options_of_the_help_and_no_others(self) -> None:
        self.assertEqual(options_of_page(sections(PAGES / "ksv.1")["OPTIONS"]),
                         options_of_help(help_of()))
        for job in jobs():
            expected = [(call, options_of_help(help_of(*call))) for call in calls_of(job)]
            text = sections(PAGES / f"ksv-{job}.1")["OPTIONS"]
            parts = re.split(r"^\.SS .*$", text, flags=re.MULTILINE)[1:] or [text]
            self.assertEqual(len(parts), len(expected))
            for (call, options), part in zip(expected, parts):
                with self.subTest(call):
                    self.assertIn("--help", options)
                    self.assertEqual(options_of_page(part), options)

    def test_they_say_the_end_of_the_help_word_for_word(self) -> None:
        for job in jobs():
            for call in calls_of(job):
                footer = help_of(*call).partition("\nOptions:\n")[2].partition("\n\n")[2]
                told = " ".join(plain(sections(PAGES / f"ksv-{job}.1")["DESCRIPTION"]).split())
                for paragraph in footer.strip().split("\n\n"):
                    words = re.sub(r"'(ksv [^']*)'", r"\1", " ".join(paragraph.split()))
                    if words and not words.startswith("Exit status"):
                        with self.subTest(call):
                            self.assertIn(words, told)

    def test_the_first_page_names_each_job_with_its_page(self) -> None:
        found = plain(sections(PAGES / "ksv.1")["DESCRIPTION"])
        for job in jobs():
            self.assertIn(f"See ksv-{job}(1)", " ".join(found.split()))


class Examples(unittest.TestCase):
    """What EXAMPLES show is typed, and gives what is shown."""

    def _commands(self, page: Path):
        """Each command and what it shows."""
        for block in re.findall(r"^\.nf\n(.*?)^\.fi$", sections(page)["EXAMPLES"],
                                re.DOTALL | re.MULTILINE):
            yield from commands_of(plain(block))

    def _run(self, page: Path, terminal: Terminal) -> int:
        count = 0
        for typed, shown in self._commands(page):
            with self.subTest(page=page.name, typed=typed):
                run = terminal.type(typed)
                self.assertEqual(run.stdout, shown)
                self.assertEqual(run.returncode, 0)
            count += 1
        return count

    def test_each_does_what_is_shown(self) -> None:
        for page in PAGES.glob("*.1"):
            with tempfile.TemporaryDirectory() as directory:
                terminal = Terminal(COMMAND, CHARSETS, PROJECT, directory)
                self.assertGreater(self._run(page, terminal), 0, page.name)


class LibraryPages(unittest.TestCase):
    """A page a header."""

    def test_there_is_one_for_the_library_and_each_header(self) -> None:
        headers = {header.stem for header in (PROJECT / "include").glob("*.h")}
        self.assertEqual({page.stem for page in PAGES.glob("*.3")},
                         headers - {"ksv_api"} | {"ksv_comm"})
        for page in PAGES.glob("*.3"):
            self.assertTrue(set(LIBRARY_SECTIONS) <= set(sections(page)), page.name)

    def test_every_export_is_named_and_declared_once(self) -> None:
        exports = [name for file in sorted((PROJECT / "include").glob("exports*.list"))
                   for name in re.findall(r"^[0-9]+ (\w+)$", file.read_text(encoding="utf-8"),
                                          re.MULTILINE)]
        self.assertTrue({"cconvConvert", "ksv_convert"} <= set(exports))
        self.assertGreater(len(exports), 100)
        names, declared = [], []
        for page in PAGES.glob("*.3"):
            found = sections(page)
            named = re.split(r"\s-\s", plain(found["NAME"]), maxsplit=1)[0]
            names += named.replace(",", " ").split()[1:]
            for block in re.findall(r"^\.nf\n(.*?)^\.fi$", found["DESCRIPTION"],
                                    re.DOTALL | re.MULTILINE):
                declared += re.findall(r"^\w[\w* ]*[* ](\w+)\(", plain(block), re.MULTILINE)
        self.assertEqual(sorted(names), sorted(exports))
        self.assertEqual(sorted(declared), sorted(exports))

    def test_every_comment_of_the_headers_is_there_word_for_word(self) -> None:
        for header in (PROJECT / "include").glob("*.h"):
            page = PAGES / f"{'ksv_comm' if header.stem == 'ksv_api' else header.stem}.3"
            told = re.sub(r"^\.(?:TP|PP|RS|RE|nf|fi|IP|SS).*\n", "", page.read_text(encoding="utf-8"),
                          flags=re.MULTILINE)
            told = "".join(plain(told).split())
            text = header.read_text(encoding="utf-8")
            for comment in re.findall(r"^/\* (.*?)\*/", text, re.DOTALL | re.MULTILINE):
                body = re.sub(r"^ \* ?", "", comment, flags=re.MULTILINE)
                body = re.sub(r"---- .*? ----|^ *(?:-|\d+\.) ", "", body, flags=re.MULTILINE)
                for paragraph in body.split("\n\n"):
                    with self.subTest(header.name, paragraph=paragraph):
                        self.assertIn("".join(paragraph.split()), told)


class Form(unittest.TestCase):
    """What those who read roff say of the pages."""

    def _expect_silence(self, *command: str, known: str = "") -> None:
        if not shutil.which(command[0]):
            self.skipTest(f"{command[0]} is not installed: the form of the pages is not checked")
        for page in sorted(PAGES.iterdir()):
            with self.subTest(page.name):
                run = subprocess.run([*command, page], capture_output=True, text=True, check=False,
                                     timeout=60)
                shown = run.stderr + (run.stdout if known else "")
                told = [line for line in shown.splitlines() if not known or known not in line]
                self.assertEqual(told, [])

    def test_groff_has_nothing_to_say(self) -> None:
        self._expect_silence("groff", "-man", "-ww", "-Tutf8", "-K", "utf8")

    def test_mandoc_has_nothing_to_say(self) -> None:
        # The other pages are not installed where this one is made.
        self._expect_silence("mandoc", "-T", "lint", known="STYLE: referenced manual not found")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
