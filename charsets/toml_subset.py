"""Reads the part of TOML that descriptions are written in. Python 3.10 has no reader of its own,
and the build asks for nothing beside Python.

Keys without quotes; texts without escapes in either quotes, whole numbers, true and false, lists and
inline tables over any number of lines; `[[name]]` for the next of several tables; remarks.
"""

from __future__ import annotations

import re
from collections.abc import Iterator
from pathlib import Path
from typing import Any

TOKEN = re.compile(r'(?P<blank>[ \t\r\n]+|#[^\n]*)|(?P<text>"[^"\\\n]*"|\'[^\'\n]*\')|'
                   r'(?P<word>[A-Za-z0-9_-]+)|(?P<sign>[][{}=,])')
END = ""


class Reader:
    """Goes through the tokens of one text."""

    def __init__(self, text: str) -> None:
        self._tokens = list(_tokens(text))
        self._next = 0

    def document(self) -> dict[str, Any]:
        """All that there is."""
        document: dict[str, Any] = {}
        table = document
        while self._peek() != END:
            if self._peek() == "[":
                table = {}
                document.setdefault(self._heading(), []).append(table)
            else:
                self._entry(table)
        return document

    def _peek(self) -> str:
        return self._tokens[self._next][0]

    def _take(self, *wanted: str) -> str:
        token, line = self._tokens[self._next]
        if wanted and token not in wanted:
            raise ValueError(f"line {line}: {token or 'the end'} instead of {' or '.join(wanted)}")
        self._next += 1
        return token

    def _key(self) -> str:
        token, line = self._tokens[self._next]
        if not re.fullmatch(r"[A-Za-z0-9_-]+", token):
            raise ValueError(f"line {line}: {token or 'the end'} instead of a key")
        return self._take()

    def _heading(self) -> str:
        for _ in range(2):
            self._take("[")
        name = self._key()
        for _ in range(2):
            self._take("]")
        return name

    def _entry(self, table: dict[str, Any]) -> None:
        line = self._tokens[self._next][1]
        key = self._key()
        if key in table:
            raise ValueError(f"line {line}: {key} a second time")
        self._take("=")
        table[key] = self._value()

    def _value(self) -> Any:
        token, line = self._tokens[self._next]
        if token == "[":
            return self._list()
        if token == "{":
            return self._inline_table()
        self._take()
        if token.startswith(('"', "'")):
            return token[1:-1]
        if token in ("true", "false"):
            return token == "true"
        if re.fullmatch(r"0|[1-9][0-9]*", token):
            return int(token)
        raise ValueError(f"line {line}: {token or 'the end'} instead of a value")

    def _list(self) -> list[Any]:
        items = []
        self._take("[")
        while self._peek() != "]":
            items.append(self._value())
            if self._peek() != "]":
                self._take(",", "]")
        self._take("]")
        return items

    def _inline_table(self) -> dict[str, Any]:
        table: dict[str, Any] = {}
        self._take("{")
        while self._peek() != "}":
            self._entry(table)
            if self._peek() != "}":
                self._take(",", "}")
        self._take("}")
        return table


def _tokens(text: str) -> Iterator[tuple[str, int]]:
    """Each with its line; the end is one as well."""
    place, line = 0, 1
    while place < len(text):
        token = TOKEN.match(text, place)
        if token is None:
            raise ValueError(f"line {line}: {text[place:place + 20].splitlines()[0]}")
        if token.lastgroup != "blank":
            yield token.group(), line
        line += token.group().count("\n")
        place = token.end()
    yield END, line


def load(path: Path) -> dict[str, Any]:
    """What a file says; ValueError where it is written otherwise."""
    return Reader(path.read_text(encoding="utf-8")).document()
