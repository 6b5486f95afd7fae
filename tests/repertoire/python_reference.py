#!/usr/bin/env python3
"""Writes what one of Python's codecs makes of every byte sequence and every character."""

from __future__ import annotations

from itertools import chain

import reference_answers


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


def main() -> None:
    """Writes one file."""
    arguments = reference_answers.arguments(__doc__).parse_args()
    codec = arguments.codec
    reference_answers.write(
        arguments.output,
        chain(reference_answers.decoded(lambda sequence: decode(codec, sequence)),
              reference_answers.encoded(lambda character: encode(codec, character))))


if __name__ == "__main__":
    main()
