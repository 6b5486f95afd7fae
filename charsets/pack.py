"""Makes the packed form of a charset directory: one file that programs map and read in place.

All numbers are 32 bits wide, least significant byte first, and stand at multiples of four. The
file begins with a header (HEADER names its fields); cconv/rules/packed_charsets.h reads it.

A table is a tree. Of a key, the bits above the lowest ten choose an entry of the table's
directory. It names a block; a block has 64 pages; a page has a base and a template; a template has
16 steps, one for each key. The value is the base and the step together, and none where the step is
0. Keys beyond the last code of Unicode, which the four-byte codes of GB18030 are, have their pages
in runs: each begins at a page of 16 keys, and its pages stand at equal distances. Blocks and templates that are alike stand once, for all tables: the
codes of a set that follow their characters at an even distance share one template.

Beside the tables stand, for whoever asks for a table in a form that is not there, the lines of
each table in their order (records), and all rule files as they are. The catalog says what there
is, as a stream of numbers of seven bits a byte, the lowest first.
"""

from __future__ import annotations

import dataclasses
import itertools
import struct
from array import array
from collections.abc import Iterable

Pair = tuple[int, int]

MAGIC = 0x5056534B  # "KSVP"
VERSION = 1
HEADER = ("magic", "version", "file_size", "catalog", "catalog_size", "tables", "table_count",
          "blocks", "block_count", "pages", "page_count", "templates", "template_count",
          "data", "data_size", "reserved")
LAST_UNICODE_KEY = 0x10FFFF
KEYS_A_PAGE = 16
PAGES_A_BLOCK = 64
# Keys below this are covered by a block of any size that begins at them.
FIRST_KEY_THAT_WRAPS = (1 << 32) - (1 << 16)


@dataclasses.dataclass(frozen=True)
class PackedSubset:
    """A group: its table is an index, or None."""

    name: str
    language: str
    width: int
    table: int | None


@dataclasses.dataclass(frozen=True)
class PackedCharset:
    """A charset: pairs of a group's index and its one-way tables with their widths."""

    name: str
    codec: str
    members: list[tuple[int, list[tuple[int, int]]]]


@dataclasses.dataclass(frozen=True)
class PackedFile:
    """A table's text by its name, its size as a text file, and its lines."""

    name: str
    text_size: int
    pairs: list[Pair]


class Distinct:
    """Things of equal size that stand once each, by their bytes."""

    def __init__(self, first: bytes) -> None:
        self._numbers = {first: 0}

    def number_of(self, item: bytes) -> int:
        """The number of one that is alike, which is added when there is none."""
        return self._numbers.setdefault(item, len(self._numbers))

    def __len__(self) -> int:
        return len(self._numbers)

    def bytes(self) -> bytes:
        """All, in the order of their numbers."""
        return b"".join(self._numbers)


class Pack:
    """A packed directory that is being made."""

    def __init__(self) -> None:
        self._templates = Distinct(_words([0] * KEYS_A_PAGE))
        self._blocks = Distinct(_words([0] * PAGES_A_BLOCK))
        self._pages = array("I", [0, 0])
        self._page_numbers: dict[tuple[int, int], int] = {(0, 0): 0}
        self._tables: list[list[int]] = []
        self._data = bytearray()

    def add_table(self, file: int, pairs: Iterable[Pair], first_is_key: bool, width: int) -> None:
        """Adds what a table answers whose keys are the first or the second number of a line."""
        mask = (1 << 8 * min(width, 4)) - 1
        if first_is_key:
            values = {first: second & mask for first, second in pairs}
        else:
            values = {second: first & mask for first, second in pairs}
        if max(values) >= FIRST_KEY_THAT_WRAPS:
            raise ValueError(f"key {max(values):X} is too large for a packed table")
        pages = self._pages_of(values)
        direct = {prefix: page for prefix, page in pages.items()
                  if prefix * KEYS_A_PAGE <= LAST_UNICODE_KEY}
        hashed = {prefix: page for prefix, page in pages.items() if prefix not in direct}
        directory = self._directory(direct)
        runs = _runs(hashed)
        self._tables.append([file, int(first_is_key) | width << 8, min(values), max(values),
                             int(0 in values), self._put(directory), len(directory) // 4,
                             self._put(runs), len(runs) // 16])

    def _pages_of(self, values: dict[int, int]) -> dict[int, int]:
        """The number of the page for each prefix of a key."""
        grouped: dict[int, list[int]] = {}
        for key, value in values.items():
            page = grouped.get(key >> 4)
            if page is None:
                page = grouped[key >> 4] = [0] * KEYS_A_PAGE
            page[key & 0xF] = value
        return {prefix: self._page(page) for prefix, page in grouped.items()}

    def _page(self, values: list[int]) -> int:
        """The number of a page with these values, 0 for none."""
        present = [value for value in values if value]
        if not present:
            return 0
        base = min(present) - 1
        steps = _words([value - base if value else 0 for value in values])
        key = (base, self._templates.number_of(steps))
        number = self._page_numbers.setdefault(key, len(self._page_numbers))
        if 2 * number == len(self._pages):
            self._pages.extend(key)
        return number

    def _directory(self, pages: dict[int, int]) -> bytes:
        """The numbers of the blocks, up to the last that has a page."""
        blocks: dict[int, list[int]] = {}
        for prefix, page in pages.items():
            block = blocks.setdefault(prefix // PAGES_A_BLOCK, [0] * PAGES_A_BLOCK)
            block[prefix % PAGES_A_BLOCK] = page
        numbers = [0] * (max(blocks, default=-1) + 1)
        for place, block in blocks.items():
            numbers[place] = self._blocks.number_of(_words(block))
        return _words(numbers)

    def _put(self, content: bytes) -> int:
        """Adds bytes to the data and says where they stand in it."""
        place = len(self._data)
        self._data += content + bytes(-len(content) % 4)
        return place

    def bytes(self, rule_files: dict[str, bytes], tables: list[PackedFile],
              subsets: list[PackedSubset], charsets: list[PackedCharset]) -> bytes:
        """The whole file."""
        catalog = self._catalog(rule_files, tables, subsets, charsets)
        sections = {
            "catalog": catalog,
            "tables": b"".join(map(_words, self._tables)),
            "blocks": self._blocks.bytes(),
            "pages": _words(self._pages),
            "templates": self._templates.bytes(),
            "data": bytes(self._data),
        }
        header = {"magic": MAGIC, "version": VERSION, "catalog_size": len(catalog),
                  "table_count": len(self._tables), "block_count": len(self._blocks),
                  "page_count": len(self._page_numbers), "template_count": len(self._templates),
                  "data_size": len(self._data), "reserved": 0}
        body = b""
        for name, content in sections.items():
            header[name] = 4 * len(HEADER) + len(body)
            body += content + bytes(-len(content) % 4)
        header["file_size"] = 4 * len(HEADER) + len(body)
        return _words([header[name] for name in HEADER]) + body

    def _catalog(self, rule_files: dict[str, bytes], tables: list[PackedFile],
                 subsets: list[PackedSubset], charsets: list[PackedCharset]) -> bytes:
        """What there is."""
        stream = bytearray(_number(len(rule_files)))
        for name, content in sorted(rule_files.items()):
            stream += _text(name) + _number(self._put(content)) + _number(len(content))
        stream += _number(len(tables))
        for table in tables:
            records = encode_records(table.pairs)
            stream += _text(table.name) + _number(table.text_size) + _number(len(table.pairs))
            stream += _number(self._put(records)) + _number(len(records))
        stream += _number(len(subsets))
        for subset in subsets:
            stream += _text(subset.name) + _text(subset.language) + _number(subset.width)
            stream += _number(0 if subset.table is None else subset.table + 1)
        stream += _number(len(charsets))
        for charset in charsets:
            stream += _text(charset.name) + _text(charset.codec) + _number(len(charset.members))
            for subset_index, one_way in charset.members:
                stream += _number(subset_index) + _number(len(one_way))
                for table_index, width in one_way:
                    stream += _number(table_index) + _number(width)
        return bytes(stream)


def encode_records(pairs: list[Pair]) -> bytes:
    """Lines as runs in which both numbers grow by one: the steps from the line before to the
    first of a run, and how many follow it."""
    stream = bytearray()
    last = (0, 0)
    at = 0
    while at < len(pairs):
        first = pairs[at]
        length = 1
        while at + length < len(pairs) and pairs[at + length] == (first[0] + length,
                                                                 first[1] + length):
            length += 1
        stream += _step(first[0] - last[0]) + _step(first[1] - last[1]) + _number(length - 1)
        at += length
        last = pairs[at - 1]
    return bytes(stream)


def _runs(pages: dict[int, int]) -> bytes:
    """Runs of pages by the prefixes of their keys: the first prefix, its page, how many pages there
    are, one behind the other, and the distance of their prefixes."""
    runs: list[list[int]] = []
    for prefix, page in sorted(pages.items()):
        if runs:
            first, first_page, count, distance = runs[-1]
            if page == first_page + count and (count == 1 or prefix == first + count * distance):
                runs[-1] = [first, first_page, count + 1, distance if count > 1 else prefix - first]
                continue
        runs.append([prefix, page, 1, 1])
    return _words(itertools.chain.from_iterable(runs))


def _words(numbers: Iterable[int]) -> bytes:
    numbers = list(numbers)
    return struct.pack(f"<{len(numbers)}I", *numbers)


def _number(value: int) -> bytes:
    stream = bytearray()
    while value >= 0x80:
        stream.append(value & 0x7F | 0x80)
        value >>= 7
    stream.append(value)
    return bytes(stream)


def _step(value: int) -> bytes:
    """A number that may be below zero: 0, -1, 1, -2, ..."""
    return _number(2 * value if value >= 0 else -2 * value - 1)


def _text(text: str) -> bytes:
    return _number(len(text)) + text.encode("ascii")
