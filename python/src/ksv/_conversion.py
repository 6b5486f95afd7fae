"""Conversion in one call and as a stream, and what it would lose."""
from __future__ import annotations

import json
from typing import TYPE_CHECKING, Any

from ksv._buffers import ROOM_OF_NEW, Buffer, taken_bytes, view
from ksv._errors import check, error_of
from ksv._native import ffi, lib
from ksv._options import Filled, Keywords, Options
from ksv._plans import converted, plain_plan, plain_plans, plan_for

if TYPE_CHECKING:
    from typing_extensions import Unpack


def convert(data: Buffer, source: str, target: str, **options: Unpack[Keywords]) -> bytes:
    """Converts a text from one charset to another.

    `data` is anything with a buffer: bytes, bytearray, memoryview, mmap, array or a NumPy array; it is not
    copied. Charsets are named as people name them ("sjis", "cp932", "utf8").

    invalid, unmappable
        What is done about bytes that are no text, and characters that the target lacks: "fail" (the default),
        "skip", "replace", "hex" (&#x3042;), "decimal" (&#12354;), "escape", "percent"; for characters also
        "look-alike" and "built-in"; or a function that is given a `Problem` and answers with a text, or with
        None for "fail". invalid_text and unmappable_text are what "replace" writes.
    newline
        Line ends of what is written: "keep", "lf", "crlf" or "cr".
    mark, byte_order
        The byte-order mark of Unicode forms: "drop", "add" or "keep"; and their order: "little" or "big".
    normalize
        "nfc", "nfd", "nfkc", "nfkd" or "composed".
    widths
        "full-katakana" or "half-katakana", "full-ascii" or "half-ascii", with commas between.
    profile
        The convention by which codes stand for characters: "windows", "jis", "web" or "iconv-glibc".

    Raises `InvalidText`, `TruncatedText`, `UnmappableCharacter`, `UnknownCharset` or `BadArgument`.
    """
    if options:
        plan = plan_for(source, target, Options(**options))
    else:
        plan = plain_plans.get((source, target)) or plain_plan(source, target)
    return converted(plan, data) if type(data) is bytes else plan.convert(data)


class Converter:
    """A text on its way, in pieces of any size. What comes out does not depend on where they were cut.

        converter = Converter("iso-2022-jp", "utf-8")
        for piece in pieces:
            write(converter.feed(piece))
        write(converter.finish())

    The keywords are those of `convert`. One thread uses it at a time.
    """

    def __init__(self, source: str, target: str, **options: Unpack[Keywords]) -> None:
        self._plan = plan_for(source, target, Options(**options))
        handle, self._error = ffi.new("ksv_converter**"), ffi.new("ksv_error*")
        check(lib.ksv_converter_new(self._plan.handle, handle, self._error), self._error)
        self._handle = ffi.gc(handle[0], lib.ksv_converter_free)
        self._room = ffi.new("char[]", ROOM_OF_NEW)
        self._used, self._written = ffi.new("size_t*"), ffi.new("size_t*")
        self.before_problem = b""
        """What the piece that could not be converted gave in front of the problem."""

    def feed(self, data: Buffer) -> bytes:
        """Takes a piece, and gives what can be written by now."""
        with view(data) as source:
            return self._feed(ffi.cast("char*", source), len(source))

    def _feed(self, start: Any, length: int) -> bytes:
        done, pieces = 0, []
        while True:
            result = lib.ksv_converter_feed(self._handle, start + done, length - done, self._used,
                                            self._room, ROOM_OF_NEW, self._written, self._error)
            done += self._used[0]
            pieces.append(ffi.unpack(self._room, self._written[0]))
            if result != lib.KSV_NO_ROOM:
                return self._joined(result, pieces)

    def finish(self) -> bytes:
        """The text is complete: what waited for more, and what closes it. Then the next text may begin."""
        pieces = []
        while True:
            result = lib.ksv_converter_finish(self._handle, self._room, ROOM_OF_NEW, self._written,
                                              self._error)
            pieces.append(ffi.unpack(self._room, self._written[0]))
            if result != lib.KSV_NO_ROOM:
                written = self._joined(result, pieces)
                self.reset()
                return written

    def _joined(self, result: int, pieces: list[bytes]) -> bytes:
        written = pieces[0] if len(pieces) == 1 else b"".join(pieces)
        if result == lib.KSV_OK:
            return written
        self.before_problem = written
        if self._plan.asker is not None:
            self._plan.asker.raise_noted()
        raise error_of(self._error)

    def reset(self) -> None:
        """Begins with a new text."""
        lib.ksv_converter_reset(self._handle)
        self.before_problem = b""

    @property
    def counts(self) -> tuple[int, int]:
        """Bytes that are no text, and characters that were left out or written otherwise, since the text
        began; `finish` begins the next one."""
        counts = ffi.new("ksv_counts*")
        lib.ksv_converter_counts(self._handle, counts)
        return int(counts.invalid_bytes), int(counts.unmappable)


def report(data: Buffer, source: str, target: str, **options: Unpack[Keywords]) -> dict[str, Any]:
    """What a conversion would lose, each thing once with its count and first place, as
    `ksv convert --report=json` tells it. The keywords are those of `convert`, without functions."""
    filled = Filled(Options(**options))
    if filled.asker is not None:
        raise ValueError("a report asks nobody")
    handle, error = ffi.new("ksv_report**"), ffi.new("ksv_error*")
    check(lib.ksv_report_new(source.encode("utf-8"), target.encode("utf-8"), filled.value, handle,
                             error), error)
    seen = ffi.gc(handle[0], lib.ksv_report_free)
    with view(data) as text:
        check(lib.ksv_report_feed(seen, text, len(text), error), error)
    check(lib.ksv_report_finish(seen, error), error)
    told = lib.ksv_report_json(seen)
    if told == ffi.NULL:
        raise MemoryError
    found: dict[str, Any] = json.loads(taken_bytes(told, len(ffi.string(told))))
    return found
