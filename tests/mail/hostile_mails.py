#!/usr/bin/env python3
"""What hostile mails cost ksv mail: writes each shape in several sizes, and prints seconds of the
processor and the peak of memory as the table of docs/security.md has them.

    hostile_mails.py COMMAND [--sizes 1,10,100] [--json]

Sizes are in MB. With --most SECONDS and --peak MB it fails where a mail of the smallest size takes
more, for whoever holds it by a test.
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Callable, Iterator

MB = 1_000_000
FROM = b"From a@b.c Thu Feb 29 12:34:56 2024\n"
MIXED = b"Content-Type: multipart/mixed; boundary="


def repeated(piece: bytes, size: int) -> bytes:
    return piece * (size // len(piece) + 1)


def usual_mail() -> bytes:
    text = "会議は十時からです。\n".encode() * 40
    return (b"From: =?utf-8?B?5bGx55Sw?= <a@b.c>\nSubject: =?utf-8?B?5Lya6K2w?=\n"
            b"Content-Type: text/plain; charset=utf-8\n\n" + text)


def nested(depth: int) -> bytes:
    return b"".join(MIXED + b"b%d\n\n--b%d\n" % (i, i) for i in range(depth))


def numbered(form: bytes, size: int) -> bytes:
    return b"".join(form % i for i in range(size // (len(form) + 4)))


SHAPES: dict[str, Callable[[int], bytes]] = {
    "mailbox of usual mails": lambda size: repeated(FROM + usual_mail() + b"\n", size),
    "one text": lambda size: b"Content-Type: text/plain; charset=utf-8\n\n" +
    repeated(b"abcdefghijklmnopqrstuvwxyz\n", size),
    "one attachment in base64": lambda size: b"Content-Type: image/png; name=a.png\n"
    b"Content-Transfer-Encoding: base64\n\n" + repeated(b"QUJD" * 18 + b"\n", size),
    "parts": lambda size: MIXED + b"b\n\n" + repeated(b"--b\n\nx\n", size),
    "parts without anything": lambda size: MIXED + b"b\n\n" + repeated(b"--b\n", size),
    "multiparts in multiparts": lambda size: nested(size // 50),
    "lines like boundaries in deep multiparts": lambda size: nested(64) + b"\n" +
    repeated(b"--b63x\n", size),
    "messages in messages": lambda size: repeated(b"Content-Type: message/rfc822\n\n", size),
    "fields": lambda size: repeated(b"a: b\n", size) + b"\nx",
    "one long field": lambda size: b"Subject: " + b"x" * size + b"\n\nx",
    "a field in many lines": lambda size: b"Subject: x" + repeated(b"\n y", size) + b"\n\nx",
    "parameters": lambda size: b"Content-Type: text/plain" + numbered(b";\n a%d=x", size) + b"\n\nx",
    "parts with parameters": lambda size: MIXED + b"b\n\n" + repeated(
        b"--b\nContent-Type: text/plain" + numbered(b"; a%d=x", 8000) + b"\n\nx\n", size),
    "addresses": lambda size: repeated(b"To: " + b"a@b.c, " * 10_000 + b"\n", size) + b"\nx",
    "encoded words": lambda size: repeated(b"Subject: " + b"=?utf-8?q?a?= =?gbk?q?b?= " * 3000 + b"\n",
                                           size) + b"\nx",
    "unended words": lambda size: repeated(b"Subject: " + b"=?a?q?x" * 70_000 + b"\n", size) + b"\nx",
    "comments in comments": lambda size: repeated(b"To: " + b"(" * 60_000 + b"\n", size) + b"\nx",
    "alternatives in alternatives": lambda size: b"".join(
        b"Content-Type: multipart/alternative; boundary=b%d\n\n--b%d\n" % (i, i) for i in range(60)) +
    repeated(b"\nx\n--b59\n", size),
    "mails of a line": lambda size: repeated(FROM + b"\n", size),
    "quoted lines": lambda size: FROM + b"A: b\n\n" + repeated(b">From x\n", size),
    "text of no charset": lambda size: b"A: b\n\n" + repeated(bytes(range(0x80, 0x100)), size),
}


def cost(command: str, mail: Path, options: list[str]) -> tuple[float, int]:
    """Seconds of the processor, and kilobytes."""
    runner = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL,"
              " stderr=subprocess.DEVNULL); used = resource.getrusage(resource.RUSAGE_CHILDREN);"
              " print(used.ru_utime + used.ru_stime, used.ru_maxrss)")
    run = subprocess.run([sys.executable, "-c", runner, command, "mail", *options, str(mail)],
                         check=True, capture_output=True, text=True)
    seconds, kilobytes = run.stdout.split()
    return float(seconds), int(kilobytes)


def costs(command: str, sizes: list[int], options: list[str]) -> Iterator[tuple[str, list]]:
    with tempfile.TemporaryDirectory() as directory:
        mail = Path(directory) / "mail"
        for name, make in SHAPES.items():
            row = []
            for size in sizes:
                mail.write_bytes(make(size * MB))
                row.append(cost(command, mail, options))
            yield name, row


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("command")
    parser.add_argument("--sizes", default="1,10,100")
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--most", type=float, metavar="SECONDS")
    parser.add_argument("--peak", type=int, metavar="MB")
    arguments = parser.parse_args()
    sizes = [int(size) for size in arguments.sizes.split(",")]
    failed = False
    for name, row in costs(arguments.command, sizes, ["--json"] if arguments.json else []):
        cells = " | ".join(f"{seconds:.3f} s, {kilobytes // 1024} MB" for seconds, kilobytes in row)
        seconds, kilobytes = row[0]
        is_over = (arguments.most is not None and seconds > arguments.most) or (
            arguments.peak is not None and kilobytes // 1024 > arguments.peak)
        failed = failed or is_over
        print(f"| mails: {name} | {cells} |" + ("  TOO MUCH" if is_over else ""), flush=True)
    return int(failed)


if __name__ == "__main__":
    sys.exit(main())
