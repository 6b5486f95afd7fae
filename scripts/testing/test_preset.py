#!/usr/bin/env python3
"""Runs the tests of a built preset by ctest, and counts them one by one: those of the shares as
GoogleTest counts them, every other test of ctest as one. The last line is 'N passed, M failed';
what was skipped is neither. A test that is listed and did not run has failed.

    scripts/testing/test_preset.py release --jobs 2
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as xml
from collections import Counter
from pathlib import Path

RUNNER = "run_share.py"
# Lines of ctest that are of no interest where all went well.
UNEVENTFUL = re.compile(r"^ +Start +\d+: |^ *\d+/\d+ Test +#\d+: .* Passed ")
SKIPPED_MESSAGES = ("SKIP_RETURN_CODE", "SKIP_REGULAR_EXPRESSION", "Disabled")


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("preset")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--seconds", type=int, default=300,
                        help="that a test may take which is no share of a program")
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parents[2],
                        help=argparse.SUPPRESS)
    return parser.parse_args()


def listed_tests(root, preset):
    """Of each test of ctest its command."""
    done = subprocess.run(["ctest", "--preset", preset, "--show-only=json-v1"], cwd=root,
                          stdout=subprocess.PIPE, check=True)
    return {test["name"]: test.get("command", []) for test in json.loads(done.stdout)["tests"]}


def results_file(command):
    """Where a share writes its results; none of a test that is no share."""
    if not any(Path(word).name == RUNNER for word in command):
        return None
    return Path(command[command.index("--results") + 1])


def run_ctest(root, preset, jobs, seconds, report):
    """Shows what is of interest, and gives the status."""
    command = ["ctest", "--preset", preset, "--output-on-failure", "--timeout", str(seconds),
               "--parallel", str(jobs), "--output-junit", str(report)]
    with subprocess.Popen(command, cwd=root, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace") as process:
        for line in process.stdout:
            if not UNEVENTFUL.match(line):
                print(line, end="", flush=True)
    return process.returncode


def reported_outcomes(report):
    """What ctest says became of each of its tests."""
    outcomes = {}
    for case in xml.parse(report).iter("testcase"):
        skipped = case.find("skipped")
        message = "" if skipped is None else skipped.get("message", "")
        if case.get("status") == "run":
            outcome = "passed"
        elif message.startswith(SKIPPED_MESSAGES) or case.get("status") == "disabled":
            outcome = "skipped"
        else:
            outcome = "failed"
        outcomes[case.get("name")] = outcome
    return outcomes


class Sum:
    def __init__(self):
        self.counts = Counter()
        self.listed = {}
        self.ran = {}

    def fail(self, what):
        print(f"FAILED: {what}")
        self.counts["failed"] += 1

    def add_test(self, name, outcome):
        if outcome is None:
            self.fail(f"{name}: ctest did not run it")
            return
        self.counts[outcome] += 1
        if outcome == "skipped":
            print(f"skipped: {name}")

    def add_share(self, name, outcome, results):
        if not results.exists():
            self.fail(f"{name}: no results")
            return
        share = json.loads(results.read_text())
        program = share["program"]
        self.listed.setdefault(program, set()).update(share["listed"])
        ran = self.ran.setdefault(program, set())
        for test, became in share["outcomes"].items():
            if test in ran:
                self.fail(f"{program}: {test} is in two shares")
            ran.add(test)
            if became != "failed":
                self.add_test(f"{program}: {test}", became)
        for failure in share["failures"]:
            self.fail(f"{program}: {failure}")
        if outcome != "passed" and not share["failures"]:
            self.fail(f"{name}: {outcome or 'not run'} without a failure of its own")

    def add_those_that_did_not_run(self):
        for program, listed in self.listed.items():
            for test in sorted(listed - self.ran[program]):
                self.fail(f"{program}: {test} did not run")


def main():
    arguments = parse_arguments()
    tests = listed_tests(arguments.root, arguments.preset)
    for directory in {path.parent for path in map(results_file, tests.values()) if path}:
        shutil.rmtree(directory, ignore_errors=True)
    report = arguments.root / "build" / arguments.preset / "tests.xml"
    report.unlink(missing_ok=True)
    status = run_ctest(arguments.root, arguments.preset, arguments.jobs, arguments.seconds, report)
    outcomes = reported_outcomes(report) if report.exists() else {}
    total = Sum()
    for name, command in tests.items():
        results = results_file(command)
        if results is None:
            total.add_test(name, outcomes.get(name))
        else:
            total.add_share(name, outcomes.get(name), results)
    total.add_those_that_did_not_run()
    if status != 0 and total.counts["failed"] == 0:
        total.fail(f"{arguments.preset}: ctest ended with status {status}")
    if total.counts["passed"] == 0:
        total.fail(f"{arguments.preset}: no test passed")
    print(f"{total.counts['passed']} passed, {total.counts['failed']} failed")
    return 1 if total.counts["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
