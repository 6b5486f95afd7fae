"""How the scripts beside this write down what a reference makes of a charset.

The lines are "decode BYTES CHARACTERS" and "encode CHARACTER BYTES", as in the
lists of differences; what the reference refuses has no line.
"""

from __future__ import annotations

import argparse
from collections.abc import Callable, Iterable, Iterator
from pathlib import Path

Decoder = Callable[[bytes], str | None]
Encoder = Callable[[int], bytes | None]


def code_points(text: str) -> str:
    """Text as U+304B+309A."""
    return "U" + "".join(f"+{ord(character):04X}" for character in text)


def decoded(decode: Decoder) -> Iterator[str]:
    """The lines for a charset of one-byte and two-byte codes, read."""
    for first in range(0x100):
        single = bytes([first])
        if (text := decode(single)) is not None:
            yield f"decode {single.hex().upper()} {code_points(text)}"
            continue
        for second in range(0x100):
            pair = bytes([first, second])
            if (text := decode(pair)) is not None:
                yield f"decode {pair.hex().upper()} {code_points(text)}"


def encoded(encode: Encoder) -> Iterator[str]:
    """The lines for every character, written."""
    for character in range(0x110000):
        if (sequence := encode(character)) is not None:
            yield f"encode U+{character:04X} {sequence.hex().upper()}"


def arguments(description: str) -> argparse.ArgumentParser:
    """The arguments that all scripts have."""
    parser = argparse.ArgumentParser(description=description.split("\n", maxsplit=1)[0])
    parser.add_argument("codec")
    parser.add_argument("output", type=Path)
    return parser


def write(output: Path, lines: Iterable[str]) -> None:
    """Writes one file."""
    output.write_text("".join(f"{line}\n" for line in lines), encoding="ascii")
