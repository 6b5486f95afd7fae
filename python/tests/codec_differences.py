"""Where the codecs of `ksv` answer otherwise than Python's own: made and compared here.

    python codec_differences.py             prints the table
    python codec_differences.py --write     writes codec_differences.txt beside this file

A line is a codec of Python, the charset it is compared with, "decode" or "encode", the bytes or character, what Python
answers, and what ksv answers; "-": an error. Tried are all sequences of one and two bytes, those of three that begin
with 8F in EUC-JP, all characters of the first plane and the ideographs of the second, each by itself. Neighbours that only
one of the two knows are one line, and so are those that both know in the same order: first and last with ".." between. So are
all that Python writes in three or eight bytes, where the others take two.
"""
from __future__ import annotations

import itertools
import sys
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

import ksv

TABLE = Path(__file__).with_name("codec_differences.txt")
# By Python's names; those of ksv where they differ.
ONE_BYTE = {
    **{f"iso8859_{part}": f"iso-8859-{part}" for part in (*range(1, 12), *range(13, 17))},
    **{f"cp{page}": f"windows-{page}" for page in range(1250, 1259)},
    **{name: name for name in ("ascii", "cp037", "cp273", "cp437", "cp500", "cp737", "cp775", "cp850", "cp852",
                               "cp855", "cp857", "cp858", "cp860", "cp861", "cp862", "cp863", "cp864", "cp865",
                               "cp866", "cp869", "cp874", "cp1140", "koi8_r", "koi8_u", "tis_620")},
    "mac_roman": "macintosh", "mac_cyrillic": "x-mac-cyrillic",
}
TWO_BYTES = {
    "cp932": "cp932", "shift_jis": "shift_jis", "shift_jis_2004": "shift_jis-2004", "euc_jp": "euc-jp",
    "euc_jis_2004": "euc-jis-2004", "euc_kr": "euc-kr", "cp949": "cp949", "johab": "johab", "gbk": "gbk",
    "big5": "big5", "cp950": "cp950", "big5hkscs": "big5-hkscs", "gb18030": "gb18030",
}
GROUP = 64


@dataclass
class Row:
    kind: str
    number: int  # among those that were tried
    thing: str   # as hexadecimal digits
    python: str
    ksv: str


END = Row("", 0, "", "", "")


def decoded(data: bytes, codec: str) -> str:
    try:
        return " ".join(f"U+{ord(character):04X}" for character in data.decode(codec))
    except UnicodeError:
        return "-"


def encoded(character: str, codec: str) -> str:
    try:
        return character.encode(codec).hex().upper()
    except UnicodeError:
        return "-"


def sequences(name: str) -> Iterator[bytes]:
    for first in range(0x100):
        yield bytes([first])
    if name in TWO_BYTES:
        for number in range(0x8000, 0x10000):
            yield number.to_bytes(2, "big")
    if name == "euc_jp":
        for number in range(0xA1A1, 0xFFFF):
            yield b"\x8f" + number.to_bytes(2, "big")


def characters(name: str) -> Iterator[str]:
    for code in range(0x10000):
        if not 0xD800 <= code < 0xE000:
            yield chr(code)
    if name in TWO_BYTES:
        for code in range(0x20000, 0x2A6E0):
            yield chr(code)


def _is_same(characters_of_group: str, name: str, own: str) -> bool:
    """Whether one call for many tells that none differs, which is the usual case."""
    return characters_of_group.encode(name, "replace") == characters_of_group.encode(own, "replace")


def _groups(everything: Iterator[str]) -> Iterator[str]:
    while group := "".join(itertools.islice(everything, GROUP)):
        yield group


def rows(name: str, own: str) -> Iterator[Row]:
    for number, data in enumerate(sequences(name)):
        python, ours = decoded(data, name), decoded(data, own)
        if python != ours and not (len(data) == 2 and _is_two(data, python, ours, name, own)):
            yield Row("decode", number, data.hex().upper(), python, ours)
    number = 0
    for group in _groups(characters(name)):
        if _is_same(group, name, own):
            number += len(group)
            continue
        for character in group:
            number += 1
            python, ours = encoded(character, name), encoded(character, own)
            if python != ours:
                yield Row("encode", number, f"U+{ord(character):04X}", python, ours)


def _is_two(data: bytes, python: str, ours: str, name: str, own: str) -> bool:
    """Whether two bytes are two characters, whose difference was told of each by itself."""
    singles = [decoded(data[:1], name), decoded(data[1:], name)]
    own_singles = [decoded(data[:1], own), decoded(data[1:], own)]
    def joined(parts: list[str]) -> str:
        return "-" if "-" in parts else " ".join(parts)
    return joined(singles) == python and joined(own_singles) == ours


def _number(answer: str) -> int:
    return int(answer.replace("U+", "").replace(" ", ""), 16)


def _is_long(answer: str) -> bool:
    """Three bytes or eight: Korean syllables as jamo, and JIS X 0212, whose thousands would hide the rest."""
    return len(answer) in (6, 16)


def _follows(row: Row, last: Row) -> bool:
    """Whether both belong to one line: only one of the two has them, or both in the same order."""
    if row.kind == last.kind == "encode" and _is_long(row.python) and _is_long(last.python):
        return len(row.python) == len(last.python)
    if row.kind != last.kind or row.number != last.number + 1:
        return False
    if "-" in (row.python, row.ksv):
        return (row.python == "-", row.ksv == "-") == (last.python == "-", last.ksv == "-")
    return "-" not in (last.python, last.ksv) and all(
        _number(now) == _number(before) + 1
        for now, before in ((row.python, last.python), (row.ksv, last.ksv)))


def _line(name: str, charset: str, first: Row, last: Row) -> str:
    def span(one: str, other: str) -> str:
        return one if one == other else f"{one}..{other}"
    return "  ".join([name, charset, first.kind, span(first.thing, last.thing),
                      span(first.python, last.python), span(first.ksv, last.ksv)])


def lines(name: str, charset: str) -> Iterator[str]:
    first = last = None
    for row in [*rows(name, f"ksv-{charset}"), END]:
        if first is None or last is None:
            first = row
        elif not _follows(row, last):
            yield _line(name, charset, first, last)
            first = row
        last = row


def table(names: dict[str, str]) -> list[str]:
    ksv.register_codecs()
    return [line for name, charset in sorted(names.items()) for line in lines(name, charset)]


if __name__ == "__main__":
    everything = table({**ONE_BYTE, **TWO_BYTES})
    if sys.argv[1:] == ["--write"]:
        TABLE.write_text("".join(line + "\n" for line in everything), encoding="utf-8")
    else:
        print("\n".join(everything))
