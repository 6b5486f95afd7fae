"""What goes wrong, as exceptions that tell where and why."""
from __future__ import annotations

from typing import Any, NoReturn, Optional

from ksv._native import ffi, lib


class Error(Exception):
    """Something that the library could not do.

    `reason` is its message, `result` the name of the result ("KSV_INVALID"). Where the error is about a place
    of a text, `offset` is its first byte, `line` and `column` count from 1, and `data` has the bytes concerned
    (the first 16 of them); elsewhere `line` is 0. `code_point` is a character that could not be written.
    """

    def __init__(self, reason: str, result: str = "", offset: int = 0, line: int = 0, column: int = 0,
                 data: bytes = b"", code_point: Optional[int] = None, length: int = 0) -> None:
        super().__init__(reason)
        self.reason = reason
        self.result = result
        self.offset = offset
        self.line = line
        self.column = column
        self.data = data
        self.code_point = code_point
        self.length = length

    def __reduce__(self) -> tuple[Any, ...]:
        """Errors travel between the processes of a cluster."""
        return type(self), (self.reason, self.result, self.offset, self.line, self.column,
                            self.data, self.code_point, self.length)


class TextError(Error, ValueError):
    """About the text that was to be converted."""


class InvalidText(TextError):
    """Bytes that are no character of the source charset."""


class TruncatedText(TextError):
    """The text ends inside a character."""


class UnmappableCharacter(TextError):
    """A character that the target charset does not have."""


class UnknownCharset(Error, LookupError):
    """A name that names no charset that can be read or written."""


class BadArgument(Error, ValueError):
    """An option that cannot be followed."""


class SystemFailure(Error, OSError):
    """The charset directory, or a file, cannot be read."""


class NoDocument(Error, ValueError):
    """What is not a compound document."""


class Damaged(Error, ValueError):
    """A part of a document that cannot be read."""


_KINDS: dict[int, type[Error]] = {
    lib.KSV_INVALID: InvalidText,
    lib.KSV_TRUNCATED: TruncatedText,
    lib.KSV_UNMAPPABLE: UnmappableCharacter,
    lib.KSV_TOO_LONG: TextError,
    lib.KSV_UNKNOWN_CHARSET: UnknownCharset,
    lib.KSV_BAD_ARGUMENT: BadArgument,
    lib.KSV_SYSTEM: SystemFailure,
    lib.KSV_NO_DOCUMENT: NoDocument,
    lib.KSV_DAMAGED: Damaged,
}


def text_of(chars: Any) -> str:
    """A text of the library, in UTF-8."""
    return bytes(ffi.string(chars)).decode("utf-8", "replace")


def optional_text(chars: Any) -> Optional[str]:
    return None if chars == ffi.NULL else text_of(chars)


def error_of(error: Any) -> Exception:
    """The exception for a `ksv_error`."""
    if error.result == lib.KSV_NO_MEMORY:
        return MemoryError(text_of(error.message))
    shown = min(error.byte_count, lib.KSV_BYTES_SHOWN)
    code_point = None if error.code_point == lib.KSV_NO_CODE_POINT else int(error.code_point)
    return _KINDS.get(error.result, Error)(
        text_of(error.message), text_of(lib.ksv_result_name(error.result)), int(error.offset),
        int(error.line), int(error.column), bytes(ffi.buffer(error.bytes)[0:shown]), code_point,
        int(error.byte_count))


def raise_error(error: Any) -> NoReturn:
    raise error_of(error)


def check(result: int, error: Any) -> None:
    if result != lib.KSV_OK:
        raise error_of(error)
