"""One fuzz target: runs it from its corpora, makes what crashes it smaller, and merges what
it found.
"""
import hashlib
import os
import re
import shutil
import signal
import subprocess
import threading
import time
from dataclasses import dataclass
from pathlib import Path

from . import corpus

# What a run may take above the time that libFuzzer is told: starting under the sanitizers.
GRACE_SECONDS = 120
MINIMISE_SECONDS = 30
MERGE_SECONDS = 900
MOST_CRASHES = 5
RUNS = re.compile(r"stat::number_of_executed_units:\s*(\d+)")
SUMMARY_LINES = (re.compile(r"fuzz: violated: .*"), re.compile(r"SUMMARY: \w+Sanitizer: .*"),
                 re.compile(r"terminate called .*"), re.compile(r"SUMMARY: .*"))


class FuzzError(Exception):
    pass


def summary_of(log):
    """The one line of a log that says what went wrong."""
    for pattern in SUMMARY_LINES:
        found = pattern.search(log)
        if found:
            return found.group().strip()
    return "ended without a word"


@dataclass
class Totals:
    wall: float = 0
    cpu: float = 0
    runs: int = 0
    new: int = 0
    findings: int = 0

    def add(self, other):
        self.wall += other.wall
        self.cpu += other.cpu
        self.runs += other.runs
        self.new += other.new
        self.findings += other.findings


class Target:
    """kept is the committed corpus, work the directory of everything else."""

    def __init__(self, executable, kept, work, settings, scratch, dictionary=None,
                 patience=20):
        self.name = executable.name
        self.executable = executable
        self.kept = kept
        self.working = work / "corpus" / self.name
        self.findings = work / "findings" / self.name
        self.scratch = scratch / self.name
        self.totals = Totals()
        self.group = None
        self.most_kept = settings.get("most_kept")
        self.limits = [f"-max_len={settings.get('max_len', 4096)}", f"-timeout={patience}",
                       "-rss_limit_mb=2048", *settings.get("options", [])]
        self.dictionary = [f"-dict={dictionary}"] if dictionary else []
        for directory in (self.working, self.findings, self.scratch):
            directory.mkdir(parents=True, exist_ok=True)

    def execute(self, arguments, seconds):
        """The exit status and the log. What it takes is added to the totals."""
        begin = time.monotonic()
        log = self.scratch / "log"
        environment = os.environ | {"TMPDIR": str(self.scratch),
                                    "KSV_FUZZ_SCRATCH": str(self.scratch)}
        with log.open("wb") as output:
            process = subprocess.Popen([self.executable, *map(str, arguments)], cwd=self.scratch,
                                       env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, start_new_session=True)
        self.group = process.pid
        watch = threading.Timer(seconds, self.stop)
        watch.daemon = True
        watch.start()
        _, status, usage = os.wait4(process.pid, 0)
        self.group = None
        watch.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        self.totals.wall += time.monotonic() - begin
        self.totals.cpu += usage.ru_utime + usage.ru_stime
        return process.returncode, log.read_text(errors="replace")

    def stop(self):
        """Ends what runs, and all that it started."""
        if self.group is not None:
            os.killpg(self.group, signal.SIGKILL)

    def existing_corpora(self):
        return [path for path in (self.working, self.kept) if corpus.files_of(path)]

    def run(self, seconds):
        """Fuzzes for so long, and goes on behind what it finds."""
        end = time.monotonic() + seconds
        before = len(corpus.files_of(self.working))
        for _ in range(MOST_CRASHES):
            left = int(end - time.monotonic())
            if left <= 0 or self.run_once(left):
                break
        self.totals.new += len(corpus.files_of(self.working)) - before

    def run_once(self, seconds):
        """True when nothing was found."""
        artifacts = self.scratch / "artifacts"
        shutil.rmtree(artifacts, ignore_errors=True)
        artifacts.mkdir()
        directories = [self.working, *(path for path in [self.kept] if path.is_dir())]
        status, log = self.execute(
            [f"-max_total_time={seconds}", "-print_final_stats=1", f"-artifact_prefix={artifacts}/",
             *self.limits, *self.dictionary, *directories], seconds + GRACE_SECONDS)
        runs = RUNS.search(log)
        self.totals.runs += int(runs.group(1)) if runs else 0
        found = [path for path in corpus.files_of(artifacts) if not path.name.startswith("slow-")]
        for artifact in found:
            self.note_finding(artifact, summary_of(log))
        if status != 0 and not found:
            raise FuzzError(f"{self.name} failed without an input (status {status}):\n{log[-2000:]}")
        return status == 0

    def note_finding(self, artifact, summary):
        """Keeps what has not been found before, as small as it gets."""
        self.totals.findings += 1
        index = self.findings / "findings.txt"
        known = index.read_text().splitlines() if index.exists() else []
        if summary in {line.partition(": ")[2] for line in known}:
            return
        small = self.minimised(artifact)
        kind = artifact.name.partition("-")[0]
        name = f"{kind}-{hashlib.sha1(small).hexdigest()}"
        (self.findings / name).write_bytes(small)
        with index.open("a") as lines:
            lines.write(f"{name}: {summary}\n")
        print(f"{self.name}: {name}: {summary}", flush=True)

    def minimised(self, artifact):
        original = artifact.read_bytes()
        if not artifact.name.startswith("crash-"):
            return original
        smaller = self.scratch / "smaller"
        smaller.unlink(missing_ok=True)
        self.execute(["-minimize_crash=1", f"-max_total_time={MINIMISE_SECONDS}", *self.limits,
                      f"-exact_artifact_path={smaller}", artifact],
                     MINIMISE_SECONDS + GRACE_SECONDS)
        if smaller.exists() and smaller.stat().st_size < len(original):
            return smaller.read_bytes()
        return original

    def merge(self):
        """Leaves of the working corpus what is needed for all that it covers."""
        merged = self.scratch / "merged"
        merged.mkdir()
        self.merge_into(merged, self.existing_corpora())
        # Whole before it takes the place of the old one: either may be what an end leaves.
        new = self.working.with_name(self.name + ".new")
        shutil.rmtree(new, ignore_errors=True)
        shutil.copytree(merged, new)
        shutil.rmtree(self.working)
        new.rename(self.working)

    def merge_into(self, directory, sources, *options):
        status, log = self.execute(["-merge=1", *self.limits, *options, directory, *sources],
                                   MERGE_SECONDS)
        if status != 0:
            raise FuzzError(f"{self.name} does not merge (status {status}):\n{log[-2000:]}")

    def keep(self, most_files, most_bytes):
        """Takes the most telling inputs of the working corpus into the committed one."""
        seeds, found = self.scratch / "seeds", self.scratch / "found"
        for directory in (seeds, found):
            directory.mkdir()
        for path in [*corpus.files_of(self.working), *corpus.files_of(self.kept)]:
            is_found = corpus.FOUND_NAME.fullmatch(path.name)
            if is_found or path.parent == self.kept:
                shutil.copyfile(path, (found if is_found else seeds) / path.name)
        if not corpus.files_of(found):
            return
        control = self.scratch / "features.txt"
        self.merge_into(seeds, [found], "-set_cover_merge=1", f"-merge_control_file={control}")
        features, own = corpus.features_by_file(control)
        sizes = {name: Path(name).stat().st_size for name in features}
        chosen = corpus.choose(features, own, sizes, self.most_kept or most_files, most_bytes)
        self.kept.mkdir(parents=True, exist_ok=True)
        corpus.replace_found(self.kept, [Path(name) for name in chosen])
