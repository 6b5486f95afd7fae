"""Builds the project once, and then tries mutants: only the objects that a mutant changes
are compiled, and linked into the test programs in front of all others.
"""
import fnmatch
import hashlib
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import threading
import time
from pathlib import Path

KILLED, TIMED_OUT, SURVIVED = "killed", "timed out", "survived"
NOT_COMPILED, SAME_OBJECT = "not compiled", "same object"

# A mutant may forget to stop, so what it takes is bounded. Some tests write sparse files.
# The sanitizers reserve more addresses than there is memory.
LIMITS = ["prlimit", f"--fsize={8 << 30}", "--core=0"]
MEMORY_LIMIT = f"--as={16 << 30}"
LAUNCHERS = ("ccache", "sccache")

SLOW_TEST_SECONDS = 0.05
OPTIMISATION = "-O1 -DNDEBUG"


class TrialError(Exception):
    pass


def run_quietly(arguments, **options):
    done = subprocess.run(arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        command = arguments if isinstance(arguments, str) else " ".join(map(str, arguments))
        raise TrialError(f"{command}:\n{done.stdout.decode(errors='replace')}")
    return done.stdout.decode()


def own_shared_memory():
    """What gives a program a /dev/shm of its own, where the system lets us: the locks of
    tests, and what a mutant leaves in their place, are nobody else's."""
    prefix = ["unshare", "--mount", "sh", "-c", 'mount -t tmpfs none /dev/shm && exec "$@"', "sh"]
    try:
        done = subprocess.run([*prefix, "true"], stderr=subprocess.DEVNULL, check=False)
    except FileNotFoundError:
        return []
    return prefix if done.returncode == 0 else []


def run_limited(arguments, limits, seconds, directory, environment):
    """The exit status, or None when the program took too long. All that it started dies."""
    process = subprocess.Popen(
        [*limits, *arguments], cwd=directory, env=environment, stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class ProtectedDirectories:
    """What tests read and a mutant might write to. It is put back after each trial; what
    ran meanwhile beside that mutant says nothing and runs again."""

    def __init__(self, directories, copies):
        self.lock = threading.Lock()
        self.restored = 0
        self.pairs = []
        for i, directory in enumerate(directories):
            copy = copies / str(i)
            shutil.rmtree(copy, ignore_errors=True)
            shutil.copytree(directory, copy)
            self.pairs.append((directory, copy, self.state(directory)))

    @staticmethod
    def state(directory):
        state = {}
        for path in directory.rglob("*"):
            status = path.stat()
            state[path] = (status.st_size, status.st_mtime_ns)
        return state

    def restore(self):
        with self.lock:
            for directory, copy, state in self.pairs:
                if directory.exists() and self.state(directory) == state:
                    continue
                self.restored += 1
                shutil.rmtree(directory, ignore_errors=True)
                shutil.copytree(copy, directory)
            return self.restored


class Build:
    """The build tree that all trials start from."""

    def __init__(self, root, directory, rooms, sanitizers):
        self.root = root
        self.directory = directory
        self.rooms = rooms
        self.options = ["-DKSV_SANITIZE=ON"] if sanitizers else []
        limits = LIMITS if sanitizers else [*LIMITS, MEMORY_LIMIT]
        self.limits = [*own_shared_memory(), *limits]
        self.commands = []
        self.headers = {}

    def make(self, programs):
        run_quietly(["cmake", "-S", self.root, "-B", self.directory, "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=Release", f"-DCMAKE_CXX_FLAGS_RELEASE={OPTIMISATION}",
                     f"-DCMAKE_C_FLAGS_RELEASE={OPTIMISATION}",
                     "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                     *self.rooms.get("configure", []), *self.options])
        run_quietly(["cmake", "--build", self.directory, "--target", *programs,
                     *self.rooms.get("targets", [])])
        self.commands = json.loads((self.directory / "compile_commands.json").read_text())
        self.headers = self.read_dependencies()

    def read_dependencies(self):
        """The sources that a header is compiled into, by the header's path."""
        sources = {}
        listing = run_quietly(["ninja", "-C", self.directory, "-t", "deps"])
        for block in listing.split("\n\n"):
            lines = block.strip().splitlines()
            if not lines:
                continue
            needed = [(self.directory / line.strip()).resolve() for line in lines[1:]]
            for path in needed[1:]:
                sources.setdefault(path, []).append(needed[0])
        return sources

    def command_of(self, path):
        for command in self.commands:
            if Path(command["directory"], command["file"]).resolve() == path:
                return command
        return None

    def compiled_by(self, path):
        """The compile commands of the sources, ours and no test's, that hold this file."""
        own = self.command_of(path)
        if own is not None:
            return [own]
        patterns = [p for room in self.rooms["rooms"].values() for p in room["sources"]]
        commands = []
        for source in self.headers.get(path, []):
            relative = os.path.relpath(source, self.root)
            if any(fnmatch.fnmatch(relative, pattern) for pattern in patterns):
                commands.append(self.command_of(source))
        return [command for command in commands if command is not None]

    def link_command(self, program):
        lines = run_quietly(["ninja", "-C", self.directory, "-t", "commands", program])
        return lines.strip().splitlines()[-1]


class TestProgram:
    """A test program in batches, the fast tests first. One that lists no tests is a batch."""

    def __init__(self, name, build, seconds):
        self.name = name
        self.link = build.link_command(name)
        self.batches = self.measure(build, seconds)

    def measure(self, build, seconds):
        report = build.directory / f"{self.name}.mutation.json"
        report.unlink(missing_ok=True)
        begin = time.monotonic()
        status = run_limited([build.directory / self.name, f"--gtest_output=json:{report}"],
                             build.limits, max(seconds or 0, 600), build.directory, os.environ)
        whole = time.monotonic() - begin
        if status != 0:
            raise TrialError(f"{self.name} fails without any mutant (status {status})")
        if not report.exists():
            return [([], whole)]
        slow, slow_seconds = [], 0.0
        for suite in json.loads(report.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                taken = float(test["time"].rstrip("s"))
                if taken >= SLOW_TEST_SECONDS:
                    slow.append((taken, f"{suite['name']}.{test['name']}"))
                    slow_seconds += taken
        slow.sort()
        fast = (["--gtest_filter=-" + ":".join(name for _, name in slow)], whole - slow_seconds)
        rest = (["--gtest_filter=" + ":".join(name for _, name in slow)], slow_seconds)
        return [fast, rest] if slow else [fast]


class SeenObjects:
    """The objects of all mutants so far: one that has been tried is not tried again."""

    def __init__(self):
        self.lock = threading.Lock()
        self.seen = set()

    def add(self, path, objects):
        """Whether they are new."""
        key = (path, hashlib.sha256(b"\0".join(objects)).digest())
        with self.lock:
            is_new = key not in self.seen
            self.seen.add(key)
        return is_new


class Worker:
    """One place to try mutants in, beside others."""

    def __init__(self, number, build, programs, protected, seen, seconds):
        self.build = build
        self.programs = programs
        self.protected = protected
        self.seen = seen
        self.seconds = seconds
        self.number = number
        self.directory = build.directory / "mutants" / str(number)
        shutil.rmtree(self.directory, ignore_errors=True)
        (self.directory / "overlay").mkdir(parents=True)
        self.plain_objects = {}

    def compile(self, command, overlay_file, path, name):
        """The bytes of the object, or None when it does not compile."""
        arguments = shlex.split(command["command"])
        if Path(arguments[0]).name in LAUNCHERS:
            del arguments[0]
        source = Path(command["directory"], command["file"]).resolve()
        compiled = overlay_file if source == path else source
        output = self.directory / name
        kept = [arguments[0], "-I", str(self.directory / "overlay")]
        skip = False
        for argument in arguments[1:]:
            if skip or argument == "-MD" or argument.startswith("-W"):
                skip = False
            elif argument in ("-o", "-MT", "-MF"):
                skip = True
            elif argument == command["file"]:
                kept.append(str(compiled))
            else:
                kept.append(argument)
        # A function without its return would be anything at all.
        kept += ["-Werror=return-type", "-o", str(output)]
        output.unlink(missing_ok=True)
        try:
            done = subprocess.run(kept, cwd=command["directory"], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, timeout=120)
        except subprocess.TimeoutExpired:
            return None
        return output.read_bytes() if done.returncode == 0 else None

    def objects_of(self, path, text):
        """The objects that hold this file with this text; None when one is missing."""
        overlay_file = self.directory / "overlay" / path.relative_to(self.build.root)
        overlay_file.parent.mkdir(parents=True, exist_ok=True)
        overlay_file.write_text(text)
        objects = []
        try:
            for i, command in enumerate(self.build.compiled_by(path)):
                data = self.compile(command, overlay_file, path, f"{i}.o")
                if data is None:
                    return None
                objects.append(data)
        finally:
            overlay_file.unlink()
        return objects

    def plain_objects_of(self, path, text):
        """The objects without a change: one that does not link with them is a fault of ours."""
        if path not in self.plain_objects:
            objects = self.objects_of(path, text)
            if not objects:
                raise TrialError(f"{path} does not compile as it is, or nothing holds it")
            for program in self.programs:
                self.link(program, len(objects))
            self.plain_objects[path] = objects
        return self.plain_objects[path]

    def link(self, program, count):
        output = self.build.directory / f"{program.name}.mutant{self.number}"
        objects = " ".join(shlex.quote(str(self.directory / f"{i}.o")) for i in range(count))
        command = re.sub(r" -o \S+", lambda _: f" -o {shlex.quote(str(output))}", program.link,
                         count=1)
        command = re.sub(r" (\S+\.o) ", lambda match: f" {objects} {match[1]} ", command, count=1)
        run_quietly(command, shell=True, cwd=self.build.directory)
        return output

    def run(self, binary, arguments, usual_seconds):
        """What became of the mutant in this batch."""
        seconds = self.seconds or max(10, 8 * usual_seconds)
        while True:
            restored = self.protected.restored
            scratch = self.directory / "scratch"
            scratch.mkdir()
            status = run_limited([binary, "--gtest_brief=1", "--gtest_fail_fast", *arguments],
                                 self.build.limits, seconds, scratch,
                                 os.environ | {"TMPDIR": str(scratch)})
            shutil.rmtree(scratch, ignore_errors=True)
            others_restored = self.protected.restored != restored
            self.protected.restore()
            if not others_restored:
                return TIMED_OUT if status is None else SURVIVED if status == 0 else KILLED

    def try_mutant(self, path, text, mutant):
        plain = self.plain_objects_of(path, text)
        objects = self.objects_of(path, mutant.applied_to(text))
        if objects is None:
            return NOT_COMPILED
        if objects == plain or not self.seen.add(path, objects):
            return SAME_OBJECT
        for program in self.programs:
            try:
                binary = self.link(program, len(objects))
            except TrialError:
                return NOT_COMPILED
            for arguments, usual_seconds in program.batches:
                verdict = self.run(binary, arguments, usual_seconds)
                if verdict != SURVIVED:
                    return verdict
        return SURVIVED
