"""The charsets that can be read, and what is to be known of them."""
from __future__ import annotations

from typing import Any, Optional

from ksv._buffers import Buffer, view
from ksv._errors import UnknownCharset, check, optional_text, text_of
from ksv._native import ffi, lib


class Charset:
    """A charset that can be read."""

    def __init__(self, handle: Any) -> None:
        self._handle = handle

    @property
    def name(self) -> str:
        """The usual spelling."""
        return text_of(lib.ksv_charset_name(self._handle))

    @property
    def aliases(self) -> list[str]:
        """Its other names."""
        names: list[str] = []
        while (name := lib.ksv_charset_alias(self._handle, len(names))) != ffi.NULL:
            names.append(text_of(name))
        return names

    @property
    def mime_name(self) -> Optional[str]:
        """As mail names it."""
        return optional_text(lib.ksv_charset_mime_name(self._handle))

    @property
    def web_name(self) -> Optional[str]:
        """As the Encoding Standard names it."""
        return optional_text(lib.ksv_charset_web_name(self._handle))

    @property
    def code_page(self) -> Optional[int]:
        """The number of its code page."""
        return int(lib.ksv_charset_code_page(self._handle)) or None

    @property
    def can_be_written(self) -> bool:
        """Whether texts can be written in it; some can be read only."""
        return bool(lib.ksv_charset_can_be_written(self._handle))

    @property
    def is_stateful(self) -> bool:
        """Whether what bytes mean depends on escape or shift sequences in front of them."""
        return bool(lib.ksv_charset_is_stateful(self._handle))

    @property
    def longest_character(self) -> int:
        """The most bytes that one character takes."""
        return int(lib.ksv_charset_longest_character(self._handle))

    @property
    def ranges(self) -> list[range]:
        """The code points that can be written."""
        ranges, count = ffi.new("uint32_t**"), ffi.new("size_t*")
        error = ffi.new("ksv_error*")
        check(lib.ksv_charset_repertoire(self._handle, ffi.cast("uint32_t const**", ranges), count,
                                         error), error)
        return [range(ranges[0][2 * index], ranges[0][2 * index + 1] + 1)
                for index in range(count[0])]

    def __contains__(self, character: str) -> bool:
        """Whether a character can be written."""
        return bool(lib.ksv_charset_has(self._handle, ord(character)))

    def encoded_length(self, text: str) -> int:
        """How many bytes a text takes."""
        utf8, length, error = text.encode("utf-8"), ffi.new("size_t*"), ffi.new("ksv_error*")
        check(lib.ksv_charset_encoded_length(self._handle, utf8, len(utf8), length, error), error)
        return int(length[0])

    def __repr__(self) -> str:
        return f"<ksv.Charset {self.name}>"

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Charset) and other._handle == self._handle

    def __hash__(self) -> int:
        return hash(self.name)

    def __reduce__(self) -> tuple[Any, ...]:
        return charset, (self.name,)


def charset(name: str) -> Charset:
    """By any of its names. Raises `UnknownCharset`."""
    found = lib.ksv_charset_find(name.encode("utf-8"))
    if found == ffi.NULL:
        raise UnknownCharset(f"unknown charset {name!r}", "KSV_UNKNOWN_CHARSET")
    return Charset(found)


def charsets() -> list[Charset]:
    """All that can be read, in their order."""
    found: list[Charset] = []
    while (handle := lib.ksv_charset_at(len(found))) != ffi.NULL:
        found.append(Charset(handle))
    return found


def leading_piece(data: Buffer, limit: int, charset: str) -> int:
    """How many leading bytes can be kept, at most `limit`, without a character, an escape or shift sequence or
    a CR LF cut apart."""
    piece, error = ffi.new("size_t*"), ffi.new("ksv_error*")
    with view(data) as text:
        check(lib.ksv_leading_piece(charset.encode("utf-8"), text, len(text), limit, piece, error),
              error)
    return int(piece[0])
