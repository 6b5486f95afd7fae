"""Columns of Arrow: a column of binaries becomes a column of texts in one call, and no value an object of Python.

    texts = ksv.arrow.convert(table["content"], "cp932")
"""
from __future__ import annotations

from typing import Any, Optional

import pyarrow as pa

from ksv._errors import TextError, error_of
from ksv._native import ffi, lib
from ksv._options import Options
from ksv._plans import Plan, plan_for
from ksv.files import FIELDS, Job, Result, Row, run

_TYPES = {"string": pa.string(), "double": pa.float64(), "long": pa.int64(), "binary": pa.binary()}
SCHEMA = pa.schema([(name, _TYPES[kind]) for name, kind in FIELDS.items()])
"""Of the results of `ksv.files`."""


class RowError(TextError):
    """A value that cannot be converted; `row` is its number in the column."""

    row = 0


def convert(column: Any, source: str, target: str = "utf-8", *, on_error: str = "raise",
            **options: Any) -> Any:
    """Converts a column (Array or ChunkedArray) of binary or large_binary values. Its values become strings of the same width of
    offsets where the target is UTF-8, and binaries elsewhere. A value that cannot be converted is raised as
    a `RowError`, or becomes null (`on_error="null"`). The keywords are those of `ksv.convert`, without functions."""
    if on_error not in ("raise", "null"):
        raise ValueError(f"on_error: {on_error!r} is none of raise, null")
    plan = plan_for(source, target, Options(**options))
    if plan.asker is not None:
        raise ValueError("a column asks nobody")
    is_text = "".join(filter(str.isalnum, target.lower())) == "utf8"
    if isinstance(column, pa.Array):
        return _convert_array(column, plan, is_text, on_error, 0)
    chunks, first = [], 0
    for chunk in column.chunks:
        chunks.append(_convert_array(chunk, plan, is_text, on_error, first))
        first += len(chunk)
    return pa.chunked_array(chunks, type=_type_of(column.type, is_text))


def _type_of(kind: Any, is_text: bool) -> Any:
    if pa.types.is_binary(kind) or pa.types.is_string(kind):
        return pa.string() if is_text else pa.binary()
    if pa.types.is_large_binary(kind) or pa.types.is_large_string(kind):
        return pa.large_string() if is_text else pa.large_binary()
    raise TypeError(f"a column of binaries is wanted, not of {kind}")


def _pointer(buffer: Optional[Any], offset: int = 0) -> Any:
    return ffi.NULL if buffer is None else ffi.cast("void*", buffer.address + offset)


def _convert_array(array: Any, plan: Plan, is_text: bool, on_error: str, first_row: int) -> Any:
    kind = _type_of(array.type, is_text)
    validity, offsets, data = array.buffers()
    if len(array) == 0 or offsets is None:
        return pa.array([], kind)
    column = ffi.new("ksv_column*")
    column.offset_width = 4 if kind in (pa.string(), pa.binary()) else 8
    column.data = _pointer(data)
    column.offsets = _pointer(offsets, array.offset * column.offset_width)
    column.validity, column.first_bit = _pointer(validity), array.offset
    column.rows, column.stops = len(array), on_error == "raise"
    converted = ffi.gc(ffi.new("ksv_converted_column*"), lib.ksv_column_free)
    _check(lib.ksv_column_convert(plan.handle, column, converted), converted, first_row)
    return pa.Array.from_buffers(kind, len(array), _buffers(converted, column),
                                 converted.nulls)


def _check(result: int, converted: Any, first_row: int) -> None:
    if result == lib.KSV_OK:
        return
    if converted.failed_row >= 0:
        error = error_of(converted.error)
        assert isinstance(error, TextError)
        row = first_row + int(converted.failed_row)
        told = RowError(f"row {row}: {error.reason}", error.result, error.offset, error.line,
                        error.column, error.data, error.code_point, error.length)
        told.row = row
        raise told
    if result == lib.KSV_NO_MEMORY:
        raise MemoryError
    raise OverflowError("the texts of a column are longer than 2 GiB: cast it to large_binary")


def _buffers(converted: Any, column: Any) -> list[Any]:
    """They are given back with the last of the arrays that use them."""
    def foreign(pointer: Any, size: int) -> Any:
        return pa.foreign_buffer(int(ffi.cast("uintptr_t", pointer)), size, base=converted)
    validity = None
    if converted.nulls:
        validity = foreign(converted.validity, column.rows // 8 + 1)
    return [validity, foreign(converted.offsets, (column.rows + 1) * column.offset_width),
            foreign(converted.data, converted.length)]


def run_batch(job: Job, batch: Any, path: str = "path", content: str = "content") -> Any:
    """The job of `ksv.files` on a batch or table with columns of paths and of contents. Contents are not copied."""
    results = [run(job, Row(where.as_py(), _view(what)))
               for where, what in zip(batch.column(path), batch.column(content))]
    return results_batch(results)


def _view(value: Any) -> Any:
    buffer = value.as_buffer()
    return b"" if buffer is None else buffer


def results_batch(results: list[Result]) -> Any:
    columns = list(zip(*results)) or [()] * len(FIELDS)
    return pa.record_batch([pa.array(list(values), field.type)
                            for values, field in zip(columns, SCHEMA)], schema=SCHEMA)
