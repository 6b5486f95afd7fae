"""Many texts on Dask: bags and data frames of rows become bags and data frames of results.

    rows = dask.bag.from_sequence([Row(path) for path in paths], npartitions=1000)
    ksv.dask.bag(rows, Job(store="s3://bucket/texts")).map(ksv.dask.line).to_textfiles("manifest/*.ndjson")
"""
from __future__ import annotations

import json
from typing import Any

from ksv.files import Job, Result, Row, run_rows
from ksv.frames import META, run_frame


def bag(rows: Any, job: Job) -> Any:
    """A bag of `ksv.files.Row` (or of paths) becomes a bag of `ksv.files.Result`."""
    return rows.map_partitions(run_partition, job)


def run_partition(rows: Any, job: Job) -> list[Result]:
    return run_rows(job, (row if isinstance(row, Row) else Row(row) for row in rows))


def line(result: Result) -> str:
    """A result as one line of NDJSON."""
    return json.dumps(result.record(), ensure_ascii=False)


def frame(frame: Any, job: Job, path: str = "path", content: str = "content") -> Any:
    """A data frame with a column of paths and, unless they are to be read, one of contents becomes a data frame of results,
    for `to_parquet(..., schema=ksv.arrow.SCHEMA, write_index=False)`."""
    return frame.map_partitions(run_frame, job, path, content, meta=META)
