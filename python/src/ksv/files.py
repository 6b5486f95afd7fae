"""Many texts: a job over rows that gives rows, for one machine or for the workers of a cluster.

`run` is a pure function of the job and the row: whoever runs a row twice gets the same result twice, and the same file at
the same place, so that tasks may be retried and run beside themselves.

    job = Job(target="utf-8", languages="ja", store="converted")
    for result in run_all(job, (Row(path) for path in paths)):
        print(result.path, result.status, result.charset, result.output)
"""
from __future__ import annotations

import base64
import dataclasses
import hashlib
import json
import os
import uuid
from collections import deque
from collections.abc import Iterable, Iterator
from concurrent.futures import Executor, Future, ThreadPoolExecutor
from pathlib import Path
from typing import Any, NamedTuple, Optional

from ksv._buffers import Buffer
from ksv._conversion import convert, report
from ksv._detection import Detection, detect
from ksv._errors import BadArgument, Error, TextError, UnknownCharset

CLEAR = 0.95
"""How likely a charset must be to be taken, as for `ksv convert`."""


@dataclasses.dataclass(frozen=True)
class Job:
    """What is done with every text. The fields that are not told here are keywords of `ksv.convert`."""

    target: str = "utf-8"
    source: Optional[str] = None
    """The charset of all texts; without it each is found out."""
    languages: Optional[str] = None
    charsets: Optional[str] = None
    """What is known of the texts, as for `ksv.detect`."""
    clear: float = CLEAR
    """What is less likely is not converted: `unclear`."""
    store: Optional[str] = None
    """A folder, or an address that fsspec knows ("s3://bucket/texts"), where texts are written. Without one they
    stand in the results."""
    report: bool = False
    """Whether results tell what is lost."""
    invalid: str = "fail"
    unmappable: str = "fail"
    newline: str = "keep"
    normalize: Optional[str] = None
    widths: str = ""
    profile: Optional[str] = None

    def options(self) -> dict[str, Any]:
        """The keywords of `ksv.convert`."""
        return {"invalid": self.invalid, "unmappable": self.unmappable, "newline": self.newline,
                "normalize": self.normalize, "widths": self.widths, "profile": self.profile}

    def key(self) -> str:
        """Stands for all that decides what comes out, wherever it is stored."""
        fields = dataclasses.asdict(self)
        for name in ("store", "report"):
            del fields[name]
        return hashlib.sha256(json.dumps(fields, sort_keys=True).encode()).hexdigest()[:12]


class Row(NamedTuple):
    """A text: where it is, or its bytes, and what is known of it."""

    path: str
    content: Optional[Buffer] = None
    """Without it the path is read, by fsspec where it is an address."""
    charset: Optional[str] = None
    """In which it is, whatever the job says."""
    languages: Optional[str] = None


class Result(NamedTuple):
    """What became of a text."""

    path: str
    status: str
    """"converted", "empty", "binary", "unclear" (no charset is likely enough) or "failed"."""
    charset: Optional[str]
    """As detection names it, or as it was given."""
    decode_as: Optional[str]
    """What it was converted from."""
    confidence: Optional[float]
    language: Optional[str]
    error: Optional[str]
    error_offset: Optional[int]
    size: Optional[int]
    sha256: Optional[str]
    """Of the bytes that were read."""
    text: Optional[bytes]
    """The converted text, unless it is stored."""
    text_size: Optional[int]
    output: Optional[str]
    """Where it is stored."""
    report: Optional[str]
    """What would be lost, as one JSON object."""

    def record(self) -> dict[str, Any]:
        """For JSON. A text that is no UTF-8 is `text_base64`."""
        told = {name: value for name, value in self._asdict().items() if name != "report"}
        if self.report is not None:
            told["report"] = json.loads(self.report)
        if self.text is not None:
            try:
                told["text"] = self.text.decode("utf-8")
            except UnicodeDecodeError:
                del told["text"]
                told["text_base64"] = base64.b64encode(self.text).decode("ascii")
        return told


NOT_THERE = (FileNotFoundError, PermissionError, IsADirectoryError, NotADirectoryError)
"""What reading a path tells about the path, and not about the moment."""

FIELDS: dict[str, str] = {
    "path": "string", "status": "string", "charset": "string", "decode_as": "string",
    "confidence": "double", "language": "string", "error": "string", "error_offset": "long",
    "size": "long", "sha256": "string", "text": "binary", "text_size": "long", "output": "string",
    "report": "string",
}
"""The columns of results, with the names that Spark has for their types."""


def run(job: Job, row: Row) -> Result:
    """What becomes of one text. What is wrong with the text, and that there is no such file, stands in the result. What another
    run may find otherwise is raised, so that the engine tries again: want of memory, and systems that cannot read or write."""
    found: dict[str, Any] = {**dict.fromkeys(Result._fields), "path": row.path}
    try:
        content: Any = row.content if row.content is not None else _read(row.path)
    except NOT_THERE as error:
        found.update(status="failed", error=str(error))
        return Result(**found)
    with memoryview(content) as view:
        found.update(size=view.nbytes, sha256=hashlib.sha256(view).hexdigest())
    try:
        found.update(_converted(job, row, content))
    except TextError as error:
        found.update(status="failed", error=error.reason, error_offset=error.offset)
    except (UnknownCharset, BadArgument) as error:
        found.update(status="failed", error=error.reason)
    if found["text"] is not None and job.store is not None:
        found["output"] = _stored(job, str(found["sha256"]), found["text"])
        found["text"] = None
    return Result(**found)


def _converted(job: Job, row: Row, content: Buffer) -> dict[str, Any]:
    source = row.charset or job.source
    found: dict[str, Any] = {"charset": source, "decode_as": source}
    if source is None:
        detection = detect(content, languages=row.languages or job.languages,
                           charsets=job.charsets, file_name=row.path)
        found = _verdict(job, detection)
        source = found["decode_as"]
    if source is None:
        return found
    if job.report:
        told = report(content, source, job.target, **job.options())
        found["report"] = json.dumps(told, ensure_ascii=False)
    try:
        text = convert(content, source, job.target, **job.options())
    except TextError as error:
        return {**found, "status": "failed", "error": error.reason, "error_offset": error.offset}
    return {**found, "status": "converted", "text": text, "text_size": len(text)}


def _verdict(job: Job, detection: Detection) -> dict[str, Any]:
    """Nothing is converted where `decode_as` is None."""
    if detection.content in ("empty", "binary"):
        return {"status": detection.content, "decode_as": None}
    if not detection:
        return {"status": "unclear", "decode_as": None, "error": "no charset fits its bytes"}
    best = detection[0]
    found: dict[str, Any] = {"charset": best.charset, "confidence": best.confidence,
                             "language": best.language, "decode_as": best.decode_as}
    if best.confidence < job.clear or best.decode_as is None:
        found.update(status="unclear", decode_as=None, error=f"may be {best.charset}")
    return found


def _read(path: str) -> bytes:
    if "://" not in path:
        with open(path, "rb") as file:
            return file.read()
    import fsspec
    with fsspec.open(path, "rb") as remote:
        content: bytes = remote.read()
        return content


def place_of(job: Job, sha256: str) -> str:
    """Where a text is stored: the same text by the same job at the same place, whoever converts it."""
    root = (job.store or "").rstrip("/")
    return f"{root}/{job.key()}/{sha256[:2]}/{sha256}"


def _stored(job: Job, sha256: str, text: bytes) -> str:
    """A name of its own first, then its place at once: who else writes it writes the same."""
    place = place_of(job, sha256)
    if "://" not in place:
        _store_file(Path(place), text)
        return place
    import fsspec
    # Objects are there as a whole or not at all.
    with fsspec.open(place, "wb") as remote:
        remote.write(text)
    return place


def _store_file(place: Path, text: bytes) -> None:
    place.parent.mkdir(parents=True, exist_ok=True)
    waiting = place.with_name(f".{place.name}.{uuid.uuid4().hex}")
    try:
        with open(waiting, "xb") as file:
            file.write(text)
            file.flush()
            os.fsync(file.fileno())
        os.replace(waiting, place)
    except BaseException:
        waiting.unlink(missing_ok=True)
        raise


def run_rows(job: Job, rows: Iterable[Row]) -> list[Result]:
    """Several, one after the other: what an engine calls for a partition."""
    return [run(job, row) for row in rows]


def run_all(job: Job, rows: Iterable[Row], executor: Optional[Executor] = None,
            at_once: int = 64) -> Iterator[Result]:
    """All of them on one machine, in their order. Threads make use of all cores, since conversion and detection leave the
    interpreter to others; any other executor of concurrent.futures does as well. No more than `at_once` texts are in memory."""
    if executor is None:
        with ThreadPoolExecutor(os.cpu_count() or 1) as pool:
            yield from run_all(job, rows, pool, at_once)
        return
    waiting: deque[Future[Result]] = deque()
    try:
        for row in rows:
            if len(waiting) >= at_once:
                yield waiting.popleft().result()
            waiting.append(executor.submit(run, job, row))
        while waiting:
            yield waiting.popleft().result()
    finally:
        for left in waiting:
            left.cancel()


def write_manifest(results: Iterable[Result], path: str) -> dict[str, int]:
    """Writes a record a line (NDJSON), which takes its place when it is complete. Gives how many there are of each status."""
    counts: dict[str, int] = {}
    waiting = f"{path}.{uuid.uuid4().hex}"
    try:
        with open(waiting, "x", encoding="utf-8", newline="\n") as file:
            for result in results:
                counts[result.status] = counts.get(result.status, 0) + 1
                file.write(json.dumps(result.record(), ensure_ascii=False) + "\n")
            file.flush()
            os.fsync(file.fileno())
        os.replace(waiting, path)
    except BaseException:
        Path(waiting).unlink(missing_ok=True)
        raise
    return counts


__all__ = ["CLEAR", "FIELDS", "Error", "Job", "Result", "Row", "place_of", "run", "run_all",
           "run_rows", "write_manifest"]
