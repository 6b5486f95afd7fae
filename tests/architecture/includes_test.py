#!/usr/bin/env python3
"""That includes.py finds what the table does not allow, and nothing else."""
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
import includes  # noqa: E402

TABLE = """# Page

## The folders, and who may include whom

How rows are read.

| folder | what it holds | may include |
|---|---|---|
| `include/` | `a.h` | nothing of ours |
| `low/` | | `include/` |
| `low/engine/` | | `low/` and below |
| `low/parts/` | | `low/engine/` and below; only `list.cpp` includes parts |
| `low/calls/` | | `low/parts/`, `low/engine/` and below |
| `top/` | | `include/`; for names, and nothing else, `low/names.h` |
| `data/` | | – |
| `tests/`, `bench/` | | everything |

## Another

| `other/` | | everything |
"""


class Includes(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory(prefix="ksv_includes")
        self.root = Path(self.scratch.name)
        self.table = TABLE
        for header in ("include/ksv_a.h", "low/names.h", "low/tables.h", "low/engine/step.h",
                       "low/parts/one.h", "low/parts/two.h", "low/calls/calls.h", "top/job.h"):
            self.write(header, "")
        self.write("low/parts/list.cpp", "")

    def tearDown(self):
        self.scratch.cleanup()

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def found(self, path=None, text=""):
        if path is not None:
            self.write(path, text)
        self.write(includes.PAGE, self.table)
        return list(includes.violations(self.root))

    def assert_refused(self, path, header):
        found = self.found(path, f'#include <vector>\n#include "{header}"\n')
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith(f"{path}:2: "), found)
        self.assertIn(f"may not include {header}", found[0])
        return found[0]

    def test_what_is_allowed_is_not_told(self):
        for path, header in (("low/a.cpp", "ksv_a.h"), ("low/a.cpp", "low/names.h"),
                             ("top/a.cpp", "low/names.h"), ("top/a.cpp", "top/job.h"),
                             ("low/engine/a.cpp", "ksv_a.h"), ("low/parts/one.cpp", "low/tables.h"),
                             ("low/parts/one.cpp", "low/parts/one.h"),
                             ("low/calls/a.cpp", "low/tables.h"), ("low/calls/a.cpp", "low/parts/one.h"),
                             ("low/parts/one_posix.cpp", "low/parts/one.h"),
                             ("tests/a.cpp", "low/tables.h"), ("top/a.cpp", "made_by_the_build.h")):
            with self.subTest(path=path, header=header):
                self.assertEqual(self.found(path, f'#include "{header}"\n'), [])
                (self.root / path).unlink()

    def test_a_lower_folder_may_not_include_a_higher_one(self):
        line = self.assert_refused("low/a.cpp", "low/engine/step.h")
        self.assertTrue(line.endswith("only low/, include/"), line)

    def test_a_single_header_allows_no_other_of_its_folder(self):
        line = self.assert_refused("top/a.cpp", "low/tables.h")
        self.assertTrue(line.endswith("only top/, include/, low/names.h"), line)

    def test_a_folder_that_allows_another_does_not_allow_what_that_one_includes(self):
        self.table = TABLE.replace("`low/` and below", "`low/`")
        self.assert_refused("low/engine/a.cpp", "include/ksv_a.h")

    def test_files_that_stand_apart_may_not_include_each_other(self):
        self.assert_refused("low/parts/one.cpp", "low/parts/two.h")
        (self.root / "low/parts/one.cpp").unlink()
        self.assertEqual(self.found("low/parts/list.cpp", '#include "low/parts/two.h"\n'), [])

    def test_a_folder_without_a_row_belongs_to_the_one_around_it(self):
        self.write("top/inner/a.h", "")
        self.assertEqual(self.found("top/a.cpp", '#include "top/inner/a.h"\n'), [])
        self.assert_refused("top/inner/b.cpp", "low/tables.h")

    def test_a_folder_that_no_row_has_is_told(self):
        self.assertEqual(self.found("new/a.cpp", ""),
                         [f"new/a.cpp: no row of {includes.PAGE} has its folder"])

    def test_names_that_are_gone_are_told(self):
        (self.root / "low/names.h").unlink()
        (self.root / "low/parts/list.cpp").unlink()
        self.assertEqual(
            self.found(),
            [f"{includes.PAGE}: low/parts/ has no list.cpp",
             f"{includes.PAGE}: top/ may include low/names.h, which is not there"])

    def test_a_row_without_backticks_is_told(self):
        self.table = TABLE.replace("`low/` and below |", "low and below |")
        with self.assertRaises(includes.TableError):
            self.found()

    def test_a_page_without_the_table_is_told(self):
        self.table = "# Page\n"
        with self.assertRaises(includes.TableError):
            self.found()

    def test_includes_in_comments_behind_code_and_of_the_system_are_none(self):
        self.assertEqual(self.found("low/a.cpp", '// #include "top/job.h"\n#include <top/job.h>\n'),
                         [])


if __name__ == "__main__":
    unittest.main()
