#!/usr/bin/env python3
"""Writes what browsers make of every byte sequence and every character of a Japanese charset.

The rules are those of the Encoding Standard for shift_jis, euc-jp and iso-2022-jp; the characters
stand in the files beside this.
"""

from __future__ import annotations

import sys
from collections.abc import Callable
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "repertoire"))
import reference_answers  # noqa: E402

ROW = 94
# Of Shift_JIS: the user-defined rows, and the rows of NEC's copy of the IBM characters, which are read only.
USER_DEFINED = range(8836, 10716)
NEC_SELECTED = range(8272, 8836)
KATAKANA = range(0xFF61, 0xFFA0)
FULL_KATAKANA = ("。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホ"
                 "マミムメモヤユヨラリルレロワン゛゜")

Decode = Callable[[bytes], "str | None"]
Encode = Callable[[int], "bytes | None"]


def index(name: str) -> list[str | None]:
    """The characters in the order of their codes."""
    lines = (HERE / f"web_{name}.txt").read_text(encoding="utf-8").split("\n")
    rows = [line for line in lines if line and not line.startswith("#")]
    assert all(len(row) == ROW for row in rows)
    return [None if character == "." else character for row in rows for character in row]


JIS0208 = index("jis0208")
JIS0212 = index("jis0212")


def pointers(left_out: range) -> dict[int, int]:
    """Where each character stands first."""
    found: dict[int, int] = {}
    for pointer, character in enumerate(JIS0208):
        if character is not None and pointer not in left_out:
            found.setdefault(ord(character), pointer)
    return found


def character_at(characters: list[str | None], pointer: int) -> str | None:
    return characters[pointer] if 0 <= pointer < len(characters) else None


def pointer_of_pair(pair: bytes, first: int) -> int | None:
    """Of two bytes, each of 94 from the first on."""
    row, cell = pair[0] - first, pair[1] - first
    return row * ROW + cell if 0 <= row < ROW and 0 <= cell < ROW else None


def pair_of_pointer(pointer: int, first: int) -> bytes:
    return bytes([pointer // ROW + first, pointer % ROW + first])


def decode_shift_jis(code: bytes) -> str | None:
    if len(code) == 1:
        byte = code[0]
        if byte <= 0x80:
            return chr(byte)
        return chr(0xFF61 - 0xA1 + byte) if 0xA1 <= byte <= 0xDF else None
    if len(code) != 2:
        return None
    lead, trail = code
    if not (0x81 <= lead <= 0x9F or 0xE0 <= lead <= 0xFC):
        return None
    if not (0x40 <= trail <= 0x7E or 0x80 <= trail <= 0xFC):
        return None
    pointer = (lead - (0x81 if lead < 0xA0 else 0xC1)) * 188
    pointer += trail - (0x40 if trail < 0x7F else 0x41)
    if pointer in USER_DEFINED:
        return chr(0xE000 - USER_DEFINED.start + pointer)
    return character_at(JIS0208, pointer)


def encode_shift_jis(pointer_of: dict[int, int], character: int) -> bytes | None:
    if character <= 0x80:
        return bytes([character])
    if character in KATAKANA:
        return bytes([character - 0xFF61 + 0xA1])
    pointer = pointer_of.get(character)
    if pointer is None:
        return None
    lead, trail = divmod(pointer, 188)
    return bytes([lead + (0x81 if lead < 0x1F else 0xC1), trail + (0x40 if trail < 0x3F else 0x41)])


def decode_euc_jp(code: bytes) -> str | None:
    if len(code) == 1:
        return chr(code[0]) if code[0] < 0x80 else None
    if len(code) == 2 and code[0] == 0x8E:
        return chr(0xFF61 - 0xA1 + code[1]) if 0xA1 <= code[1] <= 0xDF else None
    is_0212 = len(code) == 3 and code[0] == 0x8F
    if len(code) != 2 and not is_0212:
        return None
    pointer = pointer_of_pair(code[-2:], 0xA1)
    return None if pointer is None else character_at(JIS0212 if is_0212 else JIS0208, pointer)


def encode_euc_jp(pointer_of: dict[int, int], character: int) -> bytes | None:
    if character < 0x80:
        return bytes([character])
    if character in KATAKANA:
        return bytes([0x8E, character - 0xFF61 + 0xA1])
    pointer = pointer_of.get(character)
    return None if pointer is None or pointer >= ROW * ROW else pair_of_pointer(pointer, 0xA1)


def decode_iso_2022_jp(code: bytes) -> str | None:
    designation, rest = code[:3], code[3:]
    if designation in (b"\x1b$@", b"\x1b$B") and len(rest) == 2:
        pointer = pointer_of_pair(rest, 0x21)
        return None if pointer is None else character_at(JIS0208, pointer)
    if len(rest) != 1 or rest[0] >= 0x80:
        return None
    if designation == b"\x1b(I":
        return chr(0xFF61 - 0x21 + rest[0]) if 0x21 <= rest[0] <= 0x5F else None
    if rest[0] in b"\x0e\x0f\x1b" or designation not in (b"\x1b(B", b"\x1b(J"):
        return None
    if designation == b"\x1b(J" and rest[0] in b"\\~":
        return "\u00a5" if rest == b"\\" else "\u203e"
    return chr(rest[0])


def encode_iso_2022_jp(pointer_of: dict[int, int], character: int) -> bytes | None:
    if character in (0x0E, 0x0F, 0x1B):
        return None
    if character < 0x80:
        return bytes([character])
    if character in (0xA5, 0x203E):
        return b"\x1b(J" + (b"\\" if character == 0xA5 else b"~") + b"\x1b(B"
    if character in KATAKANA:
        character = ord(FULL_KATAKANA[character - KATAKANA.start])
    pointer = pointer_of.get(character)
    if pointer is None or pointer >= ROW * ROW:
        return None
    return b"\x1b$B" + pair_of_pointer(pointer, 0x21) + b"\x1b(B"


def with_common_rules(encode: Callable[[dict[int, int], int], bytes | None], left_out: range,
                      roman: bool) -> Encode:
    """What all three have: the minus sign, and (where roman) yen and overline as single bytes."""
    pointer_of = pointers(left_out)

    def encoded(character: int) -> bytes | None:
        if roman and character in (0xA5, 0x203E):
            return b"\\" if character == 0xA5 else b"~"
        return encode(pointer_of, 0xFF0D if character == 0x2212 else character)

    return encoded


NOTHING = range(0)
CODECS: dict[str, tuple[Decode, Encode]] = {
    "shift_jis": (decode_shift_jis, with_common_rules(encode_shift_jis, NEC_SELECTED, True)),
    "euc-jp": (decode_euc_jp, with_common_rules(encode_euc_jp, NOTHING, True)),
    "iso-2022-jp": (decode_iso_2022_jp, with_common_rules(encode_iso_2022_jp, NOTHING, False)),
}


def main() -> None:
    """Asks about one charset."""
    options = reference_answers.arguments(str(__doc__)).parse_args()
    decode, encode = CODECS[options.codec]

    def writes_any(first: int, last: int) -> bool:
        return any(encode(character) is not None for character in range(first, last))

    reference_answers.write(options.output, [*reference_answers.decoded(decode, options.shape),
                                             *reference_answers.encoded(encode, writes_any)])


if __name__ == "__main__":
    main()
