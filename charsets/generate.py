#!/usr/bin/env python3
"""Writes the charset directory: rule files, code tables and compiled code tables.

Reads rules/charsets, rules/subsets, rules/one_way and facts beside this file; the
README there says what they hold. Anything that the library would misread, and any
code that would not survive a round trip unexpectedly, stops the run.
"""

from __future__ import annotations

import argparse
import dataclasses
import hashlib
import itertools
import re
import struct
import sys
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import Any

import pack
import toml_subset

HERE = Path(__file__).resolve().parent

# A line of a table: the set's own code, the character.
Pair = tuple[int, int]

# Names with fixed numbers; the number of any other name is a sum over its bytes.
BUILT_IN_IDS = {
    "shift_jis": 1001, "windows31j": 1002, "iso-10646-ucs-2": 1003, "iso-10646-ucs-4": 1004,
    "utf-16": 1005, "utf-8": 1006, "euc-jp": 1007, "euc-jp-fix": 1008, "iso-2022-jp": 1009,
    "shift_jis-2004": 1010, "euc-jis-2004": 1011, "iso-2022-jp-2004": 1012,
    "iso-646irv": 2001, "jis_x0201latin": 2002, "jis_x0201kana": 2003, "jis_c6226-1978": 2004,
    "jis_x0208-1983": 2005, "jis_x0208-1990": 2006, "jis_x0212-1990": 2007, "nec_extset": 2008,
    "ibm_extset": 2009, "jis-78-83": 2010, "jis_x0213": 2011, "necibm_extset": 2012,
    "windows31j-usr": 3001, "windowsntj-usr": 3002, "oasys_extset": 3003, "oasys2_extset": 3004,
    "chinesegbk": 5000, "chinesebig5": 5001, "koreanksc": 5002, "gb18030": 5003,
}

# The codecs of the library; "dest" and "const" before them name decoder and encoder.
CODECS = {
    "SAME", "Shift_JIS", "Shift_JIS-2004", "WINDOWS31J", "ISO-10646-UCS-2", "ISO-10646-UCS-4",
    "UTF-16", "UTF-8", "EUC-JP", "EUC-JP-FIX", "EUC-JIS-2004", "ISO-2022-JP",
    "ISO-2022-JP-2004", "CP50220", "OASYS_WIN", "OASYS_ONLINE",
}

PACKED_FILE = "charsets.pack"
GENERATED_SUFFIXES = {".xml", ".txt", ".cmp", ".pack"}


class DescriptionError(Exception):
    """Something in rules/ or facts/ cannot become a charset directory."""


@dataclasses.dataclass(frozen=True)
class Table:
    """A code table; base is the file name without its extension."""

    base: str
    pairs: list[Pair]


@dataclasses.dataclass(frozen=True)
class Subset:
    """A character set that charsets are made of; without a table codes are characters."""

    name: str
    base: str
    width: int
    language: str
    table: Table | None
    one_way: list[Table]
    one_way_width: int


@dataclasses.dataclass(frozen=True)
class Member:
    """A subset as one charset has it."""

    subset: Subset
    one_way: list[Table]


@dataclasses.dataclass(frozen=True)
class Charset:
    """A charset: its members are tried in order."""

    name: str
    base: str
    codec: str
    members: list[Member]
    not_read_back: set[int]  # characters that are read, but written as another's code


def name_to_id(name: str) -> int:
    """The number under which the library keeps a charset or a subset."""
    lowered = name.lower()
    if lowered in BUILT_IN_IDS:
        return BUILT_IN_IDS[lowered]
    total = sum(byte * place for place, byte in enumerate(lowered.encode("ascii"), start=1))
    return (4000 + total) & 0xFFFFFFFF


# Descriptions.


def parse_range(text: str) -> tuple[int, int]:
    """Reads "21-7E" or "21"."""
    first, _, last = text.partition("-")
    return int(first, 16), int(last or first, 16)


def codes_of(source: dict[str, Any]) -> Iterator[int]:
    """The codes of a range; "bytes" limits each byte, the most significant first."""
    first, last = parse_range(source["codes"])
    if "bytes" not in source:
        return iter(range(first, last + 1))
    digits = [range(low, high + 1) for low, high in map(parse_range, source["bytes"])]
    indexes = range(index_of(first, digits), index_of(last, digits) + 1)
    return (code_at(index, digits) for index in indexes)


def index_of(code: int, digits: list[range]) -> int:
    """Which code it is, counted from the first whose bytes are all in their ranges."""
    index = 0
    for byte, allowed in zip(code.to_bytes(len(digits), "big"), digits):
        if byte not in allowed:
            raise DescriptionError(f"{code:X}: byte {byte:02X} is outside its range")
        index = index * len(allowed) + allowed.index(byte)
    return index


def code_at(index: int, digits: list[range]) -> int:
    """The inverse of index_of."""
    code = 0
    for place, allowed in enumerate(reversed(digits)):
        index, digit = divmod(index, len(allowed))
        code |= allowed[digit] << 8 * place
    return code


def without(pairs: Iterable[Pair], ranges: list[str]) -> Iterator[Pair]:
    """The lines whose codes lie in none of the ranges."""
    bounds = [parse_range(text) for text in ranges]
    for code, character in pairs:
        if not any(first <= code <= last for first, last in bounds):
            yield code, character


def limited(pairs: Iterable[Pair], ranges: list[str]) -> Iterator[Pair]:
    """The lines whose codes have each byte in its range, the most significant first."""
    bounds = [parse_range(text) for text in ranges]
    for code, character in pairs:
        if code < 1 << 8 * len(bounds) and all(
                low <= byte <= high
                for byte, (low, high) in zip(code.to_bytes(len(bounds), "big"), bounds)):
            yield code, character


def read_facts(path: Path) -> list[str]:
    """The lines of a fact file, which stand behind a header of # lines and an empty line."""
    header, separator, body = path.read_text(encoding="utf-8").partition("\n\n")
    stated = re.search(r"^# sha256: ([0-9a-f]{64})", header, re.MULTILINE)
    if not separator or not stated:
        raise DescriptionError(f"{path}: no header with a sha256 line")
    if hashlib.sha256(body.encode()).hexdigest() != stated.group(1):
        raise DescriptionError(f"{path}: the lines do not have the sha256 that the header states")
    return body.splitlines()


def parse_pair(line: str) -> Pair:
    """Reads "CODE CHARACTER" and ignores what stands behind."""
    code, character = line.split(maxsplit=2)[:2]
    return int(code, 16), int(character, 16)


class Descriptions:
    """The descriptions under one directory, read once each."""

    def __init__(self, root: Path) -> None:
        self._root = root
        self._subsets: dict[str, Subset] = {}
        self._one_way: dict[str, Table] = {}

    def charsets(self) -> list[Charset]:
        """All charsets, by file name."""
        return [self._charset(path) for path in sorted(self._root.glob("rules/charsets/*.toml"))]

    def _charset(self, path: Path) -> Charset:
        description = _load(path, {"name", "codec", "members"}, {"not_read_back"})
        if path.stem != description["name"].lower():
            raise DescriptionError(f"{path}: the file is not named after the charset")
        members = [self._member(member) for member in description["members"]]
        not_read_back = {int(text, 16) for text in description.get("not_read_back", [])}
        return Charset(description["name"], path.stem, description["codec"], members,
                       not_read_back)

    def _member(self, member: str | dict[str, Any]) -> Member:
        """A member is the name of a subset, or that and further one-way tables."""
        if isinstance(member, str):
            member = {"subset": member}
        subset = self.subset(member["subset"])
        further = [self._one_way_table(name) for name in member.get("one_way", [])]
        return Member(subset, subset.one_way + further)

    def subset(self, base: str) -> Subset:
        """A character set by its name in lower case."""
        if base not in self._subsets:
            path = self._root / "rules/subsets" / f"{base}.toml"
            description = _load(path, {"name", "width", "language"},
                                {"table", "one_way", "one_way_width"})
            if base != description["name"].lower():
                raise DescriptionError(f"{path}: the file is not named after the subset")
            table = None
            if "table" in description:
                table = Table(base, self._pairs(description["table"]))
            width = description["width"]
            self._subsets[base] = Subset(
                description["name"], base, width, description["language"], table,
                [self._one_way_table(name) for name in description.get("one_way", [])],
                description.get("one_way_width", width))
        return self._subsets[base]

    def _one_way_table(self, name: str) -> Table:
        if name not in self._one_way:
            description = _load(self._root / "rules/one_way" / f"{name}.toml", {"table"}, set())
            self._one_way[name] = Table(f"one_way.{name}", self._pairs(description["table"]))
        return self._one_way[name]

    def _pairs(self, sources: list[dict[str, Any]]) -> list[Pair]:
        """Puts the lines of a table together from its sources, in order."""
        pairs: list[Pair] = []
        for source in sources:
            added = int(source.get("add", "0"), 16)
            lines = without(self._source_pairs(source), source.get("except", []))
            pairs += [(code + added, character) for code, character in lines]
        return pairs

    def _source_pairs(self, source: dict[str, Any]) -> Iterable[Pair]:
        """The lines of one source as they stand there."""
        if "facts" in source:
            lines = map(parse_pair, read_facts(self._root / "facts" / source["facts"]))
            return limited(lines, source["bytes"]) if "bytes" in source else lines
        if "ranges" in source:
            return self._ranges(source)
        if "pairs" in source:
            return [parse_pair(line) for line in source["pairs"]]
        if "one_way" in source:
            return self._one_way_table(source["one_way"]).pairs
        if "characters" in source:
            return zip(codes_of(source), itertools.count(int(source["characters"], 16)))
        if "characters_from_code" in source:
            return self._characters_from_code(source)
        raise DescriptionError(f"none of the kinds of source: {source}")

    def _ranges(self, source: dict[str, Any]) -> Iterator[Pair]:
        """The codes of a fact file whose lines are ranges of codes and a first character."""
        for line in read_facts(self._root / "facts" / source["ranges"]):
            codes, character = line.split()
            yield from zip(codes_of({"codes": codes, "bytes": source["bytes"]}),
                           itertools.count(int(character, 16)))

    def _characters_from_code(self, source: dict[str, Any]) -> Iterator[Pair]:
        """Codes that no other set has, each for the character so far above it."""
        taken = {code for base in source.get("unless_in", [])
                 if (table := self.subset(base).table) for code, _ in table.pairs}
        above = int(source["characters_from_code"], 16)
        return ((code, code + above) for code in codes_of(source) if code not in taken)


def _load(path: Path, required: set[str], optional: set[str]) -> dict[str, Any]:
    """Loads a description and checks its keys."""
    if not path.is_file():
        raise DescriptionError(f"{path}: no such description")
    try:
        description = toml_subset.load(path)
    except ValueError as error:
        raise DescriptionError(f"{path}: {error}") from error
    keys = description.keys()
    if not required <= keys <= required | optional:
        raise DescriptionError(f"{path}: keys {sorted(keys)}, expected {sorted(required)} "
                               f"and possibly {sorted(optional)}")
    return description


# Checks.


def check_table(table: Table, width: int) -> None:
    """Checks that the library can hold every line."""
    if not table.pairs:
        raise DescriptionError(f"{table.base}: an empty table")
    seen = set()
    for code, character in table.pairs:
        if code >= 1 << 8 * width:
            raise DescriptionError(f"{table.base}: code {code:X} needs more than {width} bytes")
        if character > 0x10FFFF or 0xD800 <= character <= 0xDFFF:
            raise DescriptionError(f"{table.base}: U+{character:04X} is no character")
        if (code == 0) != (character == 0):
            raise DescriptionError(f"{table.base}: {code:04X} {character:04X}: 0 means none")
        if code in seen:
            raise DescriptionError(f"{table.base}: code {code:04X} has two characters")
        seen.add(code)


def check_one_way(member: Member) -> None:
    """Checks that one-way tables lead to codes of the set, from characters not in it."""
    assert member.subset.table is not None
    codes = {code for code, _ in member.subset.table.pairs}
    characters = {character for _, character in member.subset.table.pairs}
    for table in member.one_way:
        seen = set()
        for code, character in table.pairs:
            if code not in codes:
                raise DescriptionError(f"{table.base}: {code:04X} is not in {member.subset.name}")
            if character in characters or character in seen:
                raise DescriptionError(f"{table.base}: U+{character:04X} already has a code")
            seen.add(character)


def check_subset(subset: Subset) -> None:
    """Checks a subset and its table."""
    if subset.width not in range(1, 5):
        raise DescriptionError(f"{subset.name}: {subset.width} bytes a code")
    if subset.table:
        check_table(subset.table, subset.width)
    elif subset.one_way:
        raise DescriptionError(f"{subset.name}: one-way tables without a table")


def check_charset(charset: Charset) -> None:
    """Checks a charset and its members."""
    if charset.codec not in CODECS:
        raise DescriptionError(f"{charset.name}: no codec {charset.codec}")
    if not charset.members:
        raise DescriptionError(f"{charset.name}: no members")
    for member in charset.members:
        if member.subset.table is None:
            if len(charset.members) > 1:
                raise DescriptionError(
                    f"{charset.name}: {member.subset.name} takes every character, so it must be "
                    "the only member")
        else:
            check_one_way(member)
            for table in member.one_way:
                check_table(table, member.subset.one_way_width)
    lost = {character for _, character in unwritten(charset)}
    if lost != charset.not_read_back:
        raise DescriptionError(
            f"{charset.name}: these come back as another character, or are listed and do not: "
            f"{[f'{character:04X}' for character in sorted(lost ^ charset.not_read_back)]}")


def unwritten(charset: Charset) -> Iterator[Pair]:
    """Lines whose character no member would write as a code that reads as the character."""
    written: dict[int, int] = {}
    for member in charset.members:
        if member.subset.table is None:
            return
        readable = dict(member.subset.table.pairs)
        one_way = {character: readable[code]
                   for table in reversed(member.one_way) for code, character in table.pairs}
        own = {character: readable[code] for code, character in member.subset.table.pairs}
        for character, read in (one_way | own).items():
            written.setdefault(character, read)
    for member in charset.members:
        assert member.subset.table is not None
        for code, character in member.subset.table.pairs:
            if written[character] != character:
                yield code, character


def check_distinct_ids(kind: str, names: Iterable[str]) -> None:
    """Checks that the library can tell the names apart, from all names with fixed ids too."""
    owners = {identifier: name for name, identifier in BUILT_IN_IDS.items()}
    for name in names:
        if not name.isascii() or len(name) > 259:
            raise DescriptionError(f"{kind} {name}: not a name the library can hold")
        owner = owners.setdefault(name_to_id(name), name.lower())
        if owner != name.lower():
            raise DescriptionError(f"{kind}s {owner} and {name} share the id {name_to_id(name)}")


def check_entities(charset: Charset, names: list[str]) -> None:
    """Checks that a search for an entity name cannot stop at another."""
    for name, other in itertools.permutations(names, 2):
        if other.endswith(name):
            raise DescriptionError(f"{charset.name}: entity {name} is the ending of {other}")


def check_rule_text(name: str, text: str) -> None:
    """Checks what the rule reader cannot cope with."""
    if not text.isascii():
        raise DescriptionError(f"{name}: a character that is not ASCII")
    if "--" in re.sub(r"<!--.*?-->", "", text, flags=re.DOTALL):
        raise DescriptionError(f"{name}: two hyphens outside a comment")
    if any(comment.count("--") != 2 for comment in re.findall(r"<!--.*?-->", text, re.DOTALL)):
        raise DescriptionError(f"{name}: two hyphens inside a comment")


# Files of the directory.


def subset_file(subset: Subset) -> str:
    """The name of a subset's rule file."""
    return f"set.{subset.base}.xml"


def subset_entity(subset: Subset) -> str:
    """The entity that stands for a subset's rule file."""
    return f"set.{subset.base}"


def table_entity(table: Table) -> str:
    """The entity that stands for a table."""
    return f"table.{table.base}"


XML_DECLARATION = '<?xml version="1.0" encoding="UTF-16"?>'
ORIGIN = "Made by charsets/generate.py; changes belong into the descriptions it reads."


def charset_text(charset: Charset) -> str:
    """The rule file of a charset: declarations of all that it refers to, then its members."""
    entities: dict[str, str] = {}
    for member in charset.members:
        entities[subset_entity(member.subset)] = subset_file(member.subset)
        own = [member.subset.table] if member.subset.table else []
        for table in own + member.one_way:
            entities[table_entity(table)] = f"{table.base}.txt"
    check_entities(charset, list(entities))
    lines = [XML_DECLARATION, f"<!-- {ORIGIN} -->", "<!DOCTYPE charset ["]
    lines += [f'<!ENTITY {name} SYSTEM "{file}">' for name, file in entities.items()]
    lines += ["]>", "<charset>", f"<name>{charset.name}</name>",
              f'<rule construle="const{charset.codec}" destrule="dest{charset.codec}"/>']
    for member in charset.members:
        lines.append(f"<baseset>&{subset_entity(member.subset)};")
        lines += [f'<dstable bytenum="{member.subset.one_way_width:X}">&{table_entity(table)};'
                  "</dstable>" for table in member.one_way]
        lines.append("</baseset>")
    lines.append("</charset>")
    return "\n".join(lines) + "\n"


def subset_text(subset: Subset) -> str:
    """The rule file of a subset."""
    lines = [XML_DECLARATION, f"<!-- {ORIGIN} -->", "<subseta>", f"<name>{subset.name}</name>",
             f'<lang domain="{subset.language}"/>', f'<code bytenum="{subset.width}"/>']
    if subset.table:
        lines.append(f"<srtable>&{table_entity(subset.table)};</srtable>")
    lines.append("</subseta>")
    return "\n".join(lines) + "\n"


def table_text(table: Table) -> str:
    """A table: lines of code and character, and an empty line at the end."""
    lines = ['<table encoding="UTF-16">', f"<{ORIGIN}>", "<code, character>"]
    lines += [f"{code:04X} {character:04X}" for code, character in table.pairs]
    return "\n".join(lines) + "\n\n"


def compiled_table(table: Table) -> bytes:
    """The compiled form: two 32-bit numbers a line, least significant byte first."""
    numbers = list(itertools.chain.from_iterable(table.pairs))
    return struct.pack(f"<{len(numbers)}I", *numbers)


def utf16(text: str) -> bytes:
    """Text as the library reads it: a byte-order mark, UTF-16, lines ended by CR LF."""
    return b"\xff\xfe" + text.replace("\n", "\r\n").encode("utf-16-le")


def directory_files(charsets: list[Charset]) -> dict[str, bytes]:
    """All files of the directory by name."""
    members = [member for charset in charsets for member in charset.members]
    subsets = {member.subset.base: member.subset for member in members}
    tables = {table.base: table for subset in subsets.values() if (table := subset.table)}
    tables |= {table.base: table for member in members for table in member.one_way}
    rules = {f"{charset.base}.xml": charset_text(charset) for charset in charsets}
    rules |= {subset_file(subset): subset_text(subset) for subset in subsets.values()}
    for name, text in rules.items():
        check_rule_text(name, text)
    files = {name: utf16(text) for name, text in rules.items()}
    for table in tables.values():
        files[f"{table.base}.txt"] = utf16(table_text(table))
        files[f"{table.base}.cmp"] = compiled_table(table)
    if len(files) != len(rules) + 2 * len(tables):
        raise DescriptionError("two files share a name")
    files[PACKED_FILE] = packed_directory(charsets, files, tables)
    for name in files:
        if not re.fullmatch(r"[a-z0-9._-]+", name):
            raise DescriptionError(f"{name}: not a lower-case file name")
    return files


def packed_directory(charsets: list[Charset], files: dict[str, bytes],
                     tables: dict[str, Table]) -> bytes:
    """All of the directory in one file, with charsets and subsets in the order in which the
    library comes upon them: by the names of the charsets' files, and as these name them."""
    ordered = sorted(charsets, key=lambda charset: f"{charset.base}.xml")
    members = [member for charset in ordered for member in charset.members]
    subsets = list({member.subset.base: member.subset for member in members}.values())
    bases = list(tables)
    packed = pack.Pack()
    for subset in subsets:
        if subset.table:
            file = bases.index(subset.table.base)
            packed.add_table(file, subset.table.pairs, first_is_key=True, width=4)
            packed.add_table(file, subset.table.pairs, first_is_key=False, width=subset.width)
    one_way = {(table.base, member.subset.one_way_width) for member in members
               for table in member.one_way}
    for base, width in sorted(one_way):
        packed.add_table(bases.index(base), tables[base].pairs, first_is_key=False, width=width)
    return packed.bytes(
        {name: content for name, content in files.items() if name.endswith(".xml")},
        [pack.PackedFile(f"{base}.txt", len(files[f"{base}.txt"]), table.pairs)
         for base, table in tables.items()],
        [pack.PackedSubset(subset.name, subset.language, subset.width,
                           bases.index(subset.table.base) if subset.table else None)
         for subset in subsets],
        [pack.PackedCharset(charset.name, charset.codec,
                            [(subsets.index(member.subset),
                              [(bases.index(table.base), member.subset.one_way_width)
                               for table in member.one_way])
                             for member in charset.members])
         for charset in ordered])


def check(charsets: list[Charset]) -> None:
    """Checks all that must be true of the directory as a whole."""
    subsets = {member.subset.base: member.subset for charset in charsets
               for member in charset.members}
    check_distinct_ids("charset", (charset.name for charset in charsets))
    check_distinct_ids("subset", (subset.name for subset in subsets.values()))
    for subset in subsets.values():
        check_subset(subset)
    for charset in charsets:
        check_charset(charset)


def write_directory(files: dict[str, bytes], directory: Path) -> None:
    """Writes what has changed, and removes generated files that no longer belong there."""
    directory.mkdir(parents=True, exist_ok=True)
    for path in directory.iterdir():
        if path.suffix in GENERATED_SUFFIXES and path.name not in files:
            path.unlink()
    for name, content in files.items():
        path = directory / name
        if not path.is_file() or path.read_bytes() != content:
            path.write_bytes(content)


def main() -> None:
    """Generates the directory named on the command line."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("directory", type=Path,
                        help="where the files go; any other .xml, .txt and .cmp file is removed")
    parser.add_argument("--descriptions", type=Path, default=HERE,
                        help="the directory that holds rules/ and facts/")
    arguments = parser.parse_args()
    try:
        charsets = Descriptions(arguments.descriptions).charsets()
        check(charsets)
        write_directory(directory_files(charsets), arguments.directory)
    except DescriptionError as error:
        sys.exit(f"generate.py: {error}")


if __name__ == "__main__":
    main()
