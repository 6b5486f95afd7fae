#!/usr/bin/env python3
"""Holds every #include of the sources against the table of docs/architecture.md, which says
how its rows are read. Status 1, and a line for each, when an include is not allowed.

    includes.py PROJECT
"""
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

PAGE = "docs/architecture.md"
HEADING = "## The folders, and who may include whom"
NOTHING = ("nothing of ours", "–")
EVERYTHING = "everything"
AND_BELOW = "and below"
APART = re.compile(r"\s*only (`.*`) includes?\b")
NAME = re.compile(r"`([^`]+)`")
INCLUDE = re.compile(r'\s*#\s*include\s+"([^"]+)"')
SUFFIXES = (".h", ".c", ".cpp")
# Where the compiler looks for a header, behind the folder of the file itself.
SEARCHED = ("", "include", "tests/convert")


class TableError(Exception):
    pass


@dataclass
class Row:
    folder: str
    everything: bool = False
    names: list = field(default_factory=list)  # folders, with a slash at the end, and headers
    below: list = field(default_factory=list)  # folders whose own row holds as well
    apart: bool = False                        # its files do not include each other
    exempt: list = field(default_factory=list)  # but for these


def table_of(page):
    """The rows of the table behind the heading, without its own two head lines."""
    _, found, rest = page.partition(HEADING)
    if not found:
        raise TableError(f"{PAGE} has no heading '{HEADING}'")
    lines = [line for line in rest.split("\n## ")[0].splitlines() if line.startswith("|")]
    rows = []
    for line in lines[2:]:
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if len(cells) != 3:
            raise TableError(f"{PAGE}: not three cells: {line}")
        rows.append((cells[0], cells[2]))
    return rows


def folder_of(name):
    if not name.endswith("/"):
        raise TableError(f"{PAGE}: a folder ends with a slash: {name}")
    return name


def parsed_row(folder, allowed):
    row = Row(folder)
    if allowed == EVERYTHING:
        row.everything = True
    elif allowed not in NOTHING:
        for clause in allowed.split(";"):
            apart = APART.match(clause)
            if apart:
                row.apart = True
                row.exempt += NAME.findall(apart[1])
            else:
                row.names += NAME.findall(clause)
                row.below += map(folder_of, NAME.findall(clause.rpartition(AND_BELOW)[0]))
        if not row.names and not row.apart:
            raise TableError(f"{PAGE}: what {folder} may include is not in backticks: {allowed}")
    return row


def parsed_table(page):
    rows = {}
    for folders, allowed in table_of(page):
        for folder in NAME.findall(folders):
            rows[folder_of(folder)] = parsed_row(folder, allowed)
    if not rows:
        raise TableError(f"{PAGE} has no table")
    return rows


def owner(rows, path):
    """The folder of the table that a file belongs to: the innermost one."""
    found = [folder for folder in rows if path.startswith(folder)]
    return max(found, key=len) if found else None


def allowed_names(rows, folder, seen=()):
    """Folders and headers that a row allows, those of the rows below included."""
    names = {folder, *rows[folder].names}
    for below in rows[folder].below:
        if below not in seen:
            names |= allowed_names(rows, below, (*seen, folder))
    return names


def is_own_header(path, header):
    """path.h is path.cpp's own, and that of path_posix.cpp."""
    file, own = Path(path), Path(header)
    return file.parent == own.parent and (file.stem + "_").startswith(own.stem + "_")


def is_allowed(rows, path, header):
    folder = owner(rows, path)
    row = rows[folder]
    if row.everything or is_own_header(path, header):
        return True
    if owner(rows, header) == folder and row.apart:
        return Path(path).name in row.exempt
    names = allowed_names(rows, folder)
    return header in names or owner(rows, header) in names


class Tree:
    """The sources of the project, and what each includes of it."""

    def __init__(self, root):
        self.root = root
        folders = [path for path in root.iterdir()
                   if path.is_dir() and path.name != "build" and not path.name.startswith(".")]
        self.files = sorted(str(path.relative_to(root)) for folder in folders
                            for path in folder.rglob("*") if path.suffix in SUFFIXES)
        self.known = set(self.files)

    def resolved(self, path, name):
        """None of what the build makes."""
        for folder in (str(Path(path).parent), *SEARCHED):
            candidate = str(Path(folder, name))
            if candidate in self.known:
                return candidate
        return None

    def includes_of(self, path):
        """Pairs of a line's number and the file that it includes."""
        text = (self.root / path).read_text(errors="replace")
        for number, line in enumerate(text.splitlines(), 1):
            found = INCLUDE.match(line)
            header = self.resolved(path, found[1]) if found else None
            if header is not None:
                yield number, header


def missing_names(rows, tree):
    """What the table names and the tree does not have."""
    folders = {f"{parent}/" for path in tree.files for parent in Path(path).parents}
    for folder, row in rows.items():
        for name in row.names:
            if name not in (folders if name.endswith("/") else tree.known):
                yield f"{PAGE}: {folder} may include {name}, which is not there"
        for below in row.below:
            if below not in rows:
                yield f"{PAGE}: {folder} may include {below} and below, which has no row"
        for name in row.exempt:
            if folder + name not in tree.known:
                yield f"{PAGE}: {folder} has no {name}"


def told_allowed(rows, folder):
    names = sorted(allowed_names(rows, folder) - {folder})
    own = "of its own folder only its header" if rows[folder].apart else folder
    return ", ".join([own, *names])


def violations(root):
    tree = Tree(root)
    rows = parsed_table((root / PAGE).read_text())
    yield from missing_names(rows, tree)
    for path in tree.files:
        folder = owner(rows, path)
        if folder is None:
            yield f"{path}: no row of {PAGE} has its folder"
            continue
        for number, header in tree.includes_of(path):
            if not is_allowed(rows, path, header):
                yield (f"{path}:{number}: {folder} may not include {header}, only "
                       f"{told_allowed(rows, folder)}")


def main():
    try:
        found = list(violations(Path(sys.argv[1])))
    except TableError as error:
        found = [str(error)]
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
