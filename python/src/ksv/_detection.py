"""In which charset a text is written."""
from __future__ import annotations

import os
from typing import Any, NamedTuple, Optional, Union

from ksv._buffers import Buffer, taken_bytes, view
from ksv._errors import check, optional_text, text_of
from ksv._native import ffi, lib

_CONTENTS = {lib.KSV_CONTENT_TEXT: "text", lib.KSV_CONTENT_EMPTY: "empty",
             lib.KSV_CONTENT_BINARY: "binary", lib.KSV_CONTENT_UNKNOWN: "unknown"}
_LINE_ENDS = {lib.KSV_LINE_ENDS_NONE: "none", lib.KSV_LINE_ENDS_LF: "lf",
              lib.KSV_LINE_ENDS_CRLF: "crlf", lib.KSV_LINE_ENDS_CR: "cr",
              lib.KSV_LINE_ENDS_MIXED: "mixed"}


class Guess(NamedTuple):
    """A charset that a text may be in."""

    charset: str
    """The narrowest that holds all of the text."""
    decode_as: Optional[str]
    """What to convert from; None where the library cannot read it."""
    language: str
    """As BCP 47 has it, "ja"; "" where nothing tells."""
    confidence: float
    """Of the texts given 0.9, nine in ten are right."""
    reason: str
    """In words."""
    invalid_offset: Optional[int]
    """The first byte that is no text in `decode_as`."""
    line_end: str
    """"none", "lf", "crlf", "cr" or "mixed"."""
    mark_length: int
    """Bytes of the byte-order mark."""


class Detection(list[Guess]):
    """The guesses, the best one first, and what holds of the text whatever its charset."""

    def __init__(self, guesses: list[Guess], content: str, settled: bool, length: int,
                 misread_as: Optional[str]) -> None:
        super().__init__(guesses)
        self.content = content
        """"text", "empty", "binary" or "unknown"."""
        self.settled = settled
        """Whether more of the same text would not change the first guess."""
        self.length = length
        """How many bytes were looked at."""
        self.misread_as = misread_as
        """UTF-8 was taken for this charset, and written as UTF-8 once more."""

    def __reduce__(self) -> tuple[Any, ...]:
        return Detection, (list(self), self.content, self.settled, self.length, self.misread_as)


class Segment(NamedTuple):
    """A part of a text, of whole lines, in one charset."""

    offset: int
    length: int
    charset: Optional[str]
    decode_as: Optional[str]
    confidence: float


class Repair(NamedTuple):
    """A text that had been written as UTF-8 twice, and what was done about it."""

    text: bytes
    repaired: int
    lost: int
    ambiguous: int
    misread_as: Optional[str]


Path = Union[str, "os.PathLike[str]"]


class _Hints:
    """A `ksv_hints`, and what it points to."""

    def __init__(self, languages: Optional[str], charsets: Optional[str], declared: Optional[str],
                 file_name: Optional[Path]) -> None:
        self.value = ffi.NULL
        if languages is charsets is declared is file_name is None:
            return
        self.value = ffi.new("ksv_hints*")
        self.value.size = ffi.sizeof("ksv_hints")
        name = None if file_name is None else os.fspath(file_name)
        given = {"languages": languages, "charsets": charsets, "declared": declared,
                 "file_name": name}
        self._kept = {field: ffi.new("char[]", text.encode("utf-8", "surrogateescape"))
                      for field, text in given.items() if text is not None}
        for field, text in self._kept.items():
            setattr(self.value, field, text)


def _guess(guess: Any) -> Guess:
    offset = int(guess.invalid_offset)
    return Guess(text_of(guess.charset), optional_text(guess.decode_as), text_of(guess.language),
                 float(guess.confidence), text_of(guess.reason),
                 None if offset == lib.KSV_NO_OFFSET else offset, _LINE_ENDS[guess.line_end],
                 int(guess.mark_length))


def _told(detection: Any) -> Detection:
    """The library's detection is given back."""
    try:
        facts = ffi.new("ksv_text_facts*")
        lib.ksv_detection_facts(detection, facts)
        guesses = [_guess(lib.ksv_detection_guess(detection, index))
                   for index in range(lib.ksv_detection_count(detection))]
        return Detection(guesses, _CONTENTS[facts.content], bool(facts.settled), int(facts.bytes),
                         optional_text(facts.misread_as))
    finally:
        lib.ksv_detection_free(detection)


def detect(data: Buffer, *, languages: Optional[str] = None, charsets: Optional[str] = None,
           declared: Optional[str] = None, file_name: Optional[Path] = None) -> Detection:
    """Finds out in which charset a text is written: guesses, the best one first.

    What is known of the text helps: `languages` that it may be in ("ja,zh-TW"), `charsets` that it may be in
    (nothing else is answered then), the charset that a header has `declared`, and its `file_name`.
    """
    hints = _Hints(languages, charsets, declared, file_name)
    detection, error = ffi.new("ksv_detection**"), ffi.new("ksv_error*")
    with view(data) as text:
        check(lib.ksv_detect(text, len(text), hints.value, detection, error), error)
    return _told(detection[0])


def detect_file(path: Path, *, languages: Optional[str] = None, charsets: Optional[str] = None,
                declared: Optional[str] = None, file_name: Optional[Path] = None) -> Detection:
    """The same of a file, of which as much is read as settles it."""
    hints = _Hints(languages, charsets, declared, file_name)
    error, detection = ffi.new("ksv_error*"), ffi.new("ksv_detection**")
    name = os.fspath(path).encode("utf-8", "surrogateescape")
    check(lib.ksv_detect_file(name, hints.value, detection, error), error)
    return _told(detection[0])


class Detector:
    """A text that comes in pieces. What is found does not depend on where they were cut."""

    def __init__(self, *, languages: Optional[str] = None, charsets: Optional[str] = None,
                 declared: Optional[str] = None, file_name: Optional[Path] = None) -> None:
        hints = _Hints(languages, charsets, declared, file_name)
        handle, self._error = ffi.new("ksv_detector**"), ffi.new("ksv_error*")
        check(lib.ksv_detector_new(hints.value, handle, self._error), self._error)
        self._handle = ffi.gc(handle[0], lib.ksv_detector_free)
        self._settled = ffi.new("int*")

    def feed(self, data: Buffer) -> bool:
        """Takes a piece. True from where on more of the same text would not change the first guess."""
        with view(data) as text:
            check(lib.ksv_detector_feed(self._handle, text, len(text), self._settled, self._error),
                  self._error)
        return bool(self._settled[0])

    def verdict(self, complete: bool = True) -> Detection:
        """On what was taken so far. complete: whether that is the whole text."""
        detection = ffi.new("ksv_detection**")
        check(lib.ksv_detector_verdict(self._handle, int(complete), detection, self._error),
              self._error)
        return _told(detection[0])


def segments(data: Buffer, *, languages: Optional[str] = None, charsets: Optional[str] = None,
             declared: Optional[str] = None, file_name: Optional[Path] = None) -> list[Segment]:
    """Finds where a text changes its charset. The segments follow each other and hold all of it."""
    hints = _Hints(languages, charsets, declared, file_name)
    error, found, count = ffi.new("ksv_error*"), ffi.new("ksv_segment**"), ffi.new("size_t*")
    with view(data) as text:
        check(lib.ksv_segments(text, len(text), hints.value, found, count, error), error)
    try:
        return [Segment(int(part.offset), int(part.length), optional_text(part.charset),
                        optional_text(part.decode_as), float(part.confidence))
                for part in ffi.unpack(found[0], count[0])] if count[0] else []
    finally:
        lib.ksv_free(found[0])


def repair(data: Buffer, misread_as: Optional[str] = None) -> Repair:
    """Undoes, line by line, that UTF-8 was taken for another charset and written as UTF-8 once more."""
    error, counts = ffi.new("ksv_error*"), ffi.new("ksv_repair_counts*")
    block, length = ffi.new("char**"), ffi.new("size_t*")
    name = ffi.NULL if misread_as is None else misread_as.encode("utf-8")
    with view(data) as text:
        check(lib.ksv_repair(name, text, len(text), block, length, counts, error), error)
    return Repair(taken_bytes(block[0], length[0]), int(counts.repaired), int(counts.lost),
                  int(counts.ambiguous), optional_text(counts.misread_as))
