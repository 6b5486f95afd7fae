#!/usr/bin/env python3
"""Shows how often judges of charsets are right, as tables in Markdown and as JSON.

    scripts/judge/training_texts.py --work /tmp/ksv-texts
    bench/detection_judges.py --work /tmp/ksv-texts --library build/release/libksv.so

Pieces of 8 to 2,000 bytes and whole texts (their first 64 KiB) are cut out of the held-out texts,
of which nothing was learnt from, in each charset that their language was written in. A piece starts
where a line or sentence does, holds whole characters, and has one that is not ASCII; pure ASCII is
a row of its own. What the charset does not have is written as people do ("..." for an ellipsis);
a line that cannot be is left out.

A judge is right when the charset that it names gives the piece's text; its name is right when it is
the charset's, or one that is read by the same table everywhere. Every cell, a language's charset
and a length, counts the same. Slow judges are given every --slow-th piece only.
"""
import argparse
import bisect
import datetime
import json
import multiprocessing
import os
import platform
import sys
from collections import Counter, defaultdict
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from charset_judges import Ksv, canonical, judges  # noqa: E402
from written_texts import (WRITTEN_IN, HeldTexts, Writing, charsets_of, encode, joined,  # noqa: E402
                           pieces)

LENGTHS = (8, 16, 40, 200, 2000, None)
ALL_JUDGES = ("ksv", "uchardet", "ICU", "faust-cchardet", "chardet", "charset-normalizer")
BOUNDS = [0.1 * i for i in range(10)] + [0.95, 0.99, 1]
KINDS = ("pieces", "right", "exact", "none", "right_language")
LONG = (2000, 10000, 100000)
# What the web's standard has a decoder for.
WEB = ("UTF-8 UTF-16LE UTF-16BE IBM866 KOI8-R KOI8-U macintosh x-mac-cyrillic windows-874 TIS-620 GBK "
       "GB18030 Big5 EUC-JP ISO-2022-JP Shift_JIS EUC-KR").split() + [
           f"ISO-8859-{n}" for n in range(1, 17)] + [f"windows-125{n}" for n in range(9)]


def title(length):
    return "whole" if length is None else f"{length:,} bytes"


def bin_of(confidence):
    # Some peers give a little more than 1.
    return min(bisect.bisect_right(BOUNDS, confidence), len(BOUNDS) - 1) - 1


class Cell:
    """What a judge said of the pieces of a language, a charset and a length."""

    def __init__(self):
        self.counts = Counter()
        self.calibration = {}
        self.wrong = []

    def add(self, piece, answer, charset, language):
        right = answer.reads(piece)
        self.counts["pieces"] += 1
        self.counts["right"] += right
        self.counts["exact"] += answer.names(charset)
        self.counts["none"] += not answer.name
        self.counts["right_language"] += answer.language == language
        if answer.confidence is not None and answer.name:
            said = self.calibration.setdefault(bin_of(answer.confidence), [0, 0, 0.0])
            said[0] += 1
            said[1] += right
            said[2] += answer.confidence
        if not right:
            self.wrong.append((answer.name, answer.confidence, answer.language,
                               piece[1][:100].hex(), piece[0][:60]))


def judge_language(work):
    """Everything about a language: {(charset, length, judge): Cell}, and its invariance."""
    language, options = work
    mine = judges(options.judges, options.work, options.library)
    texts = HeldTexts(options.work / "texts", language)
    cells = {}
    for charset in charsets_of(language):
        for length in LENGTHS:
            found = pieces(texts, charset, length, options.count, options.seed)
            for judge in mine:
                cell = cells[charset, length, judge.name] = Cell()
                for piece in found[::options.slow if judge.slow else 1]:
                    cell.add(piece, judge.judge(piece[1]), charset, language)
    return language, cells, invariance(texts, mine, options)


def invariance(texts, mine, options):
    """What each judge calls the beginnings of long texts: [(judge, charset, package, names)]."""
    rows = []
    for charset in charsets_of(texts.language):
        for package, text in long_texts(texts, charset, options):
            for judge in mine:
                if not judge.slow:
                    answers = [judge.judge(text[:whole_pairs(charset, n)]) for n in LONG]
                    names = [a.decode_as for a in answers]
                    rows.append((judge.name, charset, package, names))
    return rows


def whole_pairs(charset, length):
    return length - length % 2 if charset.startswith("UTF-16") else length


def long_texts(texts, charset, options):
    """The texts of each package one after the other, where they have as much."""
    writing = Writing(texts.language, charset)
    for package in texts.packages:
        lines = []
        size = 0
        for path in texts.by_package[package]:
            lines += texts.document(path)
            size += path.stat().st_size
            if size > 4 * LONG[-1]:
                break
        data = encode(joined(lines, writing, 2 * LONG[-1]), charset)
        if data and len(data) >= LONG[-1] and any(byte > 127 for byte in data[:LONG[0]]):
            yield package, data


def share(cells, kind, of="pieces"):
    """The mean of the cells' shares, in per cent; None without a piece."""
    shares = [cell.counts[kind] / cell.counts[of] for cell in cells if cell.counts[of]]
    return 100 * sum(shares) / len(shares) if shares else None


def shown(figure):
    return "" if figure is None else f"{figure:.1f}"


def print_table(caption, header, rows):
    print(f"\n### {caption}\n")
    print("| " + " | ".join(header) + " |")
    print("| " + " | ".join(["-"] + ["-:"] * (len(header) - 1)) + " |")
    for row in rows:
        print("| " + " | ".join(row) + " |")


def selected(cells, **wanted):
    """The cells whose key (language, charset, length, judge) has what is wanted."""
    order = [set(wanted[name]) if name in wanted else None
             for name in ("language", "charset", "length", "judge")]
    return [cell for key, cell in cells.items()
            if all(values is None or part in values for part, values in zip(key, order))]


def by_length(cells, names, charsets):
    rows = []
    for kind, meaning in (("right", "right text"), ("exact", "right name"), ("none", "no answer")):
        for name in names:
            rows.append([f"{name}: {meaning}"] + [
                shown(share(selected(cells, judge=[name], length=[length], charset=charsets), kind))
                for length in LENGTHS])
    return rows


def is_east_asian(charset):
    return any(charset in WRITTEN_IN[language] for language in ("ja", "zh-CN", "zh-TW", "ko"))


def print_by_length(cells, names):
    charsets = {key[1] for key in cells} - {"US-ASCII"}
    utf = {name for name in charsets if name.startswith("UTF")}
    asian = set(filter(is_east_asian, charsets))
    groups = (("everything but ASCII", charsets), ("what browsers read", charsets & set(WEB)),
              ("Unicode", utf), ("East Asian charsets", asian),
              ("charsets of one byte a character", charsets - utf - asian),
              ("charsets of one byte that browsers read", (charsets - utf - asian) & set(WEB)),
              ("ASCII", {"US-ASCII"}))
    for caption, group in groups:
        print_table(f"By length: {caption}", ["per cent"] + [title(n) for n in LENGTHS],
                    by_length(cells, names, group))


def by(place, cells, names, length):
    keys = list(dict.fromkeys(key[("language", "charset").index(place)] for key in cells))
    return [[key] + [shown(share(selected(cells, judge=[name], length=[length], **{place: [key]}),
                                 "right")) for name in names] for key in keys]


def calibration(cells, names, charsets):
    rows = []
    for name in names:
        total = defaultdict(lambda: [0, 0, 0.0])
        for cell in selected(cells, judge=[name], charset=charsets):
            for place, figures in cell.calibration.items():
                total[place] = [a + b for a, b in zip(total[place], figures)]
        for place in sorted(total):
            said, right, sum_of = total[place]
            rows.append([f"{name}: {BOUNDS[place]:.2f} to {BOUNDS[place + 1]:.2f}",
                         f"{said:,}", f"{sum_of / said:.3f}", f"{right / said:.3f}"])
    return rows


def print_calibration(cells, names, options):
    header = ["confidence given", "pieces", "mean", "right"]
    charsets = {key[1] for key in cells}
    own = [name for name in names if name == "ksv"]
    print_table("Confidence and how many are right", header,
                calibration(cells, own or names, charsets))
    if own:
        library = Ksv(options.library)
        known = {name for name in charsets if library.has(name)}
        if charsets - known:
            print_table("The same without what the library does not read: "
                        f"{', '.join(sorted(charsets - known))}", header,
                        calibration(cells, ["ksv"], known))


def print_invariance(rows, names):
    table = []
    for name in names:
        mine = [row for row in rows if row[1] == name]
        if mine:
            same = sum(len(set(map(canonical, map(str, row[4])))) == 1 for row in mine)
            table.append([name, str(len(mine)), f"{100 * same / len(mine):.1f}"])
    print_table(f"First guess at {', '.join(f'{n:,}' for n in LONG)} bytes of the same text",
                ["judge", "texts", "the same at each, per cent"], table)
    differing = [row for row in rows
                 if row[1] == "ksv" and len(set(map(canonical, map(str, row[4])))) > 1]
    if differing:
        print()
        for language, _, charset, package, guesses in differing:
            print(f"* {language} in {charset}, {package}: {', '.join(map(str, guesses))}")


def print_languages(cells, names):
    """How often the language is right, of a judge that tells one."""
    if "ksv" in names:
        print_table("Language, where the text is right or not: ksv",
                    ["per cent"] + [title(n) for n in LENGTHS],
                    [["right language"] + [shown(share(selected(cells, judge=["ksv"], length=[n]),
                                                       "right_language")) for n in LENGTHS]])


def print_wrong(cells, judge, most):
    for (language, charset, length, name), cell in cells.items():
        if name != judge:
            continue
        for answer, confidence, said, data, text in cell.wrong[:most]:
            print(f"WRONG {language} {charset} {title(length)}: {answer} ({said or '-'}, "
                  f"{confidence}) {data} {text!r}", file=sys.stderr)


def as_json(cells, rows, versions, options):
    return {"versions": versions, "seed": options.seed, "count": options.count,
            "slow": options.slow,
            "date": datetime.date.today().isoformat(),
            "cells": [{"language": language, "charset": charset, "length": length, "judge": judge,
                       **cell.counts,
                       "named_instead": Counter(str(w[0]) for w in cell.wrong).most_common(5)}
                      for (language, charset, length, judge), cell in cells.items()],
            "invariance": rows}


def add_earlier(path, cells, rows, versions, options):
    """The figures of judges that are not asked now, out of the JSON of an earlier run."""
    earlier = json.loads(path.read_text())
    if (earlier["seed"], earlier["count"], earlier["slow"]) != (options.seed, options.count,
                                                               options.slow):
        sys.exit(f"detection_judges.py: {path} is of other pieces")
    asked = set(versions)
    for figures in earlier["cells"]:
        if figures["judge"] not in asked:
            key = (figures["language"], figures["charset"], figures["length"], figures["judge"])
            cell = cells[key] = Cell()
            cell.counts.update({kind: figures.get(kind, 0) for kind in KINDS})
    rows += [tuple(row) for row in earlier["invariance"] if row[1] not in asked]
    versions.update({name: version for name, version in earlier["versions"].items()
                     if name not in asked})


def measure(options):
    cells, rows = {}, []
    languages = options.language or list(WRITTEN_IN)
    with multiprocessing.get_context("fork").Pool(options.processes) as pool:
        for language, found, agreed in pool.imap(judge_language,
                                                 [(name, options) for name in languages]):
            cells.update({(language, *key): cell for key, cell in found.items()})
            rows += [(language, *row) for row in agreed]
    return cells, rows


def print_tables(cells, rows, versions, options):
    names = [name for name in ALL_JUDGES if name in versions]
    print(f"{datetime.date.today()}, {platform.machine()}, "
          + ", ".join(f"{name} {version}" for name, version in versions.items())
          + f"; {options.count} pieces a cell, every {options.slow}th for chardet and "
          f"charset-normalizer, seed {options.seed}; "
          f"{sum(cell.counts['pieces'] for cell in cells.values()):,} answers")
    print_by_length(cells, names)
    for place in ("charset", "language"):
        for length in (40, 200, 2000):
            print_table(f"By {place}, {title(length)}: right text, per cent", [place] + names,
                        by(place, cells, names, length))
    print_languages(cells, names)
    print_calibration(cells, names, options)
    print_invariance(rows, names)


def parsed():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--work", type=Path, default=Path("/tmp/ksv-texts"),
                        help="where training_texts.py put the texts")
    parser.add_argument("--library", type=Path, default=Path("build/release/libksv.so"))
    parser.add_argument("--judges", default=",".join(ALL_JUDGES), type=lambda t: t.split(","),
                        help="with commas; all of them: %(default)s")
    parser.add_argument("--language", action="append", help="only this one; may be repeated")
    parser.add_argument("--count", type=int, default=60, help="pieces of each cell")
    parser.add_argument("--slow", type=int, default=6, help="slow judges get every n-th piece")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--json", type=Path, help="where the figures go as JSON")
    parser.add_argument("--earlier", type=Path,
                        help="the JSON of an earlier run with the same pieces, for the judges that "
                        "are not asked now")
    parser.add_argument("--wrong", type=int, default=0,
                        help="show so many wrong answers of ksv in each cell, on stderr")
    parser.add_argument("--processes", type=int, default=os.cpu_count())
    return parser.parse_args()


def main():
    options = parsed()
    options.library = options.library.resolve()
    versions = {judge.name: judge.version()
                for judge in judges(options.judges, options.work, options.library)}
    cells, rows = measure(options)
    if options.earlier:
        add_earlier(options.earlier, cells, rows, versions, options)
    print_tables(cells, rows, versions, options)
    if options.json:
        options.json.write_text(json.dumps(as_json(cells, rows, versions, options), indent=1))
    print_wrong(cells, "ksv", options.wrong)


if __name__ == "__main__":
    main()
