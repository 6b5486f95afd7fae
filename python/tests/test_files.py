"""Jobs over many texts, on one machine."""
import errno
import hashlib
import json
import os
import pickle
from concurrent.futures import ProcessPoolExecutor

import ksv
import pytest
from ksv.files import FIELDS, Job, Result, Row, place_of, run, run_all, run_rows, write_manifest
from texts import JAPANESE

SJIS = JAPANESE.encode("shift_jis")
PICTURE = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1"


def test_a_text_is_detected_and_converted():
    result = run(Job(), Row("letter.txt", SJIS))
    assert (result.status, result.charset, result.decode_as) == ("converted", "Shift_JIS", "WINDOWS31J")
    assert result.text == JAPANESE.encode() and result.text_size == len(JAPANESE.encode())
    assert result.size == len(SJIS) and result.sha256 == hashlib.sha256(SJIS).hexdigest()
    assert result.language == "ja" and result.confidence > 0.95 and result.error is None


def test_a_charset_that_is_known_is_not_looked_for():
    assert run(Job(source="sjis"), Row("x", SJIS)).text == JAPANESE.encode()
    result = run(Job(source="utf-8"), Row("x", SJIS, charset="shift_jis"))
    assert (result.text, result.charset, result.confidence) == (JAPANESE.encode(), "shift_jis", None)


def test_what_is_not_converted_is_told():
    assert run(Job(), Row("x", PICTURE)).status == "binary"
    assert run(Job(), Row("x", b"")).status == "empty"
    unclear = run(Job(clear=2), Row("x", SJIS))
    assert (unclear.status, unclear.charset, unclear.text) == ("unclear", "Shift_JIS", None)
    failed = run(Job(source="shift_jis"), Row("x", b"ab\x82\xffcd"))
    assert (failed.status, failed.error_offset) == ("failed", 2) and "byte offset 2" in failed.error
    assert run(Job(source="nobody's"), Row("x", b"a")).status == "failed"
    gone = run(Job(), Row("/nowhere/at all"))
    assert gone.status == "failed" and "No such file" in gone.error and gone.sha256 is None


def test_what_another_run_may_find_otherwise_is_raised(tmp_path, monkeypatch):
    def fail(*_):
        raise OSError(errno.EIO, "Input/output error")

    monkeypatch.setattr("ksv.files._read", fail)
    with pytest.raises(OSError):
        run(Job(), Row("x"))


def test_a_file_is_read(tmp_path):
    path = tmp_path / "letter.txt"
    path.write_bytes(SJIS)
    assert run(Job(), Row(str(path))).text == JAPANESE.encode()


def test_what_would_be_lost_is_told_when_it_is_wanted():
    result = run(Job(source="utf-8", target="shift_jis", unmappable="replace", report=True), Row("x", "€".encode()))
    assert json.loads(result.report)["unmappable"] == 1 and result.text != b""


def test_the_same_text_is_stored_at_the_same_place_once(tmp_path):
    job = Job(store=str(tmp_path))
    results = run_rows(job, [Row("a.txt", SJIS), Row("b.txt", bytearray(SJIS))])
    assert results[0].output == results[1].output == place_of(job, results[0].sha256)
    assert results[0].text is None and results[0].text_size == len(JAPANESE.encode())
    files = [path for path in tmp_path.rglob("*") if path.is_file()]
    assert [path.read_bytes() for path in files] == [JAPANESE.encode()]
    other = run(Job(store=str(tmp_path), newline="crlf"), Row("a.txt", SJIS))
    assert other.output != results[0].output


def test_what_cannot_be_stored_is_raised_and_leaves_nothing(tmp_path):
    place = tmp_path / "file"
    place.write_bytes(b"")
    with pytest.raises(OSError):
        run(Job(store=str(place)), Row("x", SJIS))
    job = Job(store=str(tmp_path / "store"))
    blocked = place_of(job, hashlib.sha256(SJIS).hexdigest())
    os.makedirs(blocked + "/something")
    with pytest.raises(OSError):
        run(job, Row("x", SJIS))
    assert not [name for name in os.listdir(os.path.dirname(blocked)) if name.startswith(".")]


def test_rows_are_run_in_order_by_threads_and_processes():
    rows = [Row(str(number), f"草枕{number}".encode("euc-jp"), charset="euc-jp") for number in range(300)]
    want = [f"草枕{number}".encode() for number in range(300)]
    assert [result.text for result in run_all(Job(), rows)] == want
    with ProcessPoolExecutor(2) as pool:
        assert [result.text for result in run_all(Job(), rows[:50], pool)] == want[:50]


def test_rows_are_taken_as_they_are_needed():
    taken = []

    def rows():
        for number in range(1000):
            taken.append(number)
            yield Row(str(number), b"a", charset="ascii")

    results = run_all(Job(), rows(), at_once=8)
    next(results)
    assert len(taken) <= 10
    results.close()


def test_a_manifest_takes_its_place_when_it_is_complete(tmp_path):
    path = tmp_path / "manifest.ndjson"
    rows = [Row("a", SJIS), Row("b", b""), Row("c", SJIS)]
    assert write_manifest(run_all(Job(), rows), str(path)) == {"converted": 2, "empty": 1}
    records = [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
    assert [record["path"] for record in records] == ["a", "b", "c"] and records[0]["text"] == JAPANESE

    def broken():
        yield run(Job(), rows[0])
        raise KeyError("the disk")

    with pytest.raises(KeyError):
        write_manifest(broken(), str(path))
    assert os.listdir(tmp_path) == ["manifest.ndjson"]
    assert len(path.read_text(encoding="utf-8").splitlines()) == 3


def test_texts_that_are_no_utf_8_are_told_in_base64():
    record = run(Job(target="utf-16le"), Row("x", SJIS)).record()
    assert "text" not in record and record["text_base64"]


def test_jobs_rows_and_results_travel_between_processes():
    for thing in (Job(store="x"), Row("x", b"y"), run(Job(), Row("letter.txt", SJIS))):
        assert pickle.loads(pickle.dumps(thing)) == thing
    assert tuple(FIELDS) == Result._fields


def test_addresses_are_read_and_written_by_fsspec():
    fsspec = pytest.importorskip("fsspec")
    with fsspec.open("memory://old/letter.txt", "wb") as file:
        file.write(SJIS)
    result = run(Job(store="memory://new"), Row("memory://old/letter.txt"))
    assert result.status == "converted"
    with fsspec.open(result.output, "rb") as file:
        assert file.read() == JAPANESE.encode()
    assert ksv.__version__
