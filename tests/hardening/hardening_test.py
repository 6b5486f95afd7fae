#!/usr/bin/env python3
"""Looks into the library and the command that were built for what makes mistakes in them hard
to use.

    hardening_test.py --library FILE --command FILE [--objdump OBJDUMP] [--unfortified] [--filtered]

With --objdump they are programs of Windows. --unfortified: without the checks that the C library
adds, for builds that are not optimised. --filtered: the command has a filter for its system calls.
"""
import argparse
import re
import subprocess
import sys
import time
import unittest
from pathlib import Path

parser = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--library", type=Path, required=True)
parser.add_argument("--command", type=Path, required=True)
parser.add_argument("--objdump")
parser.add_argument("--unfortified", action="store_true")
parser.add_argument("--filtered", action="store_true")
ARGUMENTS = parser.parse_args()
PRODUCTS = (ARGUMENTS.library, ARGUMENTS.command)


def told_by(*command):
    return subprocess.run(list(map(str, command)), check=True, stdout=subprocess.PIPE,
                          text=True).stdout


@unittest.skipIf(ARGUMENTS.objdump, "programs of Windows")
class Elf(unittest.TestCase):
    @staticmethod
    def segments(product, kind):
        """Their flags."""
        found = re.findall(rf"^ +{kind} +(?:0x[0-9a-f]+ +){{5}}([RWE ]+?) +0x",
                           told_by("readelf", "-lW", product), re.MULTILINE)
        return [flags.replace(" ", "") for flags in found]

    @staticmethod
    def flags(product):
        return set(re.findall(r"\((?:FLAGS|FLAGS_1)\) +(?:Flags: )?(.*)",
                              told_by("readelf", "-dW", product)))

    def flag_words(self, product):
        return {word for flags in self.flags(product) for word in flags.split()}

    def imported(self, product):
        return set(re.findall(r"UND +(\w+)", told_by("readelf", "-W", "--dyn-syms", product)))

    def test_addresses_of_functions_are_found_at_the_start_and_cannot_be_changed_then(self):
        for product in PRODUCTS:
            with self.subTest(product.name):
                self.assertEqual(self.segments(product, "GNU_RELRO"), ["R"])
                self.assertTrue(self.flag_words(product) & {"BIND_NOW", "NOW"})

    def test_the_command_lies_at_random_addresses(self):
        self.assertIn("PIE", self.flag_words(ARGUMENTS.command))

    def test_nothing_can_be_written_and_run(self):
        for product in PRODUCTS:
            with self.subTest(product.name):
                self.assertEqual(self.segments(product, "GNU_STACK"), ["RW"])
                loaded = self.segments(product, "LOAD")
                self.assertIn("RE", loaded)
                self.assertIn("RW", loaded)
                self.assertEqual([flags for flags in loaded if "W" in flags and "E" in flags], [])
                self.assertNotIn("TEXTREL", told_by("readelf", "-dW", product))

    def test_stacks_are_guarded(self):
        for product in PRODUCTS:
            with self.subTest(product.name):
                self.assertIn("__stack_chk_fail", self.imported(product))

    @unittest.skipIf(ARGUMENTS.unfortified, "not optimised")
    def test_the_c_library_checks_sizes_that_the_compiler_knows(self):
        self.assertTrue([name for name in self.imported(ARGUMENTS.command)
                         if name.endswith("_chk") and name != "__stack_chk_fail"])


@unittest.skipUnless(ARGUMENTS.objdump, "no programs of Windows")
class Windows(unittest.TestCase):
    def test_lie_at_random_addresses_of_64_bits_and_run_no_data(self):
        for product in PRODUCTS:
            with self.subTest(product.name):
                told = told_by(ARGUMENTS.objdump, "-p", product)
                for characteristic in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
                    self.assertRegex(told, rf"(?m)^\s+{characteristic}$")

    def test_say_what_has_to_be_changed_when_they_lie_elsewhere(self):
        for product in PRODUCTS:
            with self.subTest(product.name):
                self.assertIn(" .reloc ", told_by(ARGUMENTS.objdump, "-h", product))


def state_of(process):
    """The lines of the system's file about a process."""
    text = Path(f"/proc/{process.pid}/status").read_text()
    return dict(line.split(":\t", 1) for line in text.splitlines() if ":\t" in line)


@unittest.skipUnless(ARGUMENTS.filtered, "this system, or this build, has no filter")
class Filter(unittest.TestCase):
    def test_stands_before_the_command_reads_anything(self):
        with subprocess.Popen([ARGUMENTS.command, "detect"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as process:
            process.stdin.write(b"text\n")
            process.stdin.flush()
            end = time.monotonic() + 20
            state = state_of(process)
            while state["Seccomp"] == "0" and time.monotonic() < end:
                time.sleep(0.005)
                state = state_of(process)
            process.stdin.close()
            process.stdout.read()
        self.assertEqual((state["NoNewPrivs"], state["Seccomp"]), ("1", "2"))
        self.assertEqual(process.returncode, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
