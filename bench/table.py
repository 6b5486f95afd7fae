#!/usr/bin/env python3
"""Turns the JSON output of ksv_bench into a table in Markdown.

    ksv_bench --benchmark_repetitions=5 --benchmark_format=json > out.json
    bench/table.py out.json

Figures are medians when the run repeated its benchmarks. The ratio tells how many
times faster the library is than its fastest peer: above 1 it is ahead. The spread
is the largest coefficient of variation in the row; a row with a large one was
disturbed, or its repetitions were interleaved on a machine that changed its speed.
"""
import argparse
import json
import sys

PEERS = ("iconv", "icu", "direct", "uchardet")
COLUMNS = ("library", "charset_again", "buffers_only", "engine") + PEERS
PARTS = ("start_us", "rules_us", "converter_us", "conversion_us", "end_us")
TITLES = {
    "convert": "Conversion, MB of input a second",
    "string_whole": "One short string, set up and released, ns",
    "string_kept": "One short string, handle kept, ns",
    "detect": "Detection with the texts' language, files a second",
    "detect_without_language": "Detection without a language, files a second",
    "judge": "The judge of charsets, texts a second",
    "start": "From startProcess to the first conversion, µs",
    "lookup": "One look into the Shift_JIS mapping, ns",
    "lookup_waiting": "One look, waiting for the one before, ns",
}
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def load(path):
    """Rows by group: {group: {(pair, text): {contestant: (figures, spread)}}}."""
    with (sys.stdin if path == "-" else open(path, encoding="utf-8")) as file:
        try:
            runs = json.load(file)["benchmarks"]
        except json.JSONDecodeError as error:
            sys.exit(f"table.py: not the whole JSON output of ksv_bench: {error}")
    # Interleaved repetitions come in any order.
    runs.sort(key=lambda run: run["family_index"])
    wanted = {}
    spreads = {}
    for run in runs:
        name = run["run_name"]
        aggregate = run.get("aggregate_name")
        if run.get("error_occurred"):
            sys.exit(f"table.py: {name} failed: {run.get('error_message')}")
        if aggregate == "cv":
            spreads[name] = run["real_time"]
        elif aggregate == "median" or (aggregate is None and name not in wanted):
            wanted[name] = run
    groups = {}
    for name, run in wanted.items():
        group, pair, text, contestant = name.split("/")[:4]
        row = groups.setdefault(group, {}).setdefault((pair, text), {})
        row[contestant] = (run, spreads.get(name))
    return groups


def megabytes(run):
    return run["bytes_per_second"] / 1e6


def nanoseconds(run):
    return run["real_time"] * NANOSECONDS[run["time_unit"]]


def shown(figure):
    return f"{figure:.1f}" if figure < 10 else f"{figure:.0f}"


def spread_of(row):
    spreads = [spread for _, spread in row.values() if spread is not None]
    return f"{100 * max(spreads):.0f} %" if spreads else ""


def print_table(header, rows):
    cells = [[str(cell) for cell in row] for row in [header] + rows]
    widths = [max(len(row[i]) for row in cells) for i in range(len(header))]
    for number, row in enumerate(cells):
        aligned = [cell.ljust(width) if i < 2 else cell.rjust(width)
                   for i, (cell, width) in enumerate(zip(row, widths))]
        print("| " + " | ".join(aligned) + " |")
        if number == 0:
            print("|" + "|".join("-" * (width + 1) + ("-" if i < 2 else ":")
                                 for i, width in enumerate(widths)) + "|")


def compared(rows, figure_of, more_is_faster):
    columns = [name for name in COLUMNS if any(name in row for row in rows.values())]
    lines = []
    for (pair, text), row in rows.items():
        figures = {name: figure_of(row[name][0]) for name in columns if name in row}
        peers = [figures[name] for name in PEERS if name in figures]
        ratio = ""
        if peers and "library" in figures:
            own = figures["library"]
            ratio = f"{own / max(peers) if more_is_faster else min(peers) / own:.2f}"
        cells = [shown(figures[name]) if name in figures else "-" for name in columns]
        lines.append([pair.replace("_to_", " → "), text] + cells + [ratio, spread_of(row)])
    print_table(["pair", "text"] + columns + ["ratio", "spread"], lines)


def start_table(rows):
    lines = []
    for (pair, text), row in rows.items():
        run = row["library"][0]
        cells = [f"{nanoseconds(run) / 1e3:.0f}"] + [f"{run[part]:.0f}" for part in PARTS]
        lines.append([pair.replace("_to_", " → "), text] + cells + [spread_of(row)])
    header = ["pair", "first text", "whole"] + [part.removesuffix("_us") for part in PARTS]
    print_table(header + ["spread"], lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("json", nargs="?", default="-", help="the output, or - for stdin")
    groups = load(parser.parse_args().json)
    for group, rows in groups.items():
        print(f"\n### {TITLES.get(group, group)}\n")
        if group == "start":
            start_table(rows)
        elif group.startswith("detect") or group == "judge":
            compared(rows, lambda run: run["items_per_second"], True)
        elif group == "convert":
            compared(rows, megabytes, True)
        else:
            compared(rows, nanoseconds, False)


if __name__ == "__main__":
    main()
