#!/usr/bin/env python3
"""Lets each system call and each allocation of a program fail, one run each, and looks at what
comes of it: the right result, or a line that says why not and nothing that is wrong.

  walk.py --command build/release/ksv --charset build/release/charset [--whole | --sample K]
  walk.py --library build/release/library_faults [--whole | --sample K]

A library program lists the names of its jobs with --list, and does one with --job NAME --scratch
DIR: status 0 when all it looked at is right or noted, else lines that say what is not.

Exit status: 0 no violation, 1 violations, 77 when programs cannot be traced here.
"""

import argparse
import collections
import concurrent.futures
import datetime
import os
import random
import shutil
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

import tracing
from verdict import (NOT_BEGUN, Expected, Job, Verdict, argv_again, judge, judge_again, remove,
                     tree_of)

SKIPPED = 77
KINDS = ("calls", "heap", "memory", "kill")
AT_ONCE = 2
_OVERLAP = 0.98  # so much of what begins alike is left out


class NotWalkable(Exception):
    """The job does not even do without a fault what it is for."""


class Walk:
    """All runs of one job."""

    def __init__(self, job: Job, scratch: Path, limit: float, preload: str | None):
        self.job = job
        self._scratch = scratch
        self._limit = limit
        self._preload = preload
        self._numbers = iter(range(1 << 60))
        self._lock = threading.Lock()
        self._calls = []
        self._loader = 0  # calls in front of the program's own
        self._first = 0   # calls that are not walked
        self._expected = None

    def new_room(self) -> Path:
        with self._lock:
            room = self._scratch / f"{self.job.name}-{next(self._numbers)}"
        (room / "tmp").mkdir(parents=True)
        self.job.set_up(room)
        return room

    def _argv(self, room: Path, argv=None) -> list[str]:
        return [word.replace("@", str(room)) for word in argv or self.job.argv]

    def _run(self, room: Path, argv=None, more=()) -> tracing.Ended:
        env = self.job.environment(room) | dict(more)
        return tracing.run(self._argv(room, argv), room, env, self.job.stdin, self._limit)

    def _run_traced(self, room: Path, options, more=()) -> tracing.Ended:
        return tracing.run_traced(options, [*self._argv(room), *more], room,
                                  self.job.environment(room), self.job.stdin, self._limit)

    def _arguments_for(self, fault: tracing.Fault) -> list[str]:
        """What a program has to be told about what it cannot see."""
        return []

    def run_clean(self) -> None:
        room = self.new_room()
        before = tree_of(self.job, room)
        ended = self._run_traced(room, ())
        after = tree_of(self.job, room)
        remove(room)
        self._calls = tracing.calls_of(ended.trace)
        self._loader = tracing.loader_calls(ended.trace)
        self._first = 1 if self.job.walks_loader else self._loader
        unknown = tracing.unknown_calls(self._calls)
        if unknown:
            raise NotWalkable("no errors are known for " + ", ".join(unknown))
        if ended.status != 0 or ended.hung or self.job.holds not in ended.out:
            raise NotWalkable(f"status {ended.status}: {ended.out!r} {ended.err!r}")
        wanted = after if self.job.any_after else {
            name: content for name, content in (before | self.job.after).items()
            if content is not None}
        if after != wanted or self.job.out not in (None, ended.out):
            names = {name for name in after.keys() | wanted.keys()
                     if after.get(name) != wanted.get(name)}
            raise NotWalkable(f"other results: {sorted(names)} {ended.out!r}")
        self._expected = Expected(before, after, ended.out, ended.err)

    def _allocations(self, argv=None) -> int:
        room = self.new_room()
        with tempfile.NamedTemporaryFile(prefix="count-") as count:
            self._run(room, argv, (("LD_PRELOAD", self._preload), ("KSV_COUNT", count.name)))
            remove(room)
            return int(count.read() or 0)

    def _memory_faults(self) -> list[tracing.Fault]:
        if not self._preload:
            return []
        first = 1
        if self.job.begins_like:  # the beginning is walked where nothing else is done
            first = int(self._allocations(self.job.begins_like) * _OVERLAP)
        return tracing.memory_faults(first, self._allocations(), self._preload)

    def faults(self, kind: str) -> list[tracing.Fault]:
        if kind == "calls":
            return tracing.call_faults(self._calls, self._first, self._loader)
        if kind == "heap":
            return tracing.heap_faults(self._calls, self._loader)
        if kind == "kill":
            return tracing.kill_faults(self._calls, self._first)
        return self._memory_faults()

    def _do(self, fault: tracing.Fault, room: Path) -> tuple[Verdict, tracing.Ended]:
        if fault.options:
            ended = self._run_traced(room, fault.options, self._arguments_for(fault))
        else:
            ended = self._run(room, more=fault.environment)
        verdict = judge(self.job, ended, self._expected, fault, room)
        if not verdict.is_violation() and self.job.tells and not self._is_done(room, ended):
            again = argv_again(self.job, room, self._expected)
            if again is not None:
                second = judge_again(self.job, self._run(room, again), self._expected, room,
                                     again != self.job.argv, fault.is_kill())
                verdict = second if second.is_violation() else verdict
        return verdict, ended

    def _is_done(self, room: Path, ended: tracing.Ended) -> bool:
        return ended.status == 0 and self.job.in_place

    def judge_fault(self, fault: tracing.Fault) -> tuple[tracing.Fault, Verdict, tracing.Ended]:
        room = self.new_room()
        try:
            verdict, ended = self._do(fault, room)
            return fault, verdict, ended
        finally:
            remove(room)


class LibraryWalk(Walk):
    """Only the calls that the library makes are walked, of a program that finds the right answer in
    its first run in a directory."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._prepared = None

    def new_room(self) -> Path:
        if self._prepared is None:
            return super().new_room()
        with self._lock:
            room = self._scratch / f"{self.job.name}-{next(self._numbers)}"
        shutil.copytree(self._prepared, room, symlinks=True)
        return room

    def run_clean(self) -> None:
        prepared = self.new_room()
        learned = self._run(prepared)
        if learned.status != 0:
            raise NotWalkable(f"status {learned.status}: {learned.out!r} {learned.err!r}")
        self._prepared = prepared
        room = self.new_room()
        ended = self._run_traced(room, ())
        remove(room)
        self._calls = tracing.calls_of(ended.trace)
        self._loader = tracing.loader_calls(ended.trace)
        self._first, last = tracing.calls_of_library(ended.trace)
        self._calls = self._calls[:last]
        if ended.status != 0:
            raise NotWalkable(f"status {ended.status}: {ended.out!r} {ended.err!r}")
        unknown = tracing.unknown_calls(self._calls)
        if unknown:
            raise NotWalkable("no errors are known for " + ", ".join(unknown))
        self._expected = Expected({}, {}, ended.out, ended.err)

    def faults(self, kind: str) -> list[tracing.Fault]:
        return tracing.call_faults(self._calls, self._first)

    def _arguments_for(self, fault: tracing.Fault) -> list[str]:
        told = ["--recovers"] if fault.alone else ["--closing-fails"]
        if fault.call == "close":
            told.append("--closing-fails")
        if fault.call in ("unlink", "unlinkat", "rmdir"):
            told.append("--removing-fails")
        return told


class Totals:
    """What came of the places of each job and kind."""

    def __init__(self):
        self._rows = []
        self._reasons = collections.Counter()

    def add(self, job: str, kind: str, places: int, verdicts) -> None:
        counted = collections.Counter(verdict.kind for verdict in verdicts)
        wrong = sum(1 for verdict in verdicts if verdict.is_violation())
        for verdict in verdicts:
            if verdict.is_violation():
                self._reasons[verdict.kind] += 1
        self._rows.append((job, kind, places, len(verdicts), counted["right"], counted["told"],
                           counted[NOT_BEGUN], wrong))

    def violations(self) -> int:
        return sum(row[-1] for row in self._rows)

    def lines(self) -> list[str]:
        head = ("job", "kind", "places", "runs", "right", "told", "not begun", "violations")
        sums = ("all", "", *(sum(row[i] for row in self._rows) for i in range(2, 8)))
        rows = [head, *self._rows, sums]
        text = [f"{row[0]:<32}{row[1]:<8}" + "".join(f"{cell:>11}" for cell in row[2:])
                for row in rows]
        return text + [f"{kind}: {count}" for kind, count in sorted(self._reasons.items())]


def tell(job: str, fault: tracing.Fault, verdict: Verdict, ended: tracing.Ended) -> None:
    print(f"{job}: {fault}: {verdict.kind}: {verdict.reason}")
    for line in ended.injected()[:2]:
        print("    " + line.decode("utf-8", "replace"))


def walk_job(job: Job, kinds, options, scratch: Path, totals: Totals) -> None:
    walk = (Walk if job.tells else LibraryWalk)(job, scratch, options.limit, options.preload)
    walk.run_clean()
    for kind in (kind for kind in kinds if kind in job.kinds):
        faults = walk.faults(kind)
        if not faults:
            continue
        chosen = faults
        if options.sample and options.sample < len(faults):
            chosen = random.Random(f"{options.seed} {job.name} {kind}").sample(faults,
                                                                              options.sample)
        verdicts = []
        with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
            for fault, verdict, ended in pool.map(walk.judge_fault, chosen):
                verdicts.append(verdict)
                if verdict.is_violation():
                    tell(job.name, fault, verdict, ended)
        totals.add(job.name, kind, len(faults), verdicts)
        sys.stdout.flush()


def library_jobs(program: str) -> list[Job]:
    names = subprocess.run([program, "--list"], capture_output=True, text=True, check=True)
    return [Job(name=name, argv=[program, "--job", name, "--scratch", "@"], kinds=("calls",),
                any_after=True, tells=False) for name in names.stdout.split()]


def commit() -> str:
    place = Path(__file__).parent
    found = subprocess.run(["git", "-C", place, "describe", "--always", "--dirty"],
                           capture_output=True, text=True)
    return found.stdout.strip() or "unknown"


def write_totals(path: str, totals: Totals, options, walked: str) -> None:
    extent = f"{options.sample} places of each row, seed {options.seed}" if options.sample else "all"
    head = f"{datetime.date.today()}, commit {walked}: {extent}"
    Path(path).write_text("\n".join([head, "", *totals.lines(), ""]))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--command", help="the command, whose jobs are known here")
    parser.add_argument("--charset", help="its charset directory")
    parser.add_argument("--library", help="a program that lists its jobs itself")
    parser.add_argument("--preload", help="the object whose allocations fail")
    parser.add_argument("--job", action="append", help="these jobs only")
    parser.add_argument("--kind", action="append", choices=KINDS, help="these kinds only")
    parser.add_argument("--sample", type=int, default=0, help="so many places of a job and kind")
    parser.add_argument("--whole", action="store_true", help="all places")
    parser.add_argument("--seed", type=int, default=1, help="chooses the places of a sample")
    parser.add_argument("--limit", type=float, default=20, help="seconds that a run may take")
    parser.add_argument("--totals", help="writes the totals to this file")
    parser.add_argument("--names", action="store_true", help="lists the jobs, and ends")
    options = parser.parse_args()
    if not options.whole and not options.sample and not options.names:
        options.sample = 20
    if bool(options.command) == bool(options.library):
        parser.error("one of --command and --library is needed")
    return options


def jobs_for(options) -> list[Job]:
    if options.library:
        jobs = library_jobs(str(Path(options.library).resolve()))
    else:
        from command_jobs import command_jobs
        jobs = command_jobs(Path(options.command).resolve(), Path(options.charset).resolve())
    known = {job.name for job in jobs}
    for name in options.job or ():
        if name not in known:
            sys.exit(f"there is no job {name}")
    return [job for job in jobs if not options.job or job.name in options.job]


def main() -> int:
    options = arguments()
    if options.preload:
        options.preload = str(Path(options.preload).resolve())
    kinds = options.kind or KINDS
    if set(kinds) - {"memory"} and not tracing.can_trace():
        print("skipped: strace cannot trace programs here")
        return SKIPPED
    jobs = jobs_for(options)
    if options.names:
        print("\n".join(job.name for job in jobs))
        return 0
    totals = Totals()
    walked = commit()
    with tempfile.TemporaryDirectory(prefix="walk-") as scratch:
        for job in jobs:
            try:
                walk_job(job, kinds, options, Path(scratch), totals)
            except NotWalkable as reason:
                print(f"{job.name}: {reason}")
                totals.add(job.name, "clean", 1, [Verdict("not clean")])
    print("\n".join(totals.lines()))
    if options.totals:
        write_totals(options.totals, totals, options, walked)
    return 1 if totals.violations() else 0


if __name__ == "__main__":
    sys.exit(main())
