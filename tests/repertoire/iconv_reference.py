#!/usr/bin/env python3
"""Writes what the C library's iconv makes of every byte sequence and every character.

For the tests on systems without iconv: the machine that builds them has one.
"""

from __future__ import annotations

import ctypes
from itertools import chain

import reference_answers
import stateless_codes

LIBRARY = ctypes.CDLL(None, use_errno=True)
FAILED = ctypes.c_size_t(-1).value
UCS4 = "UCS-4BE"

LIBRARY.iconv_open.restype = ctypes.c_void_p
LIBRARY.iconv_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
LIBRARY.iconv.restype = ctypes.c_size_t
LIBRARY.iconv.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p,
                          ctypes.c_void_p]


class Converter:
    """Whole short texts from one charset to another."""

    def __init__(self, target: str, source: str) -> None:
        self.descriptor = LIBRARY.iconv_open(target.encode(), source.encode())
        if self.descriptor in (None, FAILED):
            raise SystemExit(f"iconv does not convert {source} to {target}")
        self.input = ctypes.create_string_buffer(4 * 0x100)
        self.output = ctypes.create_string_buffer(16 * 0x100)
        # The places and sizes that iconv moves on.
        self.state = (ctypes.c_size_t * 4)()
        base = ctypes.addressof(self.state)
        self.places = [base + i * ctypes.sizeof(ctypes.c_size_t) for i in range(4)]
        self.begin = [ctypes.addressof(self.input), 0, ctypes.addressof(self.output),
                      len(self.output)]

    def _start(self, text: bytes) -> None:
        ctypes.memmove(self.input, text, len(text))
        self.state[:] = self.begin
        self.state[1] = len(text)
        LIBRARY.iconv(self.descriptor, None, None, None, None)

    def writes_any(self, text: bytes) -> bool:
        """Whether anything of the text is converted, by a target that ignores the rest."""
        self._start(text)
        LIBRARY.iconv(self.descriptor, *self.places)
        return self.state[3] != len(self.output)

    def convert(self, text: bytes) -> bytes | None:
        """The text, or nothing if any of it is refused."""
        self._start(text)
        if LIBRARY.iconv(self.descriptor, *self.places) == FAILED or self.state[1] != 0:
            return None
        if LIBRARY.iconv(self.descriptor, None, None, *self.places[2:]) == FAILED:
            return None
        return self.output.raw[:len(self.output) - self.state[3]]


def decoder(charset: str) -> reference_answers.Decoder:
    """The text of a byte sequence, or nothing."""
    converter = Converter(UCS4, charset)

    def decode(sequence: bytes) -> str | None:
        text = converter.convert(sequence)
        return None if text is None else text.decode("utf-32-be")

    return decode


def encoder(charset: str) -> reference_answers.Encoder:
    """The bytes of a character, or nothing; some are dropped without a word."""
    converter = Converter(charset, UCS4)

    def encode(character: int) -> bytes | None:
        return converter.convert(character.to_bytes(4, "big")) or None

    return encode


def block_tester(charset: str) -> reference_answers.WritesAny:
    """Whether any character of a block has a code."""
    converter = Converter(f"{charset}//IGNORE", UCS4)

    def writes_any(first: int, end: int) -> bool:
        return converter.writes_any(
            b"".join(character.to_bytes(4, "big") for character in range(first, end)))

    return writes_any


def main() -> None:
    """Writes one file."""
    arguments = reference_answers.arguments(__doc__).parse_args()
    decode, encode = stateless_codes.reshaped(arguments.shape, decoder(arguments.codec),
                                              encoder(arguments.codec))
    codes = (() if arguments.shape == "unicode" else
             reference_answers.decoded(decode, arguments.shape))
    reference_answers.write(
        arguments.output,
        chain(codes, reference_answers.encoded(encode, block_tester(arguments.codec))))


if __name__ == "__main__":
    main()
