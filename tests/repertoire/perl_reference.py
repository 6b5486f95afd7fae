#!/usr/bin/env python3
"""Writes what Perl's module Encode makes of every byte sequence and every character."""

from __future__ import annotations

import subprocess
from collections.abc import Iterator
from functools import cache
from itertools import chain

import reference_answers

# What the program below is asked by lines, "d 8140" or "e 4E00", it answers by lines in turn: the
# characters or the bytes, or an empty line for what is refused. Perl passes bytes above 7F that
# stand for nothing through as they are when it is not told to stop.
PROGRAM = r"""
use strict; use Encode; my $codec = find_encoding($ARGV[0]) or die "Perl does not know $ARGV[0]\n";
while (my $line = <STDIN>) {
  my ($direction, $digits) = split ' ', $line;
  my $given = $direction eq 'd' ? pack('H*', $digits) : chr hex $digits;
  my $made = $direction eq 'd' ? $codec->decode($given, Encode::FB_QUIET)
                               : $codec->encode($given, Encode::FB_QUIET);
  $made = '' if length $given or not defined $made;
  print $direction eq 'd' ? join('+', map { sprintf '%04X', ord } split //, $made)
                          : uc unpack('H*', $made), "\n";
}
"""


def ask(codec: str, questions: list[str]) -> list[str]:
    """The answers of the program."""
    result = subprocess.run(["perl", "-e", PROGRAM, codec], input="".join(questions), check=True,
                            stdout=subprocess.PIPE, text=True)
    return result.stdout.splitlines()


@cache
def decoder(codec: str) -> reference_answers.Decoder:
    """The text of a sequence of one or two bytes, or nothing."""
    sequences = [*reference_answers.ALL, *(first + second for first in reference_answers.ALL
                                           for second in reference_answers.ALL)]
    answers = ask(codec, [f"d {sequence.hex()}\n" for sequence in sequences])
    texts = {sequence: "".join(chr(int(character, 16)) for character in answer.split("+"))
             for sequence, answer in zip(sequences, answers) if answer}
    return texts.get


def written(codec: str) -> Iterator[str]:
    """The lines for every character, written."""
    characters = [character for character in range(0x110000) if not 0xD800 <= character <= 0xDFFF]
    answers = ask(codec, [f"e {character:04X}\n" for character in characters])
    return (f"encode U+{character:04X} {answer}"
            for character, answer in zip(characters, answers) if answer)


def main() -> None:
    """Writes one file."""
    arguments = reference_answers.arguments(__doc__).parse_args()
    reference_answers.write(
        arguments.output,
        chain(reference_answers.decoded(decoder(arguments.codec), arguments.shape),
              written(arguments.codec)))


if __name__ == "__main__":
    main()
