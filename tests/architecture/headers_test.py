#!/usr/bin/env python3
"""That headers.py finds headers that do not compile alone.

    headers_test.py C_COMPILER CXX_COMPILER
"""
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
import headers  # noqa: E402

COMPILERS = sys.argv[1:3]


class Headers(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory(prefix="ksv_headers")
        self.root = Path(self.scratch.name)
        self.write("include/ksv_a.h", "#ifndef KSV_A_H\n#define KSV_A_H\ntypedef int ksvA;\n#endif\n")
        self.write("common/whole.h", '#pragma once\n#include "ksv_a.h"\ninline ksvA one() { return 1; }\n')
        for part in headers.PARTS:
            self.write(part, "int partOf = here;\n")

    def tearDown(self):
        self.scratch.cleanup()

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def found(self, path, text):
        self.write(path, text)
        return headers.faults(self.root, *COMPILERS)

    def test_headers_that_include_what_they_need_are_not_told(self):
        self.assertEqual(headers.faults(self.root, *COMPILERS), [])

    def test_a_header_that_needs_another_before_it_is_told(self):
        found = self.found("cconv/lacking.h", "#pragma once\ninline uint8_t two() { return 2; }\n")
        self.assertEqual(len(found), 1)
        self.assertIn("cconv/lacking.h does not compile alone as c++", found[0])

    def test_one_that_a_source_includes_first_is_left_to_that_source(self):
        self.write("cconv/lacking.cpp", '// Why.\n#include "cconv/lacking.h"\n')
        self.assertEqual(self.found("cconv/lacking.h", "#pragma once\nuint8_t two();\n"), [])

    def test_one_that_a_source_includes_second_is_not(self):
        self.write("cconv/lacking.cpp", '#include <cstdint>\n#include "cconv/lacking.h"\n')
        self.assertEqual(len(self.found("cconv/lacking.h", "#pragma once\nuint8_t two();\n")), 1)

    def test_a_header_of_the_interface_is_c_as_well(self):
        found = self.found("include/ksv_b.h", "#pragma once\nnamespace ksv {}\n")
        self.assertEqual(len(found), 1)
        self.assertIn("include/ksv_b.h does not compile alone as c:", found[0])

    def test_a_header_without_a_guard_is_told(self):
        self.assertEqual(self.found("ole/bare.h", "int three();\n"), ["ole/bare.h has no guard"])

    def test_a_part_that_is_gone_is_told(self):
        (self.root / headers.PARTS[0]).unlink()
        self.assertEqual(len(headers.faults(self.root, *COMPILERS)), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
