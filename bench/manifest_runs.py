#!/usr/bin/env python3
"""What a manifest costs: many small files converted in place without one, with one, gone on with when
all is done, and taken back; and one long text.

  bench/manifest_runs.py build/release/ksv build/release/charset [--files N] [--mebibytes N]
"""

import argparse
import os
import resource
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

LINE = "親譲りの無鉄砲で小供の時から損ばかりしている。\n".encode("cp932")


class Bench:
    def __init__(self, options):
        self._command = [str(Path(options.command).resolve()), "convert"]
        self._to_utf8 = [*self._command, "-f", "cp932", "-t", "utf-8"]
        self._environment = os.environ | {"Charsetpath": str(Path(options.charset).resolve())}

    def _run(self, what: str, room: Path, arguments: list[str]) -> None:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        begun = time.monotonic()
        subprocess.run(arguments, cwd=room, env=self._environment, check=True)
        took = time.monotonic() - begun
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        processor = sum(getattr(after, name) - getattr(before, name)
                        for name in ("ru_utime", "ru_stime"))
        print(f"{what:<48}{took:>9.2f} s{processor:>9.2f} s of the processor", flush=True)

    def many(self, count: int, room: Path) -> None:
        names = [f"{number:06}.txt" for number in range(count)]
        (room / "names").write_text("\n".join(names) + "\n")
        for way in ("without a manifest", "with one", "with one, -j 2"):
            for name in names:
                (room / name).write_bytes(LINE * 20)
            more = ["--in-place=.orig", *(["-j", "2"] if "-j" in way else [])]
            if way != "without a manifest":
                more += ["--manifest", "m", "--resume"]
            self._run(f"{count} files, {way}", room, [*self._to_utf8, *more, *names])
            if way == "with one":
                self._run(f"{count} files, gone on with", room, [*self._to_utf8, *more, *names])
                self._run(f"{count} files, taken back", room, [*self._command, "--undo", "m"])
            for path in room.glob("*.orig"):
                path.unlink()
            (room / "m").unlink(missing_ok=True)
        for name in names:
            (room / name).unlink()

    def long(self, mebibytes: int, room: Path) -> None:
        (room / "long").write_bytes(LINE * (mebibytes * 1024 * 1024 // len(LINE)))
        self._run(f"a text of {mebibytes} MiB, without a manifest", room,
                  [*self._to_utf8, "-o", "result", "long"])
        self._run(f"a text of {mebibytes} MiB, with one", room,
                  [*self._to_utf8, "-o", "result", "--manifest", "m", "long"])


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("command")
    parser.add_argument("charset")
    parser.add_argument("--files", type=int, default=2000)
    parser.add_argument("--mebibytes", type=int, default=256)
    options = parser.parse_args()
    room = Path(tempfile.mkdtemp(prefix="manifest-"))
    try:
        Bench(options).many(options.files, room)
        Bench(options).long(options.mebibytes, room)
    finally:
        shutil.rmtree(room)


if __name__ == "__main__":
    main()
