#!/usr/bin/env python3
"""The running and the counting of tests: run_share.py and test_preset.py; and scripts/check.

    testing_test.py PROJECT MADE_UP_TESTS
"""
import importlib.machinery
import importlib.util
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
PROJECT, PROGRAM = (Path(argument).resolve() for argument in sys.argv[1:3])
TESTING = PROJECT / "scripts" / "testing"
sys.path.insert(0, str(TESTING))
import run_share  # noqa: E402


def loaded(path):
    """A script without the ending that modules have."""
    loader = importlib.machinery.SourceFileLoader("check", str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("check", loader))
    sys.modules["check"] = module
    loader.exec_module(module)
    return module


check = loaded(PROJECT / "scripts" / "check")

NUMBERS = [f"All/Numbers.are_small/{i}" for i in range(5)]


class Scratch(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory(prefix="ksv_testing")
        self.directory = Path(self.scratch.name)

    def tearDown(self):
        self.scratch.cleanup()


class Shares(Scratch):
    def run_share(self, only, *options):
        results = self.directory / "results.json"
        done = subprocess.run(
            [sys.executable, "-B", TESTING / "run_share.py", f"--only={only}", "--results", results,
             *options, "--", PROGRAM], capture_output=True, text=True)
        return done, json.loads(results.read_text())

    def outcomes(self, only, *options):
        return self.run_share(only, *options)[1]["outcomes"]

    def test_tests_that_pass_give_status_0(self):
        done, results = self.run_share("Plain.p*")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(results["outcomes"], {"Plain.passes": "passed",
                                               "Plain.passes_too": "passed"})

    def test_a_skipped_test_is_told_and_no_failure_and_a_disabled_one_is_not_listed(self):
        done, results = self.run_share("Plain.*")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(results["outcomes"]["Plain.is_skipped"], "skipped")
        self.assertNotIn("Plain.DISABLED_is_disabled", results["listed"])
        self.assertIn("2 passed, 0 failed, 1 skipped", done.stdout)

    def test_a_failing_test_is_named_and_so_is_what_it_expected(self):
        done, results = self.run_share("Failing.*:Plain.p*")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(results["failures"], ["Failing.fails: failed", "Failing.throws: failed"])
        self.assertIn("FAILED: Failing.fails: failed", done.stdout)
        self.assertIn("Expected equality", done.stdout)
        self.assertEqual(results["outcomes"]["Plain.passes"], "passed")

    def test_a_crash_has_failed_and_hides_no_test_behind_it(self):
        done, results = self.run_share("Crashing.crashes:Lonely.*process:*/Numbers.*")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(results["failures"], ["Crashing.crashes: died of SIGABRT"])
        self.assertEqual(list(results["outcomes"].values()).count("passed"), 6)

    def test_a_test_that_ends_the_program_has_failed_even_with_status_0(self):
        done, results = self.run_share("Crashing.ends*:*/Numbers.*")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(results["failures"],
                         ["Crashing.ends_the_program: ended with status 0"])
        self.assertEqual(list(results["outcomes"].values()).count("passed"), 5)

    def test_a_hang_is_ended_and_hides_no_test_behind_it(self):
        done, results = self.run_share("Hanging.*:*/Numbers.*", "--seconds", "1")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(results["failures"], ["Hanging.hangs: took longer than 1 seconds"])
        self.assertEqual(list(results["outcomes"].values()).count("passed"), 5)

    def test_a_program_that_fails_at_its_end_has_failed(self):
        done, results = self.run_share("BadEnd.*:Plain.passes")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(results["failures"],
                         ["made_up_tests: ended with status 23 behind its tests"])
        self.assertEqual(set(results["outcomes"].values()), {"passed"})

    def test_tests_whose_suite_does_not_begin_have_failed_one_by_one(self):
        outcomes = self.outcomes("BadBegin.*:*/Numbers.*")
        self.assertEqual([outcomes[name] for name in NUMBERS], ["passed"] * 5)
        self.assertEqual(outcomes["BadBegin.is_never_begun"], "failed")
        self.assertEqual(outcomes["BadBegin.is_never_begun_either"], "failed")

    def test_only_tests_that_are_named_get_a_process_of_their_own(self):
        self.assertEqual(self.outcomes("Lonely.*"),
                         {"Lonely.is_the_first_of_its_process": "passed",
                          "Lonely.is_the_first_of_its_process_as_well": "failed"})
        own = self.directory / "own"
        own.write_text("# why\n\nLonely.*   # they count\n")
        self.assertEqual(set(self.outcomes("Lonely.*", "--own-process", own).values()), {"passed"})

    def test_shares_have_every_test_once(self):
        shares = [self.outcomes("Plain.*:*/Numbers.*", "--share", f"{i}/3") for i in (1, 2, 3)]
        names = [name for share in shares for name in share]
        self.assertEqual(sorted(names), sorted(
            [*NUMBERS, "Plain.passes", "Plain.passes_too", "Plain.is_skipped"]))
        self.assertTrue(all(len(share) in (2, 3) for share in shares))

    def test_tests_that_nobody_wants_to_wait_for_are_left_out_and_count_for_the_preset(self):
        long_ones = self.directory / "long"
        long_ones.write_text("*Numbers.*  # why\nHanging.*\n")
        results = self.directory / "results.json"
        subprocess.run([sys.executable, "-B", TESTING / "run_share.py", "--only=*Numbers.*:Plain.p*",
                        "--results", results, "--", PROGRAM], capture_output=True, check=True,
                       env=os.environ | {"KSV_TESTS_LEFT_OUT": str(long_ones)})
        found = json.loads(results.read_text())
        self.assertEqual(list(found["outcomes"]), ["Plain.passes", "Plain.passes_too"])
        self.assertIn(NUMBERS[0], found["listed"])

    def test_a_filter_may_leave_out(self):
        self.assertEqual(list(self.outcomes("*Numbers.*-*/0:*/1:*/2:*/3")), [NUMBERS[4]])


class Listing(unittest.TestCase):
    def test_comments_of_parameters_are_no_part_of_a_name(self):
        self.assertEqual(
            run_share.parsed_listing("One.\n  a\nP/Two.\n  b/0  # GetParam() = x.\n  b/y\n"),
            ["One.a", "P/Two.b/0", "P/Two.b/y"])


MADE_UP_PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(made_up NONE)
enable_testing()
include({project}/tests/shares.cmake)
add_executable(made_up_tests IMPORTED)
set_target_properties(made_up_tests PROPERTIES IMPORTED_LOCATION {program})
{tests}
"""
PRESETS = {
    "version": 6,
    "configurePresets": [{"name": "made_up", "generator": "Ninja",
                          "binaryDir": "${sourceDir}/build/made_up"}],
    "testPresets": [{"name": "made_up", "configurePreset": "made_up"}],
}
# Leaves the tests that do not end out, so that this one does.
GOOD_SHARES = "ksv_add_share(made_up_tests good 1/1 Plain.*:*Numbers.*)\n"
OTHER_SHARE = "ksv_add_share(made_up_tests others 1/1 -Plain.*:*Numbers.*:Hanging.*)\n"


class Presets(Scratch):
    def run_preset(self, tests):
        (self.directory / "CMakeLists.txt").write_text(
            MADE_UP_PROJECT.format(project=PROJECT, program=PROGRAM, tests=tests))
        (self.directory / "CMakePresets.json").write_text(json.dumps(PRESETS))
        subprocess.run(["cmake", "--preset", "made_up"], cwd=self.directory, check=True,
                       capture_output=True)
        done = subprocess.run([sys.executable, "-B", TESTING / "test_preset.py", "made_up",
                               "--root", self.directory, "--seconds", "1"],
                              capture_output=True, text=True)
        return done.returncode, done.stdout, done.stdout.splitlines()[-1]

    def test_what_no_share_runs_has_failed(self):
        status, output, last = self.run_preset(GOOD_SHARES + OTHER_SHARE)
        self.assertEqual(status, 1)
        self.assertIn("FAILED: made_up_tests: Hanging.hangs did not run", output)
        self.assertIn("FAILED: made_up_tests: Crashing.crashes: died of SIGABRT", output)
        # Of the others the two that fail, two that end the program, two of a bad begin, one that
        # is not alone, the bad end, and the one that did not run.
        self.assertEqual(last, "9 passed, 9 failed")

    def test_tests_of_ctest_count_as_one_each(self):
        status, output, last = self.run_preset(
            GOOD_SHARES + OTHER_SHARE
            + "add_test(NAME right COMMAND true)\nadd_test(NAME wrong COMMAND false)\n"
            + "add_test(NAME gone COMMAND no_such_program)\nadd_test(NAME slow COMMAND sleep 9)\n"
            + "add_test(NAME left_out COMMAND sh -c \"exit 77\")\n"
            + "set_tests_properties(left_out PROPERTIES SKIP_RETURN_CODE 77)\n")
        self.assertEqual(status, 1)
        self.assertIn("skipped: left_out", output)
        self.assertIn("skipped: made_up_tests: Plain.is_skipped", output)
        self.assertEqual(last, "10 passed, 12 failed")

    def test_a_test_in_two_shares_has_failed(self):
        _, output, _ = self.run_preset(GOOD_SHARES + GOOD_SHARES.replace("good", "again"))
        self.assertIn("FAILED: made_up_tests: Plain.passes is in two shares", output)

    def test_a_share_that_leaves_no_results_has_failed(self):
        status, output, last = self.run_preset(
            "set_target_properties(made_up_tests PROPERTIES IMPORTED_LOCATION /no/such)\n"
            + GOOD_SHARES)
        self.assertEqual(status, 1)
        self.assertIn("FAILED: good: no results", output)
        self.assertEqual(last, "0 passed, 2 failed")


TEST = re.compile(r"^TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", re.MULTILINE)


class Lists(unittest.TestCase):
    def test_every_pattern_of_the_lists_of_tests_names_one(self):
        tests = [".".join(found) for source in (PROJECT / "tests").rglob("*.cpp")
                 for found in TEST.findall(source.read_text())]
        for name in ("own_process.txt", "long.txt"):
            for pattern in run_share.patterns_in(PROJECT / "tests" / name):
                self.assertTrue(any(run_share.matches_any([pattern], test) for test in tests),
                                f"{name}: no test is {pattern}")


class Families(unittest.TestCase):
    def test_a_file_belongs_to_the_family_of_its_innermost_folder(self):
        for path, family in (("cconv/rules/names.h", "rules"), ("cconv/engine/mapping.cpp", "convert"),
                             ("tests/convert/bulk_test.cpp", "convert"),
                             ("tests/convert/reference/rules.cpp", "differential"),
                             ("cli/main.cpp", "cli"), ("include/ksv_ole.h", "exports"),
                             ("README.md", None), ("cmake/exports.cmake", "install")):
            self.assertEqual(check.family_of(path), family, path)

    def test_every_folder_of_a_family_is_there_and_every_program_has_a_family(self):
        for family in check.FAMILIES.values():
            for folder in family.folders:
                self.assertTrue((PROJECT / folder).is_dir(), folder)
        targets = {target for family in check.FAMILIES.values() for target in family.targets}
        for lists in (PROJECT / "tests").rglob("CMakeLists.txt"):
            for line in lists.read_text().splitlines():
                if line.startswith("ksv_add_shares("):
                    self.assertIn(line[len("ksv_add_shares("):].split()[0].rstrip(")"), targets)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
