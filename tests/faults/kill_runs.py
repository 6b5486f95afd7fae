#!/usr/bin/env python3
"""Kills runs with a manifest at random moments, again and again until they come to their end, and
looks after each kill at what is there: every text is as it was or converted, whole, and every
original is somewhere. In the end there is what a run leaves that was left in peace; and what takes
the run back, killed as well, gives the texts that there were.

  kill_runs.py --command build/release/ksv --charset build/release/charset [--files N] [--kills N]

Exit status: 0 no violation, 1 violations.
"""

import argparse
import collections
import dataclasses
import datetime
import hashlib
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from walk import commit

MANIFEST = "m.ndjson"
DIRECTORIES = 10


@dataclasses.dataclass(frozen=True)
class Kind:
    """A way to run that is killed."""
    name: str
    options: tuple[str, ...]
    suffix: str = ""       # under which originals are kept
    directory: str = ""    # that results go to

    def place(self, name: str) -> str:
        return f"{self.directory}/{Path(name).name}" if self.directory else name


KINDS = (Kind("kept", ("--in-place=.orig",), suffix=".orig"),
         Kind("kept, two at once", ("--in-place=.orig", "-j", "2"), suffix=".orig"),
         Kind("in place", ("--in-place", "-j", "2")),
         Kind("elsewhere", ("--output-dir", "out", "-j", "2"), directory="out"))


def text_of(number: int, chance: random.Random) -> bytes:
    """What is converted twice differs from what is converted once, and tells nobody."""
    if number % 50 == 7:
        return b"no character of windows-1252: \x81\n"
    if number % 10 == 3:
        return b"stays the same\n" * chance.randrange(1, 40)
    letters = bytes(chance.choice(b"abc \xe9\xe8\xfc\xa9\n") for _ in range(chance.randrange(1, 400)))
    return letters * chance.choice((1, 1, 1, 40)) + b"\xe9"


def texts_of(count: int, chance: random.Random) -> dict[str, bytes]:
    return {f"d{number % DIRECTORIES}/{number:05}.txt": text_of(number, chance)
            for number in range(count)}


def converted(text: bytes) -> bytes | None:
    try:
        return text.decode("cp1252").encode()
    except UnicodeDecodeError:
        return None


def make(room: Path, texts: dict[str, bytes]) -> None:
    for name, text in texts.items():
        path = room / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)
        moment = 10**18 + int(hashlib.sha256(text).hexdigest()[:8], 16)
        os.utime(path, ns=(moment, moment))


def tree(room: Path) -> dict[str, tuple]:
    """Bytes, permissions and time of each file but the manifest."""
    found = {}
    for path in room.rglob("*"):
        if path.is_file() and path.name != MANIFEST:
            status = path.stat()
            found[str(path.relative_to(room))] = (path.read_bytes(), status.st_mode,
                                                  status.st_mtime_ns)
    return found


def without_new_times(found: dict[str, tuple], kind: Kind) -> dict[str, tuple]:
    """Files that are new have the time at which they were made."""
    return {name: facts[:2] if kind.directory and name.startswith(kind.directory) else facts
            for name, facts in found.items()}


def results(room: Path, kind: Kind) -> dict[str, dict]:
    """The last result of each text that a manifest tells, without what differs from run to run."""
    passing = ("time", "modifiedAfter") if kind.directory else ("time",)
    last = {}
    for line in (room / MANIFEST).read_text().splitlines():
        record = json.loads(line)
        if record["record"] == "result":
            last[record["path"]] = {name: value for name, value in record.items()
                                    if name not in passing}
    return last


class Runs:
    """All runs of one kind, and what was wrong with them."""

    def __init__(self, options, kind: Kind, texts: dict[str, bytes], chance: random.Random):
        self._command = str(Path(options.command).resolve())
        self._environment = os.environ | {"Charsetpath": str(Path(options.charset).resolve()),
                                          "LC_ALL": "C.UTF-8"}
        self._kind = kind
        self._texts = texts
        self._converted = {name: converted(text) for name, text in texts.items()}
        self._chance = chance
        self._names = sorted(texts)
        self.counts = collections.Counter()
        self.violations = []

    def _convert(self) -> list[str]:
        return [self._command, "convert", "-f", "windows-1252", "-t", "UTF-8", *self._kind.options,
                "--manifest", MANIFEST, "--resume", *self._names]

    def _undo(self) -> list[str]:
        return [self._command, "convert", "--undo", MANIFEST]

    def _run(self, room: Path, argv: list[str], delay: float | None) -> int:
        started = subprocess.Popen(argv, cwd=room, env=self._environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        try:
            _, self._said = started.communicate(timeout=delay)
        except subprocess.TimeoutExpired:
            started.kill()
            _, self._said = started.communicate()
        return started.returncode

    def _wrong(self, what: str) -> None:
        self.violations.append(f"{self._kind.name}: {what}")

    def run_in_peace(self, scratch: Path) -> float:
        room = scratch / "peace"
        make(room, self._texts)
        begun = time.monotonic()
        status = self._run(room, self._convert(), None)
        took = time.monotonic() - begun
        if status != 1:  # some texts are none
            self._wrong(f"status {status} in peace: {self._said[-200:]!r}")
        self._expected = without_new_times(tree(room), self._kind)
        self._results = results(room, self._kind)
        for name, after in self._converted.items():
            if (room / self._kind.place(name)).exists() and after is not None:
                if (room / self._kind.place(name)).read_bytes() != after:
                    self._wrong(f"{name} is converted otherwise")
        shutil.rmtree(room)
        return took

    def _look_after_kill(self, room: Path) -> None:
        for name, before in self._texts.items():
            after = self._converted[name]
            place = room / name
            now = place.read_bytes() if place.exists() else None
            kept = room / (name + self._kind.suffix)
            if now == after and now != before and self._kind.suffix:
                if not kept.exists() or kept.read_bytes() != before:
                    self._wrong(f"the original of {name} is lost")
            elif now == before or (now == after and not self._kind.directory):
                pass
            elif now is None and self._kind.suffix and kept.exists():
                if kept.read_bytes() != before:
                    self._wrong(f"the original of {name} is lost")
            else:
                self._wrong(f"{name} is neither as it was nor converted")
            result = room / self._kind.place(name)
            if self._kind.directory and result.exists() and result.read_bytes() != after:
                self._wrong(f"the result of {name} is not whole")

    def _repeat(self, room: Path, argv: list[str], longest: float, kills: int, what: str) -> int:
        """Until it comes to its end. Returns its status."""
        for _ in range(kills):
            status = self._run(room, argv, self._chance.uniform(0, longest))
            if status >= 0:
                return status
            self.counts[what] += 1
            self._look_after_kill(room)
        return self._run(room, argv, None)

    def round(self, scratch: Path, longest: float, kills: int) -> None:
        room = scratch / "killed"
        make(room, self._texts)
        self._repeat(room, self._convert(), longest, kills, "kills")
        self._compare(room)
        if self._kind.suffix:
            status = self._repeat(room, self._undo(), longest, kills, "kills of undo")
            original = {name: facts[0] for name, facts in tree(room).items()}
            if status != 0 or original != self._texts:
                self._wrong(f"the texts are not what they were: {status} {self._said[-200:]!r}")
        self.counts["rounds"] += 1
        shutil.rmtree(room)

    def _compare(self, room: Path) -> None:
        now = without_new_times(tree(room), self._kind)
        for name in sorted(now.keys() | self._expected.keys()):
            if now.get(name) != self._expected.get(name):
                self._wrong(f"{name} differs from that of a run in peace")
        if results(room, self._kind) != self._results:
            self._wrong("the manifest tells something else than that of a run in peace")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--command", required=True)
    parser.add_argument("--charset", required=True, help="its charset directory")
    parser.add_argument("--files", type=int, default=2000)
    parser.add_argument("--kills", type=int, default=200, help="of runs of each kind, at least")
    parser.add_argument("--a-round", type=int, default=20, help="kills until a run is left in peace")
    parser.add_argument("--kind", action="append", choices=[kind.name for kind in KINDS])
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--totals", help="writes the totals to this file")
    return parser.parse_args()


def lines_of(totals: list[tuple]) -> list[str]:
    head = ("kind", "files", "rounds", "kills", "kills of undo", "violations")
    return [f"{row[0]:<20}" + "".join(f"{cell:>15}" for cell in row[1:]) for row in (head, *totals)]


def main() -> int:
    options = arguments()
    totals = []
    walked = commit()
    for kind in KINDS:
        if options.kind and kind.name not in options.kind:
            continue
        chance = random.Random(f"{options.seed} {kind.name}")
        runs = Runs(options, kind, texts_of(options.files, chance), chance)
        with tempfile.TemporaryDirectory(prefix="kill-") as scratch:
            took = runs.run_in_peace(Path(scratch))
            while runs.counts["kills"] < options.kills and not runs.violations:
                runs.round(Path(scratch), took / 3, options.a_round)
        for violation in runs.violations[:10]:
            print(violation)
        totals.append((kind.name, options.files, runs.counts["rounds"], runs.counts["kills"],
                       runs.counts["kills of undo"], len(runs.violations)))
        print(lines_of(totals)[-1], flush=True)
    if options.totals:
        head = f"{datetime.date.today()}, commit {walked}: seed {options.seed}"
        Path(options.totals).write_text("\n".join([head, "", *lines_of(totals), ""]))
    return 1 if any(row[-1] for row in totals) else 0


if __name__ == "__main__":
    sys.exit(main())
