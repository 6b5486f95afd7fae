"""Commands that a page shows with what they print, and what becomes of them when they are typed."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
from collections.abc import Iterator
from pathlib import Path


def commands_of(block: str) -> Iterator[tuple[str, str]]:
    """Each command behind "$ ", and what stands below it up to the next."""
    for command in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
        typed, _, shown = command.partition("\n")
        yield typed, shown


class Terminal:
    """A shell in a directory with a few texts, in which the command is found."""

    def __init__(self, command: Path, charsets: Path, project: Path, directory: str) -> None:
        self._directory = Path(directory)
        self._environment = {"PATH": f"{command.parent}:{os.environ['PATH']}",
                             "LANG": "ja_JP.UTF-8", "Charsetpath": str(charsets)}
        self._prepare(project)

    def _prepare(self, project: Path) -> None:
        room = self._directory
        sample = (project / "docs/samples/kusamakura.sjis.txt").read_bytes()
        (room / "letter.txt").write_bytes(sample.replace(b"\r\n", b"\n"))
        (room / "mail.txt").write_bytes("こんにちは。\n".encode("iso2022_jp"))
        (room / "page.xml").write_bytes(b'<?xml version="1.0" encoding="EUC-JP"?>\n<a/>\n')
        shutil.copy(project / "tests/ole/documents/japanese.doc", room / "report.doc")

    def type(self, command: str) -> subprocess.CompletedProcess[str]:
        """What is printed on both ways, in its order. In a pipeline only the last command may print
        to the terminal: which of several is first would be chance."""
        return subprocess.run(["bash", "-c", command], cwd=self._directory, encoding="utf-8",
                              env=self._environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=120, check=False)
