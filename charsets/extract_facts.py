#!/usr/bin/env python3
"""Takes the mapping facts under facts/ from the charmaps of a Debian machine.

Run it by hand, on a machine with the package `locales`; the build reads only
what it wrote. Every file is taken from one charmap of the C library and held
against what others say about the same codes. A code on which they differ must be
listed here with the reason for what was taken; an unlisted difference, or a
listed one that is gone, stops the run.
"""

from __future__ import annotations

import argparse
import dataclasses
import gzip
import hashlib
import re
import subprocess
import sys
import unicodedata
from collections.abc import Callable, Mapping
from datetime import datetime, timezone
from pathlib import Path

# The tests ask the same converters, by the same scripts.
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "repertoire"))
import iconv_reference  # noqa: E402
import icu_reference  # noqa: E402
import perl_reference  # noqa: E402
import reference_answers  # noqa: E402
import stateless_codes  # noqa: E402

CHARMAPS = Path("/usr/share/i18n/charmaps")
CHARMAP_LINE = re.compile(
    r"^(?:%IRREVERSIBLE%)?<U([0-9A-F]+)>\s+((?:/x[0-9a-f]{2})+)(?:\s|$)")
CHARMAP_RANGE = re.compile(r"^<U[0-9A-F]+>\.\.<U[0-9A-F]+>\s+((?:/x[0-9a-f]{2})+)")

# A code of a set to its character.
CodeMap = dict[int, int]


@dataclasses.dataclass(frozen=True)
class Witness:
    """Another source for the same codes: how it reads a code, and where it may differ."""

    name: str
    decode: Callable[[int], int | None]
    differences: Mapping[int, str]


@dataclasses.dataclass(frozen=True)
class FactFile:
    """One file under facts/; the source is a charmap, or the kind of another and a name in it."""

    name: str
    title: str
    source: str
    taken: list[str]
    select: Callable[[bytes], int | None]
    expected_count: int
    witnesses: list[Witness]
    is_taken: Callable[[int, int], bool] = lambda code, character: True


def read_charmap(name: str) -> list[tuple[bytes, int]]:
    """Returns the byte sequences and characters of a charmap, irreversible lines included."""
    entries = []
    inside = False
    with gzip.open(CHARMAPS / f"{name}.gz", "rt", encoding="utf-8") as charmap:
        for line in charmap:
            if line.startswith("CHARMAP"):
                inside = True
            elif line.startswith("END CHARMAP"):
                break
            elif inside and (match := CHARMAP_RANGE.match(line)):
                # Ranges are of four-byte codes, which are taken by the rule they follow.
                if len(match.group(1)) != len("/x81/x30/x81/x30"):
                    sys.exit(f"{name}: a range, which is not handled: {line}")
            elif inside and (match := CHARMAP_LINE.match(line)):
                sequence = bytes.fromhex(match.group(2).replace("/x", ""))
                entries.append((sequence, int(match.group(1), 16)))
    return entries


def read_codec(codec: str) -> list[tuple[bytes, int]]:
    """Returns the sequences of one or two bytes that are one character of a Python codec."""
    entries = []
    for length in (1, 2):
        for value in range(256**length):
            sequence = value.to_bytes(length, "big")
            character = decode_one(codec, sequence)
            if character is not None:
                entries.append((sequence, character))
    return entries


def decode_one(codec: str, sequence: bytes) -> int | None:
    """The character of a byte sequence, if it is one in the codec."""
    try:
        text = sequence.decode(codec)
    except UnicodeDecodeError:
        return None
    return ord(text) if len(text) == 1 else None


def read_converter(decode: reference_answers.Decoder, shape: str) -> list[tuple[bytes, int]]:
    """Returns the sequences of a shape that are one character of a converter."""
    return [(sequence, ord(text))
            for sequence in reference_answers.candidates(shape, lambda code: bool(decode(code)))
            if len(text := decode(sequence) or "") == 1]


def ebcdic(decode: reference_answers.Decoder) -> reference_answers.Decoder:
    """A converter of EBCDIC with shifts, as one of codes that need none."""
    return stateless_codes.reshaped("ebcdic", decode, lambda character: None)[0]


# The kinds of sources beside charmaps: how one is read, and what its header line says.
SOURCES: dict[str, tuple[Callable[[str], list[tuple[bytes, int]]], str]] = {
    "python": (lambda name: read_codec(name), "Python {python}, codec {name}"),
    "iconv": (lambda name: read_converter(ebcdic(iconv_reference.decoder(name)), "ebcdic"),
              "iconv {name}, Debian package libc6 {libc6} (glibc)"),
    "icu": (lambda name: read_converter(icu_reference.decoder(name), "planes"),
            "ICU {icu}, converter {name}"),
    "perl": (lambda name: read_converter(perl_reference.decoder(name), "pairs"),
             "Perl {perl}, encoding {name} of its module Encode"),
}


def titled(kind: str, name: str) -> str:
    """What a header says of a source that is no charmap."""
    versions = {"python": sys.version.split()[0], "icu": icu_reference.Icu().version}
    versions |= {package: package_version(package) for package in ("libc6", "perl")}
    return SOURCES[kind][1].format(name=name, **versions)


def read_source(source: str) -> list[tuple[bytes, int]]:
    """Returns the byte sequences and characters of a source."""
    kind, separator, name = source.partition(":")
    return SOURCES[kind][0](name) if separator else read_charmap(source)


def describe_source(source: str) -> list[str]:
    """The header lines that say where the codes are from."""
    kind, separator, name = source.partition(":")
    if separator:
        return [f"origin: {titled(kind, name)}"]
    charmap = CHARMAPS / f"{source}.gz"
    return [
        f"origin: {charmap}, Debian package locales {package_version('locales')} (glibc)",
        f"origin-sha256: {hashlib.sha256(charmap.read_bytes()).hexdigest()}",
    ]


# Row and cell arithmetic.


def shift_jis_to_jis(pair: bytes) -> int:
    """The code row * 256 + cell of a Shift_JIS byte pair; leads from F0 give rows above 7E."""
    lead, trail = pair
    index = lead - (0xC1 if lead >= 0xE0 else 0x81)
    cell = trail - (0x41 if trail >= 0x80 else 0x40)
    row = 2 * index + 0x21 + cell // 94
    return row * 256 + cell % 94 + 0x21


def jis_to_shift_jis(code: int) -> bytes:
    """The byte pair of a code; the inverse of shift_jis_to_jis."""
    row, cell = (code >> 8) - 0x21, (code & 0xFF) - 0x21
    lead = row // 2 + 0x81
    trail = cell + 0x40 + (94 if row % 2 else 0)
    return bytes([lead + (0x40 if lead >= 0xA0 else 0), trail + (trail >= 0x7F)])


def jis_to_euc(code: int) -> bytes:
    """The EUC bytes of a code; plane 2 (0x10000 added) stands behind 8F."""
    pair = (code & 0xFFFF | 0x8080).to_bytes(2, "big")
    return b"\x8f" + pair if code >= 0x10000 else pair


def euc_to_jis(sequence: bytes) -> int | None:
    """The code of a two-byte sequence of EUC, or of a three-byte one as plane 2."""
    if len(sequence) == 2 and sequence[0] >= 0xA1:
        return int.from_bytes(sequence, "big") & 0x7F7F
    if len(sequence) == 3 and sequence[0] == 0x8F:
        return 0x10000 + (int.from_bytes(sequence[1:], "big") & 0x7F7F)
    return None


# Plane 2 of JIS X 0213 in Shift_JIS-2004: lead bytes F0 to F4 by row.
PLANE_2_LEADS = {1: 0xF0, 8: 0xF0, 3: 0xF1, 4: 0xF1, 5: 0xF2, 12: 0xF2, 13: 0xF3, 14: 0xF3,
                 15: 0xF4, 78: 0xF4} | {row: 0xF5 + (row - 79) // 2 for row in range(79, 95)}


def jis_to_shift_jis_2004(code: int) -> bytes:
    """The Shift_JIS-2004 byte pair of a JIS X 0213 code."""
    if code < 0x10000:
        return jis_to_shift_jis(code)
    row, cell = (code >> 8 & 0xFF) - 0x20, (code & 0xFF) - 0x21
    trail = cell + 0x40 + (94 if row % 2 == 0 else 0)
    return bytes([PLANE_2_LEADS[row], trail + (trail >= 0x7F)])


# Witnesses.


def python_codec(codec: str, to_bytes: Callable[[int], bytes],
                 differences: Mapping[int, str]) -> Witness:
    """A codec of Python's standard library."""

    def decode(code: int) -> int | None:
        return decode_one(codec, to_bytes(code))

    return Witness(titled("python", codec), decode, differences)


def other_source(source: str, to_bytes: Callable[[int], bytes],
                 differences: Mapping[int, str] | None = None) -> Witness:
    """A converter other than Python's."""
    entries = dict(read_source(source))
    return Witness(titled(*source.split(":")), lambda code: entries.get(to_bytes(code)),
                   differences or {})


def other_charmap(name: str, to_bytes: Callable[[int], bytes],
                  differences: Mapping[int, str] | None = None) -> Witness:
    """Another charmap of the C library."""
    entries = dict(read_charmap(name))
    return Witness(f"{CHARMAPS}/{name}.gz", lambda code: entries.get(to_bytes(code)),
                   differences or {})


# What is taken.


def jis_x0212(sequence: bytes) -> int | None:
    """Selects the three-byte sequences of EUC, as row and cell codes."""
    code = euc_to_jis(sequence)
    return code - 0x10000 if code is not None and code >= 0x10000 else None


def lead_between(ranges: list[tuple[int, int]]) -> Callable[[bytes], int | None]:
    """Selects the byte pairs whose lead byte lies in one of the ranges."""

    def select(sequence: bytes) -> int | None:
        if len(sequence) == 2 and any(low <= sequence[0] <= high for low, high in ranges):
            return shift_jis_to_jis(sequence)
        return None

    return select


JIS_X0213_DIFFERENCES = {
    0x213D: "U+2014 EM DASH is the standard's own name for the character",
    0x2256: "U+FF5F is the full-width form, U+2985 a mathematical sign",
    0x2257: "U+FF60 is the full-width form, U+2986 a mathematical sign",
}
SHIFT_JIS_2004_DIFFERENCES = JIS_X0213_DIFFERENCES | {
    0x2140: "U+005C is written as the one-byte code 5C",
    0x2232: "U+007E is written as the one-byte code 7E",
}


def single_byte(code: int) -> bytes:
    """The byte of a one-byte code."""
    return bytes([code])


def one_byte_code(sequence: bytes) -> int | None:
    """Selects single bytes."""
    return sequence[0] if len(sequence) == 1 else None


# Name, charmap, Python's codec, number of codes. The two sources agree on every code.
ONE_BYTE_SETS = [
    ("iso-8859-1", "ISO-8859-1", "iso8859_1", 256),
    ("iso-8859-2", "ISO-8859-2", "iso8859_2", 256),
    ("iso-8859-3", "ISO-8859-3", "iso8859_3", 249),
    ("iso-8859-4", "ISO-8859-4", "iso8859_4", 256),
    ("iso-8859-5", "ISO-8859-5", "iso8859_5", 256),
    ("iso-8859-6", "ISO-8859-6", "iso8859_6", 211),
    ("iso-8859-7", "ISO-8859-7", "iso8859_7", 253),
    ("iso-8859-8", "ISO-8859-8", "iso8859_8", 220),
    ("iso-8859-9", "ISO-8859-9", "iso8859_9", 256),
    ("iso-8859-10", "ISO-8859-10", "iso8859_10", 256),
    ("iso-8859-11", "ISO-8859-11", "iso8859_11", 248),
    ("iso-8859-13", "ISO-8859-13", "iso8859_13", 256),
    ("iso-8859-14", "ISO-8859-14", "iso8859_14", 256),
    ("iso-8859-15", "ISO-8859-15", "iso8859_15", 256),
    ("iso-8859-16", "ISO-8859-16", "iso8859_16", 256),
    ("windows-1250", "CP1250", "cp1250", 251),
    ("windows-1251", "CP1251", "cp1251", 255),
    ("windows-1252", "CP1252", "cp1252", 251),
    ("windows-1253", "CP1253", "cp1253", 239),
    ("windows-1254", "CP1254", "cp1254", 249),
    ("windows-1255", "CP1255", "cp1255", 233),
    ("windows-1256", "CP1256", "cp1256", 256),
    ("windows-1257", "CP1257", "cp1257", 244),
    ("windows-1258", "CP1258", "cp1258", 247),
    ("koi8-r", "KOI8-R", "koi8_r", 256),
    ("koi8-u", "KOI8-U", "koi8_u", 256),
    ("ibm866", "IBM866", "cp866", 256),
    ("ibm437", "IBM437", "cp437", 256),
    ("ibm737", "CP737", "cp737", 256),
    ("ibm775", "CP775", "cp775", 256),
    ("ibm850", "IBM850", "cp850", 256),
    ("ibm852", "IBM852", "cp852", 256),
    ("ibm855", "IBM855", "cp855", 256),
    ("ibm857", "IBM857", "cp857", 253),
    ("ibm00858", "IBM858", "cp858", 256),
    ("ibm860", "IBM860", "cp860", 256),
    ("ibm861", "IBM861", "cp861", 256),
    ("ibm862", "IBM862", "cp862", 256),
    ("ibm863", "IBM863", "cp863", 256),
    ("ibm864", "IBM864", "cp864", 250),
    ("ibm865", "IBM865", "cp865", 256),
    ("ibm869", "IBM869", "cp869", 247),
    ("ibm037", "IBM037", "cp037", 256),
    ("ibm500", "IBM500", "cp500", 256),
]


def pair(code: int) -> bytes:
    """The bytes of a two-byte code."""
    return code.to_bytes(2, "big")


def pair_code(sequence: bytes) -> int | None:
    """Selects byte pairs."""
    return int.from_bytes(sequence, "big") if len(sequence) == 2 else None


# GB18030 codes to which later editions gave characters that Unicode had got meanwhile,
# in the place of private use characters. In the first edition the characters stood at
# four-byte codes, and there the private use characters have gone.
GB18030_LATER = (0xA6D9, 0xA6DA, 0xA6DB, 0xA6DC, 0xA6DD, 0xA6DE, 0xA6DF, 0xA6EC, 0xA6ED, 0xA6F3,
                 0xA8BC, 0xFE51, 0xFE52, 0xFE53, 0xFE59, 0xFE61, 0xFE66, 0xFE67, 0xFE6C, 0xFE6D,
                 0xFE76, 0xFE7E, 0xFE90, 0xFE91, 0xFEA0)


def two_byte_files() -> list[FactFile]:
    """The files of the Chinese and Korean sets."""
    hkscs_2008 = {code: "HKSCS-2008 added it" for code in (*range(0x877A, 0x877F),
                                                           *range(0x87A1, 0x87E0))}
    later = {code: "a private use character in the first edition" for code in GB18030_LATER}
    return [
        FactFile("gbk.txt", "GBK", "GBK", ["The byte pairs."], pair_code, 21791,
                 [python_codec("gbk", pair, {})]),
        FactFile("cp949.txt", "Code page 949", "CP949", ["The byte pairs."], pair_code, 17048,
                 [python_codec("cp949", pair, {})]),
        FactFile("cp950.txt", "Code page 950", "python:cp950",
                 ["The byte pairs. The C library's charmap BIG5 differs from the code page in",
                  "row C6 and others, which hold private use characters there, and is not",
                  "compared."], pair_code, 13752, []),
        FactFile("big5_hkscs.txt", "Big5-HKSCS", "BIG5-HKSCS",
                 ["The byte pairs. Four that stand for a base and a combining mark (8862, 8864,",
                  "88A3, 88A5) are not here."], pair_code, 18459,
                 [python_codec("big5hkscs", pair, hkscs_2008)]),
        FactFile("gb18030_two_byte.txt", "GB18030, byte pairs", "GB18030",
                 ["The byte pairs, with the characters of the latest edition."], pair_code, 23940,
                 [python_codec("gb18030", pair, later)]),
        FactFile("johab.txt", "Johab", "JOHAB", ["The byte pairs."], pair_code, 17049,
                 [python_codec("johab", pair, {0xD9E8: "KS X 1001 got it in 2002"}),
                  other_source("perl:johab", pair, {0xD9E8: "KS X 1001 got it in 2002"})]),
    ]


def plane_code(sequence: bytes) -> int | None:
    """Selects what stands for a plane of CNS 11643 and a pair: four bytes, or a pair of plane 1."""
    if len(sequence) == 2:
        return 0x8EA10000 + int.from_bytes(sequence, "big")
    return int.from_bytes(sequence, "big") if len(sequence) == 4 else None


def euc_tw_bytes(code: int) -> bytes:
    """The shortest bytes of a code of four."""
    return (code if code >> 16 != 0x8EA1 else code & 0xFFFF).to_bytes(
        2 if code >> 16 == 0x8EA1 else 4, "big")


# What the C library's EUC-TW and ICU's, which has the planes as they were in 2007, read otherwise.
CNS_DIFFERENCES = {
    **{0x8EA10000 + pair: "a sign of plane 1 of which there are two that look alike" for pair in (
        0xA1A6, 0xA1B6, 0xA1B8, 0xA1B9, 0xA1EA, 0xA1EB, 0xA2C2, 0xA2C3, 0xA2D3, 0xA2D4, 0xA2DD,
        0xA2DE, 0xA4BF)},
    **{code: "the character moved to another code in 2007" for code in (
        0x8EA3E4DF, 0x8EA3E4ED, 0x8EA3E5C2, 0x8EA3E5CC, 0x8EA3E5DB, 0x8EA3E6B1, 0x8EA3E6F0,
        0x8EA3E6F7, 0x8EA4A6A5, 0x8EAFA8F2)},
    **{code: "another character since 2007" for code in (
        0x8EA4A4EC, 0x8EA4A6B9, 0x8EA4C2FA, 0x8EA4E8CF, 0x8EA5EFD4)},
}


def is_private(character: int) -> bool:
    """Whether it is of a private use area."""
    return 0xE000 <= character <= 0xF8FF or character >= 0xF0000


def euc_tw_files() -> list[FactFile]:
    """The file of the C library's EUC-TW, and that of what it lacks."""
    known = {plane_code(sequence): character for sequence, character in read_charmap("EUC-TW")}
    characters = set(known.values())
    return [
        FactFile("cns_11643.txt", "CNS 11643, as EUC-TW has it in four bytes", "EUC-TW",
                 ["All planes. Codes of plane 1, which are written as pairs, have 8EA1 in front."],
                 lambda sequence: plane_code(sequence) if len(sequence) == 4 else None, 55442,
                 [other_source("icu:EUC-TW", euc_tw_bytes, CNS_DIFFERENCES)]),
        FactFile("cns_11643_later.txt", "CNS 11643, what the C library's EUC-TW lacks",
                 "icu:EUC-TW",
                 ["Codes without a character in the C library's EUC-TW: radicals, kana, phonetic",
                  "letters, the euro, and plane 13. Not taken are private use characters (all of",
                  "plane 12, some of planes 1 and 13), and characters that stand at another code."],
                 plane_code, 567, [],
                 lambda code, character: code not in known and character not in characters
                 and not is_private(character)),
    ]


def mac_files() -> list[FactFile]:
    """The two-byte charsets of the Macintosh."""
    taken = ["Single bytes and byte pairs that have one character. Those of several are described",
             "where the set is (rules/subsets)."]
    return [FactFile(f"{name}.txt", name, f"perl:{encoding}", taken,
                     lambda sequence: int.from_bytes(sequence, "big"), count, [])
            for name, encoding, count in (("x-mac-japanese", "MacJapanese", 7331),
                                          ("x-mac-chinesetrad", "MacChineseTrad", 13571),
                                          ("x-mac-chinesesimp", "MacChineseSimp", 7603))]


def ebcdic_pair(sequence: bytes) -> int | None:
    """Selects the pairs of EBCDIC."""
    return int.from_bytes(sequence[1:], "big") if len(sequence) == 3 else None


def ebcdic_files() -> list[FactFile]:
    """The one-byte and the two-byte sets of Japanese EBCDIC."""
    def icu(name: str, to_bytes: Callable[[int], bytes]) -> Witness:
        entries = dict(read_converter(ebcdic(icu_reference.decoder(name)), "ebcdic"))
        return Witness(titled("icu", name), lambda code: entries.get(to_bytes(code)), {})

    def three(code: int) -> bytes:
        return stateless_codes.PAIR_LEAD + pair(code)

    return [
        FactFile("ibm_290.txt", "EBCDIC Japanese, one byte, katakana first", "iconv:IBM930",
                 ["The single bytes."], one_byte_code, 226, [icu("ibm-930", single_byte)]),
        FactFile("ibm_1027.txt", "EBCDIC Japanese, one byte, Latin first", "iconv:IBM939",
                 ["The single bytes."], one_byte_code, 226, [icu("ibm-939", single_byte)]),
        FactFile("ibm_300.txt", "EBCDIC Japanese, two bytes", "iconv:IBM930",
                 ["The byte pairs; those of IBM939 are the same."], ebcdic_pair, 11635,
                 [icu("ibm-930", three), icu("ibm-939", three)]),
        FactFile("ibm_16684.txt", "EBCDIC Japanese, two bytes, with JIS X 0213", "iconv:IBM1390",
                 ["The byte pairs; those of IBM1399 are the same. 25 that stand for two characters",
                  "each (ECB5 to ECCD) are not here."], ebcdic_pair, 22077,
                 [icu("ibm-1390", three), icu("ibm-1399", three)]),
    ]


# Four-byte codes count like the digits of a clock.
FOUR_BYTE_DIGITS = (range(0x81, 0xFF), range(0x30, 0x3A), range(0x81, 0xFF), range(0x30, 0x3A))


def four_byte_code(index: int) -> int:
    """The index-th four-byte code."""
    code = 0
    for place, digits in reversed(list(enumerate(FOUR_BYTE_DIGITS))):
        index, digit = divmod(index, len(digits))
        code |= digits[digit] << 8 * (3 - place)
    return code


def write_four_byte_facts(directory: Path, date: str) -> None:
    """Writes the four-byte codes of the Basic Multilingual Plane, as ranges."""
    first_edition: CodeMap = {}
    for index in range(39420):
        code = four_byte_code(index)
        character = decode_one("gb18030", code.to_bytes(4, "big"))
        if character is None:
            sys.exit(f"gb18030_four_byte.txt: {code:08X} has no character")
        first_edition[code] = character
    latest = dict((int.from_bytes(sequence, "big"), character)
                  for sequence, character in read_charmap("GB18030") if len(sequence) == 2)
    moved = {latest[code]: decode_one("gb18030", pair(code)) for code in GB18030_LATER}
    mapping = {code: moved.get(character) or character for code, character in first_edition.items()}
    ranges: list[list[int]] = []
    for index in range(39420):
        code = four_byte_code(index)
        if ranges and mapping[code] == ranges[-1][2] + index - ranges[-1][3]:
            ranges[-1][1] = code
        else:
            ranges.append([code, code, mapping[code], index])
    body = "".join(f"{first:08X}-{last:08X} {character:04X}\n"
                   for first, last, character, _ in ranges)
    write_file(directory / "gb18030_four_byte.txt", [
        "GB18030, four-byte codes of the Basic Multilingual Plane",
        "",
        *describe_source("python:gb18030"),
        f"date: {date}",
        *LICENCE,
        "taken:",
        "  All codes up to 8431A439. Where a later edition gave a byte pair the character of a",
        "  four-byte code, the private use character that the pair had is at that code.",
        "line: first and last code, character of the first (hexadecimal)",
        f"codes: {len(mapping)}",
    ], body)
    print(f"gb18030_four_byte.txt: {len(mapping)} codes")


def one_byte_files() -> list[FactFile]:
    """The files of the one-byte sets."""
    files = [FactFile(f"{name}.txt", name.upper() if name[0] != "w" else name, charmap,
                      ["All bytes that have a character."], one_byte_code, count,
                      [python_codec(codec, single_byte, {})])
             for name, charmap, codec, count in ONE_BYTE_SETS]
    no_control = "the standard, TIS 620-2533, has no codes here"
    return files + [
        FactFile("tis-620.txt", "TIS-620", "TIS-620", ["All bytes that have a character."],
                 one_byte_code, 215, [python_codec("tis_620", single_byte, {})]),
        FactFile("windows-874.txt", "windows-874", "python:cp874",
                 ["All bytes that have a character."], one_byte_code, 225,
                 [other_charmap("TIS-620", single_byte, {
                     code: no_control for code in (0x80, 0x85, *range(0x91, 0x98), 0xA0)})]),
        FactFile("ibm273.txt", "IBM273", "IBM273", ["All bytes."], one_byte_code, 256,
                 [other_source("icu:ibm-273", single_byte),
                  python_codec("cp273", single_byte, {
                      0xBC: "U+00AF, which two of three have, is the macron of ISO 8859-1"})]),
        FactFile("ibm1047.txt", "IBM1047", "IBM1047",
                 ["All bytes. 15 is U+0085 and 25 U+000A, as in the other sets of EBCDIC."],
                 one_byte_code, 256,
                 [other_source("icu:ibm-1047", single_byte),
                  other_source("perl:cp1047", single_byte, {
                      0x15: "for systems whose files have lines that end in 15",
                      0x25: "for systems whose files have lines that end in 15"})]),
        FactFile("ibm01140.txt", "IBM01140", "python:cp1140", ["All bytes."], one_byte_code, 256,
                 [other_charmap("IBM037", single_byte, {0x9F: "the euro is what this set is for"}),
                  other_source("icu:ibm-1140", single_byte)]),
        FactFile("viscii.txt", "VISCII", "VISCII",
                 ["All bytes. Six controls (02, 05, 06, 14, 19, 1E) are letters."],
                 one_byte_code, 256, [other_source("perl:viscii", single_byte)]),
        FactFile("macintosh.txt", "macintosh", "python:mac_roman",
                 ["All bytes."], one_byte_code, 256,
                 [other_charmap("MACINTOSH", single_byte, {
                     0xC6: "U+2206 is the increment sign that the system's fonts have",
                     0xF0: "U+F8FF is the private use character that is commonly taken for the sign"})]),
        FactFile("x-mac-cyrillic.txt", "x-mac-cyrillic", "python:mac_cyrillic",
                 ["All bytes."], one_byte_code, 256,
                 [other_charmap("MAC-CYRILLIC", single_byte, {
                     0xA2: "U+0490 since the revision that joined the Ukrainian variant",
                     0xFF: "U+20AC since the euro replaced the currency sign"})]),
    ]


def fact_files() -> list[FactFile]:
    """Lists the files under facts/."""
    cp932 = [python_codec("cp932", jis_to_shift_jis, {})]
    return [
        FactFile(
            "jis_x0208_windows.txt", "JIS X 0208 as Windows maps it", "WINDOWS-31J",
            ["The byte pairs with lead bytes 81 to 84, 88 to 9F and E0 to EA, as row and cell",
             "codes. Other mappings of the standard (the C library's SHIFT_JIS, EUC-JP) give",
             "2140 U+005C, 2141 U+301C, 2142 U+2016, 215D U+2212, 2171 U+00A2, 2172 U+00A3,",
             "224C U+00AC and 213D U+2014 or U+2015; Windows' characters are taken, since",
             "that is what text of this encoding was written with. The others are written",
             "to the same codes by rules/one_way/jis_x0208_standard.toml."],
            lead_between([(0x81, 0x84), (0x88, 0x9F), (0xE0, 0xEA)]), 6879, cp932),
        FactFile(
            "nec_row_13.txt", "NEC special characters, row 13", "WINDOWS-31J",
            ["The byte pairs with lead byte 87, lines marked irreversible included: nine of",
             "them are mathematical signs that JIS X 0208 has as well."],
            lead_between([(0x87, 0x87)]), 83, cp932),
        FactFile(
            "ibm_extension.txt", "IBM extension characters", "WINDOWS-31J",
            ["The byte pairs with lead bytes FA to FC, lines marked irreversible included, as",
             "the codes that the arithmetic of Shift_JIS gives: rows 93 to 97, hexadecimal."],
            lead_between([(0xFA, 0xFC)]), 388, cp932),
        FactFile(
            "nec_selected_ibm.txt", "IBM extension characters as NEC selected them",
            "WINDOWS-31J",
            ["The byte pairs with lead bytes ED and EE, lines marked irreversible included."],
            lead_between([(0xED, 0xEE)]), 374, cp932),
        FactFile(
            "jis_x0212.txt", "JIS X 0212-1990", "EUC-JP",
            ["The three-byte sequences, as row and cell codes."],
            jis_x0212, 6067,
            [other_charmap("EUC-JP-MS", lambda code: jis_to_euc(code + 0x10000),
                           {0x2243: "U+00A6 is the standard's character, U+FFE4 Windows'"}),
             python_codec("euc_jp", lambda code: jis_to_euc(code + 0x10000),
                          {0x2237: "U+007E is ASCII's; both charmaps have the full-width form"})]),
        FactFile(
            "jis_x0213.txt", "JIS X 0213:2004", "EUC-JISX0213",
            ["Both planes; 10000 is added to the codes of plane 2. The 25 codes that stand for",
             "a base character and a combining mark (2477 to 247B, 2577 to 257E, 2678, 2B44,",
             "2B48 to 2B4F, 2B65, 2B66) are not here: the converter composes them itself."],
            euc_to_jis, 11233 - 25,
            [other_charmap("SHIFT_JISX0213", jis_to_shift_jis_2004),
             python_codec("euc_jis_2004", jis_to_euc, JIS_X0213_DIFFERENCES),
             python_codec("shift_jis_2004", jis_to_shift_jis_2004,
                          SHIFT_JIS_2004_DIFFERENCES)]),
    ]


def extract(facts: FactFile) -> CodeMap:
    """Selects the codes of one file from its charmap."""
    mapping: CodeMap = {}
    for sequence, character in read_source(facts.source):
        code = facts.select(sequence)
        if code is None or not facts.is_taken(code, character):
            continue
        if code in mapping:
            sys.exit(f"{facts.name}: code {code:04X} appears twice in {facts.source}")
        mapping[code] = character
    if len(mapping) != facts.expected_count:
        sys.exit(f"{facts.name}: {len(mapping)} codes, not {facts.expected_count}")
    return mapping


def compare(facts: FactFile, mapping: CodeMap, witness: Witness) -> list[str]:
    """Holds the codes against one witness and returns header lines that say what came out."""
    found = {code: witness.decode(code) for code, character in mapping.items()
             if witness.decode(code) != character}
    if found.keys() != witness.differences.keys():
        listed = sorted(witness.differences)
        sys.exit(f"{facts.name} against {witness.name}: differs at "
                 f"{[f'{code:04X}' for code in sorted(found)]}, listed {listed}")
    if not found:
        return [f"checked: {witness.name}: the same"]
    lines = [f"checked: {witness.name}: the same but for"]
    for code, other in sorted(found.items()):
        theirs = "nothing" if other is None else f"U+{other:04X}"
        lines.append(f"  {code:04X} U+{mapping[code]:04X}, there {theirs}: "
                     f"{witness.differences[code]}")
    return lines


def describe(character: int) -> str:
    """What a reader sees beside a code: unified ideographs themselves, names of all others."""
    name = unicodedata.name(chr(character), "")
    return chr(character) if name.startswith("CJK UNIFIED IDEOGRAPH-") else name


def package_version(package: str) -> str:
    """The version of an installed Debian package."""
    query = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package],
                           capture_output=True, text=True, check=True)
    return query.stdout


LICENCE = [
    "licence: a list of facts (which code stands for which character), in which no",
    "  copyright is claimed; the charmap's form and remarks were not taken over",
]


def write_file(path: Path, header: list[str], body: str) -> None:
    """Writes a header, an empty line, and the lines, whose hash ends the header."""
    stated = f"sha256: {hashlib.sha256(body.encode()).hexdigest()} (of the lines below)"
    text = "".join(f"# {line}".rstrip() + "\n" for line in [*header, stated])
    path.write_text(f"{text}\n{body}", encoding="utf-8")


def write_facts(facts: FactFile, directory: Path, date: str) -> None:
    """Writes one file with a line for every code."""
    mapping = extract(facts)
    body = "".join(f"{code:04X} {character:04X} {describe(character)}\n"
                   for code, character in sorted(mapping.items()))
    header = [
        facts.title,
        "",
        *describe_source(facts.source),
        f"date: {date}",
        *LICENCE,
        "taken:",
        *(f"  {line}" for line in facts.taken),
    ]
    for witness in facts.witnesses:
        header += compare(facts, mapping, witness)
    header += [
        "line: code, character (both hexadecimal), the character or its name",
        f"codes: {len(mapping)}",
    ]
    write_file(directory / facts.name, header, body)
    print(f"{facts.name}: {len(mapping)} codes")


def main() -> None:
    """Writes all files."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--directory", type=Path, default=Path(__file__).parent / "facts")
    parser.add_argument("--date", default=datetime.now(timezone.utc).strftime("%Y-%m-%d"),
                        help="the date that the headers name")
    parser.add_argument("--only", nargs="+", metavar="FILE", help="these and no others")
    arguments = parser.parse_args()
    for facts in (fact_files() + one_byte_files() + two_byte_files() + euc_tw_files()
                  + ebcdic_files() + mac_files()):
        if arguments.only and facts.name not in arguments.only:
            continue
        write_facts(facts, arguments.directory, arguments.date)
    if not arguments.only:
        write_four_byte_facts(arguments.directory, arguments.date)


if __name__ == "__main__":
    main()
