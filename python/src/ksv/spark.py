"""Many texts on Spark: functions for `mapInArrow` and `mapInPandas` over what `binaryFile` reads.

    files = spark.read.format("binaryFile").option("recursiveFileLookup", "true").load("s3a://bucket/old")
    results = files.select("path", "content").mapInArrow(ksv.spark.in_arrow(Job()), ksv.spark.SCHEMA)
    results.write.parquet("s3a://bucket/new")
"""
from __future__ import annotations

from collections.abc import Iterator
from typing import Any, Callable

from ksv.files import FIELDS, Job

SCHEMA = ", ".join(f"{name} {kind}" for name, kind in FIELDS.items()).replace(" long", " bigint")
"""Of the results, as `mapInArrow` and `mapInPandas` want it."""

Batches = Callable[[Iterator[Any]], Iterator[Any]]


def in_arrow(job: Job, path: str = "path", content: str = "content") -> Batches:
    """For `mapInArrow`. Contents are read where Arrow has them."""
    def convert(batches: Iterator[Any]) -> Iterator[Any]:
        from ksv.arrow import run_batch
        for batch in batches:
            yield run_batch(job, batch, path, content)
    return convert


def in_pandas(job: Job, path: str = "path", content: str = "content") -> Batches:
    """For `mapInPandas`."""
    def convert(frames: Iterator[Any]) -> Iterator[Any]:
        from ksv.frames import run_frame
        for frame in frames:
            yield run_frame(frame, job, path, content)
    return convert


def texts(source: str, column: str = "content", target: str = "utf-8", **options: Any) -> Batches:
    """For `mapInArrow` with a schema of that column as string: a column of binaries of one charset becomes a column of strings,
    without an object of Python a value. A value that cannot be converted becomes null."""
    def convert(batches: Iterator[Any]) -> Iterator[Any]:
        from ksv.arrow import convert as convert_column
        for batch in batches:
            place = batch.schema.get_field_index(column)
            text = convert_column(batch.column(place), source, target, on_error="null", **options)
            yield batch.set_column(place, column, text)
    return convert
