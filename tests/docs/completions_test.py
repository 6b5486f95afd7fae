#!/usr/bin/env python3
"""The completions of bash, zsh and fish offer the jobs, options and values of the command.

    completions_test.py COMMAND COMPLETIONS CHARSET_DIRECTORY

Each shell is asked for what it would offer behind the words of a line. What is the same for all
is asked of all; a shell that is not installed is left out, which is told.
"""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

COMMAND, COMPLETIONS, CHARSETS = (Path(argument).resolve() for argument in sys.argv[1:4])

BASH = r"""
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
_ksv
printf '%s\n' "${COMPREPLY[@]}"
"""

# zsh completes on a terminal only. There what is offered is noted in a file, too.
ZSH_INSIDE = r"""
PS1= PS2= RPS1=
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit; compinit -u -d $OFFERS.dump  # kept for the next line
compadd() {
  if [[ ${@[1,(i)(-|--)]} != *-(O|A|D)* ]]; then
    local -a offered
    builtin compadd -A offered "$@"
    print -rl -- $offered >> $OFFERS
  fi
  builtin compadd "$@"
}
finish() { : > $OFFERS.done }
zle -N finish; bindkey "^X" finish; bindkey "^I" complete-word
: > $OFFERS.ready
"""
ZSH = r"""
await() { repeat 600; do [[ -e $1 ]] && return; zpty -r -t shell piece; sleep 0.02; done; exit 1 }
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "source $1"
await $OFFERS.ready
zpty -n -w shell $2$'\t\C-X'
await $OFFERS.done
zpty -d shell
"""


class Shell:
    """What a shell offers for a line."""

    name = ""

    def offers(self, line: str, room: Path) -> set[str]:
        raise NotImplementedError

    def _run(self, room: Path, *arguments: str, **more) -> str:
        environment = {"PATH": f"{COMMAND.parent}:{os.environ['PATH']}", "TERM": "dumb",
                       "Charsetpath": str(CHARSETS), "HOME": str(room), "LANG": "C.UTF-8",
                       "COMPLETIONS": str(COMPLETIONS), "OFFERS": str(room / "offers")}
        return subprocess.run(arguments, cwd=room / "files", env=environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120,
                              check=False, **more).stdout


class Bash(Shell):
    name = "bash"

    def offers(self, line: str, room: Path) -> set[str]:
        words = [word for word in re.split(r"\s+|(=|:)", line) if word is not None]
        words = [word for word in words[:-1] if word] + words[-1:]
        shown = self._run(room, "bash", "--norc", "-c", BASH, "bash",
                          str(COMPLETIONS / "ksv.bash"), *words)
        return set(shown.split("\n")) - {""}


class Zsh(Shell):
    name = "zsh"

    def offers(self, line: str, room: Path) -> set[str]:
        offers = room / "offers"
        for mark in (offers, room / "offers.ready", room / "offers.done"):
            mark.unlink(missing_ok=True)
        (room / "inside.zsh").write_text(ZSH_INSIDE, encoding="utf-8")
        self._run(room, "zsh", "-f", "-c", ZSH, "zsh", str(room / "inside.zsh"), line)
        return set(offers.read_text(encoding="utf-8").split("\n")) - {""} \
            if offers.exists() else set()


class Fish(Shell):
    name = "fish"

    def offers(self, line: str, room: Path) -> set[str]:
        script = f"source {COMPLETIONS / 'ksv.fish'}; complete -C {self._quoted(line)}"
        shown = self._run(room, "fish", "--no-config", "-c", script)
        return {offer.split("\t")[0] for offer in shown.splitlines()} - {""}

    @staticmethod
    def _quoted(text: str) -> str:
        return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


class CompletionTest(unittest.TestCase):
    """The lines that a person begins."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.room = Path(tempfile.mkdtemp())
        (cls.room / "files" / "folder").mkdir(parents=True)
        (cls.room / "files" / "letter.txt").write_text("text\n", encoding="utf-8")
        known = [Bash(), Zsh(), Fish()]
        cls.shells = [shell for shell in known if shutil.which(shell.name)]
        for shell in known:
            if shell not in cls.shells:
                print(f"{shell.name} IS NOT INSTALLED: its completion is not tested", flush=True)

    @classmethod
    def tearDownClass(cls) -> None:
        shutil.rmtree(cls.room)

    def _expect(self, line: str, wanted: set[str], unwanted: set[str] = frozenset()) -> None:
        for shell in self.shells:
            with self.subTest(shell=shell.name, line=line):
                # Shells differ in what they put behind a word that a value or a name follows.
                offers = {offer.rstrip("=/ ").replace("\\ ", " ")
                          for offer in shell.offers(line, self.room)}
                # A value behind "=" is offered with or without what stands in front of it.
                offers |= {offer.rsplit("=", 1)[-1] for offer in offers}
                self.assertEqual(wanted - offers, set(), offers)
                self.assertEqual(unwanted & offers, set())

    def test_jobs_follow_the_command(self) -> None:
        help_text = subprocess.run([COMMAND, "--help"], check=True, capture_output=True,
                                   text=True).stdout
        jobs = set(re.findall(r"^  ([a-z]+) ", help_text, re.MULTILINE))
        self.assertGreater(len(jobs), 9)
        self._expect("ksv ", jobs, {"letter.txt"})
        self._expect("ksv de", {"detect"}, {"convert"})

    def test_options_are_those_of_the_job(self) -> None:
        self._expect("ksv convert --", {"--to", "--from", "--in-place", "--newline", "--help"},
                     {"--charset", "--block-size"})
        self._expect("ksv detect --n", {"--null"}, {"--newline"})
        self._expect("ksv doctor --", {"--json", "--help"}, {"--to"})
        self._expect("ksv check --include a --incl", {"--include"}, {"--exclude"})

    def test_parts_of_a_job_follow_it(self) -> None:
        self._expect("ksv ole ", {"list", "cat"}, {"convert"})
        self._expect("ksv ole list --", {"--json", "--classic"}, {"--to"})

    def test_values_are_those_that_there_are(self) -> None:
        self._expect("ksv convert --newline ", {"keep", "lf", "crlf", "cr"}, {"letter.txt", "big"})
        self._expect("ksv convert --byte-order=b", {"big"}, {"little"})
        self._expect("ksv convert -t utf8 --detect-language z", {"zh-cn", "zh-tw"}, {"ja"})

    def test_values_with_blanks_are_one_word(self) -> None:
        self._expect("ksv detect --language ", {"Japanese", "Simplified Chinese", "Korean"},
                     {"Simplified", "Chinese", "letter.txt"})
        self._expect("ksv detect --language Tr", {"Traditional Chinese"}, {"Japanese"})

    def test_charsets_are_those_of_the_directory_with_their_aliases(self) -> None:
        self._expect("ksv convert -t Shift", {"Shift_JIS", "Shift_JIS-2004"}, {"UTF-8"})
        self._expect("ksv convert --from cp93", {"cp932"}, {"letter.txt"})
        self._expect("ksv cut --charset=EUC-K", {"EUC-KR"}, {"UTF-8"})
        self._expect("ksv summary -t utf-1", {"UTF-16"})

    def test_charsets_are_found_in_any_case(self) -> None:
        self._expect("ksv convert -t uTF-1", {"UTF-16"}, {"UTF-8"})

    def test_files_follow_where_files_belong(self) -> None:
        self._expect("ksv convert -t utf8 l", {"letter.txt"})
        self._expect("ksv convert -t utf8 -o l", {"letter.txt"})
        self._expect("ksv ole cat l", {"letter.txt"})
        self._expect("ksv detect --files-from l", {"letter.txt"})
        self._expect("ksv lint ", {"folder"}, {"letter.txt"})
        self._expect("ksv convert --output-dir ", {"folder"}, {"letter.txt"})

    def test_nothing_follows_where_nothing_can_be_known(self) -> None:
        self._expect("ksv convert -t utf8 -j ", set(), {"letter.txt", "folder", "convert"})
        self._expect("ksv charsets ", set(), {"letter.txt", "folder"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
