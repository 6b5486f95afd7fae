"""The blocks of code in a page."""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.DOTALL | re.MULTILINE)


@dataclass(frozen=True)
class Block:
    """What stands between two fences, and the word behind the first."""

    kind: str
    text: str


def blocks_of(page: Path) -> list[Block]:
    return [Block(kind, text) for kind, text in BLOCK.findall(page.read_text(encoding="utf-8"))]
