"""Results of many texts as data frames of pandas."""
from __future__ import annotations

from typing import Any

import pandas

from ksv.files import FIELDS, Job, Row, run

_KINDS = {"string": "object", "double": "float64", "long": "Int64", "binary": "object"}
META = pandas.DataFrame({name: pandas.Series(dtype=_KINDS[kind]) for name, kind in FIELDS.items()})
"""The columns of results, without rows."""


def run_frame(part: Any, job: Job, path: str = "path", content: str = "content") -> Any:
    """The job on a data frame with a column of paths and, unless they are to be read, one of contents."""
    contents = part[content] if content in part.columns else [None] * len(part)
    results = [run(job, Row(where, what)) for where, what in zip(part[path], contents)]
    return pandas.DataFrame(results, columns=list(FIELDS)).astype(META.dtypes.to_dict())
