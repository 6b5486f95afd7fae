"""Compound documents: their streams as files, and their properties as values of Python."""
from __future__ import annotations

import datetime
import decimal
import io
import os
import threading
import uuid
from collections.abc import Iterator
from typing import Any, NamedTuple, Optional, Union

from ksv._buffers import Buffer, view
from ksv._errors import check, error_of, optional_text, text_of
from ksv._native import ffi, lib

Path = Union[str, "os.PathLike[str]"]
Value = Union[None, int, float, bool, str, bytes, datetime.datetime, datetime.timedelta,
              decimal.Decimal, uuid.UUID, tuple[Any, ...]]
"""What a property may be."""

_ENTRIES = {lib.KSV_ENTRY_ROOT: "root", lib.KSV_ENTRY_STORAGE: "storage",
            lib.KSV_ENTRY_STREAM: "stream"}
_DAMAGES = {lib.KSV_DAMAGE_HEADER: "header", lib.KSV_DAMAGE_CUT_SHORT: "cut short",
            lib.KSV_DAMAGE_SECTOR_TABLE: "sector table", lib.KSV_DAMAGE_CHAIN: "chain",
            lib.KSV_DAMAGE_CYCLE: "cycle", lib.KSV_DAMAGE_SHARED: "shared",
            lib.KSV_DAMAGE_SIZE: "size", lib.KSV_DAMAGE_ENTRY: "entry",
            lib.KSV_DAMAGE_LINK: "link", lib.KSV_DAMAGE_ROOT: "root", lib.KSV_DAMAGE_ORDER: "order"}
_FIRST_TIME = datetime.datetime(1601, 1, 1, tzinfo=datetime.timezone.utc)
_FIRST_DATE = datetime.datetime(1899, 12, 30)
_UNITS_OF_MICROSECOND = 10  # times are told in 100 ns


class Entry(NamedTuple):
    """An entry of the tree of a document."""

    path: str
    """Names with "/" between; that of the root is empty."""
    name: str
    kind: str
    """"root", "storage" or "stream"."""
    size: int
    """Of a stream, in bytes, as the directory claims it."""
    created: Optional[datetime.datetime]
    modified: Optional[datetime.datetime]
    class_id: uuid.UUID
    is_orphan: bool
    """Whether it is in use, and in no storage's tree."""


class DocumentKind(NamedTuple):
    """Which kind of document it is."""

    name: Optional[str]
    """"word", "excel", "mail", ...; None where nothing is known."""
    description: Optional[str]
    confidence: float
    has_macros: bool
    is_encrypted: bool
    is_template: Optional[bool]


class Damage(NamedTuple):
    """Something that is wrong with a document."""

    kind: str
    path: Optional[str]
    offset: int
    message: str


class Property(NamedTuple):
    """A property of a document."""

    id: int
    key: Optional[str]
    """Of those that all kinds of documents have: "title", "lastSavedBy"."""
    name: Optional[str]
    """The one that users have given it."""
    value: Value
    note: Optional[str]
    """What is to be known beside the value."""
    offset: int


class PropertySection(NamedTuple):
    """A list of properties of one format."""

    path: str
    format: str
    format_name: Optional[str]
    """"summary", "documentSummary", "userDefined"; None of others."""
    code_page: Optional[int]
    properties: list[Property]


def _time(units: int) -> Union[int, datetime.datetime]:
    """A time behind the year 9999 stays a number of units."""
    try:
        return _FIRST_TIME + datetime.timedelta(microseconds=units // _UNITS_OF_MICROSECOND)
    except OverflowError:
        return units


def _told_time(units: int) -> Optional[datetime.datetime]:
    time = _time(units) if units else None
    return time if isinstance(time, datetime.datetime) else None


def _date(days: float) -> Union[float, datetime.datetime]:
    try:
        return _FIRST_DATE + datetime.timedelta(days=days)
    except (OverflowError, ValueError):
        return days


def _text(value: Any) -> str:
    return bytes(ffi.buffer(value.text, value.text_length)).decode("utf-8", "replace")


def _bytes(value: Any) -> bytes:
    return bytes(ffi.buffer(value.bytes, value.byte_count)) if value.byte_count else b""


def _decimal(value: Any) -> Value:
    return decimal.Decimal(_text(value)) if value.text_length else _bytes(value)


def _class_id(value: Any) -> Value:
    return uuid.UUID(bytes_le=_bytes(value)) if value.byte_count == 16 else _bytes(value)


_SIMPLE = {
    lib.KSV_VALUE_NOTHING: lambda value: None,
    lib.KSV_VALUE_INTEGER: lambda value: int(value.integer),
    lib.KSV_VALUE_NATURAL: lambda value: int(value.natural),
    lib.KSV_VALUE_REAL: lambda value: float(value.real),
    lib.KSV_VALUE_BOOLEAN: lambda value: bool(value.integer),
    lib.KSV_VALUE_TEXT: _text,
    lib.KSV_VALUE_TIME: lambda value: _time(int(value.natural)),
    lib.KSV_VALUE_DURATION: lambda value: datetime.timedelta(
        microseconds=int(value.natural) // _UNITS_OF_MICROSECOND),
    lib.KSV_VALUE_DATE: lambda value: _date(float(value.real)),
    lib.KSV_VALUE_DECIMAL: _decimal,
    lib.KSV_VALUE_CLASS_ID: _class_id,
    lib.KSV_VALUE_CLIPBOARD: _bytes,
    lib.KSV_VALUE_BYTES: _bytes,
}


def _value(properties: Any, prop: Any) -> Value:
    value = prop.value
    if value.form != lib.KSV_VALUE_SEQUENCE:
        simple: Value = _SIMPLE.get(value.form, _bytes)(value)
        return simple
    element, elements = ffi.new("ksv_property_value*"), []
    for index in range(value.element_count):
        if not lib.ksv_properties_element(properties, prop, index, element):
            break
        elements.append(_SIMPLE.get(element.form, _bytes)(element))
    return tuple(elements)


def _property(properties: Any, prop: Any) -> Property:
    return Property(int(prop.id), optional_text(prop.key), optional_text(prop.name),
                    _value(properties, prop), optional_text(prop.note), int(prop.offset))


def _sections(properties: Any) -> list[PropertySection]:
    """The library's properties are given back."""
    found = []
    try:
        for number in range(lib.ksv_properties_section_count(properties)):
            section = lib.ksv_properties_section(properties, number)
            listed = [_property(properties, lib.ksv_properties_at(properties, number, index))
                      for index in range(section.property_count)]
            found.append(PropertySection(text_of(section.path), text_of(section.format),
                                         optional_text(section.format_name),
                                         int(section.code_page) or None, listed))
        return found
    finally:
        lib.ksv_properties_free(properties)


def read_properties(data: Buffer) -> list[PropertySection]:
    """The sections of a property set, of its bytes."""
    properties, error = ffi.new("ksv_properties**"), ffi.new("ksv_error*")
    with view(data) as source:
        check(lib.ksv_properties_read(source, len(source), properties, error), error)
    return _sections(properties[0])


class Document:
    """An open document, of a path or of bytes.

        with ksv.Document("letter.doc") as document:
            print(document.properties["title"], document.kind.name)
            body = document.open("WordDocument").read()

    Damaged ones are read as far as they go. Threads may use it in turn; they wait for each other.
    """

    def __init__(self, source: Union[Path, Buffer]) -> None:
        handle, self._error = ffi.new("ksv_document**"), ffi.new("ksv_error*")
        self._view: Any = None
        self._lock = threading.RLock()
        if isinstance(source, (str, os.PathLike)):
            name = os.fspath(source).encode("utf-8", "surrogateescape")
            result = lib.ksv_document_open(name, handle, self._error)
        else:
            # The collector must not find a memoryview in a cycle with a view of it.
            self._view = view(bytes(source) if isinstance(source, memoryview) else source)
            result = lib.ksv_document_open_memory(self._view, len(self._view), handle, self._error)
        self._handle: Any = handle[0]
        if result != lib.KSV_OK:
            self.close()
            raise error_of(self._error)
        self._handle = ffi.gc(self._handle, lib.ksv_document_close)

    def close(self) -> None:
        """May be called again. Streams that are open cannot be read any more."""
        with self._lock:
            handle, self._handle = self._handle, None
            if handle:
                ffi.release(handle)
            if self._view is not None:
                ffi.release(self._view)
                self._view = None

    def __enter__(self) -> Document:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def _open_handle(self) -> Any:
        if not self._handle:
            raise ValueError("the document is closed")
        return self._handle

    @property
    def entries(self) -> list[Entry]:
        """All of them: the root first, each storage in front of what is in it."""
        with self._lock:
            count = lib.ksv_document_entry_count(self._open_handle())
            return [self._entry(index) for index in range(count)]

    def _entry(self, index: int) -> Entry:
        entry = lib.ksv_document_entry(self._handle, index)
        return Entry(self._path(index), text_of(entry.name), _ENTRIES[entry.kind], int(entry.size),
                     _told_time(int(entry.created)), _told_time(int(entry.modified)),
                     uuid.UUID(bytes_le=bytes(ffi.buffer(entry.class_id))), bool(entry.is_orphan))

    def _path(self, index: int) -> str:
        path = ffi.new("char**")
        check(lib.ksv_document_path(self._handle, index, path, self._error), self._error)
        try:
            return text_of(path[0])
        finally:
            lib.ksv_free(path[0])

    def __iter__(self) -> Iterator[str]:
        """The paths of the streams."""
        return (entry.path for entry in self.entries if entry.kind == "stream")

    def _find(self, path: str) -> int:
        index = ffi.new("uint32_t*")
        check(lib.ksv_document_find(self._open_handle(), path.encode("utf-8"), index, self._error),
              self._error)
        return int(index[0])

    def __contains__(self, path: str) -> bool:
        with self._lock:
            return bool(self._find(path) != lib.KSV_NO_ENTRY)

    def open(self, path: str) -> io.BufferedReader:
        """A stream as a file for reading. Raises KeyError where there is none, also of a storage."""
        with self._lock:
            index = self._find(path)
            if (index == lib.KSV_NO_ENTRY or
                    lib.ksv_document_entry(self._handle, index).kind != lib.KSV_ENTRY_STREAM):
                raise KeyError(path)
            return io.BufferedReader(_Stream(self, index))

    def _read(self, index: int, offset: int, buffer: Any) -> int:
        with self._lock, ffi.from_buffer("char[]", buffer, require_writable=True) as room:
            length = ffi.new("size_t*")
            result = lib.ksv_document_read(self._open_handle(), index, offset, room, len(room),
                                           length, self._error)
            # What is sound comes first; the next reading is told.
            if result != lib.KSV_OK and not (result == lib.KSV_DAMAGED and length[0]):
                raise error_of(self._error)
            return int(length[0])

    @property
    def kind(self) -> DocumentKind:
        """Which kind of document it is."""
        kind = ffi.new("ksv_document_kind*")
        with self._lock:
            check(lib.ksv_document_get_kind(self._open_handle(), kind, self._error), self._error)
        return DocumentKind(optional_text(kind.name), optional_text(kind.description),
                            float(kind.confidence), bool(kind.has_macros), bool(kind.is_encrypted),
                            None if kind.is_template < 0 else bool(kind.is_template))

    def sections(self, all_sets: bool = False) -> list[PropertySection]:
        """The property sets: the two that all kinds of documents have, or every stream that begins as one."""
        properties = ffi.new("ksv_properties**")
        scope = lib.KSV_PROPERTIES_ALL if all_sets else lib.KSV_PROPERTIES_KNOWN
        with self._lock:
            check(lib.ksv_document_properties(self._open_handle(), scope, properties, self._error),
                  self._error)
        return _sections(properties[0])

    @property
    def properties(self) -> dict[str, Value]:
        """The properties by their keys ("title", "created") and by the names that users gave them. Of two with one
        name the first is told; `sections` has all."""
        found: dict[str, Value] = {}
        for section in self.sections():
            for prop in section.properties:
                name = prop.key or prop.name
                if name is not None:
                    found.setdefault(name, prop.value)
        return found

    def check(self) -> list[Damage]:
        """Looks at all that can be wrong with the structure, and tells what is."""
        with self._lock:
            check(lib.ksv_document_check(self._open_handle(), self._error), self._error)
            return self.damages

    @property
    def damages(self) -> list[Damage]:
        """What was come upon so far."""
        found, damage = [], ffi.new("ksv_damage*")
        with self._lock:
            for index in range(lib.ksv_document_damage_count(self._open_handle())):
                lib.ksv_document_damage(self._handle, index, damage)
                path = None if damage.entry == lib.KSV_NO_ENTRY else self._path(damage.entry)
                found.append(Damage(_DAMAGES.get(damage.kind, "?"), path, int(damage.offset),
                                    text_of(damage.message)))
        return found


class _Stream(io.RawIOBase):
    """A stream of a document. It keeps the document."""

    def __init__(self, document: Document, index: int) -> None:
        self._document, self._index, self._place = document, index, 0
        self._size = int(lib.ksv_document_entry(document._handle, index).size)

    def readable(self) -> bool:
        return True

    def seekable(self) -> bool:
        return True

    def readinto(self, buffer: Any) -> int:
        length = self._document._read(self._index, self._place, buffer) if len(buffer) else 0
        self._place += length
        return length

    def seek(self, offset: int, whence: int = io.SEEK_SET) -> int:
        base = {io.SEEK_SET: 0, io.SEEK_CUR: self._place, io.SEEK_END: self._size}[whence]
        if base + offset < 0:
            raise ValueError("a place in front of the beginning")
        self._place = base + offset
        return self._place
