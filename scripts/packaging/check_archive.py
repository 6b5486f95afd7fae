#!/usr/bin/env python3
"""Unpacks archives of a release somewhere and checks what they install there.

    check_archive.py ksv_comm-1.0.0-linux-x86_64.tar.gz
    check_archive.py --emulator wine ksv_comm-1.0.0-windows-x86_64.zip
    check_archive.py libksv0_*.deb libksv-dev_*.deb libksv-data_*.deb ksv_*.deb

All that are named go into one folder. On Linux a program in C is built against what they hold.
"""
import argparse
import subprocess
import sys
import tarfile
import tempfile
import zipfile
from pathlib import Path

from check_installed import Difference, check_command, check_consumer


def unpack(path, folder):
    if path.suffix == ".deb":
        subprocess.run(["dpkg-deb", "-x", path, folder], check=True)
    elif path.suffix == ".zip":
        with zipfile.ZipFile(path) as archive:
            archive.extractall(folder)
    else:
        with tarfile.open(path) as archive:
            archive.extractall(folder)


def command_in(folder):
    found = [path for name in ("ksv", "ksv.exe") for path in folder.rglob(f"bin/{name}")]
    if len(found) != 1:
        raise Difference(f"{len(found)} commands are in the archives")
    return found[0]


def check(archives, emulator):
    with tempfile.TemporaryDirectory(prefix="ksv archive") as scratch:
        for archive in archives:
            unpack(archive, Path(scratch))
        command = command_in(Path(scratch))
        check_command([*emulator, str(command)])
        if command.suffix != ".exe":
            check_consumer(command.parent.parent)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--emulator", nargs=1, default=[])
    parser.add_argument("archives", nargs="+", type=Path)
    arguments = parser.parse_args()
    try:
        check(arguments.archives, arguments.emulator)
    except Difference as difference:
        print(difference, file=sys.stderr)
        return 1
    print(f"{arguments.archives[0].name}: unpacked elsewhere, it does what it should")
    return 0


if __name__ == "__main__":
    sys.exit(main())
