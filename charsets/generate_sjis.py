#!/usr/bin/env python3
"""Writes the two tables of the Shift_JIS mapping as a C++ header.

The mapping is what Windows makes of Shift_JIS without its extensions, taken from the
same descriptions as the charset directory. common/paged_table.h explains the form.
"""

from __future__ import annotations

import argparse
import dataclasses
import sys
from collections.abc import Iterable, Iterator
from pathlib import Path

from generate import HERE, DescriptionError, Descriptions, Pair

# Characters that are written as a code that reads as another one: the soft hyphen, the
# middle dot and the overline. The charset directory has more of them; callers of the
# mapping count on these three alone.
ONE_WAY = ((0x2D, 0x00AD), (0x8145, 0x00B7), (0x7E, 0x203E))

# Pages of so many entries are tried for the smallest table.
PAGE_BITS = range(4, 10)
ENTRIES = 0x10000


@dataclasses.dataclass(frozen=True)
class PagedTable:
    """65,536 entries in pages: equal pages are kept once, an index finds them."""

    page_bits: int
    index: list[int]
    pages: list[list[int]]

    def size(self) -> int:
        """Bytes of the index and of the pages."""
        return len(self.index) + 2 * sum(map(len, self.pages))


def pair_bytes(code: int) -> int:
    """The Shift_JIS bytes of a row and cell code: two rows share a lead byte."""
    row, cell = (code >> 8) - 0x21, (code & 0xFF) - 0x21
    lead = 0x81 + row // 2
    trail = 0x40 + row % 2 * 94 + cell
    return (lead + (0x40 if lead > 0x9F else 0)) << 8 | trail + (1 if trail >= 0x7F else 0)


def subset_pairs(descriptions: Descriptions, base: str) -> list[Pair]:
    """The lines of a character set."""
    table = descriptions.subset(base).table
    if table is None:
        raise DescriptionError(f"{base} has no table")
    return table.pairs


def mapping(descriptions: Descriptions) -> Iterator[Pair]:
    """The codes of the mapping and their characters."""
    for code, character in subset_pairs(descriptions, "jis_x0201latin"):
        if 0x20 <= code <= 0x7E:
            yield code, character
    for code, character in subset_pairs(descriptions, "jis_x0201kana"):
        if 0xA1 <= code <= 0xDF:
            yield code, character
    for code, character in subset_pairs(descriptions, "jis_x0208-1990"):
        yield pair_bytes(code), character


def as_table(pairs: Iterable[Pair]) -> dict[int, int]:
    """The pairs by their first numbers, of which no two may be the same."""
    table: dict[int, int] = {}
    for key, value in pairs:
        if table.setdefault(key, value) != value or not 0 < value < ENTRIES:
            raise DescriptionError(f"{key:04X} cannot stand for {value:04X}")
    return table


def paged(table: dict[int, int], page_bits: int) -> PagedTable:
    """The table in pages of one size."""
    numbers: dict[tuple[int, ...], int] = {}
    size = 1 << page_bits
    index = [numbers.setdefault(tuple(table.get(start + entry, 0) for entry in range(size)),
                                len(numbers))
             for start in range(0, ENTRIES, size)]
    return PagedTable(page_bits, index, [list(page) for page in numbers])


def smallest(table: dict[int, int]) -> PagedTable:
    """The smallest form whose index fits bytes."""
    candidates = [paged(table, page_bits) for page_bits in PAGE_BITS]
    return min((candidate for candidate in candidates if len(candidate.pages) <= 0x100),
               key=PagedTable.size)


def numbers_text(numbers: Iterable[int]) -> str:
    """Numbers for an initialiser, so many a line."""
    words = [f"0x{number:X}," for number in numbers]
    return "\n".join("    " + "".join(words[at:at + 12]) for at in range(0, len(words), 12))


def table_text(name: str, table: PagedTable) -> str:
    """The definition of one table."""
    pages = numbers_text(entry for page in table.pages for entry in page)
    return (f"// {table.size()} bytes.\n"
            f"constexpr PagedTable<{table.page_bits}, {len(table.pages)}> {name} = {{\n"
            f"    {{\n{numbers_text(table.index)}}},\n    {{\n{pages}}}}};\n")


def header_text(to_unicode: dict[int, int], to_sjis: dict[int, int]) -> str:
    """The header."""
    return ("// Made by charsets/generate_sjis.py; changes belong into the descriptions it reads.\n"
            '#pragma once\n\n#include "common/paged_table.h"\n\nnamespace ksv {\n\n'
            + table_text("kSjisToUnicode", smallest(to_unicode)) + "\n"
            + table_text("kUnicodeToSjis", smallest(to_sjis))
            + "\n}  // namespace ksv\n")


def main() -> None:
    """Writes the header named on the command line."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("output", type=Path)
    arguments = parser.parse_args()
    try:
        pairs = list(mapping(Descriptions(HERE)))
        back = [(character, code) for code, character in pairs]
        one_way = [(character, code) for code, character in ONE_WAY]
        text = header_text(as_table(pairs), as_table(back + one_way))
    except DescriptionError as error:
        sys.exit(f"generate_sjis.py: {error}")
    arguments.output.write_text(text, encoding="ascii")


if __name__ == "__main__":
    main()
