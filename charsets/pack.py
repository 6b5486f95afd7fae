"""Makes the packed form of a charset directory: one file that programs map and read in place.

All numbers are 32 bits wide, least significant byte first, and stand at multiples of four. The
file begins with a header (HEADER names its fields); cconv/rules/packed_charsets.h reads it.

A table is a tree. Of a key, the bits above the lowest ten choose an entry of the table's
directory. It names a block; a block has 64 pages; a page has a base and a template; a template has
16 steps, one for each key, of 16 bits (narrow) or, where one needs more, of 32 bits; the wide ones
have the numbers behind the narrow ones. The value is the base and the step together, and none where
the step is 0. Keys beyond the last code of Unicode, which the four-byte codes of GB18030 are, have
their pages in runs: each begins at a page of 16 keys, and its pages stand at equal distances, have
the same template, and bases that grow by the same step. Blocks and templates that are alike stand
once, for all tables: the codes of a set that follow their characters at an even distance share one
template.

Beside the tables stand, for whoever asks for a table in a form that is not there, the lines of
each table in their order, and all rule files as they are. Most lines stand in the order of their
first numbers, which the table by the first number has as well: of these nothing is kept but where
keys of the table are passed over, whose lines stand in front of them or behind them (records). The
catalog says what there is, as a stream of numbers of seven bits a byte, the lowest first.
"""

from __future__ import annotations

import dataclasses
import itertools
import struct
from collections.abc import Iterable

Pair = tuple[int, int]

MAGIC = 0x5056534B  # "KSVP"
VERSION = 2
HEADER = ("magic", "version", "file_size", "catalog", "catalog_size", "tables", "table_count",
          "blocks", "block_count", "pages", "page_count", "narrow_templates",
          "narrow_template_count", "wide_templates", "wide_template_count", "data", "data_size")
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


@dataclasses.dataclass(frozen=True)
class Page:
    """Sixteen values: a base, and the number of a template among the narrow or the wide ones."""

    base: int
    is_narrow: bool
    template: int


@dataclasses.dataclass
class Run:
    """Pages of one template whose prefixes and bases grow evenly."""

    first: int
    page: Page
    count: int = 1
    distance: int = 1
    step: int = 0

    def takes(self, prefix: int, page: Page) -> bool:
        """Adds the page if it goes on with the run."""
        is_alike = (page.is_narrow, page.template) == (self.page.is_narrow, self.page.template)
        step = (page.base - self.page.base) % (1 << 32) if self.count == 1 else self.step
        distance = prefix - self.first if self.count == 1 else self.distance
        goes_on = (prefix == self.first + self.count * distance and
                   page.base == (self.page.base + self.count * step) % (1 << 32))
        if not is_alike or not goes_on:
            return False
        self.count, self.distance, self.step = self.count + 1, distance, step
        return True


class Distinct:
    """Things of equal size that stand once each, by their bytes."""

    def __init__(self, *first: bytes) -> None:
        self._numbers = {item: number for number, item in enumerate(first)}

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
        self._narrow_templates = Distinct(_halves([0] * KEYS_A_PAGE))
        self._wide_templates = Distinct()
        self._blocks = Distinct(_words([0] * PAGES_A_BLOCK))
        self._page_numbers: dict[Page, int] = {Page(0, True, 0): 0}
        self._tables: list[list[int]] = []
        self._runs: list[list[Run]] = []
        # By the number of the file, what its table by the first number answers.
        self._by_first: dict[int, dict[int, int]] = {}
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
        direct = {prefix: self._number_of(page) for prefix, page in pages.items()
                  if prefix * KEYS_A_PAGE <= LAST_UNICODE_KEY}
        directory = self._directory(direct)
        self._runs.append(_runs({prefix: page for prefix, page in pages.items()
                                 if prefix not in direct}))
        self._tables.append([file, int(first_is_key) | width << 8, min(values), max(values),
                             int(0 in values), self._put(directory), len(directory) // 4])
        if first_is_key and width >= 4:
            self._by_first[file] = values

    def _pages_of(self, values: dict[int, int]) -> dict[int, "Page"]:
        """The page for each prefix of a key."""
        grouped: dict[int, list[int]] = {}
        for key, value in values.items():
            page = grouped.get(key >> 4)
            if page is None:
                page = grouped[key >> 4] = [0] * KEYS_A_PAGE
            page[key & 0xF] = value
        return {prefix: self._page(page) for prefix, page in grouped.items()}

    def _page(self, values: list[int]) -> "Page":
        present = [value for value in values if value]
        if not present:
            return Page(0, True, 0)
        base = min(present) - 1
        steps = [value - base if value else 0 for value in values]
        if max(steps) < 1 << 16:
            return Page(base, True, self._narrow_templates.number_of(_halves(steps)))
        return Page(base, False, self._wide_templates.number_of(_words(steps)))

    def _number_of(self, page: "Page") -> int:
        """The number of a page, which is added when there is none like it; 0 for an empty one."""
        return self._page_numbers.setdefault(page, len(self._page_numbers))

    def _template(self, page: "Page") -> int:
        """The number of its template, when all have been made."""
        return page.template if page.is_narrow else len(self._narrow_templates) + page.template

    def _place_runs(self) -> None:
        """Puts the runs of each table into the data."""
        for table, runs in zip(self._tables, self._runs):
            words = [(run.first, run.count, run.distance, run.page.base, run.step,
                      self._template(run.page)) for run in runs]
            table += [self._put(_words(itertools.chain.from_iterable(words))), len(runs)]

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
        self._place_runs()
        pages = [(page.base, self._template(page)) for page in self._page_numbers]
        sections = {
            "catalog": catalog,
            "tables": b"".join(map(_words, self._tables)),
            "blocks": self._blocks.bytes(),
            "pages": _words(itertools.chain.from_iterable(pages)),
            "narrow_templates": self._narrow_templates.bytes(),
            "wide_templates": self._wide_templates.bytes(),
            "data": bytes(self._data),
        }
        header = {"magic": MAGIC, "version": VERSION, "catalog_size": len(catalog),
                  "table_count": len(self._tables), "block_count": len(self._blocks),
                  "page_count": len(self._page_numbers),
                  "narrow_template_count": len(self._narrow_templates),
                  "wide_template_count": len(self._wide_templates), "data_size": len(self._data)}
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
        for number, table in enumerate(tables):
            front, derived = _derived_lines(table.pairs, self._by_first.get(number, {}))
            records = encode_records(table.pairs[:front])
            records += encode_records(table.pairs[front + derived:])
            records += _passed_over(table.pairs, front, derived, self._by_first.get(number, {}))
            stream += _text(table.name) + _number(table.text_size) + _number(len(table.pairs))
            stream += _number(front) + _number(derived)
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


def _derived_lines(pairs: list[Pair], values: dict[int, int]) -> tuple[int, int]:
    """How many lines stand in front of those that the table by the first number gives in its order,
    and how many these are. That table has no value 0, and one value for each key."""
    breaks = [at for at in range(1, len(pairs)) if pairs[at][0] <= pairs[at - 1][0]]
    zeros = [at + 1 for at, pair in enumerate(pairs) if pair[1] == 0 or values.get(pair[0]) != pair[1]]
    edges = sorted({0, *breaks, *zeros, *(at - 1 for at in zeros), len(pairs)})
    best = (0, 0)
    for first, last in itertools.pairwise(edges):
        if first + 1 in zeros and last == first + 1:
            continue
        if last - first > best[1]:
            best = (first, last - first)
    return best


def _passed_over(pairs: list[Pair], front: int, derived: int, values: dict[int, int]) -> bytes:
    """The keys of the table that are none of the derived lines: how many, and for each how many
    keys stand between it and the one before."""
    taken = {first for first, _ in pairs[front:front + derived]}
    keys = [key for key in sorted(values) if values[key]] if derived else []
    places = [place for place, key in enumerate(keys) if key not in taken]
    stream = bytearray(_number(len(places)))
    last = -1
    for place in places:
        stream += _number(place - last - 1)
        last = place
    return bytes(stream)


def _runs(pages: dict[int, Page]) -> list[Run]:
    """Runs of pages by the prefixes of their keys."""
    runs: list[Run] = []
    for prefix, page in sorted(pages.items()):
        if not runs or not runs[-1].takes(prefix, page):
            runs.append(Run(prefix, page))
    return runs


def _halves(numbers: list[int]) -> bytes:
    return struct.pack(f"<{len(numbers)}H", *numbers)


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
