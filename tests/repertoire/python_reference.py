#!/usr/bin/env python3
"""Writes what one of Python's codecs makes of every byte sequence and every character.

The lines are "decode BYTES CHARACTERS" and "encode CHARACTER BYTES", as in the
lists of differences; what the codec refuses has no line.
"""

from __future__ import annotations

import argparse
from collections.abc import Iterator
from pathlib import Path


def decode(codec: str, sequence: bytes) -> str | None:
    """The text of a byte sequence, or nothing."""
    try:
        return sequence.decode(codec)
    except UnicodeDecodeError:
        return None


def encode(codec: str, character: int) -> bytes | None:
    """The bytes of a character, or nothing."""
    try:
        return chr(character).encode(codec)
    except UnicodeEncodeError:
        return None


def code_points(text: str) -> str:
    """Text as U+304B+309A."""
    return "U" + "".join(f"+{ord(character):04X}" for character in text)


def lines(codec: str) -> Iterator[str]:
    """All lines for a codec with one-byte and two-byte codes."""
    for first in range(0x100):
        single = bytes([first])
        if (text := decode(codec, single)) is not None:
            yield f"decode {single.hex().upper()} {code_points(text)}"
            continue
        for second in range(0x100):
            pair = bytes([first, second])
            if (text := decode(codec, pair)) is not None:
                yield f"decode {pair.hex().upper()} {code_points(text)}"
    for character in range(0x110000):
        if (sequence := encode(codec, character)) is not None:
            yield f"encode U+{character:04X} {sequence.hex().upper()}"


def main() -> None:
    """Writes one file."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("codec")
    parser.add_argument("output", type=Path)
    arguments = parser.parse_args()
    arguments.output.write_text("".join(f"{line}\n" for line in lines(arguments.codec)),
                                encoding="ascii")


if __name__ == "__main__":
    main()
