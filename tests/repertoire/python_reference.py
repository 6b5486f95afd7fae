#!/usr/bin/env python3
"""Writes what one of Python's codecs makes of every byte sequence and every character.

Three charsets that Python does not have are other ones in another shape: their bytes are
put into that one's shape here, and back.
"""

from __future__ import annotations

from collections.abc import Callable
from itertools import chain

import reference_answers


def from_euc_jp_fix(pair: bytes) -> bytes | None:
    """The code of EUC-JP for a code of two bytes in any case."""
    first, second = pair
    if first == 0:
        return bytes([second]) if second < 0x80 else bytes([0x8E, second])
    if first < 0xA0 or second < 0x20:
        return None
    return pair if second >= 0x80 else bytes([0x8F, first, second | 0x80])


def to_euc_jp_fix(code: bytes) -> bytes | None:
    """The inverse of from_euc_jp_fix."""
    if len(code) == 3:
        return bytes([code[1], code[2] & 0x7F])
    if len(code) == 1:
        return b"\0" + code
    return b"\0" + code[1:] if code[0] == 0x8E else code


def from_oasys_online(pair: bytes) -> bytes | None:
    """The code behind an escape sequence of JIS; the characters of its own are in none."""
    first, second = pair
    if first >= 0x80:
        return None
    if first == 0:
        return pair[1:] if second < 0x80 else b"\x1b(I" + bytes([second & 0x7F])
    return b"\x1b$@" + pair


def to_oasys_online(code: bytes) -> bytes | None:
    """The inverse of from_oasys_online."""
    if not code.startswith(b"\x1b"):
        return b"\0" + code
    if code.startswith(b"\x1b(I"):
        return bytes([0, code[3] | 0x80])
    return code[3:5] if code[:3] in (b"\x1b$@", b"\x1b$B") else None


def from_cp50220(code: bytes) -> bytes | None:
    """The code of code page 932 for what stands behind an escape sequence of mail."""
    designation, rest = code[:3], code[3:]
    if designation in (b"\x1b(B", b"\x1b(J"):
        return rest
    if designation == b"\x1b(I":
        return bytes([rest[0] | 0x80]) if 0x21 <= rest[0] <= 0x5F else None
    if designation not in (b"\x1b$B", b"\x1b$@") or len(rest) != 2:
        return None
    row, cell = rest[0] - 0x21, rest[1] - 0x21
    lead = 0x81 + row // 2
    trail = cell + (0x9F if row % 2 else 0x40 if cell < 0x3F else 0x41)
    return bytes([lead if lead < 0xA0 else lead + 0x40, trail])


def to_cp50220(code: bytes) -> bytes | None:
    """The inverse of from_cp50220, with the escape sequence that goes back to ASCII."""
    if len(code) == 1:
        if code[0] < 0x80:
            return code
        is_katakana = 0xA1 <= code[0] <= 0xDF  # all other bytes are fillers of Windows
        return b"\x1b(I" + bytes([code[0] & 0x7F]) + b"\x1b(B" if is_katakana else None
    lead, trail = code
    if lead >= 0xF0:
        return None
    row = 2 * (lead - (0x81 if lead < 0xA0 else 0xC1))
    is_second = trail >= 0x9F
    cell = trail - (0x9F if is_second else 0x40 if trail < 0x7F else 0x41)
    return b"\x1b$B" + bytes([0x21 + row + is_second, 0x21 + cell]) + b"\x1b(B"


Reshape = Callable[[bytes], bytes | None]
RESHAPED: dict[str, tuple[str, Reshape, Reshape]] = {
    "euc_jp_fix": ("euc_jp", from_euc_jp_fix, to_euc_jp_fix),
    "cp50220": ("cp932", from_cp50220, to_cp50220),
    "oasys_online": ("iso2022_jp_ext", from_oasys_online, to_oasys_online),
}


def decoder(codec: str) -> reference_answers.Decoder:
    """The text of a byte sequence, or nothing."""
    codec, reshape, _ = RESHAPED.get(codec, (codec, lambda code: code, None))

    def decode(sequence: bytes) -> str | None:
        try:
            code = reshape(sequence)
            return None if code is None else code.decode(codec) or None
        except UnicodeDecodeError:
            return None

    return decode


def encoder(codec: str) -> reference_answers.Encoder:
    """The bytes of a character, or nothing."""
    codec, _, reshape = RESHAPED.get(codec, (codec, None, lambda code: code))

    def encode(character: int) -> bytes | None:
        try:
            return reshape(chr(character).encode(codec))
        except UnicodeEncodeError:
            return None

    return encode


def block_tester(codec: str) -> reference_answers.WritesAny:
    """Whether any character of a block has a code."""
    codec = RESHAPED[codec][0] if codec in RESHAPED else codec

    def writes_any(first: int, end: int) -> bool:
        return bool("".join(map(chr, range(first, end))).encode(codec, "ignore"))

    return writes_any


def main() -> None:
    """Writes one file."""
    arguments = reference_answers.arguments(__doc__).parse_args()
    reference_answers.write(
        arguments.output,
        chain(reference_answers.decoded(decoder(arguments.codec), arguments.shape),
              reference_answers.encoded(encoder(arguments.codec),
                                        block_tester(arguments.codec))))


if __name__ == "__main__":
    main()
