#!/usr/bin/env python3
"""Adds up what fuzzing took and found, target by target, as a table.

    scripts/fuzzing/sum_totals.py fuzz/totals.txt
"""
import re
import sys
from collections import defaultdict
from pathlib import Path

LINE = re.compile(r"\d{4}-\d\d-\d\d (\w+) wall \d+ s, CPU (\d+) s, (\d+) runs,.* (\d+) findings?\b.*")


def sums_of(text):
    """Of each target seconds of the processor, runs and findings."""
    sums = defaultdict(lambda: [0, 0, 0])
    for line in text.splitlines():
        if line and not line.startswith("#"):
            target, *figures = LINE.fullmatch(line).groups()
            sums[target] = [before + int(more) for before, more in zip(sums[target], figures)]
    return sums


def main():
    sums = sums_of(Path(sys.argv[1]).read_text())
    sums["all"] = [sum(column) for column in zip(*sums.values())]
    print("| target | minutes of the processor | runs | findings |\n|---|---|---|---|")
    for target, (seconds, runs, findings) in sums.items():
        print(f"| `{target}` | {seconds / 60:.1f} | {runs:,} | {findings} |")


if __name__ == "__main__":
    main()
