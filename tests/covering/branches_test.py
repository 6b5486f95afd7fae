#!/usr/bin/env python3
"""scripts/covering/branches.py, on exports made up for it.

    branches_test.py DIRECTORY_OF_SCRIPTS
"""
import contextlib
import io
import json
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(sys.argv.pop(1)).resolve()))
from covering import branches

TEXT = "int f(int a) {\n  if (a) {\n    return 1;\n    if constexpr (b) ++a;\n  return g(a) ? 2 : 3;\n}\n"
# A segment: line, column, count, has a count, begins a region, is a gap.
SEGMENTS = [[1, 14, 5, True, True, False], [2, 10, 0, True, True, False], [4, 4, 5, True, False, False],
            [5, 3, 5, True, True, False], [6, 2, 0, False, False, False]]


def branch(line, column, true, false):
    return [line, column, line, column + 1, true, false, 0, 0, 4]


class Counts(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name).resolve()

    def read(self, name="common/f.cpp", segments=SEGMENTS, ways=()):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(TEXT)
        file = {"filename": str(path), "segments": segments, "branches": list(ways)}
        return branches.read_export(json.dumps({"data": [{"files": [file]}]}), self.root)

    def ways(self, *ways):
        total = branches.sum_of(self.read(ways=ways)["common/f.cpp"])
        return total.branches_taken, total.branches

    def test_of_lines_are_those_of_the_code_on_them(self):
        self.assertEqual(self.read()["common/f.cpp"].lines, {1: 5, 2: 5, 3: 0, 4: 0, 5: 5, 6: 5})

    def test_of_branches_are_the_ways_of_their_conditions(self):
        self.assertEqual(self.ways(branch(2, 7, 0, 5), branch(5, 10, 3, 2)), (3, 4))

    def test_of_two_instances_are_those_of_both(self):
        self.assertEqual(self.ways(branch(5, 10, 3, 0), branch(5, 10, 0, 2)), (2, 2))

    def test_leave_out_what_the_compiler_decides(self):
        self.assertEqual(self.ways(branch(2, 7, 0, 0), branch(5, 10, 3, 2)), (2, 2))

    def test_leave_out_what_is_written_for_the_compiler(self):
        never_run = [[1, 1, 0, True, True, False], [6, 2, 0, False, False, False]]
        source = self.read(segments=never_run, ways=[branch(4, 5, 0, 0)])["common/f.cpp"]
        self.assertEqual(branches.sum_of(source).branches, 0)

    def test_have_what_was_never_asked(self):
        self.assertEqual(self.ways(branch(3, 5, 0, 0)), (0, 2))

    def test_are_those_of_the_rooms_only(self):
        for name in ("tests/common/f.cpp", "cli/main.cpp", "build/coverage/common/f.h", "f.cpp"):
            self.assertEqual(self.read(name), {}, name)
        self.assertEqual(list(self.read("cconv/bulk/vectors/f.h")), ["cconv/bulk/vectors/f.h"])

    def test_tell_which_way_was_not_taken(self):
        sources = self.read(ways=[branch(2, 7, 0, 5), branch(3, 5, 0, 0), branch(5, 10, 3, 0)])
        self.assertEqual(list(branches.not_taken(sources, self.root)), [
            "common/f.cpp:2:7: never true: if (a) {",
            "common/f.cpp:3:5: never asked: return 1;",
            "common/f.cpp:5:10: never false: return g(a) ? 2 : 3;"])

    def report(self, least, *ways):
        output = io.StringIO()
        with contextlib.redirect_stdout(output), \
             mock.patch.dict(branches.LEAST_BRANCHES, {"library": least}):
            low = branches.report(self.read(ways=ways))
        return low, [line.split() for line in output.getvalue().splitlines()]

    def test_are_reported_by_room_and_in_all(self):
        low, rows = self.report(50, branch(2, 7, 0, 5))
        self.assertEqual(low, [])
        self.assertEqual(rows[1], ["common", "6", "4", "66.7", "2", "1", "50.0"])
        self.assertEqual(rows[2], ["cconv/rules", "0", "0", "100.0", "0", "0", "100.0"])
        self.assertEqual(rows[1 + len(branches.ROOMS["library"])], ["library", "6", "4", "66.7", "2", "1", "50.0"])

    def test_below_what_they_should_be_are_told(self):
        self.assertEqual(self.report(50.1, branch(2, 7, 0, 5))[0], ["library"])


if __name__ == "__main__":
    unittest.main()
