#!/usr/bin/env python3
"""Prints the version of this tree, or what does not agree with it.

    version.py [--command PROGRAM...]

The version stands in CMakeLists.txt. CHANGELOG.md and debian/changelog begin with it, and the
command, when its call is given, says it. Status 1 when one of them has another.
"""
import argparse
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
VERSION = r"(\d+\.\d+\.\d+)"


class VersionError(Exception):
    """A file does not say what it should."""


def first_match(path, pattern):
    match = re.search(pattern, path.read_text(encoding="utf-8"), re.MULTILINE)
    if match is None:
        raise VersionError(f"{path.name} names no version")
    return match


def project_version(root):
    return first_match(root / "CMakeLists.txt", rf"^project\(ksv_comm VERSION {VERSION}\s")[1]


def release_in_changelog(root):
    """Version and date of the newest release that CHANGELOG.md has, by its heading."""
    match = first_match(root / "CHANGELOG.md", rf"^## {VERSION} – (\d{{4}}-\d\d-\d\d)$")
    return match[1], match[2]


def debian_version(root):
    """Of the package's version what stands before the number of a change of the packaging alone."""
    return first_match(root / "debian" / "changelog",
                       rf"\A[a-z0-9.+-]+ \({VERSION}(?:\+deb\d+)?\) ")[1]


def command_version(command):
    done = subprocess.run([*command, "--version"], stdin=subprocess.DEVNULL, timeout=60,
                          stdout=subprocess.PIPE, check=True)
    return done.stdout.decode("utf-8").strip().removeprefix("ksv ")


def disagreements(root, command=()):
    version = project_version(root)
    others = {"CHANGELOG.md": release_in_changelog(root)[0],
              "debian/changelog": debian_version(root)}
    if command:
        others["ksv --version"] = command_version(command)
    return [f"{place} has {other}, CMakeLists.txt {version}"
            for place, other in others.items() if other != version]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--command", nargs="+", default=[])
    arguments = parser.parse_args()
    try:
        found = disagreements(ROOT, arguments.command)
    except VersionError as error:
        found = [str(error)]
    if found:
        print(*found, sep="\n", file=sys.stderr)
        return 1
    print(project_version(ROOT))
    return 0


if __name__ == "__main__":
    sys.exit(main())
