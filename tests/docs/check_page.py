#!/usr/bin/env python3
"""Compares a page with one of the programs that it shows, and what it says that the program prints.

The page shows the program as it is in a block of its language, and what it prints in the next block of text.

    check_page.py PAGE SOURCE COMMAND...
"""

from __future__ import annotations

import subprocess
import sys
import tempfile
from pathlib import Path

from page_blocks import Block, blocks_of

LANGUAGES = ("c", "cpp")


def is_program(block: Block) -> bool:
    return block.kind in LANGUAGES and "int main(" in block.text


def check_that_all_are_examples(page: Path, blocks: list[Block], examples: Path) -> None:
    """A program that is no example would be shown without being run."""
    known = {file.read_text(encoding="utf-8") for kind in LANGUAGES
             for file in examples.glob(f"*.{kind}")}
    for block in blocks:
        if is_program(block) and block.text not in known:
            sys.exit(f"{page} shows a program that is not in {examples}: {block.text}")


def output_shown(page: Path, blocks: list[Block], source: Path) -> str:
    """What the page says that the program prints."""
    program = Block(source.suffix[1:], source.read_text(encoding="utf-8"))
    if blocks.count(program) != 1:
        sys.exit(f"{page} does not show {source} once, as it is")
    for block in blocks[blocks.index(program) + 1:]:
        if is_program(block):
            break
        if block.kind == "text":
            return block.text
    sys.exit(f"{page} does not show what {source} prints")


def main() -> None:
    """Takes the page, the program's source, and the command that runs it."""
    page, source, command = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3:]
    blocks = blocks_of(page)
    check_that_all_are_examples(page, blocks, source.parent)
    shown = output_shown(page, blocks, source)
    with tempfile.TemporaryDirectory() as directory:
        run = subprocess.run(command, cwd=directory, stdin=subprocess.DEVNULL, check=False,
                             stdout=subprocess.PIPE, timeout=120)
        left = sorted(path.name for path in Path(directory).iterdir())
    printed = run.stdout.decode("utf-8").replace("\r\n", "\n")
    if run.returncode != 0:
        sys.exit(f"{source} ended with {run.returncode}: {printed}")
    if printed != shown:
        sys.exit(f"{page} does not show what {source} prints: {printed}")
    print(f"{source.name} ran; it left {left}")


if __name__ == "__main__":
    main()
