#!/usr/bin/env python3
"""Measures the Python package, and prints tables in Markdown: beside the call from C, Python's own codecs, charset-normalizer
and chardet, by threads, on columns of Arrow, and of whole jobs.

    scripts/build_wheel
    python3 -m venv bench-python
    bench-python/bin/pip install build/python/dist/ksv-*.whl pyarrow charset-normalizer chardet
    bench-python/bin/python bench/python_speed.py > out.md

Needs cc. Each figure but those of threads is of processor time, and of the fastest of several rounds, since other programs only ever
make it slower; the contestants of conversion take turns.
"""
import concurrent.futures
import datetime
import os
import platform
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import chardet
import charset_normalizer
import ksv
import ksv.arrow
import pyarrow
from ksv.files import Job, Row, run

ROOT = Path(__file__).resolve().parents[1]
SAMPLE = (ROOT / "docs/samples/kusamakura.sjis.txt").read_bytes().decode("cp932")
ROUNDS = 7
CHARSETS = {"cp932": "cp932", "euc-jp": "euc_jp", "iso-2022-jp": "iso2022_jp"}


def fastest(function, calls, rounds=ROUNDS):
    """Nanoseconds a call."""
    found = []
    for _ in range(rounds):
        begin = time.process_time_ns()
        for _ in range(calls):
            function()
        found.append((time.process_time_ns() - begin) / calls)
    return min(found)


def text_of(charset, size):
    """So many bytes at most, of whole characters."""
    text = (SAMPLE * (size * 2 // len(SAMPLE) + 1)).encode(charset)
    while True:
        try:
            text[:size].decode(charset)
            return text[:size]
        except UnicodeDecodeError:
            size -= 1


def print_table(title, head, rows):
    print(f"\n## {title}\n")
    print("| " + " | ".join(head) + " |")
    print("|---|" + "--:|" * (len(head) - 1))
    for row in rows:
        print("| " + " | ".join(str(cell) for cell in row) + " |")


class CallFromC:
    def __init__(self, folder):
        library = Path(ksv.__file__).parent
        self._folder, self._program = Path(folder), Path(folder) / "plan_call"
        (self._folder / "libksv.so").symlink_to(library / "libksv.so.0")
        subprocess.run(["cc", "-O2", "-std=gnu11", f"-I{ROOT / 'include'}", "-o", self._program,
                        ROOT / "bench/plan_call.c", f"-L{folder}", "-lksv", f"-Wl,-rpath,{library}",
                        f"-Wl,-rpath-link,{library}"], check=True)

    def nanoseconds(self, charset, data, calls):
        path = self._folder / "text"
        path.write_bytes(data)
        done = subprocess.run([self._program, charset, "UTF-8", path, str(calls)],
                              stdout=subprocess.PIPE, check=True)
        return float(done.stdout)


def conversion(call):
    rows = []
    for charset, own in CHARSETS.items():
        for size, calls in ((40, 20000), (1000, 10000), (1 << 20, 20)):
            data = text_of(own, size)
            if len(data) < 20:
                continue
            in_c = python = pythons = float("inf")
            for _ in range(3):  # take turns
                in_c = min(in_c, call.nanoseconds(charset, data, calls))
                python = min(python, fastest(lambda: ksv.convert(data, charset, "UTF-8"), calls, 3))
                pythons = min(pythons, fastest(lambda: data.decode(own).encode(), max(calls // 10, 2), 3))
            rows.append((f"{charset}, {len(data)} bytes", f"{in_c / 1000:.2f}", f"{python / 1000:.2f}",
                         f"{(python - in_c) / 1000:.2f}", f"{in_c / python:.2f}", f"{pythons / 1000:.2f}",
                         f"{pythons / python:.1f}"))
    print_table("Conversion to UTF-8, in microseconds", [
        "text", "`ksv_convert` from C", "`ksv.convert`", "over C", "of C's speed",
        "Python: `decode`, `encode`", "times Python's speed"], rows)


def codecs_beside_pythons():
    rows = []
    for charset, own in CHARSETS.items():
        for size, calls in ((40, 20000), (1 << 20, 10)):
            data = text_of(own, size)
            text = data.decode(own)
            name = f"ksv-{charset}"
            figures = [fastest(lambda: data.decode(name), calls), fastest(lambda: data.decode(own), calls),
                       fastest(lambda: text.encode(name), calls), fastest(lambda: text.encode(own), calls)]
            rows.append((f"{charset}, {len(data)} bytes", *(f"{figure / 1000:.2f}" for figure in figures[:2]),
                         f"{figures[1] / figures[0]:.1f}", *(f"{figure / 1000:.2f}" for figure in figures[2:]),
                         f"{figures[3] / figures[2]:.1f}"))
    print_table("Codecs, in microseconds", ["text", "`decode(\"ksv-…\")`", "Python's", "times", "`encode(\"ksv-…\")`",
                                            "Python's", "times"], rows)


def detection():
    rows = []
    for size, calls in ((1000, 200), (65536, 20)):
        for charset in ("cp932", "euc_jp", "utf-8"):
            data = text_of(charset, size)
            ours = fastest(lambda: ksv.detect(data), calls)
            normalizer = fastest(lambda: charset_normalizer.from_bytes(data).best(), 2, 2)
            judge = fastest(lambda: chardet.detect(data), 2, 2)
            rows.append((f"{charset}, {len(data)} bytes", ksv.detect(data)[0].charset, f"{ours / 1000:.0f}",
                         f"{normalizer / 1000:.0f}", f"{normalizer / ours:.0f}", f"{judge / 1000:.0f}", f"{judge / ours:.0f}"))
    print_table("Detection, in microseconds", ["text", "answer", "`ksv.detect`", "charset-normalizer", "times", "chardet",
                                               "times"], rows)


def threads():
    data = text_of("cp932", 1 << 20)
    small = text_of("cp932", 10000)
    jobs = {"conversion of 1 MB": lambda: ksv.convert(data, "cp932", "UTF-8"),
            "conversion of 10 kB": lambda: [ksv.convert(small, "cp932", "UTF-8") for _ in range(100)],
            "detection of 10 kB": lambda: [ksv.detect(small) for _ in range(10)]}
    counts = sorted({1, 2, os.cpu_count() or 1})
    rows = []
    for name, job in jobs.items():
        rates = dict.fromkeys(counts, 0.0)
        for _ in range(ROUNDS):  # take turns
            for count in counts:
                rates[count] = max(rates[count], rate_of(job, count))
        rows.append((name, *(f"{rate:.0f}" for rate in rates.values()), f"{rates[counts[-1]] / rates[1]:.2f}"))
    print_table("Threads, in jobs a second of the clock", ["job", *(f"{count} threads" for count in counts), "gain"], rows)


def rate_of(job, threads_at_once, jobs=60):
    with concurrent.futures.ThreadPoolExecutor(threads_at_once) as pool:
        begin = time.perf_counter()
        list(pool.map(lambda _: job(), range(jobs)))
        return jobs / (time.perf_counter() - begin)


def columns():
    rows = []
    for size in (40, 400):
        value = text_of("cp932", size)
        column = pyarrow.array([value] * 100_000)

        def by_rows():
            return pyarrow.array([ksv.convert(one.as_py(), "cp932", "utf-8").decode() for one in column])
        whole = fastest(lambda: ksv.arrow.convert(column, "cp932"), 1, 5)
        each = fastest(by_rows, 1, 3)
        assert ksv.arrow.convert(column, "cp932").equals(by_rows())
        rows.append((f"{len(value)} bytes", f"{1e5 / whole * 1e9:,.0f}", f"{1e5 / each * 1e9:,.0f}", f"{each / whole:.1f}"))
    print_table("Columns of Arrow with 100,000 values, in values a second",
                ["a value", "`ksv.arrow.convert`", "row by row", "times"], rows)


def files_of(folder, size, count):
    """Of several charsets, each with bytes of its own."""
    rows = []
    for number in range(count):
        charset = ("cp932", "euc_jp", "utf-8")[number % 3]
        path = Path(folder) / f"{size}-{number}"
        path.write_bytes(f"{number}\n".encode() + text_of(charset, size))
        rows.append((str(path), charset))
    return rows


def whole_jobs():
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        for size in (2000, 10_000, 100_000):
            files = files_of(folder, size, 900)
            volume = sum(os.path.getsize(path) for path, _ in files) / 1e6
            kinds = {"charset found out": (Job(), [Row(path) for path, _ in files]),
                     "charset known": (Job(), [Row(path, charset=charset) for path, charset in files]),
                     "found out and stored": (Job(store=folder), [Row(path) for path, _ in files])}
            for name, (job, given) in kinds.items():
                used = fastest(lambda: [run(job, row) for row in given], 1, 3) / 1e9
                rows.append((f"{size:,} bytes, {name}", f"{len(files) / used:,.0f}", f"{volume / used:.0f}",
                             f"{1e9 / len(files) * used / 3600:.1f}"))
    print_table("Files on one core (`ksv.files.run`, read from the system's memory)",
                ["a file", "files a second", "MB a second", "hours of one core for 10⁹ files"], rows)


MEMORY = """
import re, sys
from pathlib import Path
from ksv.files import Job, Row, run
assert len(sys.argv) == 1 or run(Job(), Row(sys.argv[1])).status == "converted"
print(int(re.search(r"VmHWM:\\s+(\\d+)", Path("/proc/self/status").read_text())[1]) / 1024)
"""


def memory():
    """Of processes of their own, which do nothing else."""
    def most(*path):
        done = subprocess.run([sys.executable, "-c", MEMORY, *path], stdout=subprocess.PIPE, check=True)
        return f"{float(done.stdout):.0f}"
    rows = [("none", most())]
    with tempfile.TemporaryDirectory() as folder:
        for size in (1, 16, 64):
            path = Path(folder) / str(size)
            path.write_bytes(text_of("cp932", size << 20))
            rows.append((f"{size} MiB", most(str(path))))
    print_table("Most memory of a process, in MiB", ["a text that is found out and converted", "memory"], rows)


def processor():
    for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def main():
    ksv.register_codecs()
    versions = f"charset-normalizer {charset_normalizer.__version__}, chardet {chardet.__version__}, pyarrow {pyarrow.__version__}"
    print(f"{datetime.date.today()}; ksv {ksv.__version__}, Python {platform.python_version()}, {versions}; "
          f"{os.cpu_count()} processors of {processor()}, load {os.getloadavg()[0]:.1f}.")
    memory()
    with tempfile.TemporaryDirectory() as folder:
        conversion(CallFromC(folder))
    codecs_beside_pythons()
    detection()
    threads()
    columns()
    whole_jobs()


if __name__ == "__main__":
    main()
