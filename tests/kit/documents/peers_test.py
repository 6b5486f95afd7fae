#!/usr/bin/env python3
"""Compares what 'ksv ole' reads of made documents, and of those that the library has written anew, with what
olefile and libgsf read.

    peers_test.py KSV MADE_DOCUMENTS GSF PYTHON_WITH_OLEFILE
"""
import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
COUNT = 12
EMPTY = hashlib.sha256(b"").hexdigest()


def output_of(*arguments) -> bytes:
    return subprocess.run([str(argument) for argument in arguments], check=True, stdout=subprocess.PIPE,
                          env=os.environ | {"LC_ALL": "C.UTF-8"}).stdout


class Peers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.room = tempfile.TemporaryDirectory()
        cls.directory = Path(cls.room.name, "made")
        cls.directory.mkdir()
        output_of(MADE, cls.directory, os.environ.get("KSV_TEST_SEED", "1"), COUNT)
        cls.files = sorted(cls.directory.iterdir())
        cls.ours = {path.name: cls.read(path) for path in cls.files}

    @classmethod
    def tearDownClass(cls):
        cls.room.cleanup()

    @classmethod
    def read(cls, path: Path) -> dict:
        """The digest of each stream, by its path."""
        target = Path(cls.room.name, path.name + ".parts")
        lines = output_of(KSV, "ole", "extract", "--json", path, target).decode().splitlines()
        records = [json.loads(line) for line in lines]
        return {record["path"]: hashlib.sha256(Path(record["file"]).read_bytes()).hexdigest()
                for record in records}

    def test_there_is_something_to_compare(self):
        self.assertEqual(len(self.files), 2 * COUNT + 1)
        self.assertGreater(sum(len(streams) for streams in self.ours.values()), 3 * COUNT)

    def test_documents_written_anew_have_the_same_streams(self):
        for number in range(COUNT):
            self.assertEqual(self.ours[f"{number}.made"], self.ours[f"{number}.written"])

    def test_olefile_reads_the_same(self):
        theirs = json.loads(output_of(PYTHON, "-B", HERE / "olefile_reading.py", self.directory))
        self.assertEqual(theirs, self.ours)

    def test_libgsf_reads_the_same(self):
        for path in self.files:
            listed = output_of(GSF, "list", path).decode()
            # It lists empty storages and empty streams alike.
            streams = re.findall(r"^f +[1-9]\d* (.+)$", listed, re.MULTILINE)
            theirs = {name: hashlib.sha256(output_of(GSF, "cat", path, name)).hexdigest()
                      for name in streams}
            ours = {name: digest for name, digest in self.ours[path.name].items() if digest != EMPTY}
            self.assertEqual(theirs, ours, listed)

    def test_all_are_sound(self):
        output_of(KSV, "ole", "check", *self.files)


if __name__ == "__main__":
    KSV, MADE, GSF, PYTHON = (Path(argument) for argument in sys.argv[1:5])
    unittest.main(argv=sys.argv[:1])
