#!/usr/bin/env python3
"""Writes what ICU makes of every byte sequence and every character.

ICU's functions have the number of its version behind their names, which stands in the name of the
library as well.
"""

from __future__ import annotations

import ctypes
import ctypes.util
import re
from itertools import chain

import reference_answers
import stateless_codes


class Icu:
    """The functions of the library that is installed."""

    def __init__(self) -> None:
        file = ctypes.util.find_library("icuuc")
        if not file:
            raise SystemExit("no library icuuc: install libicu-dev")
        self._library = ctypes.CDLL(file)
        self.version = re.search(r"\.so\.(\d+)", file).group(1)
        self.open = self.function("ucnv_open", ctypes.c_void_p)
        self.to_unicode = self.function("ucnv_toUChars", ctypes.c_int32)
        self.from_unicode = self.function("ucnv_fromUChars", ctypes.c_int32)
        self.set_fallback = self.function("ucnv_setFallback", None)

    def function(self, name: str, result: type | None) -> ctypes._CFuncPtr:
        """A function of this version."""
        function = self._library[f"{name}_{self.version}"]
        function.restype = result
        return function

    def stop(self, converter: ctypes.c_void_p) -> None:
        """What has no code is refused, and nothing stands for it."""
        error = ctypes.c_int(0)
        for setter, callback in (("ucnv_setToUCallBack", "UCNV_TO_U_CALLBACK_STOP"),
                                 ("ucnv_setFromUCallBack", "UCNV_FROM_U_CALLBACK_STOP")):
            self.function(setter, None)(converter, self.function(callback, None), None, None, None,
                                        ctypes.byref(error))
        self.set_fallback(converter, ctypes.c_int8(0))


class Converter:
    """One of ICU's converters, for whole short texts."""

    def __init__(self, charset: str) -> None:
        self._icu = Icu()
        error = ctypes.c_int(0)
        self._converter = ctypes.c_void_p(
            self._icu.open(charset.encode(), ctypes.byref(error)))
        if error.value > 0:
            raise SystemExit(f"ICU does not know {charset}")
        self._icu.stop(self._converter)
        self._buffer = ctypes.create_string_buffer(0x1000)

    def _convert(self, function: ctypes._CFuncPtr, text: bytes, units: int, width: int) -> bytes | None:
        error = ctypes.c_int(0)
        made = function(self._converter, self._buffer, ctypes.c_int32(len(self._buffer) // width),
                        text, ctypes.c_int32(units), ctypes.byref(error))
        return None if error.value > 0 else self._buffer.raw[:made * width]

    def decode(self, text: bytes) -> str | None:
        """The characters of a text, or nothing if any of it is refused."""
        units = self._convert(self._icu.to_unicode, text, len(text), 2)
        return units.decode("utf-16-le") if units else None

    def encode(self, text: str) -> bytes | None:
        """The bytes of a text, or nothing if any of it is refused."""
        units = text.encode("utf-16-le")
        return self._convert(self._icu.from_unicode, units, len(units) // 2, 1) or None


def decoder(charset: str) -> reference_answers.Decoder:
    """The text of a byte sequence, or nothing."""
    return Converter(charset).decode


def encoder(charset: str) -> reference_answers.Encoder:
    """The bytes of a character, or nothing."""
    converter = Converter(charset)
    return lambda character: converter.encode(chr(character))


def main() -> None:
    """Writes one file."""
    arguments = reference_answers.arguments(__doc__).parse_args()
    decode, encode = stateless_codes.reshaped(arguments.shape, decoder(arguments.codec),
                                              encoder(arguments.codec))
    reference_answers.write(
        arguments.output,
        chain(reference_answers.decoded(decode, arguments.shape),
              reference_answers.encoded(encode, lambda first, end: True)))


if __name__ == "__main__":
    main()
