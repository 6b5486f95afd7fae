#!/usr/bin/env python3
"""Compares a page with the program that it shows, and what it says that the program prints."""

from __future__ import annotations

import re
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.DOTALL | re.MULTILINE)


def block(page: Path, kind: str) -> str:
    """The one block of a kind."""
    blocks = [text for name, text in BLOCK.findall(page.read_text(encoding="utf-8"))
              if name == kind]
    if len(blocks) != 1:
        sys.exit(f"{page}: {len(blocks)} blocks of {kind} instead of one")
    return blocks[0]


def main() -> None:
    """Takes the page, the program's source, and the command that runs it."""
    page, source, command = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3:]
    if block(page, "c") != source.read_text(encoding="utf-8"):
        sys.exit(f"{page} does not show {source} as it is")
    with tempfile.TemporaryDirectory() as directory:
        run = subprocess.run(command, cwd=directory, stdin=subprocess.DEVNULL, check=False,
                             stdout=subprocess.PIPE, timeout=120)
        left = sorted(path.name for path in Path(directory).iterdir())
    printed = run.stdout.decode("utf-8").replace("\r\n", "\n")
    if run.returncode != 0:
        sys.exit(f"{source} ended with {run.returncode}: {printed}")
    if printed != block(page, "text"):
        sys.exit(f"{page} does not show what {source} prints: {printed}")
    print(f"{source.name} ran; it left {left}")


if __name__ == "__main__":
    main()
