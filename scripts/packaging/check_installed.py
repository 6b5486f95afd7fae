#!/usr/bin/env python3
"""Checks an installation from outside: what the command converts, and that a program in C can be
built against the library and runs.

    check_installed.py --command /usr/bin/ksv
    check_installed.py --command wine C/bin/ksv.exe
    check_installed.py --consumer --prefix /opt/ksv

Nothing of the build is looked at, and no setting is left that says where the charset directory is.
What the command writes is compared with Python's codecs, what the program prints with its page in
docs/. Status 1 when anything differs.
"""
import argparse
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

from version import ROOT, project_version

SAMPLE = ROOT / "docs" / "samples" / "kusamakura.sjis.txt"
CHARSETS = 56
# Names of the command and of Python's codecs, for texts that both read alike.
CODECS = (("Shift_JIS", "cp932"), ("EUC-JP", "euc_jp"), ("UTF-16LE", "utf_16_le"),
          ("GB18030", "gb18030"), ("ISO-2022-JP", "iso2022_jp"))


class Difference(Exception):
    """The installation does not do what it should."""


def without_settings():
    """The environment without what would name a charset directory."""
    return {name: value for name, value in os.environ.items()
            if name not in ("Charsetpath", "KSV_CHARSETS")}


def run(command, given=b""):
    """What a command prints that reads this from a file. A pipe of this system has no end that
    programs for Windows would see."""
    with tempfile.TemporaryFile() as text:
        text.write(given)
        text.seek(0)
        done = subprocess.run(command, stdin=text, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=300, check=False, env=without_settings())
    if done.returncode != 0:
        raise Difference(f"{shlex.join(map(str, command))} ended with {done.returncode}: "
                         f"{done.stderr.decode('utf-8', 'replace').strip()}")
    return done.stdout


def equal(what, found, expected):
    if found != expected:
        raise Difference(f"{what}: {found[:80]!r} instead of {expected[:80]!r}")


def check_command(command):
    equal("--version", run([*command, "--version"]).decode("utf-8").strip(),
          f"ksv {project_version(ROOT)}")
    text = SAMPLE.read_bytes().decode("cp932")
    for charset, codec in CODECS:
        equal(f"UTF-8 to {charset}",
              run([*command, "convert", "-f", "UTF-8", "-t", charset], text.encode("utf-8")),
              text.encode(codec))
        equal(f"{charset} to UTF-8",
              run([*command, "convert", "-f", charset, "-t", "UTF-8"], text.encode(codec)),
              text.encode("utf-8"))
    names = [json.loads(line) for line in run([*command, "charsets", "--json"]).splitlines()]
    if len(names) < CHARSETS:
        raise Difference(f"{len(names)} charsets instead of {CHARSETS} or more")
    run([*command, "lint"])


def pkg_config_environment(prefix):
    environment = without_settings()
    if prefix is not None:
        libraries = sorted({path.parent for path in Path(prefix).rglob("libksv_comm.so.*")})
        if len(libraries) != 1:
            raise Difference(f"{prefix} has the library in {len(libraries)} folders")
        environment["PKG_CONFIG_PATH"] = str(libraries[0] / "pkgconfig")
        environment["LD_LIBRARY_PATH"] = str(libraries[0])
    return environment


def printed_on_page(page):
    return re.search(r"^```text\n(.*?)^```$", page.read_text(encoding="utf-8"),
                     re.DOTALL | re.MULTILINE)[1]


def check_consumer(prefix):
    environment = pkg_config_environment(prefix)

    def output(*command):
        done = subprocess.run(command, env=environment, timeout=300, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False)
        if done.returncode != 0:
            raise Difference(f"{shlex.join(map(str, command))} ended with {done.returncode}: "
                             f"{done.stderr.decode('utf-8', 'replace').strip()}")
        return done.stdout.decode("utf-8")

    equal("pkg-config --modversion", output("pkg-config", "--modversion", "ksv_comm").strip(),
          project_version(ROOT))
    flags = shlex.split(output("pkg-config", "--cflags", "--libs", "ksv_comm"))
    with tempfile.TemporaryDirectory(prefix="ksv_consumer") as scratch:
        program = str(Path(scratch, "conversion"))
        compiler = environment.get("CC", "cc")
        output(compiler, "-Wall", "-Werror", str(ROOT / "docs/examples/conversion.c"), "-o", program,
               *flags)
        equal("docs/examples/conversion.c", output(program),
              printed_on_page(ROOT / "docs" / "conversion.md"))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--command", nargs="+", help="that starts ksv")
    parser.add_argument("--consumer", action="store_true", help="build and run a program in C")
    parser.add_argument("--prefix", help="of the installation, when pkg-config does not know it")
    arguments = parser.parse_args()
    try:
        if arguments.command:
            check_command(arguments.command)
        if arguments.consumer:
            check_consumer(arguments.prefix)
    except Difference as difference:
        print(difference, file=sys.stderr)
        return 1
    print("the installation does what it should")
    return 0


if __name__ == "__main__":
    sys.exit(main())
