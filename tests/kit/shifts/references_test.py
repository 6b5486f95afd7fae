#!/usr/bin/env python3
"""Holds the filters against iconv and ICU, there and back, with every code.

    references_test.py SHIFT_TEXT

A text of all codes that a converter reads is written with shifts and read by it, and a text of all
characters that it writes is read from what it wrote. What a code stands for is asked of the same
converter, so that nothing here depends on the charset directory, which tests/repertoire holds
against the same two.
"""

from __future__ import annotations

import random
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "repertoire"))
import iconv_reference  # noqa: E402
import icu_reference  # noqa: E402
import reference_answers  # noqa: E402
import stateless_codes  # noqa: E402

SHIFT_TEXT = sys.argv[1]
SEED = 20261122
# Name, shape, iconv's name, ICU's name, how many characters they write at least.
ENCODINGS = [
    ("ibm930", "ebcdic", "IBM930", "ibm-930", 11800),
    ("ibm939", "ebcdic", "IBM939", "ibm-939", 11800),
    ("ibm1390", "ebcdic", "IBM1390", "ibm-1390", 22200),
    ("ibm1399", "ebcdic", "IBM1399", "ibm-1399", 22200),
    ("iso-2022-kr", "korean", "ISO-2022-KR", "ISO-2022-KR", 8300),
    ("iso-2022-cn", "chinese", "ISO-2022-CN", "ISO-2022-CN", 16300),
]
# A base in front of one of these is one code in IBM1390 and IBM1399.
COMBINING = "\u309a\u0300\u0301\u02e5\u02e9"
SUBSTITUTE = "\x1a"


def run(arguments: list[str], given: bytes) -> bytes:
    """What a program makes of bytes, which it must not complain about."""
    return subprocess.run(arguments, input=given, stdout=subprocess.PIPE, check=True).stdout


class Reference:
    """One of the two, about the stateless codes of an encoding."""

    def __init__(self, module, program: str, name: str, shape: str) -> None:
        decode, self.encode = stateless_codes.reshaped(shape, module.decoder(name),
                                                       module.encoder(name))
        texts = ((code, decode(code)) for code in
                 reference_answers.candidates(shape, lambda code: decode(code) is not None))
        self.texts = {code: text for code, text in texts if text}
        # What the C library reads as a substitute is no code.
        for code in [code for code, text in self.texts.items() if text == SUBSTITUTE]:
            if self.encode(ord(SUBSTITUTE)) != code:
                del self.texts[code]
        self.program, self.name = program, name

    def read(self, shifted: bytes) -> str:
        return run([self.program, "-f", self.name, "-t", "UTF-32BE"], shifted).decode("utf-32-be")

    def write(self, text: str) -> bytes:
        return run([self.program, "-f", "UTF-32BE", "-t", self.name], text.encode("utf-32-be"))

    def text_of(self, stateless: bytes) -> str:
        """What stateless bytes stand for, code by code."""
        text = []
        at = 0
        while at < len(stateless):
            length = next(length for length in (1, 2, 3, 4)
                          if stateless[at:at + length] in self.texts)
            text.append(self.texts[stateless[at:at + length]])
            at += length
        return "".join(text)

    def characters(self) -> list[str]:
        """Those that it writes, and reads as the same."""
        read = {text for text in self.texts.values() if len(text) == 1 and text not in COMBINING}
        return sorted(character for character in read
                      if self.texts.get(self.encode(ord(character))) == character)


class Filters(unittest.TestCase):
    """A test an encoding and reference, made below."""

    def check_writing(self, name: str, reference: Reference, least: int) -> None:
        """Others read every code that is written."""
        codes = list(reference.texts)
        self.assertGreater(len(codes), least)
        random.Random(SEED).shuffle(codes)
        shifted = run([SHIFT_TEXT, "write", name], b"".join(codes))
        expected = "".join(reference.texts[code] for code in codes)
        self.assertTrue(reference.read(shifted) == expected)
        self.assertTrue(run([SHIFT_TEXT, "read", name], shifted) == b"".join(codes))

    def check_reading(self, name: str, reference: Reference, least: int) -> None:
        """Every character that others write is read."""
        characters = reference.characters()
        self.assertGreater(len(characters), least)
        random.Random(SEED).shuffle(characters)
        # The C library's Chinese writer leaves shifts out where sets change within a line, so that
        # it does not read its own text again.
        apart = name == "iso-2022-cn" and reference.program == "iconv"
        text = ("\n" if apart else "").join(characters)
        shifted = reference.write(text)
        stateless = run([SHIFT_TEXT, "read", name], shifted)
        self.assertTrue(reference.text_of(stateless) == text)
        # They shift and designate as little as the filter, but for Chinese, where they have ways of
        # their own to change sets.
        if name != "iso-2022-cn":
            self.assertTrue(run([SHIFT_TEXT, "write", name], stateless) == shifted)


def add_test(name: str, shape: str, module, program: str, codec: str, least: int) -> None:
    """Adds the test of one encoding and reference."""
    def test(self: Filters) -> None:
        reference = Reference(module, program, codec, shape)
        self.check_writing(name, reference, least)
        self.check_reading(name, reference, least)

    setattr(Filters, f"test_{name}_and_{program}", test)


for name_, shape_, iconv, icu, least_ in ENCODINGS:
    add_test(name_, shape_, iconv_reference, "iconv", iconv, least_)
    add_test(name_, shape_, icu_reference, "uconv", icu, least_)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
