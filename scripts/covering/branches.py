#!/usr/bin/env python3
"""Reads what llvm-cov exports and tells, room by room, how many lines and branches the tests
took. A branch is one way that a condition can go; it counts as taken when any instance of the
code took it.

    branches.py EXPORT --root . --list build/coverage/branches_not_taken.txt
"""
import argparse
import bisect
import json
import sys
from collections import defaultdict
from dataclasses import dataclass, field
from pathlib import Path

# The command must not fall below these: a little less than what is taken, since some branches
# depend on how threads meet. In percent.
LEAST_BRANCHES = {"library": 95.5, "command": 95.0}

# The rooms of each, the deepest folder first.
ROOMS = {
    "library": ["common", "cconv/rules", "cconv/engine", "cconv/codecs", "cconv/bulk/vectors", "cconv/bulk",
                "cconv/convert", "detect", "ole"],
    "command": ["cli"],
}
TAKEN_BY_NO_TEST = {"cli/main.cpp"}  # a main() and nothing else
LINE = "{:<22} {:>7} {:>7} {:>7} {:>9} {:>7} {:>7}"


@dataclass
class Branch:
    true: int = 0
    false: int = 0


@dataclass
class Source:
    """What is known of one file."""
    lines: dict = field(default_factory=dict)  # counts by number
    branches: dict = field(default_factory=dict)  # by the place of their condition


@dataclass
class Sum:
    lines: int = 0
    lines_taken: int = 0
    branches: int = 0
    branches_taken: int = 0

    def add(self, other):
        for name in vars(self):
            setattr(self, name, getattr(self, name) + getattr(other, name))

    def branch_percentage(self):
        return percentage(self.branches_taken, self.branches)


def percentage(part, whole):
    return 100 * part / whole if whole else 100.0


def counts_of_lines(segments):
    """The count of each line that has code. A segment goes from its place to the next one."""
    by_line = defaultdict(list)
    for segment in segments:
        by_line[segment[0]].append(segment)
    counts, wrapping = {}, None
    for number in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        here = by_line.get(number, [])
        starts = [count for _, _, count, has_count, is_entry, is_gap in here
                  if has_count and is_entry and not is_gap]
        skipped_starts = bool(here) and not here[0][3] and here[0][4]
        wraps = wrapping is not None and wrapping[3]
        if not skipped_starts and (wraps or starts):
            counts[number] = max([wrapping[2] if wraps else 0, *starts])
        if here:
            wrapping = here[-1]
    return counts


def count_at(segments, line, column):
    index = bisect.bisect_right(segments, [line, column, float("inf")]) - 1
    return segments[index][2] if index >= 0 else 0


def branches_of(data, text):
    """Those that the compiler has not decided. It leaves both ways of a decided one at nothing,
    however often the code around it runs."""
    branches = defaultdict(Branch)
    for line, column, end_line, end_column, true, false, *_ in data["branches"]:
        branch = branches[line, column, end_line, end_column]
        branch.true += true
        branch.false += false
    return {place: branch for place, branch in branches.items()
            if branch.true or branch.false or (
                count_at(data["segments"], *place[:2]) == 0
                and "if constexpr" not in text[place[0] - 1])}


def read_export(text, root):
    sources = {}
    for data in json.loads(text)["data"][0]["files"]:
        path = Path(data["filename"])
        if not path.is_relative_to(root):
            continue
        name = str(path.relative_to(root))
        if room_of(name) is not None and name not in TAKEN_BY_NO_TEST:
            text = path.read_text().splitlines()
            sources[name] = Source(counts_of_lines(data["segments"]), branches_of(data, text))
    return sources


def room_of(name):
    folder = str(Path(name).parent)
    return next((room for rooms in ROOMS.values() for room in rooms
                 if folder == room), None)


def sum_of(source):
    ways = [way for branch in source.branches.values() for way in (branch.true, branch.false)]
    return Sum(len(source.lines), sum(count > 0 for count in source.lines.values()), len(ways),
               sum(count > 0 for count in ways))


def sums_by_room(sources):
    sums = defaultdict(Sum)
    for name, source in sources.items():
        sums[room_of(name)].add(sum_of(source))
    return sums


def not_taken(sources, root):
    """A line for each condition that goes one way only, or is never asked."""
    for name, source in sorted(sources.items()):
        text = (root / name).read_text().splitlines()
        for (line, column, *_), branch in sorted(source.branches.items()):
            if branch.true and branch.false:
                continue
            says = "never asked" if not (branch.true or branch.false) else (
                "never false" if branch.true else "never true")
            yield f"{name}:{line}:{column}: {says}: {text[line - 1].strip()}"


def row(name, total):
    return LINE.format(name, total.lines, total.lines_taken,
                       f"{percentage(total.lines_taken, total.lines):.1f}", total.branches,
                       total.branches_taken, f"{total.branch_percentage():.1f}")


def report(sources):
    """Prints the table. The parts that are below what they should have."""
    sums = sums_by_room(sources)
    print(LINE.format("", "lines", "taken", "%", "branches", "taken", "%"))
    low = []
    for part, rooms in ROOMS.items():
        total = Sum()
        for room in rooms:
            total.add(sums[room])
            if len(rooms) > 1:
                print(row("  " + room, sums[room]))
        print(row(part, total))
        if total.branch_percentage() < LEAST_BRANCHES[part]:
            low.append(part)
    return low


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("export", type=Path, help="the output of llvm-cov export")
    parser.add_argument("--root", type=Path, required=True, help="of the sources")
    parser.add_argument("--list", type=Path, help="write here which branches were not taken")
    arguments = parser.parse_args()
    root = arguments.root.resolve()
    sources = read_export(arguments.export.read_text(), root)
    low = report(sources)
    if arguments.list:
        arguments.list.write_text("".join(line + "\n" for line in not_taken(sources, root)))
    for part in low:
        print(f"coverage: the {part} has less than {LEAST_BRANCHES[part]} % of its branches taken",
              file=sys.stderr)
    return 1 if low else 0


if __name__ == "__main__":
    sys.exit(main())
