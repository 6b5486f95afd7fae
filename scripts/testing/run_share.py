#!/usr/bin/env python3
"""Runs one share of the tests of a GoogleTest program, as many as can be in one process, and
writes what became of each.

    run_share.py --share 2/8 --own-process tests/own_process.txt --results FILE -- PROGRAM

A process that dies costs the test that it was running, not those behind it: they run in the
next one. One whose test takes longer than it may is ended. Status 1 when a test failed, died,
hung or did not run, or when a program failed at its end (a leak, say) though its tests passed.
"""
import argparse
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PASSED, FAILED, SKIPPED = "passed", "failed", "skipped"
OUTCOMES = (PASSED, FAILED, SKIPPED)
LISTING_SECONDS = 300
# Names a file of patterns of tests that are not run, where one does not want to wait for them.
LEFT_OUT = "KSV_TESTS_LEFT_OUT"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--share", default="1/1", help="NUMBER/COUNT")
    parser.add_argument("--only", default="*", help="a filter as GoogleTest takes it")
    parser.add_argument("--own-process", type=Path, help="patterns of tests, one a line")
    parser.add_argument("--seconds", type=float, default=300, help="that a test may take")
    parser.add_argument("--results", type=Path, required=True, help="written")
    parser.add_argument("command", nargs="+", help="the program, behind --")
    return parser.parse_args()


def pattern_of(text):
    """A pattern of GoogleTest, in which * and ? mean what they do for names of files."""
    return "".join({"*": ".*", "?": "."}.get(c, re.escape(c)) for c in text)


def matches_any(patterns, name):
    return any(re.fullmatch(pattern_of(pattern), name) for pattern in patterns)


def passes(test_filter, name):
    wanted, _, unwanted = test_filter.partition("-")
    return (matches_any((wanted or "*").split(":"), name)
            and not (unwanted and matches_any(unwanted.split(":"), name)))


def patterns_in(path):
    """What stands before the reason on each line."""
    if path is None:
        return []
    lines = (line.partition("#")[0].split() for line in Path(path).read_text().splitlines())
    return [words[0] for words in lines if words]


def parsed_listing(text):
    """Full names from what --gtest_list_tests prints; disabled tests are none."""
    names, suite = [], None
    for line in text.splitlines():
        name = line.partition("#")[0].strip()
        if line.startswith("  ") and suite is not None:
            if "DISABLED_" not in suite + name:
                names.append(suite + name)
        elif name.endswith("."):
            suite = name
    return names


class Ending:
    """How a process of the program ended, and what its tests came to."""

    def __init__(self, outcomes, running, how, is_clean):
        self.outcomes = outcomes
        self.running = running
        self.how = how
        self.is_clean = is_clean


def read_events(path):
    """The outcomes so far, and the test that has begun and not ended."""
    outcomes, running = {}, None
    for line in path.read_text().splitlines():
        event, _, name = line.partition(" ")
        if event == "began":
            running = name
        elif event in OUTCOMES and name == running:
            outcomes[name] = event
            running = None
    return outcomes, running


class Program:
    def __init__(self, command, seconds):
        self.command = command
        self.seconds = seconds
        self.name = Path(command[-1]).stem

    def tests(self):
        done = subprocess.run([*self.command, "--gtest_list_tests"], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, timeout=LISTING_SECONDS, check=True)
        return parsed_listing(done.stdout.decode())

    def run(self, names):
        """Runs these in one process."""
        with tempfile.TemporaryDirectory(prefix="ksv_share") as scratch:
            events = Path(scratch, "events")
            events.touch()
            flags = Path(scratch, "flags")
            flags.write_text(f"--gtest_filter={':'.join(names)}\n--gtest_brief=1\n")
            sys.stdout.flush()
            process = subprocess.Popen(
                [*self.command, f"--gtest_flagfile={flags}", f"--results={events}"],
                stdin=subprocess.DEVNULL, stderr=subprocess.STDOUT, start_new_session=True)
            try:
                is_hung = not self.ends_in_time(process, events)
            finally:
                end_all_of(process)
            outcomes, running = read_events(events)
        status = process.returncode
        some_failed = FAILED in outcomes.values()
        is_clean = not is_hung and (status == 0 or (status == 1 and some_failed))
        return Ending(outcomes, running, self.told(status, is_hung), is_clean)

    def ends_in_time(self, process, events):
        """False when a test takes longer than it may."""
        size, since = 0, time.monotonic()
        while True:
            try:
                process.wait(timeout=0.5)
                return True
            except subprocess.TimeoutExpired:
                now = time.monotonic()
                if events.stat().st_size != size:
                    size, since = events.stat().st_size, now
                elif now - since > self.seconds:
                    return False

    def told(self, status, is_hung):
        if is_hung:
            return f"took longer than {self.seconds:g} seconds"
        if status < 0:
            return f"died of {signal.Signals(-status).name}"
        return f"ended with status {status}"


def end_all_of(process):
    """The process and, when it had to be killed, what it started."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


class Share:
    """The tests of one share and what they come to."""

    def __init__(self, program, names):
        self.program = program
        self.names = names
        self.outcomes = {}
        self.failures = []

    def fail(self, name, why):
        self.outcomes[name] = FAILED
        self.failures.append(f"{name}: {why}")

    def run(self, patterns):
        alone = [name for name in self.names if matches_any(patterns, name)]
        together = [name for name in self.names if name not in set(alone)]
        for batch in [together, *([name] for name in alone)]:
            while batch:
                batch = self.run_once(batch)

    def run_once(self, batch):
        """Gives what still has to run."""
        ending = self.program.run(batch)
        for name, outcome in ending.outcomes.items():
            if outcome == FAILED:
                self.fail(name, "failed")
            else:
                self.outcomes[name] = outcome
        if ending.running is not None:
            self.fail(ending.running, ending.how)
        remaining = [name for name in batch if name not in self.outcomes]
        if len(remaining) == len(batch):
            # It does not get as far as a test, or runs others: each is tried once.
            self.fail(batch[0], f"did not run: the program {ending.how}")
            return remaining[1:]
        if ending.running is None and not ending.is_clean:
            self.failures.append(f"{self.program.name}: {ending.how} behind its tests")
        return remaining


def main():
    arguments = parse_arguments()
    arguments.results.unlink(missing_ok=True)
    number, count = (int(part) for part in arguments.share.split("/"))
    program = Program(arguments.command, arguments.seconds)
    listed = program.tests()
    left_out = patterns_in(os.environ.get(LEFT_OUT))
    chosen = [name for name in listed
              if passes(arguments.only, name) and not matches_any(left_out, name)]
    share = Share(program, chosen[number - 1::count])
    share.run(patterns_in(arguments.own_process))
    arguments.results.parent.mkdir(parents=True, exist_ok=True)
    arguments.results.write_text(json.dumps(
        {"program": program.name, "listed": listed, "outcomes": share.outcomes,
         "failures": share.failures}, indent=1))
    for failure in share.failures:
        print(f"FAILED: {failure}")
    counts = {kind: list(share.outcomes.values()).count(kind) for kind in OUTCOMES}
    print(f"{program.name}, share {arguments.share}: {counts[PASSED]} passed, "
          f"{counts[FAILED]} failed, {counts[SKIPPED]} skipped")
    return 1 if share.failures else 0


if __name__ == "__main__":
    sys.exit(main())
