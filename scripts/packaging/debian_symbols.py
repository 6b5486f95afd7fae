#!/usr/bin/env python3
"""Holds debian/libksv0.symbols against what include/ lists as exported.

    debian_symbols.py           status 1 when the two do not name the same
    debian_symbols.py --write   adds what is new in the list, with the version of this tree

Packages that were built against a symbol depend on the version that first had it, so a version
that stands there stays. A symbol that is gone from the list is never taken out: it is an error.
"""
import argparse
import re
import sys
from pathlib import Path

from version import ROOT, project_version

ABI_LINE = re.compile(r"^set\(KSV_ABI_VERSION (\d+)\)$", re.MULTILINE)


class SymbolsError(Exception):
    """The two lists cannot be brought together."""


# Each library of the package, in the order of dpkg-gensymbols, with the list of its exports.
LISTS = {"libksv": "exports_ksv.list", "libksv_comm": "exports.list"}


def exported_names(root, name):
    path = root / "include" / LISTS[name]
    lines = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
    return [line.split()[1] for line in lines if line[:1].isdigit()]


def abi_version(root):
    return ABI_LINE.search((root / "CMakeLists.txt").read_text(encoding="utf-8"))[1]


def header(name, abi):
    return (f"{name}.so.{abi} libksv{abi} #MINVER#\n"
            "* Build-Depends-Package: libksv-dev")


def known_versions(text):
    """The symbols that the file has, each with the version that first had it."""
    lines = (line.split() for line in text.splitlines() if line.startswith(" "))
    return {name.removesuffix("@Base"): version for name, version in lines}


def symbols_text(root, text):
    """What the file should be, given what it is."""
    known = known_versions(text)
    names = {library: exported_names(root, library) for library in LISTS}
    gone = sorted(known.keys() - {name for of_library in names.values() for name in of_library})
    if gone:
        raise SymbolsError(f"no longer exported: {' '.join(gone)}")
    version = project_version(root)
    lines = []
    for library, exported in names.items():
        if exported:
            lines += [header(library, abi_version(root)),
                      *(f" {name}@Base {known.get(name, version)}" for name in sorted(exported))]
    return "\n".join([*lines, ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    path = ROOT / "debian" / f"libksv{abi_version(ROOT)}.symbols"
    text = path.read_text(encoding="utf-8") if path.exists() else ""
    try:
        wanted = symbols_text(ROOT, text)
    except SymbolsError as error:
        print(f"{path.name}: {error}", file=sys.stderr)
        return 1
    if arguments.write:
        path.write_text(wanted, encoding="utf-8")
        return 0
    if text != wanted:
        print(f"{path.name} is not what is exported; run {Path(__file__).name} --write",
              file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
