"""Whether a program that something went wrong for did right."""

import os
import re
import shutil
from dataclasses import dataclass, field
from pathlib import Path

from tracing import Ended, Fault

_LOADER = re.compile(rb": error while loading shared libraries: |^cannot allocate TLS data ")
_PASSING = re.compile(r"(^|/)\.ksv-[0-9a-z]{12}$")


@dataclass
class Job:
    """What is done, on which files, and what comes of it when all goes well."""
    name: str
    argv: list[str]
    files: dict[str, bytes] = field(default_factory=dict)
    linked: dict[str, Path] = field(default_factory=dict)  # large files that nobody writes to
    stdin: bytes = b""
    env: dict[str, str] = field(default_factory=dict)  # @ stands for the directory of the run
    out: bytes | None = None        # None: as the clean run has it, which holds this:
    holds: bytes = b""
    # Files that come to be or change; None: that go.
    after: dict[str, bytes | None] = field(default_factory=dict)
    between: dict[str, bytes | None] = field(default_factory=dict)  # what a file may be on its way
    # Contents that are at every moment in one of these files.
    never_lost: list[tuple[bytes, tuple[str, ...]]] = field(default_factory=list)
    may_lack: re.Pattern | None = None  # files of those that are for later calls only
    any_after: bool = False         # those files are taken as the clean run leaves them
    operands: list[str] = field(default_factory=list)      # each is done for itself
    manifest: str | None = None     # a log that no two runs write alike: another call goes on with it
    in_place: bool = False          # an operand that is done is not done again
    passing: re.Pattern = _PASSING  # files that a kill may leave
    kinds: tuple = ("calls", "heap", "memory", "kill")
    walks_loader: bool = False      # one job shows what comes in front of main()
    begins_like: list[str] | None = None  # a call with the same allocations at its beginning
    tells: bool = True              # False: a test program, which answers 0 when all is well

    def set_up(self, room: Path) -> None:
        for name, content in self.files.items():
            (room / name).parent.mkdir(parents=True, exist_ok=True)
            if name == self.manifest:
                content = content.replace(b"@", str(room).encode())
            (room / name).write_bytes(content)
        for name, source in self.linked.items():
            (room / name).parent.mkdir(parents=True, exist_ok=True)
            os.link(source, room / name)

    def environment(self, room: Path) -> dict[str, str]:
        env = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TMPDIR": "@/tmp"} | self.env
        return {name: value.replace("@", str(room)) for name, value in env.items()}


def tree_of(job: Job, room: Path) -> dict[str, object]:
    """The tree that can be compared with that of other runs."""
    found = tree(room)
    found.pop(job.manifest, None)
    return found


def tree(room: Path) -> dict[str, object]:
    """What is in a directory. Of a file that other rooms share, who it is and when it changed."""
    found = {}
    for path in sorted(room.rglob("*")):
        name = str(path.relative_to(room))
        if path.is_symlink():
            found[name] = ("link", os.readlink(path))
        elif path.is_file():
            status = path.stat()
            shared = status.st_nlink > 3
            found[name] = (status.st_ino, status.st_mtime_ns) if shared else path.read_bytes()
    return found


@dataclass
class Expected:
    before: dict[str, object]
    after: dict[str, object]
    out: bytes
    err: bytes


NOT_BEGUN = "not begun"  # a test program's own calls failed: nothing is known of the library's
_STATUS_NOT_BEGUN = 3


@dataclass
class Verdict:
    kind: str  # right, told, not begun, or what is wrong
    reason: str = ""

    def is_violation(self) -> bool:
        return self.kind not in ("right", "told", NOT_BEGUN)


def _first(text: bytes) -> str:
    return text.decode("utf-8", "replace").strip().splitlines()[0] if text.strip() else ""


def _lost_standard_error(ended: Ended) -> bool:
    return any(b" write(2," in line for line in ended.injected())


def _unlink_failed(ended: Ended) -> bool:
    return any(b" unlink" in line for line in ended.injected())


def _is_lines_of(out: bytes, expected: bytes) -> bool:
    """Whether there are whole lines of the expected ones, and records of failures."""
    lines = set(expected.splitlines(keepends=True))
    return all(line in lines or b'"error":' in line for line in out.splitlines(keepends=True))


def _judge_end(job: Job, ended: Ended, expected: Expected) -> Verdict | None:
    if ended.hung:
        return Verdict("hang", _first(ended.err))
    if ended.status < 0:
        return Verdict("signal", f"{-ended.status}: {_first(ended.err)}")
    if not job.tells and ended.status == _STATUS_NOT_BEGUN:
        return Verdict(NOT_BEGUN)
    if not job.tells:
        return None if ended.status == 0 or _LOADER.search(ended.err) else Verdict(
            "wrong", _first(ended.err + ended.out))
    if ended.status == 0 and ended.out != expected.out:
        return Verdict("wrong output", _first(ended.err) or repr(ended.out[:80]))
    if ended.status == 0 and not _lost_standard_error(ended):
        if not set(expected.err.splitlines()) <= set(ended.err.splitlines()):
            return Verdict("not told", f"{expected.err!r} was to be said")
    if ended.status != 0 and not (expected.out.startswith(ended.out) or
                                  _is_lines_of(ended.out, expected.out)):
        return Verdict("wrong output", f"status {ended.status}: {ended.out[:80]!r}")
    return None


def _judge_words(job: Job, ended: Ended, expected: Expected, fault: Fault) -> Verdict | None:
    if not job.tells or _LOADER.search(ended.err) or _lost_standard_error(ended):
        return None
    said = [line for line in ended.err.splitlines() if line not in expected.err.splitlines()]
    if any(not re.match(rb"ksv: .*[^ ]", line) for line in said):
        return Verdict("strange words", _first(ended.err))
    if ended.status == 0:
        return None
    if not said:
        return Verdict("not told", f"status {ended.status} without a line")
    if fault.words and not any(fault.words.encode() in line for line in said):
        return Verdict("other words", _first(b"\n".join(said)))
    return None


def _judge_files(job: Job, ended: Ended, expected: Expected, now: dict[str, object],
                 killed: bool) -> Verdict | None:
    if ended.status == 0 and now == expected.after:
        return None
    for content, names in job.never_lost:
        if content not in (now.get(name) for name in names):
            return Verdict("lost", f"what was in one of {names}")
    for name in expected.before.keys() | expected.after.keys() | now.keys():
        states = [states.get(name) for states in (expected.before, expected.after)]
        if ended.status == 0 and not (job.may_lack and job.may_lack.search(name)):
            states = states[1:]
        if now.get(name) in (*states, job.between.get(name, states[-1])):
            continue
        if name not in now:
            return Verdict("lost", name)
        if None in states and job.passing.search(name):
            told = name.rsplit("/")[-1].encode() in ended.err
            if killed or (_unlink_failed(ended) and told):
                continue
            return Verdict("left over", f"{name}: status {ended.status} {_first(ended.err)}")
        return Verdict("wrong file", f"{name}: status {ended.status} {_first(ended.err)}")
    return None


def _judge_others(job: Job, ended: Ended, expected: Expected, now) -> Verdict | None:
    """Of several inputs those that did not fail are done."""
    lines = ended.err.decode("utf-8", "replace").splitlines()
    named = [name for name in job.operands
             if any(line.startswith(f"ksv: {name}: ") for line in lines)]
    about_operands = all(any(line.startswith(f"ksv: {name}: ") for name in job.operands)
                         for line in lines)
    if ended.status == 0 or not named or not about_operands:
        return None
    for name in set(job.operands) - set(named):
        for place in job.places_of(name) if hasattr(job, "places_of") else (name, f"out/{name}"):
            if now.get(place) != expected.after.get(place):
                return Verdict("not done", f"{place}, of which nothing was said")
    return None


def judge(job: Job, ended: Ended, expected: Expected, fault: Fault, room: Path) -> Verdict:
    now = tree_of(job, room)
    killed = fault.is_kill()
    verdict = None
    if not killed:
        verdict = _judge_end(job, ended, expected)
        if verdict is None and job.tells:
            verdict = _judge_words(job, ended, expected, fault)
    elif ended.hung:
        verdict = Verdict("hang", "")
    if verdict is None and job.tells:
        verdict = _judge_files(job, ended, expected, now, killed)
    if verdict is None and not killed:
        verdict = _judge_others(job, ended, expected, now)
    if verdict is not None:
        return verdict
    return Verdict("right" if ended.status == 0 and ended.err == expected.err else "told")


def argv_again(job: Job, room: Path, expected: Expected) -> list[str] | None:
    """The job as it is called once more; None when nothing is left to do."""
    if not job.in_place:
        return job.argv
    left = [name for name in job.operands
            if (room / name).read_bytes() == expected.before[name] != expected.after[name]]
    if not left:
        return None
    return [word for word in job.argv if word not in job.operands or word in left]


def judge_again(job: Job, ended: Ended, expected: Expected, room: Path, shortened: bool,
                killed: bool) -> Verdict:
    """The same job without faults, in the directory where one came about. Who has a manifest clears
    up what a kill has left."""
    if ended.hung:
        return Verdict("hang", "when called again")
    if ended.status != 0:
        return Verdict("not again", f"status {ended.status}: {_first(ended.err)}")
    if not shortened and ended.out != expected.out:
        return Verdict("not again", f"another output: {ended.out[:80]!r}")
    clears = job.manifest and killed
    now = {name: content for name, content in tree_of(job, room).items()
           if clears or not job.passing.search(name)}
    if now != expected.after:
        differ = {name for name in now.keys() | expected.after.keys()
                  if now.get(name) != expected.after.get(name)}
        return Verdict("not again", "other files: " + ", ".join(sorted(differ)))
    return Verdict("right")


def remove(room: Path) -> None:
    shutil.rmtree(room, ignore_errors=True)
