"""Compound documents: streams as files, properties as values of Python."""
import datetime
import mmap
import struct

import ksv
import pytest
from documents import LEAST, document, property_set, text

SUMMARY = property_set({
    1: (2, struct.pack("<h", 932)), 2: (30, text("草枕".encode("cp932"))), 4: (30, text(b"Natsume")),
    12: (64, struct.pack("<Q", 116444736000000000 + 123456789 * 10)), 14: (3, struct.pack("<i", 7)),
    10: (64, struct.pack("<Q", 36_000_000_000)),
}).ljust(LEAST, b"\0")
BODY = bytes(range(256)) * 40
MADE = document({"\x05SummaryInformation": SUMMARY, "Body": BODY})


@pytest.fixture
def opened():
    with ksv.Document(MADE) as made:
        yield made


def test_properties_are_values_of_python(opened):
    found = opened.properties
    assert found["title"] == "草枕" and found["author"] == "Natsume"
    assert datetime.datetime(1970, 1, 1, 0, 2, 3, 456789, datetime.timezone.utc) in found.values()
    assert 7 in found.values() and datetime.timedelta(hours=1) in found.values()
    (section,) = opened.sections()
    assert section.format_name == "summary" and section.code_page == 932
    assert section.path == "\\x05SummaryInformation"
    assert {prop.id for prop in section.properties} >= {2, 4, 12}


def test_properties_are_read_of_bytes_alone():
    (section,) = ksv.read_properties(SUMMARY)
    assert [prop.value for prop in section.properties if prop.key == "title"] == ["草枕"]


def test_streams_are_files(opened):
    assert list(opened) == ["Body", "\\x05SummaryInformation"]
    with opened.open("Body") as stream:
        assert stream.read(3) == b"\0\1\2" and stream.tell() == 3
        assert stream.seek(-2, 2) == len(BODY) - 2 and stream.read() == b"\xfe\xff"
        stream.seek(0)
        assert stream.read() == BODY
    assert opened.open("body").read(1) == b"\0"
    assert "Body" in opened and "Nothing" not in opened
    for name in ("Nothing", ""):
        with pytest.raises(KeyError):
            opened.open(name)


def test_entries_are_told(opened):
    found = {entry.name: entry for entry in opened.entries}
    assert found["Root Entry"].kind == "root"
    assert (found["Body"].kind, found["Body"].size, found["Body"].path) == ("stream", len(BODY), "Body")
    assert found["Body"].created is None and not found["Body"].is_orphan and found["Body"].class_id.int == 0


@pytest.mark.parametrize("given", ["path", "mmap", "bytearray", "memoryview"])
def test_paths_and_buffers_are_opened(given, tmp_path):
    path = tmp_path / "草枕.doc"
    path.write_bytes(MADE)
    with open(path, "rb") as file:
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
            source = {"path": path, "mmap": mapped, "bytearray": bytearray(MADE), "memoryview": memoryview(MADE)}[given]
            with ksv.Document(source) as opened:
                assert opened.open("Body").read() == BODY and opened.properties["title"] == "草枕"


def test_a_buffer_is_given_back_when_the_document_is_closed():
    data = bytearray(MADE)
    opened = ksv.Document(data)
    with pytest.raises(BufferError):
        data.append(1)
    stream = opened.open("Body")
    opened.close()
    opened.close()
    data.append(1)
    with pytest.raises(ValueError):
        stream.read()
    with pytest.raises(ValueError):
        opened.entries


def test_what_is_no_document_is_told():
    data = bytearray(b"no document")
    with pytest.raises(ksv.NoDocument):
        ksv.Document(data)
    data.append(1)
    with pytest.raises(ksv.SystemFailure):
        ksv.Document("/nowhere/at all")


def test_damaged_documents_are_read_as_far_as_they_go():
    with ksv.Document(MADE) as opened:
        assert opened.check() == []
    # The first of the sectors of Body leads to no sector.
    broken = MADE[:512 + 4] + struct.pack("<I", 5000) + MADE[512 + 8:]
    with ksv.Document(broken) as opened:
        stream = opened.open("Body")
        assert stream.raw.read(5000) == BODY[:512]
        with pytest.raises(ksv.Damaged):
            stream.raw.read(5000)
        assert opened.check() and any(damage.path == "Body" for damage in opened.damages)
        assert opened.properties["title"] == "草枕"


def test_the_kind_is_told(opened):
    assert opened.kind.confidence <= 1 and not opened.kind.has_macros
