#!/usr/bin/env python3
"""Measures how long one short text takes, from the start of a program to its end, beside iconv.

    bench/start_time.py PREFIX [PREFIX...] [--runs 1000]

Each PREFIX is an installation (cmake --install build/install --prefix PREFIX). All programs take turns, run by
run, so that what else the machine does concerns all of them. Told are the fastest run, the quartile and the
median in microseconds, the page faults of a run, and the quartile as a multiple of iconv's.

How the system holds the files in memory makes a tenth: a program that was copied there by large
writes lies in larger pieces than one that was read from the disk page by page. --from-disk lets it
read them anew, which is the slower case.
"""
import argparse
import os
import subprocess
import tempfile
import time
from pathlib import Path

TEXT = "日本語のテキスト\n"
ICONV = "/usr/bin/iconv"
# As in a shell that nobody has set up: no setting names a charset directory.
ENVIRONMENT = {name: value for name, value in os.environ.items()
               if name not in ("Charsetpath", "KSV_CHARSETS")}


def spawn(command):
    """Microseconds and page faults of one run."""
    nowhere = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
    begin = time.perf_counter_ns()
    child = os.posix_spawn(command[0], command, ENVIRONMENT, file_actions=nowhere)
    _, status, usage = os.wait4(child, 0)
    end = time.perf_counter_ns()
    if status != 0:
        raise SystemExit(f"{command[0]} failed")
    return (end - begin) / 1000, usage.ru_minflt


def check(command):
    """Nothing is measured that does not do its work."""
    done = subprocess.run(command, stdout=subprocess.PIPE, check=True, env=ENVIRONMENT)
    if done.stdout.decode("utf-8") != TEXT:
        raise SystemExit(f"{command[0]} wrote {done.stdout!r}")


def forget(prefix):
    """Has the system read the files of an installation from the disk again."""
    os.sync()
    for path in Path(prefix).rglob("*"):
        if path.is_file():
            with path.open("rb") as file:
                os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("prefixes", nargs="+", metavar="PREFIX")
    parser.add_argument("--runs", type=int, default=1000)
    parser.add_argument("--from-disk", action="store_true")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        text = Path(scratch, "text")
        text.write_bytes(TEXT.encode("cp932"))
        commands = [[ICONV, "-f", "SJIS", "-t", "UTF-8", str(text)]]
        commands += [[str(Path(prefix, "bin", "ksv").resolve()), "convert", "-f", "sjis", "-t", "utf8",
                      str(text)] for prefix in arguments.prefixes]
        for prefix in arguments.prefixes if arguments.from_disk else []:
            forget(prefix)
        for command in commands:
            check(command)
        runs = [[spawn(command) for command in commands] for _ in range(arguments.runs)]
    peers_quartile = None
    for number, command in enumerate(commands):
        times = sorted(run[number][0] for run in runs)
        quartile = times[len(times) // 4]
        peers_quartile = peers_quartile or quartile
        print(f"{command[0]}: {times[0]:.0f}, {quartile:.0f}, {times[len(times) // 2]:.0f} us, "
              f"{runs[-1][number][1]} faults, {quartile / peers_quartile:.2f}")


if __name__ == "__main__":
    main()
