"""Runs a program under strace, clean or with one of its system calls failing."""

import errno
import os
import re
import signal
import subprocess
import tempfile
from dataclasses import dataclass

# What each system call may fail with. EINTR is repeated, so it comes alone and never for good.
# Absence (ENOENT) is no fault, and is not made here.
_OPEN = ("EACCES", "EINTR", "EIO", "EMFILE", "ENFILE", "ENOMEM")
_PATH = ("EACCES", "EIO", "ENOMEM")
_CHANGE = ("EACCES", "EIO", "ENOSPC", "EROFS")
_ATTRIBUTE = ("EIO", "ENOMEM", "EPERM")
ERRORS = {
    "openat": _OPEN, "open": _OPEN, "read": ("EINTR", "EIO", "ENOMEM"),
    "pread64": ("EINTR", "EIO", "ENOMEM"), "readv": ("EINTR", "EIO"),
    "write": ("EDQUOT", "EINTR", "EIO", "ENOSPC"), "pwrite64": ("EINTR", "EIO", "ENOSPC"),
    "writev": ("EINTR", "EIO", "ENOSPC"), "close": ("EINTR", "EIO"), "lseek": ("EIO",),
    "newfstatat": _PATH, "fstat": ("EIO", "ENOMEM"), "stat": _PATH, "lstat": _PATH,
    "statx": _PATH, "statfs": _PATH, "access": _PATH, "faccessat2": _PATH, "readlink": _PATH,
    "readlinkat": _PATH, "getdents64": ("EIO", "ENOMEM"), "getcwd": ("ENOMEM",),
    "fsync": ("EINTR", "EIO", "ENOSPC"), "fdatasync": ("EINTR", "EIO", "ENOSPC"),
    "rename": _CHANGE, "renameat": _CHANGE, "renameat2": _CHANGE, "link": _CHANGE,
    "linkat": _CHANGE, "unlink": ("EACCES", "EIO", "EROFS"), "unlinkat": ("EACCES", "EIO", "EROFS"),
    "mkdir": _CHANGE, "mkdirat": _CHANGE, "rmdir": ("EACCES", "EIO"),
    "ftruncate": ("EINTR", "EIO", "ENOSPC"), "fallocate": ("EINTR", "EIO", "ENOSPC"),
    "fchmod": _ATTRIBUTE, "fchown": _ATTRIBUTE, "utimensat": _ATTRIBUTE,
    "flistxattr": ("EIO", "ENOMEM"), "fgetxattr": ("EIO", "ENOMEM"),
    "listxattr": ("EIO", "ENOMEM"), "getxattr": ("EIO", "ENOMEM"),
    "fsetxattr": ("EIO", "ENOSPC", "EPERM"), "fremovexattr": ("EIO", "EPERM"),
    "flock": ("EINTR", "ENOLCK"), "fcntl": ("EINTR", "ENOLCK", "EMFILE"), "dup": ("EMFILE",),
    "mmap": ("ENOMEM",), "brk": ("ENOMEM",), "mremap": ("ENOMEM",), "mprotect": ("ENOMEM",),
    "munmap": ("ENOMEM",), "madvise": ("ENOMEM",), "clone": ("EAGAIN", "ENOMEM"),
    "clone3": ("EAGAIN", "ENOMEM"), "pipe2": ("EMFILE",), "getrandom": ("EAGAIN", "EINTR"),
    "shmget": ("ENOSPC",), "semget": ("ENOSPC",), "memfd_create": ("EMFILE", "ENOMEM"),
    "fchdir": ("EIO",), "chdir": ("EIO",), "fadvise64": ("EIO",), "ioctl": ("EIO",),
    "copy_file_range": ("EIO", "ENOSPC"), "sendfile": ("EIO", "ENOSPC"),
    "prctl": ("EINVAL", "EPERM"), "seccomp": ("EINVAL", "ENOMEM", "ENOSYS"),
}

# These cannot fail in a way a program could answer: they start and end it, or set what it runs on.
NEVER_FAIL = frozenset(
    "execve exit exit_group arch_prctl set_tid_address set_robust_list rseq prlimit64 rt_sigaction "
    "rt_sigprocmask rt_sigreturn rt_sigtimedwait umask getpid gettid getuid geteuid getgid getegid "
    "futex sched_yield sched_getaffinity clock_nanosleep nanosleep restart_syscall sync tgkill "
    "clock_gettime gettimeofday sysinfo uname wait4 sigaltstack poll kill".split())

_CALL = re.compile(rb"^(\d+) +([a-z_0-9]+)\(")
_KILL = 10  # seconds that a stopped group may take to go


@dataclass(frozen=True)
class Ended:
    status: int  # negative: the number of a signal
    out: bytes
    err: bytes
    hung: bool
    trace: bytes = b""

    def injected(self) -> list[bytes]:
        return [line for line in self.trace.splitlines() if line.endswith(b"(INJECTED)")]


def can_trace() -> bool:
    try:
        probe = subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True)
    except OSError:
        return False
    return probe.returncode == 0


def run(argv, cwd, env, stdin, limit) -> Ended:
    """Runs a program in a group of its own, all of which ends when the time is over."""
    with tempfile.TemporaryFile() as source:
        source.write(stdin)
        source.seek(0)
        process = subprocess.Popen(argv, cwd=cwd, env=env, stdin=source, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, start_new_session=True)
        try:
            out, err = process.communicate(timeout=limit)
            return Ended(process.returncode, out, err, False)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            out, err = process.communicate(timeout=_KILL)
            return Ended(process.returncode, out, err, True)


def run_traced(options, argv, cwd, env, stdin, limit) -> Ended:
    """The environment is the program's alone: strace runs with its own."""
    with tempfile.NamedTemporaryFile(prefix="trace-") as log:
        given = [option for name, value in env.items() for option in ("-E", f"{name}={value}")]
        dropped = [option for name in os.environ if name not in env and name != "PATH"
                   for option in ("-E", name)]
        filtered = ["--seccomp-bpf"] if options else []  # stops at the calls that are named only
        ended = run(["strace", "-f", "-qq", *filtered, "-o", log.name, *options, *given, *dropped,
                     "--", *argv], cwd, None, stdin, limit)
        return Ended(ended.status, ended.out, ended.err, ended.hung, log.read())


def calls_of(trace: bytes) -> list[tuple[bytes, str]]:
    """The system calls of a clean run in their order: thread and name."""
    found = []
    for line in trace.splitlines():
        match = _CALL.match(line)
        if match:
            found.append((match.group(1), match.group(2).decode()))
    return found


def loader_calls(trace: bytes) -> int:
    """How many calls there are in front of the program's own code: the last of the dynamic loader
    gives its cache back."""
    lines = [line for line in trace.splitlines() if _CALL.match(line)]
    for index, line in enumerate(lines):
        if b" munmap(" in line:
            return index + 1
    return 0


_BEGINS, _ENDS = b'access("library begins"', b'access("library ends"'


def calls_of_library(trace: bytes) -> tuple[int, int]:
    """Of the calls those that the library makes the first time: between two marks."""
    lines = [line for line in trace.splitlines() if _CALL.match(line)]
    begins = next((i + 1 for i, line in enumerate(lines) if _BEGINS in line), len(lines))
    ends = next((i for i, line in enumerate(lines) if _ENDS in line), len(lines))
    return begins, ends


def counts(calls) -> dict[str, int]:
    """How often each is called, by the thread that calls it most: strace counts so."""
    by_thread = {}
    for thread, name in calls:
        by_thread[thread, name] = by_thread.get((thread, name), 0) + 1
    most = {}
    for (_, name), count in by_thread.items():
        most[name] = max(most.get(name, 0), count)
    return most


@dataclass(frozen=True)
class Fault:
    """One thing that goes wrong in a run: a call that fails, memory that is not there, a kill."""
    kind: str
    options: tuple = ()
    environment: tuple = ()
    words: str = ""  # those of the system for it; none: any
    call: str = ""
    alone: bool = False  # nothing fails behind it

    def __str__(self):
        return " ".join([*(option for option in self.options if option.startswith("inject")),
                         *(f"{name}={value}" for name, value in self.environment)])

    def is_kill(self) -> bool:
        return self.kind == "kill"


def _injection(name: str, error: str, place: str) -> tuple[str, str]:
    # brk fails by answering another place than the one asked for, never by an error.
    answer = "retval=0" if name == "brk" else f"error={error}"
    return "-e", f"inject={name}:{answer}:when={place}"


def failing_call(name: str, error: str, place: str) -> Fault:
    return Fault("calls", ("-e", f"trace={name}", *_injection(name, error, place)),
                 words=os.strerror(getattr(errno, error)), call=name,
                 alone=not place.endswith("+"))


def _places(calls, first: int) -> dict[str, range]:
    """The places of each call that is not among the first."""
    before = counts(calls[:first])
    return {name: range(before.get(name, 0) + 1, count + 1)
            for name, count in sorted(counts(calls).items())}


# Without these the dynamic loader does not come to the program's code, and may crash.
_MEMORY_OF_LOADER = frozenset(("brk", "mmap", "mprotect"))


def call_faults(calls, first: int, loader: int = 0) -> list[Fault]:
    """Each call that is not among the first with each error that fits it, alone and from there on."""
    faults = []
    own = _places(calls, max(first, loader))
    for name, places in _places(calls, first).items():
        if name in NEVER_FAIL:
            continue
        if name in _MEMORY_OF_LOADER:
            places = own[name]
        for error in ERRORS[name]:
            for place in places:
                faults.append(failing_call(name, error, str(place)))
                if error != "EINTR":
                    faults.append(failing_call(name, error, f"{place}+"))
    return faults


def unknown_calls(calls) -> list[str]:
    return sorted({name for _, name in calls} - set(ERRORS) - NEVER_FAIL)


def heap_faults(calls, first: int) -> list[Fault]:
    """From each growth of the memory on none succeeds any more, by whichever call."""
    done = {name: sum(1 for _, other in calls[:first] if other == name) for name in ("brk", "mmap")}
    faults = []
    for _, name in calls[first:]:
        if name not in done:
            continue
        inject = [_injection(other, "ENOMEM", f"{count + 1}+") for other, count in done.items()]
        faults.append(Fault("heap", ("-e", "trace=brk,mmap", *inject[0], *inject[1]),
                            words=os.strerror(errno.ENOMEM)))
        done[name] += 1
    return faults


def kill_faults(calls, first: int) -> list[Fault]:
    """SIGKILL in front of each call. What is there behind a call is there in front of the next."""
    faults = []
    for name, places in _places(calls, first).items():
        for place in places:
            faults.append(Fault("kill", ("-e", f"trace={name}", "-e",
                                         f"inject={name}:signal=KILL:when={place}")))
    return faults


def memory_faults(first: int, last: int, library: str) -> list[Fault]:
    words = os.strerror(errno.ENOMEM)
    return [Fault("memory", environment=(("LD_PRELOAD", library), (name, str(place))), words=words)
            for place in range(first, last + 1) for name in ("KSV_FAIL_AT", "KSV_FAIL_FROM")]
