#!/usr/bin/env python3
"""What other readers make of documents whose properties the command has changed, and what its schema
says of its records.

    peers_test.py KSV CHARSETS PROJECT
"""

import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema
import olefile

from made_documents import CODE_PAGE, EVERY_TYPE, SUMMARY, counted, document, property_set, typed

KSV, CHARSETS, PROJECT = sys.argv[1:4]
DOCUMENTS = Path(PROJECT) / "tests/ole/documents"
SCHEMA = json.loads((Path(PROJECT) / "docs/summary.schema.json").read_text(encoding="utf-8"))
PROPERTY_STREAMS = {"\x05SummaryInformation", "\x05DocumentSummaryInformation"}


def ksv(*arguments: str) -> subprocess.CompletedProcess:
    return subprocess.run([KSV, *arguments], capture_output=True, encoding="utf-8", timeout=60,
                          env={"Charsetpath": CHARSETS, "LANG": "C.UTF-8"}, check=False)


def gsf(*arguments: str) -> bytes:
    return subprocess.run(["gsf", *arguments], capture_output=True, timeout=60,
                          env={"PATH": "/usr/bin:/bin", "LANG": "C.UTF-8"}, check=True).stdout


def gsf_property(path: Path, name: str) -> str:
    """It prints a text in quotes, with octal escapes for all bytes beyond ASCII."""
    shown = gsf("props", str(path), name).decode("ascii").strip().removeprefix("= ")
    if not shown.startswith('"'):
        return shown
    escaped = shown.strip('"')
    raw = re.sub(r"\\([0-7]{3})", lambda octal: chr(int(octal[1], 8)), escaped)
    return raw.encode("latin-1").decode("utf-8")


def olefile_text(properties: dict, number: int) -> str:
    page = properties[1] & 0xFFFF
    charset = {65001: "utf-8", 1200: "utf-16-le"}.get(page, f"cp{page}")
    return properties[number].decode(charset)


class Room(unittest.TestCase):
    def setUp(self) -> None:
        room = tempfile.TemporaryDirectory()
        self.addCleanup(room.cleanup)
        self.room = Path(room.name)

    def changed(self, source: Path, *edits: str) -> Path:
        path = self.room / "changed"
        outcome = ksv("summary", *edits, "-o", str(path), str(source))
        self.assertEqual((outcome.returncode, outcome.stderr), (0, ""))
        return path


class Changed(Room):
    """Documents that were changed are read by two readers that know nothing of this project."""

    EDITS = ["--set", "title=Größe 表題", "--set", "author=山田", "--set", "pages=12",
             "--set", "created=2025-01-02T03:04:05Z", "--set", "company=会社",
             "--set-custom", "Project=Tunnel Ω", "--set-custom", "Count=7:number"]

    def test_is_read_by_olefile(self) -> None:
        for source in sorted(DOCUMENTS.glob("japanese.*")):
            with olefile.OleFileIO(self.changed(source, *self.EDITS)) as ole:
                self.assertEqual(ole.parsing_issues, [])
                summary = ole.getproperties("\x05SummaryInformation")
                more = ole.getproperties("\x05DocumentSummaryInformation")
            self.assertEqual(olefile_text(summary, 2), "Größe 表題")
            self.assertEqual(olefile_text(summary, 4), "山田")
            self.assertEqual(olefile_text(summary, 3), "表題の説明", "what was not changed")
            self.assertEqual(summary[14], 12)
            self.assertEqual(olefile_text(more, 15), "会社")

    def test_is_read_by_libgsf(self) -> None:
        for source in sorted(DOCUMENTS.glob("japanese.*")):
            path = self.changed(source, *self.EDITS)
            self.assertEqual(gsf_property(path, "dc:title"), "Größe 表題")
            self.assertEqual(gsf_property(path, "dc:creator"), "山田")
            self.assertEqual(gsf_property(path, "dc:subject"), "表題の説明")
            self.assertEqual(gsf_property(path, "Project"), "Tunnel Ω")
            self.assertEqual(gsf_property(path, "Count"), "7")
            self.assertEqual(gsf_property(path, "meta:creation-date"), "2025-01-02T03:04:05Z")

    def test_has_all_other_streams_as_they_were(self) -> None:
        compared = 0
        for source in sorted(DOCUMENTS.glob("japanese.*")):
            with olefile.OleFileIO(source) as before, \
                    olefile.OleFileIO(self.changed(source, *self.EDITS)) as after:
                self.assertEqual(sorted(before.listdir()), sorted(after.listdir()))
                self.assertEqual(before.root.clsid, after.root.clsid)
                for path in before.listdir():
                    if path[-1] in PROPERTY_STREAMS:
                        continue
                    self.assertEqual(before.openstream(path).read(), after.openstream(path).read())
                    compared += 1
        self.assertGreaterEqual(compared, 8)

    def test_stays_in_its_code_page_where_that_has_the_text(self) -> None:
        source = self.room / "source"
        texts = {932: "漢字", 1250: "Žluť", 1251: "Привет", 1252: "Größe", 936: "你好", 949: "한글",
                 950: "你好"}
        for page, text in texts.items():
            number = page - 65536 if page > 32767 else page
            source.write_bytes(document(SUMMARY, property_set(
                [(1, typed(2, number.to_bytes(4, "little"))), (2, typed(30, counted(b"old\0")))])))
            with olefile.OleFileIO(self.changed(source, "--set", f"title={text}")) as ole:
                properties = ole.getproperties("\x05SummaryInformation")
            self.assertEqual(properties[1], page)
            self.assertEqual(olefile_text(properties, 2), text)

    def test_is_removed_for_others_too(self) -> None:
        path = self.changed(DOCUMENTS / "japanese.doc", "--remove", "title", "--remove", "Company")
        with olefile.OleFileIO(path) as ole:
            self.assertNotIn(2, ole.getproperties("\x05SummaryInformation"))
        names = gsf("listprops", str(path)).decode().split()
        self.assertNotIn("Company", names)
        self.assertIn("dc:creator", names)


class Read(Room):
    def test_agrees_with_olefile(self) -> None:
        compared = 0
        for source in sorted(DOCUMENTS.glob("japanese.*")):
            record = json.loads(ksv("summary", "--all", "--json", str(source)).stdout)
            own = {one["id"]: one for one in record["sets"][0]["sections"][0]["properties"]}
            with olefile.OleFileIO(source) as ole:
                others = ole.getproperties("\x05SummaryInformation", convert_time=True)
            self.assertEqual(set(own), set(others))
            for number, one in own.items():
                if one["type"] == "VT_LPSTR":
                    self.assertEqual(one["value"], others[number].decode("utf-8"))
                    compared += 1
                elif one["type"] == "VT_FILETIME" and others[number] is not None:
                    if one["name"] != "editingTime":
                        self.assertEqual(one["value"], others[number].strftime("%Y-%m-%dT%H:%M:%SZ"))
                        compared += 1
                elif one["type"] in ("VT_I2", "VT_I4"):
                    self.assertEqual(one["value"], others[number])
                    compared += 1
        self.assertGreater(compared, 30)


class Schema(Room):
    """Every record is one that the schema describes."""

    def valid(self, *arguments: str, status: int = 0) -> list[dict]:
        outcome = ksv("summary", "--json", *arguments)
        self.assertEqual(outcome.returncode, status, outcome.stderr)
        records = [json.loads(line) for line in outcome.stdout.splitlines()]
        for record in records:
            jsonschema.validate(record, SCHEMA)
        return records

    def test_is_a_schema(self) -> None:
        jsonschema.Draft7Validator.check_schema(SCHEMA)

    def test_describes_documents(self) -> None:
        paths = [str(path) for path in sorted(DOCUMENTS.glob("japanese.*"))]
        self.assertEqual(len(self.valid(*paths)), 3)
        self.assertEqual(len(self.valid("--all", *paths)), 3)

    def test_describes_values_of_every_type(self) -> None:
        path = self.room / "every"
        values = [CODE_PAGE, *((number + 2, value) for number, value in enumerate(EVERY_TYPE))]
        path.write_bytes(document(SUMMARY, property_set(values)))
        [record] = self.valid("--all", str(path))
        self.assertEqual(len(record["sets"][0]["sections"][0]["properties"]), len(values))
        self.valid(str(path))

    def test_describes_failures_and_damages(self) -> None:
        path = self.room / "none"
        path.write_bytes(b"no document")
        [record] = self.valid(str(path), status=1)
        self.assertIn("error", record)
        path.write_bytes(document(SUMMARY, property_set(
            [CODE_PAGE, (2, typed(30, counted(b"sound\0"))), (3, typed(30, b"\xFF" * 4))])))
        [record] = self.valid(str(path), status=1)
        self.assertIn("damages", record)

    def test_describes_remarks_and_properties_of_users(self) -> None:
        path = self.room / "noted"
        path.write_bytes(document(SUMMARY, property_set(
            [(1, typed(2, (1200).to_bytes(4, "little"))), (2, typed(30, counted(b"a title\0")))])))
        [record] = self.valid(str(path))
        self.assertIn("remarks", record)
        changed = self.changed(path, "--set-custom", "Due=2025-01-02:time")
        [record] = self.valid(str(changed))
        self.assertIn("custom", record)

    def test_describes_what_was_changed(self) -> None:
        path = self.room / "a"
        path.write_bytes((DOCUMENTS / "japanese.doc").read_bytes())
        [record] = self.valid("--set", "title=x", "--in-place", str(path))
        self.assertTrue(record["changed"])

    def test_refuses_what_is_no_record(self) -> None:
        [record] = self.valid(str(DOCUMENTS / "japanese.doc"))
        for change in ({"surprise": 1}, {"kind": {}}, {"custom": []}, {"path": None},
                       {"applicationVersion": "eleven"}, {"editingTime": {}}):
            with self.subTest(change=change):
                self.assertRaises(jsonschema.ValidationError, jsonschema.validate,
                                  record | change, SCHEMA)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
