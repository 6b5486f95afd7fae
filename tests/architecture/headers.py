#!/usr/bin/env python3
"""Compiles each header alone, twice in one source: those of include/ as C and as C++. What a
source of ours includes first is compiled alone there, and not once more here. Status 1 when one
does not compile.

    headers.py PROJECT C_COMPILER CXX_COMPILER
"""
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

INTERFACE = "include"
ROOMS = ("common", "cconv", "detect", "ole", "cli", "kit")
# What belongs to another system does not compile here.
FOREIGN = "_windows"
FIRST_INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)
# What stands in a header to be part of several sources: it holds only where they include it.
PARTS = tuple(
    f"cconv/bulk/vectors/{name}.h"
    for name in ("byte_codes_by_window", "iso_2022_jp_by_window", "read_piece", "rows_avx2", "rows_sse41",
                 "units_by_window", "utf8_by_window", "window_runs", "window", "window_aarch64",
                 "window_x86_64"))
WARNINGS = ("-Wall", "-Wextra", "-Wconversion", "-Werror")


def headers_of(root, folder):
    return sorted(str(path.relative_to(root)) for path in (root / folder).rglob("*.h")
                  if not path.stem.endswith(FOREIGN))


def included_first(root):
    """Headers of the rooms that a source there has as its first include."""
    found = set()
    for room in ROOMS:
        for source in (root / room).rglob("*.cpp"):
            first = FIRST_INCLUDE.search(source.read_text())
            if first and not source.stem.endswith(FOREIGN):
                found |= {first[1], str(Path(source.parent.relative_to(root), first[1])),
                          f"cli/{first[1]}"}
    return found


def is_guarded(root, header):
    text = (root / header).read_text()
    return "#pragma once" in text or re.search(r"#ifndef (\w+)\s+#define \1\b", text) is not None


def compiled_alone(root, header, compiler, language, standard):
    """What the compiler says; nothing of a header that compiles."""
    folders = [option for folder in (".", INTERFACE, "cli") for option in ("-I", root / folder)]
    source = f'#include "{root / header}"\n' * 2
    done = subprocess.run(
        [compiler, "-fsyntax-only", f"-std={standard}", *WARNINGS, *folders, "-x", language, "-"],
        input=source, capture_output=True, text=True)
    if done.returncode == 0:
        return ""
    return f"{header} does not compile alone as {language}:\n{done.stderr}"


def faults(root, c_compiler, cxx_compiler):
    interface = headers_of(root, INTERFACE)
    rooms = [header for room in ROOMS for header in headers_of(root, room)]
    gone = [f"{part} is not there: PARTS of headers.py has it" for part in PARTS
            if part not in rooms]
    if not interface or not rooms or gone:
        return gone or ["no headers"]
    rooms = [header for header in rooms if header not in PARTS]
    unguarded = [f"{header} has no guard" for header in rooms + interface
                 if not is_guarded(root, header)]
    proven = included_first(root)
    tried = [(header, cxx_compiler, "c++", "c++20")
             for header in interface + [header for header in rooms if header not in proven]]
    tried += [(header, c_compiler, "c", "c11") for header in interface]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        answers = list(pool.map(lambda header: compiled_alone(root, *header), tried))
    print(f"{len(tried)} compilations of {len(rooms) + len(interface)} headers")
    return unguarded + [answer for answer in answers if answer]


def main():
    found = faults(Path(sys.argv[1]).resolve(), *sys.argv[2:4])
    for fault in found:
        print(fault)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
