"""The codes of the stateless charsets in the form that others know, with shifts, and back.

A code of a stateless charset says itself which set it is of; others put shifts around it.
"""

from __future__ import annotations

from collections.abc import Callable

import reference_answers

Reshape = Callable[[bytes], bytes | None]

SHIFT_OUT = b"\x0e"
SHIFT_IN = b"\x0f"
# What stands in front of the two bytes of an EBCDIC pair.
PAIR_LEAD = b"\xfe"
# The only pair with a byte below 41; others might be shifts.
EBCDIC_SPACE = b"\x40\x40"
KOREAN_HEADER = b"\x1b$)C"
GB_2312 = b"\x1b$)A"
CNS_PLANE_1 = b"\x1b$)G"
CNS_PLANE_2 = b"\x1b$*H"
SINGLE_SHIFT = b"\x1bN"
SHIFTS = (SHIFT_OUT, SHIFT_IN, b"\x1b")


def low(pair: bytes) -> bytes:
    """A pair without its high bits."""
    return bytes(byte & 0x7F for byte in pair)


def high(pair: bytes) -> bytes:
    """A pair with its high bits."""
    return bytes(byte | 0x80 for byte in pair)


def to_ebcdic(code: bytes) -> bytes | None:
    """A pair between shifts; shifts alone are no codes."""
    if len(code) == 3:
        is_pair = code[1:] == EBCDIC_SPACE or all(0x41 <= byte <= 0xFE for byte in code[1:])
        return SHIFT_OUT + code[1:] + SHIFT_IN if is_pair and code[:1] == PAIR_LEAD else None
    return code if len(code) == 1 and code not in (SHIFT_OUT, SHIFT_IN) else None


def from_ebcdic(text: bytes) -> bytes | None:
    """The inverse of to_ebcdic."""
    if text[:1] == SHIFT_OUT and len(text) > 1:
        return PAIR_LEAD + text[1:3]
    return None if text in (SHIFT_OUT, SHIFT_IN) else text


def to_korean(code: bytes) -> bytes | None:
    """A pair between shifts, behind the header of the text."""
    if len(code) == 1:
        return None if code in SHIFTS else KOREAN_HEADER + code
    if min(code) < 0xA1:
        return None
    return KOREAN_HEADER + SHIFT_OUT + low(code) + SHIFT_IN


def from_korean(text: bytes) -> bytes | None:
    """The inverse of to_korean."""
    rest = text.removeprefix(KOREAN_HEADER)
    if rest[:1] == SHIFT_OUT and len(rest) > 1:
        return high(rest[1:3])
    return None if rest in SHIFTS else rest


def to_chinese(code: bytes) -> bytes | None:
    """A pair of GB 2312, or of the first two planes of CNS 11643, which four bytes stand for."""
    if len(code) == 1:
        return None if code in SHIFTS else code
    if min(code[-2:]) < 0xA1:
        return None
    pair = low(code[-2:])
    if len(code) == 2:
        return GB_2312 + SHIFT_OUT + pair + SHIFT_IN
    if code[:2] == b"\x8e\xa1":
        return CNS_PLANE_1 + SHIFT_OUT + pair + SHIFT_IN
    return CNS_PLANE_2 + SINGLE_SHIFT + pair if code[:2] == b"\x8e\xa2" else None


def from_chinese(text: bytes) -> bytes | None:
    """The inverse of to_chinese."""
    designation, rest = text[:4], text[4:].strip(SHIFT_IN)
    if designation == GB_2312:
        return high(rest[-2:])
    if designation in (CNS_PLANE_1, CNS_PLANE_2):
        return (b"\x8e\xa1" if designation == CNS_PLANE_1 else b"\x8e\xa2") + high(rest[-2:])
    return None if text in SHIFTS else text


# By the shape of the stateless charset.
RESHAPED: dict[str, tuple[Reshape, Reshape]] = {
    "ebcdic": (to_ebcdic, from_ebcdic),
    "korean": (to_korean, from_korean),
    "chinese": (to_chinese, from_chinese),
}


def reshaped(shape: str, decode: reference_answers.Decoder, encode: reference_answers.Encoder
             ) -> tuple[reference_answers.Decoder, reference_answers.Encoder]:
    """What knows the form with shifts, asked about the stateless form."""
    if shape not in RESHAPED:
        return decode, encode
    to_shifts, from_shifts = RESHAPED[shape]

    def decode_code(code: bytes) -> str | None:
        text = to_shifts(code)
        return None if text is None else decode(text) or None

    def encode_character(character: int) -> bytes | None:
        text = encode(character)
        return (from_shifts(text) or None) if text else None

    return decode_code, encode_character
