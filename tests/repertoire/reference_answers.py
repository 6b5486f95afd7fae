"""How the scripts beside this write down what a reference makes of a charset.

The lines are "decode BYTES CHARACTERS" and "encode CHARACTER BYTES", as in the
lists of differences; what the reference refuses has no line.
"""

from __future__ import annotations

import argparse
from collections.abc import Callable, Iterable, Iterator
from itertools import product
from pathlib import Path

Decoder = Callable[[bytes], str | None]
Encoder = Callable[[int], bytes | None]
# Whether any character from the first up to the second is written.
WritesAny = Callable[[int, int], bool]


def code_points(text: str) -> str:
    """Text as U+304B+309A."""
    return "U" + "".join(f"+{ord(character):04X}" for character in text)


def byte_range(first: int, last: int) -> list[bytes]:
    """The bytes from first to last, each by itself."""
    return [bytes([byte]) for byte in range(first, last + 1)]


ALL = byte_range(0, 0xFF)
GRAPHIC = byte_range(0x21, 0x7E)
# The escape sequences of the sets of one byte and of pairs.
ONE_BYTE_SETS = [b"\x1b(B", b"\x1b(J", b"\x1b(I"]
PAIR_SETS = [b"\x1b$B", b"\x1b$@", b"\x1b$(Q", b"\x1b$(P"]
# What stands behind the sequences of one and two bytes that are tried of every shape.
LONGER: dict[str, list[list[bytes]]] = {
    "bytes": [],
    "pairs": [],
    "euc": [[b"\x8f"], ALL, ALL],
    "four": [byte_range(0x81, 0xFE), byte_range(0x30, 0x39)] * 2,
    "planes": [[b"\x8e"], byte_range(0xA1, 0xB0), *[byte_range(0xA1, 0xFE)] * 2],
    "ebcdic": [[b"\xfe"], ALL, ALL],
    "korean": [],
    "chinese": [[b"\x8e"], byte_range(0xA1, 0xA2), *[byte_range(0xA1, 0xFE)] * 2],
}
# Shapes whose codes are not one byte or two.
WITHOUT_PAIRS = ("bytes", "ebcdic")


def candidates(shape: str, is_code: Callable[[bytes], bool]) -> Iterator[bytes]:
    """The byte sequences that may be codes of a charset of this shape, as the tests try them."""
    if shape == "fixed":
        yield from map(b"".join, product(ALL, ALL))
        return
    if shape == "escapes":
        yield from map(b"".join, product(ONE_BYTE_SETS, byte_range(0, 0x7F)))
        yield from map(b"".join, product(PAIR_SETS, GRAPHIC, GRAPHIC))
        return
    for first in ALL:
        yield first
        if shape not in WITHOUT_PAIRS and not is_code(first):
            yield from (first + second for second in ALL)
    if LONGER[shape]:
        yield from map(b"".join, product(*LONGER[shape]))


def decoded(decode: Decoder, shape: str) -> Iterator[str]:
    """The lines for all codes of a charset, read."""
    for code in candidates(shape, lambda code: decode(code) is not None):
        text = decode(code)
        # An escape sequence that is unknown may be taken for so many characters.
        if text is not None and (len(text) == 1 or not text.startswith("\x1b")):
            yield f"decode {code.hex().upper()} {code_points(text)}"


def encoded(encode: Encoder, writes_any: WritesAny) -> Iterator[str]:
    """The lines for every character, written; blocks without any are passed over."""
    block = 0x100
    for first in range(0, 0x110000, block):
        if 0xD800 <= first <= 0xDFFF or not writes_any(first, first + block):
            continue
        for character in range(first, first + block):
            if (sequence := encode(character)) is not None:
                yield f"encode U+{character:04X} {sequence.hex().upper()}"


def arguments(description: str) -> argparse.ArgumentParser:
    """The arguments that all scripts have."""
    parser = argparse.ArgumentParser(description=description.split("\n", maxsplit=1)[0])
    parser.add_argument("codec")
    parser.add_argument("shape", help="of its codes, as in references.txt")
    parser.add_argument("output", type=Path)
    return parser


def write(output: Path, lines: Iterable[str]) -> None:
    """Writes one file."""
    output.write_text("".join(f"{line}\n" for line in lines), encoding="ascii")
