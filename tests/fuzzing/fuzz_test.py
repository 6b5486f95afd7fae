#!/usr/bin/env python3
"""scripts/fuzz, with a made-up target in the place of those that clang builds.

    fuzz_test.py SCRIPT
"""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SCRIPT = Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(SCRIPT.parent))
from fuzzing import corpus
from fuzzing.target import summary_of

MADE_UP = Path(__file__).resolve().parent / "made_up_target.py"
VIOLATED = "fuzz: violated: no more is read than is asked for"


class Runs(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.root = Path(self.directory.name)
        (self.root / "bin").mkdir()
        shutil.copy(MADE_UP, self.root / "bin/made_up")
        self.kept = self.root / "fuzz/corpus/made_up"
        self.kept.mkdir(parents=True)
        (self.kept / "seed").write_text("a")
        (self.root / "fuzz/targets.json").write_text(json.dumps({"made_up": {"max_len": 10}}))
        self.scratch = self.root / "scratch"
        self.scratch.mkdir()
        self.findings = self.root / "build/fuzz/findings/made_up"
        self.working = self.root / "build/fuzz/corpus/made_up"

    def start(self, *arguments, **environment):
        return subprocess.Popen(
            [sys.executable, SCRIPT, *arguments, "--minutes", "0.02", "--root", self.root,
             "--executables", self.root / "bin"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            text=True, env=os.environ | {"TMPDIR": str(self.scratch)} | environment)

    def fuzz(self, *arguments, **environment):
        process = self.start(*arguments, **environment)
        output, _ = process.communicate()
        return process.returncode, output.splitlines()

    def names(self, directory):
        return sorted(path.name for path in directory.iterdir())

    def test_tell_what_was_run_and_found(self):
        status, lines = self.fuzz(MADE_UP_FOUND='["ab", "abc"]')
        self.assertEqual(status, 0, lines)
        self.assertEqual(lines[0].split(), ["target", "wall", "s", "CPU", "s", "runs", "new", "findings"])
        for line, name in zip(lines[1:], ("made_up", "all"), strict=True):
            self.assertEqual(line.split()[0], name)
            self.assertEqual(line.split()[3:], ["1234", "2", "0"])

    def test_keep_a_crash_small_and_with_its_cause_once(self):
        status, lines = self.fuzz(MADE_UP_CAUSE=f"{VIOLATED}\nSUMMARY: libFuzzer: deadly signal")
        self.assertEqual(status, 1, lines)
        name = "crash-c032adc1ff629c9b66f22749ad667e6beadf144b"  # of "X"
        self.assertEqual(lines[0], f"made_up: {name}: {VIOLATED}")
        self.assertEqual(sum(name in line for line in lines), 1)
        self.assertEqual((self.findings / name).read_text(), "X")
        self.assertEqual((self.findings / "findings.txt").read_text(), f"{name}: {VIOLATED}\n")
        self.assertEqual(self.names(self.findings), [name, "findings.txt"])
        self.fuzz(MADE_UP_CAUSE=VIOLATED)
        self.assertEqual((self.findings / "findings.txt").read_text(), f"{name}: {VIOLATED}\n")

    def test_leave_of_the_working_corpus_what_covers_something(self):
        self.fuzz(MADE_UP_FOUND='["b", "bb", "c"]')
        self.assertEqual(sorted(path.read_text() for path in self.working.iterdir()), ["a", "b", "c"])

    def test_take_the_most_telling_inputs_into_the_committed_corpus(self):
        status, lines = self.fuzz("--keep", MADE_UP_FOUND='["abcdef", "b", "g"]')
        self.assertEqual(status, 0, lines)
        self.assertIn("seed", self.names(self.kept))
        found = {path.read_text() for path in self.kept.iterdir() if path.name != "seed"}
        self.assertLess({"g"}, found)
        self.assertTrue(found <= {"abcdef", "b", "g"}, found)

    def test_append_a_dated_line_for_each_target(self):
        totals = self.root / "totals.txt"
        totals.write_text("before\n")
        self.fuzz("--totals", totals)
        first, second = totals.read_text().splitlines()
        self.assertEqual(first, "before")
        self.assertRegex(second, r"^\d{4}-\d\d-\d\d made_up wall \d+ s, CPU \d+ s, 1234 runs, 0 new, "
                                 r"0 findings$")

    def test_leave_nothing_in_the_place_of_temporary_files(self):
        before = set(Path("/dev/shm").glob("ksv_fuzzing_*"))
        self.fuzz(MADE_UP_CAUSE=VIOLATED)
        self.assertEqual(set(Path("/dev/shm").glob("ksv_fuzzing_*")) - before, set())
        self.assertEqual(self.names(self.scratch), [])

    def test_end_what_they_started_when_they_are_ended(self):
        process = self.start(MADE_UP_HANGS="1")
        time.sleep(0.5)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=20)
        self.assertEqual(process.returncode, 2)
        running = subprocess.run(["pgrep", "-f", str(self.root)], stdout=subprocess.PIPE, text=True,
                                 check=False)
        self.assertEqual(running.stdout, "")

    def test_of_a_target_that_does_not_start_fail(self):
        (self.root / "bin/made_up").write_text("#!/bin/sh\necho cannot; exit 3\n")
        status, lines = self.fuzz()
        self.assertEqual(status, 2)
        self.assertIn("fuzz: made_up failed without an input (status 3):", lines)
        self.assertIn("cannot", lines)

    def test_of_an_unknown_target_are_refused(self):
        self.assertEqual(self.fuzz("other"), (2, ["fuzz: no target other; there are made_up"]))


class Summaries(unittest.TestCase):
    def test_are_the_line_that_says_most(self):
        report = "==1==ERROR: AddressSanitizer: x\nSUMMARY: AddressSanitizer: overflow a.cpp:1 in f\n"
        self.assertEqual(summary_of(report), "SUMMARY: AddressSanitizer: overflow a.cpp:1 in f")
        self.assertEqual(summary_of(f"INFO\n{VIOLATED}\nSUMMARY: libFuzzer: deadly signal"), VIOLATED)
        self.assertEqual(summary_of("SUMMARY: libFuzzer: timeout"), "SUMMARY: libFuzzer: timeout")
        self.assertEqual(summary_of("nothing of use"), "ended without a word")


class Choices(unittest.TestCase):
    FEATURES = {"seed": {1}, "all": {1, 2, 3, 4}, "two": {2}, "three": {3}, "known": {1}}

    def choose(self, most_files, most_bytes, all_size=10):
        sizes = {"seed": 5, "all": all_size, "two": 1, "three": 1, "known": 0}
        return corpus.choose(self.FEATURES, ["seed"], sizes, most_files, most_bytes)

    def test_are_those_that_cover_most_for_their_size(self):
        self.assertEqual(self.choose(9, 99), ["all"])
        self.assertEqual(self.choose(9, 99, all_size=90), ["two", "three", "all"])

    def test_keep_to_their_bounds(self):
        self.assertEqual(self.choose(1, 99, all_size=90), ["two"])
        self.assertEqual(self.choose(9, 9), ["two", "three"])
        self.assertEqual(self.choose(9, 0), [])


if __name__ == "__main__":
    unittest.main()
